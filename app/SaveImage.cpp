#include "SaveImage.h"

#include "FileNames.h"
#include "OutputFile.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/Sys.h>
#include <kavra/objects/OS.h>

#include <algorithm>
#include <format>

namespace Kavra::App {
namespace {

using namespace Devices;

/// What is written is what the module and the image library that is installed say.
std::string UnknownTypeObstacle(const std::filesystem::path& path) {
    auto* const inspector = dynamic_cast<IImageInspector*>(Sys::ImageHandler());
    const std::string extension = LowerExtension(path);
    if (inspector == nullptr || extension.empty() || IsTextureName(path)) return {};
    const std::string_view written = inspector->WritableExtensions();
    if (written.empty() || HasWord(std::format(" {} ", written), extension)) return {};
    return std::format("no {} files are written; these are: {} .ktx2", extension, written);
}

/// What of the name speaks against it.
std::string PlaceObstacle(const std::filesystem::path& path) {
    std::string reason = NameObstacle(path);
    if (reason.empty() && LowerExtension(path).empty()) reason = "the name has no extension to choose a file type by";
    return reason.empty() ? UnknownTypeObstacle(path) : reason;
}

EFailureKind KindOfObstacle(const std::filesystem::path& path, const std::string& reason) {
    if (reason == UnknownTypeObstacle(path)) return kFailureUnknownType;
    const bool isOfPlace = reason == PlaceObstacle(path) || reason == FolderObstacle(path);
    return isOfPlace ? kFailureCannotWrite : kFailureFormat;
}

void NoteWhatStaysOut(Report& report, const ImageDescription& desc, const std::filesystem::path& path) {
    if (LowerExtension(path) == ".dds") return;
    if (desc.textureType == kTextureCube) report.Say("note", "a cube map; only its first face was written");
    if (desc.textureType == kTextureVolume) report.Say("note", "a volume; only its first slice was written");
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

bool CanBeMade(Report& report, const std::filesystem::path& path) {
    std::string reason = PlaceObstacle(path);
    if (reason.empty()) reason = FolderObstacle(path);
    if (!reason.empty()) FailToWrite(report, path, reason);
    return reason.empty();
}

void FailToWrite(Report& report, const std::filesystem::path& path, const std::string& reason) {
    report.Fail(OwnReason("cannot be written: " + reason, KindOfObstacle(path, reason)), path.string());
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
            if (reason.empty()) {
                report.work.written.push_back(path.string());
                return true;
            }
        } else {
            report.Remember(false);
            reason = FolderObstacle(path);
            if (reason.empty()) reason = GrowthObstacle(output.TemporaryPath(), BytesLeft(extension, content));
        }
    }
    if (reason.empty()) {
        report.FailUnlessSaid(mark, "cannot be written", path.string());
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
