#include "Source.h"

#include "FileNames.h"
#include "LegacyOption.h"
#include "TextureView.h"

#include <kavra/objects/OS.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <format>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

/// What tells a file from another one, and from itself after a change.
struct FileState {
    std::string name;
    std::filesystem::file_time_type time;
    std::uintmax_t bytes = 0;

    explicit FileState(const std::string& file) : name(file) {
        std::error_code ignored;
        time = std::filesystem::last_write_time(file, ignored);
        bytes = std::filesystem::file_size(file, ignored);
    }
    bool operator==(const FileState&) const = default;
};

struct LastInspection {
    FileState state;
    OwnedInspection answer;
};

}  // namespace

OwnedInspection Inspect(IImageHandler& handler, const std::string& file) {
    thread_local std::optional<LastInspection> last;
    auto* const inspector = dynamic_cast<IImageInspector*>(&handler);
    if (inspector == nullptr) return nullptr;
    const std::string path = PathForHandler(file);
    FileState state(file);
    if (path != file) state.name += " " + path;
    if (last && last->state == state) return last->answer;
    last.reset();
    const LoadPreferencesScope preferred(LegacyPreferences(file));
    Owned<IFileInspection> found(inspector->Inspect(OS::FromUtf8(path.c_str()).c_str()));
    OwnedInspection answer = std::move(found);
    if (answer != nullptr) last = LastInspection{state, answer};
    return answer;
}

namespace {

std::string GreyWithAlpha(const FilePart& part) {
    if (part.channelCount != 2 || part.alpha == kAlphaNone || std::string_view(part.channels[0].type) == "uint8")
        return {};
    const std::string_view grey = part.channels[0].name, alpha = part.channels[1].name;
    return grey.contains(',') || alpha.contains(',') ? std::string() : std::format("{0},{0},{0},{1}", grey, alpha);
}

}  // namespace

Source SourceOf(IImageHandler& handler, const std::string& file, int frame) {
    Source source;
    if (IsOpenExr(file)) {
        source.alpha = kAlphaPremultiplied;
        source.transfer = kTransferLinear;
    }
    const OwnedInspection inspection = Inspect(handler, file);
    if (inspection == nullptr || inspection->PartCount() == 0) return source;
    const auto index = std::min(static_cast<std::size_t>(std::max(frame, 0)), inspection->PartCount() - 1);
    const FilePart& part = inspection->Part(index);
    source.alpha = part.alpha;
    source.transfer = part.transfer;
    source.gamma = part.gamma;
    source.colourSpace = part.colourSpace;
    const auto* const profile = static_cast<const unsigned char*>(part.iccProfile);
    if (profile != nullptr) source.iccProfile.assign(profile, profile + part.iccBytes);
    source.xResolution = part.xResolution;
    source.yResolution = part.yResolution;
    source.greyWithAlpha = GreyWithAlpha(part);
    for (std::size_t i = 0; i < part.textCount; ++i)
        source.texts.push_back({part.texts[i].name, part.texts[i].value});
    return source;
}

}  // namespace Kavra::App
