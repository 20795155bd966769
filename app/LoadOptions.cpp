#include "LoadOptions.h"

#include "FormatNames.h"
#include "Sizes.h"

#include <kavra/objects/OS.h>

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

void LoadOptions::AddTo(CLI::App& command, bool withFrame) {
    command
        .add_option_function<std::string>(
            "--size", [this](const std::string& text) { std::tie(width, height) = ParseSize(text, 0); },
            "The largest size wanted, in pixels, WxH; 0 means the file's own. Images are never enlarged.")
        ->type_name("WxH");
    AddFormatOption(command, format,
                    "The pixel format wanted: a short name (rgba8), an enumerator (kR8G8B8A8) or its number");
    command.add_option("--orientation", orientation, "Row and column order wanted, 0 (as displayed) to 7")
        ->check(CLI::Range(0, 7));
    command.add_flag("--high-quality", highQuality, "Always shrink with the better filter");
    if (withFrame) command.add_option("--frame", frame, "The frame, from 0; of a DDS the mip level");
}

std::uint64_t LoadedImage::BlockSize() const {
    return desc.dataSize * (desc.textureType == kTextureCube ? 6 : 1);
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
