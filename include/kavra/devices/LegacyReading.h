/// \file
/// The two ways in which files of the old raster formats are read.
#pragma once

#include <cstdint>

namespace Kavra::Devices {

/// How PCX, PICT, FLI and FLC, band raster, CALS and RLC files are read, and the DDS files that other programs show
/// otherwise than the contract of image handlers does.
enum ELegacyReading : std::int32_t {
    kLegacyContract = 0,  ///< as the contract of image handlers has it, its oddities included
    kLegacyCommon = 1,    ///< as the published descriptions of the formats have it, and the programs that follow them
};

/// Hears of files that the two readings show differently.
class ILegacyObserver {
public:
    /// Called during a load in the contract's reading, on the thread that loads and once a load at most, for a file of
    /// which the common reading shows something else or shows anything at all; during a description of a file, where it
    /// describes nothing and the common reading would. `how` tells in English what the contract's reading does, without
    /// a period: "set bits are drawn in the first of two colours". It lives as long as the module does. Not called where
    /// a load cannot tell.
    virtual void ReadingsDiffer(const char* how) noexcept = 0;

protected:
    ~ILegacyObserver() = default;
};

}  // namespace Kavra::Devices
