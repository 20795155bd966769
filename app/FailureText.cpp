#include "FailureText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

struct Advice {
    std::string_view words;  ///< of the text
    std::string_view text;
};

/// What limits are raised by; a block of memory that is too small is raised by nothing.
constexpr auto kLimitAdvice = std::to_array<Advice>({{" bytes, and the limit is ", "; --max-bytes raises it"},
                                                     {" pixels, and the limit is ", "; --max-pixels raises it"}});

std::string WithAdvice(std::string text, EFailureKind kind) {
    if (kind == kFailureTooLarge) {
        for (const Advice& advice : kLimitAdvice) {
            if (text.contains(advice.words)) return "too large: " + text.append(advice.text);
        }
    }
    return text;
}

}  // namespace

Reason LastReason() {
    const FailureReport report = LastFailure();
    if (report.kind == kFailureNone) return {};
    return {.kind = report.kind,
            .text = WithAdvice(report.text, report.kind),
            .position = report.position,
            .goodRows = report.goodRows,
            .rows = report.rows};
}

Reason OwnReason(std::string_view text, EFailureKind otherwise) {
    static constexpr auto kErrors = std::to_array<std::pair<int, EFailureKind>>({{ENOSPC, kFailureDiskFull},
                                                                                 {EDQUOT, kFailureDiskFull},
                                                                                 {ENOMEM, kFailureOutOfMemory},
                                                                                 {EISDIR, kFailureIsFolder},
                                                                                 {EACCES, kFailureNoPermission},
                                                                                 {EPERM, kFailureNoPermission},
                                                                                 {ENOTDIR, kFailureCannotWrite},
                                                                                 {EROFS, kFailureCannotWrite},
                                                                                 {EFBIG, kFailureCannotWrite}});
    const auto* const error = std::ranges::find_if(
        kErrors, [&](const auto& known) { return text.ends_with(std::generic_category().message(known.first)); });
    return {.kind = error == kErrors.end() ? otherwise : error->second, .text = std::string(text)};
}

std::string_view KindWord(EFailureKind kind) {
    switch (kind) {
        case kFailureNone:
            return "";
        case kFailureNoSuchFile:
            return "noSuchFile";
        case kFailureIsFolder:
            return "isFolder";
        case kFailureNoPermission:
            return "noPermission";
        case kFailureNoRegularFile:
            return "noRegularFile";
        case kFailureEmptyFile:
            return "emptyFile";
        case kFailureNotAnImage:
            return "notAnImage";
        case kFailureUnknownType:
            return "unknownType";
        case kFailureUnsupported:
            return "unsupported";
        case kFailureDamaged:
            return "damaged";
        case kFailureEndsEarly:
            return "endsEarly";
        case kFailureTooLarge:
            return "tooLarge";
        case kFailureOutOfMemory:
            return "outOfMemory";
        case kFailureOutOfRange:
            return "outOfRange";
        case kFailureFormat:
            return "format";
        case kFailureArguments:
            return "arguments";
        case kFailureCannotRead:
            return "cannotRead";
        case kFailureCannotWrite:
            return "cannotWrite";
        case kFailureDiskFull:
            return "diskFull";
        case kFailureCancelled:
            return "cancelled";
        case kFailureTimedOut:
            return "timedOut";
        case kFailureDecoderDied:
            return "decoderDied";
        case kFailureOther:
            break;
    }
    return "other";
}

void AddReason(nlohmann::ordered_json& json, const Reason& reason) {
    json["error"] = reason.text;
    json["kind"] = KindWord(reason.IsKnown() ? reason.kind : kFailureOther);
    if (reason.position >= 0) json["position"] = reason.position;
    if (reason.goodRows >= 0) json["goodRows"] = reason.goodRows;
    if (reason.rows >= 0) json["rows"] = reason.rows;
}

}  // namespace Kavra::App
