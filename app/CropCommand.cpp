#include "Commands.h"
#include "FormatNames.h"
#include "ImageObject.h"
#include "Making.h"
#include "Picture.h"
#include "ResizedPicture.h"
#include "Sizes.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <cstdint>
#include <format>
#include <memory>
#include <utility>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string in;
    std::string out;
    Rect rect;
    vec2<int> size;  // 0: the rectangle's own
    SizeWish wish;   // instead of a size
    Resampling resampling;
    int orientation = 0;
    EFormat format = kUnknown;
    int frame = 0;
    Selection selection;
    Making making;
};

bool IsInside(const Rect& rect, const ImageDescription& desc) {
    return rect.x >= 0 && rect.y >= 0 && std::int64_t{rect.x} + rect.width <= desc.width &&
           std::int64_t{rect.y} + rect.height <= desc.height;
}

/// Why this rectangle cannot be had of this picture; empty when it can.
std::string Obstacle(const Options& options, const ImageDescription& desc) {
    const Rect& rect = options.rect;
    if (!IsInside(rect, desc)) {
        return std::format("cannot be cropped: the picture is {} x {} pixels, and {} x {} from {},{} reach beyond it",
                           desc.width, desc.height, rect.width, rect.height, rect.x, rect.y);
    }
    const std::string obstacle = SizeObstacle(options.size.x, options.size.y, desc.format);
    return obstacle.empty() ? obstacle : "cannot be cropped: " + obstacle;
}

/// The rectangle in its new size and the picture's own format; messages and a failure go to the report.
LoadedImage Cut(IImageHandler& handler, Report& report, LoadedImage image, const Options& options,
                const Resampling& resampling) {
    const std::size_t mark = report.Mark();
    const MessageScope scope(report);
    const LoadPreferencesScope preferences(resampling.For(report.File()));
    const Rect& rect = options.rect;
    const vec2<int> size{rect.width, rect.height};
    const ImageRef source = MakeImage(handler, image);
    image.block.reset();
    LoadedImage result;
    if (source != nullptr) {
        result = Fetch(*source, {rect.x, rect.y}, size, options.size.x > 0 ? options.size : size,
                       static_cast<EDataOrientation>(options.orientation));
    }
    result.desc.hasAlpha = image.desc.hasAlpha;
    if (result.block == nullptr) report.FailUnlessSaid(mark, "cannot be cropped");
    if (result.block == nullptr || !options.wish.IsGiven()) return result;
    const TargetSize target = options.wish.Of({result.desc.width, result.desc.height});
    return BroughtTo(handler, report, std::move(result), target, resampling);
}

void Crop(IImageHandler& handler, Report& report, const Options& options) {
    const Source source = SourceOf(handler, options.in, options.frame);
    const LoadOptions load = options.making.colours.ForLoading(
        handler, {.frame = options.frame, .resampling = options.resampling, .selection = options.selection}, options.in,
        source);
    LoadedImage image = LoadFlat(handler, report, load);
    if (image.block == nullptr || !HasPixels(report, image, "cropped")) return;
    const std::string obstacle = Obstacle(options, image.desc);
    if (!obstacle.empty()) return report.Fail(obstacle);

    LoadedImage result = Cut(handler, report, std::move(image), options, load.resampling);
    if (result.block == nullptr) return;
    const bool hasPixels = options.format == kUnknown || Facts(options.format).bytesPerPixel > 0;
    if (!hasPixels) return report.Fail(std::format("cannot be cropped: {} has no pixels", Enumerator(options.format)));
    options.making.Write(handler, report, std::move(result), source, options.out, options.format);
}

int Run(const Session& session, const Options& options) {
    const Host& host = session.LoadHost();
    const bool good = ForOneReport(options.in, [&](Report& report) {
        if (!IsToBeMade(report, options.out)) return;
        Options chosen = options;
        if (chosen.selection.Resolve(host.Handler(), report, chosen.frame)) Crop(host.Handler(), report, chosen);
    });
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddCrop(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("crop", "Writes a rectangle of a picture");
    command->footer(
        "Examples: kavra crop photo.jpg face.png --rect 120,40,200,200\n"
        "          kavra crop photo.jpg icon.png --rect 120,40,200,200 --fit 64x64");
    AddInAndOut(*command, session.names, options->in, options->out);
    command
        ->add_option_function<std::string>(
            "--rect", [options](const std::string& text) { options->rect = ParseRect(text, "--rect"); },
            "The rectangle, in pixels from the top left corner; it has to be inside the picture")
        ->type_name("X,Y,W,H")
        ->required();
    command
        ->add_option_function<std::string>(
            "--size",
            [options](const std::string& text) { std::tie(options->size.x, options->size.y) = ParseSize(text, 1); },
            "The size to bring the rectangle to, larger or smaller; its own unless said")
        ->type_name("WxH");
    options->wish.AddTo(*command, "the rectangle as it comes out");
    options->resampling.AddForPeople(*command, Resampling::kLoadsUnlessSaid);
    AddWholeNumber(*command, "--orientation", options->orientation, 0, 7,
                   "Row and column order written, 0 (as displayed) to 7");
    AddFormatOption(*command, options->format, "The pixel format written; the picture's own unless said");
    AddFrame(*command, options->frame);
    options->selection.AddOptions(*command, Purpose::kPeople);
    options->making.AddTo(*command);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
