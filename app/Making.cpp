#include "Making.h"

#include "FileNames.h"

#include <utility>

namespace Kavra::App {

void Making::AddTo(CLI::App& command) {
    colours.AddTo(command);
    writing.AddTo(command);
}

bool Making::Write(Devices::IImageHandler& handler, Report& report, LoadedImage image, Source source,
                   const std::filesystem::path& path) const {
    image = colours.Apply(report, std::move(image), source, LowerExtension(path));
    return image.block != nullptr && writing.Write(handler, report, image, source, path);
}

}  // namespace Kavra::App
