#include "Commands.h"
#include "FileNames.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "SaveImage.h"
#include "Sizes.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <kavra/devices/IWriteImageLineProvider.h>

#include <algorithm>
#include <cstring>
#include <format>
#include <memory>
#include <string_view>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr int kMaxDpi = 1'000'000;
constexpr PairWords kRepeat = {"number of copies", "ACROSSxDOWN", "4x3"};

struct Options {
    std::string in;
    std::string out;
    vec2<int> repeat;
    double dpi = 72;
    LoadOptions load;
};

/// Whether the writer of the file type takes a line at a time and keeps none.
bool IsStreamed(const std::string& path) {
    constexpr std::string_view kExtensions = " .tif .tiff .exr .bmp .png .jpg .jpeg .jpe .tga .sgi .rgb .rgba ";
    const std::string extension = LowerExtension(path);
    return !extension.empty() && kExtensions.contains(" " + extension + " ");
}

/// The lines of a picture beside and below itself.
class RepeatedLines final : public IWriteImageLineProvider {
public:
    /// `image` has four bytes a pixel and outlives this.
    RepeatedLines(const LoadedImage& image, vec2<int> repeat)
        : mImage(image), mColumns(repeat.x), mProgress(static_cast<std::size_t>(image.desc.height) * repeat.y) {}

    void FillLine(void* line) override {
        const auto row = mDone % static_cast<std::size_t>(mImage.desc.height);
        const auto bytes = static_cast<std::size_t>(mImage.desc.rowPitch);
        const auto* source = static_cast<const unsigned char*>(mImage.block->mData) + row * bytes;
        for (int i = 0; i < mColumns; ++i)
            std::memcpy(static_cast<unsigned char*>(line) + static_cast<std::size_t>(i) * bytes, source, bytes);
        mProgress.Show(++mDone);
    }

private:
    const LoadedImage& mImage;
    int mColumns;
    std::size_t mDone = 0;
    Progress mProgress;
};

/// The picture with four bytes a pixel; a failure is said in the report.
LoadedImage LoadBytes(IImageHandler& handler, Report& report, const LoadOptions& options) {
    LoadedImage image = LoadFlat(handler, report, options);
    if (image.block == nullptr || !HasPixels(report, image, "repeated")) return {};
    return image.desc.format == kR8G8B8A8 ? std::move(image) : *ToFormat(image, kR8G8B8A8);
}

void Tile(IImageHandler& handler, Report& report, const Options& options) {
    if (!IsToBeMade(report, options.out)) return;
    std::string obstacle = WriteObstacle(options.out, {kR8G8B8A8, 1, 1});
    if (!obstacle.empty()) return FailToWrite(report, options.out, obstacle);
    const LoadedImage image = LoadBytes(handler, report, options.load);
    if (image.block == nullptr) return;

    const FileContent content{kR8G8B8A8, static_cast<long long>(image.desc.width) * options.repeat.x,
                              static_cast<long long>(image.desc.height) * options.repeat.y};
    obstacle = WriteObstacle(options.out, content);
    if (!obstacle.empty()) return FailToWrite(report, options.out, obstacle);
    RepeatedLines lines(image, options.repeat);
    WriteFile(report, options.out, content, [&](const KString& name) {
        return handler.writeImageOneLineAtATime(name, options.dpi, &lines, static_cast<int>(content.width),
                                                static_cast<int>(content.height), image.desc.hasAlpha ? 4 : 3);
    });
}

int Run(const Session& session, const Options& options) {
    if (!IsStreamed(options.out)) {
        return WrongUsage("tile",
                          options.out + " cannot be written line by line; tif, png, jpg, bmp, tga, sgi and exr can");
    }
    const Host& host = session.LoadHost();
    const bool good = ForOneReport(options.in, [&](Report& report) { Tile(host.Handler(), report, options); });
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddTile(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("tile", "Repeats a picture, in the memory of one line of the result");
    command->footer("Example: kavra tile pattern.png poster.tif --repeat 60x40 --dpi 300");
    command->add_option("IN", options->in, "The picture, taken as it is displayed, with 8 bits a channel")->required();
    command->add_option("OUT", options->out, "The file to write: tif, png, jpg, bmp, tga, sgi or exr")->required();
    session.names.in.push_back(&options->in);
    session.names.out.push_back(&options->out);
    AddStreamType(*command, session.names);
    command
        ->add_option_function<std::string>(
            "--repeat",
            [options](const std::string& text) {
                std::tie(options->repeat.x, options->repeat.y) = ParsePair(text, "--repeat", 1, kRepeat);
            },
            "How often, across and down")
        ->type_name("NxM")
        ->required();
    command->add_option("--dpi", options->dpi, "Dots per inch recorded in the file; 72 unless said")
        ->check([](const std::string& text) {
            double dpi = 0;
            const bool good = CLI::detail::lexical_cast(text, dpi) && dpi > 0 && dpi <= kMaxDpi;
            return good ? std::string() : std::format("{} is no number above 0 and up to {}", text, kMaxDpi);
        });
    options->load.wish.AddTo(*command, "the picture");
    options->load.resampling.AddForPeople(*command);
    options->load.resampling.AddFast(*command);
    AddFrame(*command, options->load.frame);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
