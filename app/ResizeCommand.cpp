#include "Commands.h"
#include "Making.h"
#include "Picture.h"
#include "ResizedPicture.h"
#include "Sizes.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <format>
#include <memory>
#include <utility>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string in;
    std::string out;
    vec2<int> size;
    SizeWish wish;  // instead of a size
    EResizeMethod method = kResizeFilter;
    Resampling resampling;
    int frame = 0;
    Selection selection;
    Making making;
};

/// First the width, then the height: a call that changes both counts its rows before it looks how long they are, and
/// wraps or spills the longer ones.
LoadedImage CropOrPad(IImageHandler& handler, const LoadedImage& image, vec2<int> size) {
    const auto call = [&](const LoadedImage& from, vec2<int> to) {
        return CallResize(handler, from.desc, from.block->mData, to, kResizeCropOrPad, kFilterMitchell);
    };
    const LoadedImage wide = call(image, {size.x, image.desc.height});
    return wide.block != nullptr ? call(wide, size) : LoadedImage();
}

/// The whole block as it is, all faces or slices of it.
LoadedImage Copy(IImageHandler& handler, Report& report, const LoadedImage& image, const Options& options) {
    const ImageDescription& desc = image.desc;
    if (options.size.x > 0 && (options.size.x != desc.width || options.size.y != desc.height)) {
        report.Say("note", std::format("copied as it is, {} x {} pixels; --method filter or crop changes the size",
                                       desc.width, desc.height));
    }
    LoadedImage result;
    result.desc = desc;
    result.block.reset(handler.Resize(kResizeCopy, image.block->mData, image.BlockSize(), desc.rowPitch,
                                      {desc.width, desc.height, desc.depth}, desc.format, desc.textureType,
                                      {desc.width, desc.height, desc.depth}, result.desc.rowPitch, kFilterMitchell));
    return result;
}

LoadedImage Filtered(IImageHandler& handler, Report& report, LoadedImage image, const Options& options,
                     const Resampling& resampling) {
    if (!options.wish.IsGiven()) {
        return Resampled(handler, report, image, {options.size.x, options.size.y}, resampling);
    }
    const TargetSize target = options.wish.Of({image.desc.width, image.desc.height});
    return BroughtTo(handler, report, std::move(image), target, resampling);
}

/// The picture in its new size; a failure is said in the report.
LoadedImage Resized(IImageHandler& handler, Report& report, const Options& options, const Source& source) {
    const LoadOptions load = options.making.colours.ForLoading(
        handler, {.frame = options.frame, .resampling = options.resampling, .selection = options.selection}, options.in,
        source);
    if (options.method == kResizeFilter) {
        LoadedImage image = LoadFlat(handler, report, load);
        if (image.block == nullptr) return image;
        return Filtered(handler, report, std::move(image), options, load.resampling);
    }
    const bool copies = options.method == kResizeCopy;
    const LoadedImage image = copies ? LoadUpright(handler, report, load) : LoadFlat(handler, report, load);
    if (image.block == nullptr || (!copies && !HasPixels(report, image, "resized"))) return {};
    const std::string obstacle = copies ? "" : SizeObstacle(options.size.x, options.size.y, image.desc.format);
    if (!obstacle.empty()) {
        report.Fail("cannot be resized: " + obstacle);
        return {};
    }

    const std::size_t mark = report.Mark();
    const MessageScope scope(report);
    LoadedImage result = copies ? Copy(handler, report, image, options) : CropOrPad(handler, image, options.size);
    if (result.block == nullptr) report.FailUnlessSaid(mark, "cannot be resized");
    return result;
}

/// What is wrong with the options taken together; empty when nothing is.
std::string Contradiction(const Options& options) {
    const bool filters = options.method == kResizeFilter;
    if (!filters && options.wish.IsGiven()) return options.wish.Option() + " goes with --method filter";
    const std::string howToFilter = options.resampling.OptionForPeople();
    if (!filters && !howToFilter.empty()) return howToFilter + " goes with --method filter";
    if (options.size.x > 0 || options.wish.IsGiven() || options.method == kResizeCopy) return {};
    return filters ? "--size, --fit, --fill or --scale is required" : "--size is required";
}

int Run(const Session& session, const Options& options) {
    const std::string contradiction = Contradiction(options);
    if (!contradiction.empty()) return WrongUsage("resize", contradiction);
    const Host& host = session.LoadHost();
    const bool good = ForOneReport(options.in, [&](Report& report) {
        if (!IsToBeMade(report, options.out)) return;
        Options chosen = options;
        if (!chosen.selection.Resolve(host.Handler(), report, chosen.frame)) return;
        const Source source = SourceOf(host.Handler(), options.in, chosen.frame);
        LoadedImage result = Resized(host.Handler(), report, chosen, source);
        if (result.block != nullptr)
            options.making.Write(host.Handler(), report, std::move(result), source, options.out);
    });
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddResize(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("resize", "Brings a picture to another size, larger or smaller");
    command->footer(
        "Examples: kavra resize photo.jpg small.png --scale 50%\n"
        "          kavra resize photo.jpg small.png --size 320x200 --filter linear\n"
        "          kavra resize photo.jpg padded.png --size 1024x1024 --method crop");
    AddInAndOut(*command, session.names, options->in, options->out);
    command
        ->add_option_function<std::string>(
            "--size",
            [options](const std::string& text) { std::tie(options->size.x, options->size.y) = ParseSize(text, 1); },
            "The new size; it need not keep the proportions")
        ->type_name("WxH");
    options->wish.AddTo(*command, "the picture");
    AddChoice<EResizeMethod>(
        *command, "--method", {{"copy", kResizeCopy}, {"filter", kResizeFilter}, {"crop", kResizeCropOrPad}},
        [options](EResizeMethod method) { options->method = method; },
        "filter, unless said: resample to the size. crop: leave the pixels as they are, cut off what is too much at "
        "the "
        "right and at the bottom, fill up with zeros. copy: the block as it is, in its own size");
    options->resampling.AddForPeople(*command);
    AddFrame(*command, options->frame);
    options->selection.AddOptions(*command, Purpose::kPeople);
    options->making.AddTo(*command);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
