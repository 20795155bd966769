#include "Commands.h"
#include "Picture.h"
#include "SaveImage.h"
#include "Sizes.h"
#include "Usage.h"
#include "Workers.h"

#include <format>
#include <map>
#include <memory>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string in;
    std::string out;
    vec2<int> size;
    EResizeMethod method = kResizeFilter;
    EImageFilterType filter = kFilterMitchell;
    int frame = 0;
};

/// One call of the resize service: a flat picture in another size. `block` is null when it gave none.
LoadedImage CallResize(IImageHandler& handler, const LoadedImage& image, vec2<int> size, const Options& options) {
    const ImageDescription& from = image.desc;
    LoadedImage result;
    result.desc = from;
    result.desc.width = size.x;
    result.desc.height = size.y;
    result.block.reset(handler.Resize(options.method, image.block->mData, from.dataSize, from.rowPitch,
                                      {from.width, from.height, 1}, from.format, kTexture2D, {size.x, size.y, 1},
                                      result.desc.rowPitch, options.filter));
    result.desc.dataSize = static_cast<std::uint64_t>(result.desc.rowPitch) * static_cast<std::uint64_t>(size.y);
    return result;
}

/// First the width, then the height: a call that changes both counts its rows before it looks how long they are, and
/// wraps or spills the longer ones.
LoadedImage CropOrPad(IImageHandler& handler, const LoadedImage& image, const Options& options) {
    const LoadedImage wide = CallResize(handler, image, {options.size.x, image.desc.height}, options);
    return wide.block != nullptr ? CallResize(handler, wide, options.size, options) : LoadedImage();
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
                                      {desc.width, desc.height, desc.depth}, result.desc.rowPitch, options.filter));
    return result;
}

/// The picture in its new size; a failure is said in the report.
LoadedImage Resized(IImageHandler& handler, Report& report, const Options& options) {
    const bool copies = options.method == kResizeCopy;
    LoadedImage image = copies ? LoadUpright(handler, report, options.frame) : LoadFlat(handler, report, options.frame);
    if (image.block == nullptr || (!copies && !HasPixels(report, image, "resized"))) return {};
    const std::string obstacle = copies ? "" : SizeObstacle(options.size.x, options.size.y, image.desc.format);
    if (!obstacle.empty()) {
        report.Fail("cannot be resized: " + obstacle);
        return {};
    }

    const std::size_t mark = report.Mark();
    const MessageScope scope(report);
    LoadedImage result = copies                               ? Copy(handler, report, image, options)
                         : options.method == kResizeCropOrPad ? CropOrPad(handler, image, options)
                                                              : CallResize(handler, image, options.size, options);
    if (result.block == nullptr) report.FailUnlessSaid(mark, "cannot be resized");
    return result;
}

/// Adds an option that takes one of a few words, in any case.
template <class Value>
void AddChoice(CLI::App& command, const std::string& name, Value& value, std::map<std::string, Value> words,
               const std::string& help) {
    std::string names;
    for (const auto& [word, ignored] : words)
        names += (names.empty() ? "" : "|") + word;
    command
        .add_option_function<std::string>(
            name,
            [&value, name, names, words = std::move(words)](const std::string& text) {
                const auto found = words.find(CLI::detail::to_lower(text));
                if (found == words.end()) throw CLI::ValidationError(name, text + " is none of " + names);
                value = found->second;
            },
            help)
        ->type_name(names);
}

int Run(const Session& session, const Options& options) {
    if (options.size.x == 0 && options.method != kResizeCopy) return WrongUsage("resize", "--size is required");
    const Host host = session.LoadHost();
    const bool good = ForOneReport(options.in, [&](Report& report) {
        const LoadedImage result = Resized(host.Handler(), report, options);
        if (result.block != nullptr) Save(host.Handler(), report, result, options.out);
    });
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddResize(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("resize", "Brings a picture to another size, larger or smaller");
    command->footer(
        "Examples: kavra resize photo.jpg small.png --size 320x200 --method filter --filter linear\n"
        "          kavra resize photo.jpg padded.png --size 1024x1024 --method crop");
    command->add_option("IN", options->in, "The picture, taken as it is displayed")->required();
    command->add_option("OUT", options->out, "The file to write")->required();
    command
        ->add_option_function<std::string>(
            "--size",
            [options](const std::string& text) { std::tie(options->size.x, options->size.y) = ParseSize(text, 1); },
            "The new size; it need not keep the proportions")
        ->type_name("WxH");
    AddChoice<EResizeMethod>(*command, "--method", options->method,
                             {{"copy", kResizeCopy}, {"filter", kResizeFilter}, {"crop", kResizeCropOrPad}},
                             "filter, unless said: resample to the size. crop: leave the pixels as they are, cut off "
                             "what is too much at the "
                             "right and at the bottom, fill up with zeros. copy: the block as it is, in its own size");
    AddChoice<EImageFilterType>(
        *command, "--filter", options->filter,
        {{"nearest", kFilterNearest}, {"mitchell", kFilterMitchell}, {"linear", kFilterBilinear}},
        "How to resample; mitchell unless said");
    AddFrame(*command, options->frame);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
