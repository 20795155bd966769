#include "common/KnownFields.h"
#include "frame/host/devices/OperationProgress.h"

#include <kavra/devices/LastFailure.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kTextCapacity = 1024;  ///< with the final zero

/// In UTF-8 no character is cut in two.
std::size_t CutLength(const char* text) {
    std::size_t length = strnlen(text, kTextCapacity);
    if (length < kTextCapacity) return length;
    --length;
    constexpr unsigned char kTopBits = 0xC0, kContinuation = 0x80;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & kTopBits) == kContinuation)
        --length;
    return length;
}

struct ThreadsFailure {
    FailureReport report;
    std::array<char, kTextCapacity> text{};
};

constinit thread_local ThreadsFailure tFailure;
constinit thread_local int tOperations = 0;  ///< that are under way, one within another

/// Whatever else was said: ways that were tried before, and those that did not come to an end.
void SayStopped() noexcept {
    ClearLastFailure();
    FailureReport stopped;
    stopped.kind = kFailureCancelled;
    stopped.text = "stopped";
    SetLastFailure(stopped);
}

}  // namespace

void GetLastFailure(FailureReport& report) {
    Common::CopyKnownFields(tFailure.report, report);
}

void SetLastFailure(const FailureReport& report) noexcept {
    if (tFailure.report.kind != kFailureNone) return;
    Common::CopyKnownFields(report, tFailure.report);
    const char* const text = tFailure.report.text != nullptr ? tFailure.report.text : "";
    const std::size_t length = CutLength(text);
    std::memcpy(tFailure.text.data(), text, length);
    tFailure.text[length] = '\0';
    tFailure.report.text = tFailure.text.data();
}

void ClearLastFailure() noexcept {
    tFailure.report = {};
}

void BeginOperation() noexcept {
    if (tOperations++ != 0) return;
    ClearLastFailure();
    ForgetProgress();
}

void EndOperation(bool hasAnswered) noexcept {
    if (--tOperations != 0) return;
    if (!hasAnswered) {
        if (IsStopped()) SayStopped();
        FailureReport unknown;
        unknown.kind = kFailureOther;
        unknown.text = "it failed, and nothing is known of why";
        SetLastFailure(unknown);
    } else if (tFailure.report.kind != kFailureEndsEarly) {
        ClearLastFailure();
    }
}

}  // namespace Kavra::Devices
