#include "Commands.h"
#include "FileNames.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "SaveImage.h"
#include "Sizes.h"
#include "Workers.h"

#include <kavra/devices/IWriteImageLineProvider.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <format>
#include <limits>
#include <memory>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr double kMostDpi = 1e6;
constexpr int kPixelBytes = 4;                               // of a line that is handed over
constexpr long long kMostBitmapPixels = (1LL << 30) - 1024;  // the file's size is a number of 32 bits

struct Options {
    std::string in;
    std::string out;
    vec2<int> repeat;
    double dpi = 72;
    int frame = 0;
};

/// A file type whose writer takes a line at a time and keeps none.
struct StreamedType {
    std::string_view extensions;
    long long most;  // pixels a side
};

constexpr std::array kStreamedTypes = {
    StreamedType{" .tif .tiff .exr .bmp ", std::numeric_limits<int>::max() / kPixelBytes},
    StreamedType{" .png ", 1'000'000},
    StreamedType{" .jpg .jpeg .jpe ", 65'500},
    StreamedType{" .tga .sgi .rgb .rgba ", 65'535},
};

const StreamedType* FindType(const std::string& path) {
    const std::string extension = LowerExtension(path);
    const auto found = std::ranges::find_if(kStreamedTypes, [&](const StreamedType& type) {
        return !extension.empty() && type.extensions.contains(" " + extension + " ");
    });
    return found != kStreamedTypes.end() ? &*found : nullptr;
}

/// Why a file of this name cannot hold so many pixels; empty when it can.
std::string Obstacle(const std::string& path, long long width, long long height) {
    const std::string extension = LowerExtension(path);
    const long long most = FindType(path)->most;
    const std::string size = std::format("{} x {} pixels, and {} files hold ", width, height, extension);
    if (width > most || height > most) return size + std::format("{} a side", most);
    if (extension == ".bmp" && width * height > kMostBitmapPixels) return size + "4 GB";
    return {};
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
LoadedImage LoadBytes(IImageHandler& handler, Report& report, int frame) {
    LoadedImage image = LoadFlat(handler, report, frame);
    if (image.block == nullptr || !HasPixels(report, image, "repeated")) return {};
    return image.desc.format == kR8G8B8A8 ? std::move(image) : *ToFormat(image, kR8G8B8A8);
}

void Tile(IImageHandler& handler, Report& report, const Options& options) {
    const std::string obstacle = WriteObstacle(options.out, kR8G8B8A8);
    if (!obstacle.empty()) return FailToWrite(report, options.out, obstacle);
    const LoadedImage image = LoadBytes(handler, report, options.frame);
    if (image.block == nullptr) return;

    const long long width = static_cast<long long>(image.desc.width) * options.repeat.x;
    const long long height = static_cast<long long>(image.desc.height) * options.repeat.y;
    const std::string tooLarge = Obstacle(options.out, width, height);
    if (!tooLarge.empty()) return FailToWrite(report, options.out, tooLarge);
    RepeatedLines lines(image, options.repeat);
    WriteFile(report, options.out, kR8G8B8A8, [&](const KString& name) {
        return handler.writeImageOneLineAtATime(name, options.dpi, &lines, static_cast<int>(width),
                                                static_cast<int>(height), image.desc.hasAlpha ? 4 : 3);
    });
}

int Run(const Session& session, const Options& options) {
    if (FindType(options.out) == nullptr) {
        return WrongUsage(options.out + " cannot be written line by line; tif, png, jpg, bmp, tga, sgi and exr can");
    }
    const Host host = session.LoadHost();
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
    command
        ->add_option_function<std::string>(
            "--repeat",
            [options](const std::string& text) {
                std::tie(options->repeat.x, options->repeat.y) = ParseSize(text, 1, "--repeat");
            },
            "How often, across and down")
        ->type_name("NxM")
        ->required();
    command->add_option("--dpi", options->dpi, "Dots per inch recorded in the file; 72 unless said")
        ->check([](const std::string& text) {
            double dpi = 0;
            const bool good = CLI::detail::lexical_cast(text, dpi) && dpi > 0 && dpi <= kMostDpi;
            return good ? std::string() : text + " is no resolution";
        });
    command->add_option("--frame", options->frame, "The frame, from 0; of a DDS the mip level");
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
