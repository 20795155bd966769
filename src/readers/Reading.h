/// Which of its two readings a legacy file gets.
#pragma once

#include <kavra/devices/LegacyReading.h>

namespace Kavra::Devices {

/// Asked by readers and decoders wherever the two readings part, so that what differs stands side by side:
///
///     const bool isSetSecond = reading.IsCommon("set bits are drawn in the first of two colours");
///
/// Remembers the first answer in which the common reading would have gone another way. One thread at a time.
class Reading {
public:
    explicit Reading(ELegacyReading reading = kLegacyContract) : mIsCommon(reading == kLegacyCommon) {}

    bool IsCommon() const { return mIsCommon; }

    /// Whether to go the common way. Asked only where that leads to another picture of this file; `how` tells, for
    /// `ILegacyObserver`, what the contract's way is, and lives for ever.
    bool IsCommon(const char* how) {
        if (!mIsCommon && mDifference == nullptr) mDifference = how;
        return mIsCommon;
    }

    /// What the contract's reading did differently since the reading was made, or null.
    const char* Difference() const { return mDifference; }

private:
    bool mIsCommon;
    const char* mDifference = nullptr;
};

}  // namespace Kavra::Devices
