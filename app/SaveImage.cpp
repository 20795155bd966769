#include "SaveImage.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "OutputFile.h"

#include <kavra/objects/OS.h>

#include <array>
#include <format>

namespace Kavra::App {
namespace {

using namespace Devices;

/// What the common picture files cannot hold, which a writer's plain "no" does not tell.
std::string FormatObstacle(const std::string& extension, EFormat format) {
    struct Rule {
        std::string_view extensions;
        std::array<bool, 5> channels;  // by channel count
        std::string_view text;
    };
    static constexpr std::array kRules = {
        Rule{" .hdr .rgbe ", {false, false, false, true, false}, "three channels"},
        Rule{" .pbm .pgm .ppm .pnm .pfm ", {false, true, false, true, false}, "one or three channels"},
        Rule{" .bmp ", {false, true, false, true, true}, "one, three or four channels"},
        Rule{" .gif .webp .iff ", {false, false, false, true, true}, "three or four channels"},
        Rule{" .dpx .jxl .jp2 .j2c .j2k .jph ", {false, true, false, true, true}, "one, three or four channels"},
    };
    const int channels = Channels(format);
    for (const Rule& rule : kRules) {
        if (rule.extensions.find(" " + extension + " ") == std::string_view::npos) continue;
        if (!rule.channels[static_cast<std::size_t>(channels)]) {
            return std::format("{} files hold {}, and {} has {}", extension, rule.text, Enumerator(format), channels);
        }
    }
    return {};
}

std::string Reason(const std::filesystem::path& path, EFormat format) {
    const std::string extension = LowerExtension(path);
    if (extension.empty()) return "the name has no extension to choose a file type by";
    std::string reason = FolderObstacle(path);
    if (reason.empty()) reason = FormatObstacle(extension, format);
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

}  // namespace

std::string WriteObstacle(const std::filesystem::path& path, EFormat format) {
    std::string reason = NameObstacle(path);
    return reason.empty() ? Reason(path, format) : reason;
}

void FailToWrite(Report& report, const std::filesystem::path& path, const std::string& reason) {
    report.Fail(FailureText(reason), path.string());
}

bool WriteFile(Report& report, const std::filesystem::path& path, EFormat format,
               const std::function<bool(const KString&)>& write) {
    const std::size_t mark = report.Mark();
    std::string reason = NameObstacle(path);
    if (reason.empty()) {
        OutputFile output(path);
        const MessageScope scope(report, path.string());
        if (write(OS::FromUtf8(output.TemporaryPath().c_str()).c_str())) {
            reason = output.Commit();
            if (reason.empty()) return true;
        } else {
            reason = Reason(path, format);
        }
    }
    report.FailUnlessSaid(mark, FailureText(reason), path.string());
    return false;
}

bool Save(IImageHandler& handler, Report& report, const LoadedImage& image, const std::filesystem::path& path) {
    const bool written = WriteFile(report, path, image.desc.format, [&](const KString& name) {
        return handler.SaveTexture(name, image.desc, image.block->mData);
    });
    if (written) NoteWhatStaysOut(report, image.desc, path);
    return written;
}

}  // namespace Kavra::App
