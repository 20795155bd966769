#include "Making.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "TextureWriting.h"
#include "WrittenPixels.h"

#include <utility>

namespace Kavra::App {

void Making::AddTo(CLI::App& command) {
    colours.AddTo(command);
    writing.AddTo(command);
}

bool Making::ChangesNothing() const {
    return colours == ColourOptions() && writing == WriteOptions();
}

Devices::EFormat Making::WantedFor(const LoadedImage& image, const std::filesystem::path& path) const {
    const bool isHeld = writing.depth != Depth::kOwn && AbilitiesOf(LowerExtension(path)).HoldsDepth(writing.depth);
    return isHeld ? AtDepth(image.desc.format, writing.depth) : Devices::kUnknown;
}

WriteOptions Making::Writing(Source& source) const {
    WriteOptions options = writing;
    if (!colours.raw) return options;
    options.keepsAlpha = true;
    source.transfer = Devices::kTransferUnknown;
    source.alpha = Devices::kAlphaNone;
    return options;
}

bool Making::Write(Devices::IImageHandler& handler, Report& report, LoadedImage image, Source source,
                   const std::filesystem::path& path, Devices::EFormat wanted) const {
    if (wanted == Devices::kUnknown) wanted = WantedFor(image, path);
    const bool hasBlocks = IsTextureName(path) && Facts(wanted).bytesPerBlock > 0;
    const bool isAlreadyBlocks = Facts(image.desc.format).bytesPerBlock > 0;
    if ((hasBlocks && !isAlreadyBlocks) || LowerExtension(path) == ".ktx2") {
        image = colours.Apply(report, std::move(image), source, ".dds", hasBlocks ? Devices::kUnknown : wanted);
        return image.block != nullptr && WriteAsTexture(handler, report, std::move(image), source, path, wanted);
    }
    image = colours.Apply(report, std::move(image), source, LowerExtension(path), wanted);
    return image.block != nullptr && Writing(source).Write(handler, report, std::move(image), source, path);
}

bool Making::WriteAll(Devices::IImageHandler& handler, Report& report, std::vector<LoadedImage> images,
                      const Source& source, const std::filesystem::path& path, double framesPerSecond) const {
    Source made;
    for (LoadedImage& image : images) {
        made = source;
        const Devices::EFormat wanted = WantedFor(image, path);
        image = colours.Apply(report, std::move(image), made, LowerExtension(path), wanted);
        if (image.block == nullptr) return false;
    }
    return Writing(made).WriteAll(handler, report, std::move(images), made, path, framesPerSecond);
}

}  // namespace Kavra::App
