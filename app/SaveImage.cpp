#include "SaveImage.h"

#include "FileNames.h"
#include "OutputFile.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/objects/OS.h>

#include <algorithm>

namespace Kavra::App {
namespace {

using namespace Devices;

/// What of the place speaks against it.
std::string PlaceObstacle(const std::filesystem::path& path) {
    std::string reason = NameObstacle(path);
    if (reason.empty() && LowerExtension(path).empty()) reason = "the name has no extension to choose a file type by";
    return reason;
}

void NoteWhatStaysOut(Report& report, const ImageDescription& desc, const std::filesystem::path& path) {
    if (LowerExtension(path) == ".dds") return;
    if (desc.textureType == kTextureCube) report.Say("note", "a cube map; only its first face was written");
    if (desc.textureType == kTextureVolume) report.Say("note", "a volume; only its first slice was written");
}

std::string FailureText(const std::string& reason) {
    return reason.empty() ? "cannot be written" : "cannot be written: " + reason;
}

std::uint64_t FileBytes(const std::filesystem::path& path) {
    std::error_code failed;
    const std::uintmax_t bytes = std::filesystem::file_size(path, failed);
    return failed ? 0 : bytes;
}

/// How much a file that could not be finished would still have had to grow, at least. The writer of DDS files removes
/// what it has written.
std::uint64_t BytesLeft(std::string_view extension, const FileContent& content) {
    if (extension != ".dds") return 1;
    const int pixel = Utilities::AFormatConvertor::BytesPerPixel(content.format);
    return std::max<std::uint64_t>(
        1, static_cast<std::uint64_t>(content.width * content.height) * static_cast<std::uint64_t>(pixel));
}

}  // namespace

std::string WriteObstacle(const std::filesystem::path& path, const FileContent& content) {
    std::string reason = PlaceObstacle(path);
    if (reason.empty()) reason = FolderObstacle(path);
    return reason.empty() ? TypeObstacle(LowerExtension(path), content) : reason;
}

void FailToWrite(Report& report, const std::filesystem::path& path, const std::string& reason) {
    report.Fail(FailureText(reason), path.string());
}

bool WriteFile(Report& report, const std::filesystem::path& path, const FileContent& content,
               const std::function<bool(const KString&)>& write) {
    const std::size_t mark = report.Mark();
    const std::string extension = LowerExtension(path);
    std::string reason = PlaceObstacle(path);
    if (reason.empty()) reason = TypeObstacle(extension, content);
    if (reason.empty()) {
        OutputFile output(path);
        const MessageScope scope(report, path.string());
        if (write(OS::FromUtf8(output.TemporaryPath().c_str()).c_str())) {
            reason = ShortnessObstacle(extension, FileBytes(output.TemporaryPath()));
            if (reason.empty()) reason = output.Commit();
            if (reason.empty()) return true;
        } else {
            reason = FolderObstacle(path);
            if (reason.empty()) reason = GrowthObstacle(output.TemporaryPath(), BytesLeft(extension, content));
        }
    }
    if (reason.empty()) {
        report.FailUnlessSaid(mark, FailureText(reason), path.string());
    } else {
        FailToWrite(report, path, reason);
    }
    return false;
}

bool Save(IImageHandler& handler, Report& report, const LoadedImage& image, const std::filesystem::path& path,
          const SavePreferences& preferences) {
    const FileContent content{image.desc.format, image.desc.width, image.desc.height, preferences.dropsAlpha};
    const bool written = WriteFile(report, path, content, [&](const KString& name) {
        const SavePreferencesScope scope(preferences);
        return handler.SaveTexture(name, image.desc, image.block->mData);
    });
    if (written) NoteWhatStaysOut(report, image.desc, path);
    return written;
}

}  // namespace Kavra::App
