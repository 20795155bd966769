#include "Making.h"

#include "FileNames.h"

#include <utility>

namespace Kavra::App {

void Making::AddTo(CLI::App& command) {
    colours.AddTo(command);
    writing.AddTo(command);
}

bool Making::Write(Devices::IImageHandler& handler, Report& report, LoadedImage image, Source source,
                   const std::filesystem::path& path, Devices::EFormat wanted) const {
    image = colours.Apply(report, std::move(image), source, LowerExtension(path), wanted);
    return image.block != nullptr && writing.Write(handler, report, image, source, path);
}

}  // namespace Kavra::App
