#include "LoadOptions.h"

#include "FormatNames.h"
#include "Sizes.h"
#include "Usage.h"

#include <kavra/devices/ImageLimits.h>
#include <kavra/objects/OS.h>

#include <cstdint>

namespace Kavra::App {

using namespace Devices;

void AddFormatOption(CLI::App& command, EFormat& format, const std::string& help) {
    command
        .add_option_function<std::string>(
            "--format",
            [&format](const std::string& text) {
                const auto parsed = ParseFormat(text);
                if (!parsed) throw CLI::ValidationError("--format", text + " is no pixel format; see kavra formats");
                format = *parsed;
            },
            help)
        ->type_name("NAME");
}

namespace {

/// A limit is set as soon as it is read: it binds every load of the process.
void AddLimitOption(CLI::App& command, const std::string& name, std::uint64_t ImageLimits::* field, std::uint64_t kilo,
                    const std::string& help) {
    command
        .add_option_function<std::string>(
            name,
            [name, field, kilo](const std::string& text) {
                ImageLimits limits = GetImageLimits();
                limits.*field = ParseAmount(text, kilo, name);
                SetImageLimits(limits);
            },
            help)
        ->type_name("N");
}

bool Loads(const CLI::App* command) {
    return command->get_name() != "info" && command->get_name() != "formats";
}

}  // namespace

void AddLimitOptions(CLI::App& program) {
    for (CLI::App* const command : program.get_subcommands([](CLI::App* candidate) { return Loads(candidate); })) {
        AddLimitOption(*command, "--max-bytes", &ImageLimits::maxBytes, 1024,
                       "The memory that a picture may take, as 500M or 4G; K is 1024, M 1024 K, G 1024 M");
        AddLimitOption(*command, "--max-pixels", &ImageLimits::maxPixels, 1000,
                       "The pixels that a picture may have, as 100M; K is 1000, M 1000 K, G 1000 M");
    }
}

void LoadOptions::AddTo(CLI::App& command, bool withFrame) {
    command
        .add_option_function<std::string>(
            "--size", [this](const std::string& text) { std::tie(width, height) = ParseSize(text, 0); },
            "The largest size wanted, in pixels, WxH; 0 means the file's own. Images are never enlarged.")
        ->type_name("WxH");
    AddFormatOption(command, format,
                    "The pixel format wanted: a short name (rgba8), an enumerator (kR8G8B8A8) or its number");
    AddWholeNumber(command, "--orientation", orientation, 0, 7, "Row and column order wanted, 0 (as displayed) to 7");
    command.add_flag("--high-quality", highQuality, "Always shrink with the better filter");
    if (withFrame) AddFrame(command, frame);
}

std::uint64_t LoadedImage::BlockSize() const {
    return desc.dataSize * static_cast<std::uint64_t>(FaceCount(desc.textureType));
}

LoadedImage Load(IImageHandler& handler, Report& report, const LoadOptions& options, int frame) {
    const MessageScope scope(report);
    const KString path(OS::FromUtf8(report.File().c_str()).c_str());
    LoadedImage image;
    image.block.reset(handler.LoadTexture(image.desc, path, options.width, options.height, 0, options.format,
                                          options.highQuality, frame,
                                          static_cast<EDataOrientation>(options.orientation), nullptr));
    return image;
}

void FailToRead(Report& report, std::size_t mark) {
    report.FailUnlessSaid(mark, "cannot be read");
}

}  // namespace Kavra::App
