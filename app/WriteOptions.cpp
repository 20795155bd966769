#include "WriteOptions.h"

#include "SaveImage.h"

namespace Kavra::App {

void WriteOptions::AddTo(CLI::App& /*command*/) {}

bool WriteOptions::Write(Devices::IImageHandler& handler, Report& report, const LoadedImage& image,
                         const Source& /*source*/, const std::filesystem::path& path) const {
    return Save(handler, report, image, path);
}

}  // namespace Kavra::App
