/// What the next bits of fax data mean, looked up at one stroke.
#pragma once

#include "readers/ccitt/CcittCodes.h"

#include <array>
#include <cstdint>

namespace Kavra::Devices::Ccitt {

/// What a code word tells the decoder to do.
enum class State : std::uint8_t {
    kInvalid = 0,
    kPass = 1,
    kHorizontal = 2,
    kVertical = 3,
    kVerticalRight = 4,  ///< by `parameter` pixels
    kVerticalLeft = 5,   ///< by `parameter` pixels
    kExtension = 6,
    kWhiteTerminating = 7,  ///< a run of `parameter` pixels, or the rest of one
    kBlackTerminating = 8,
    kWhiteMakeUp = 9,  ///< `parameter` pixels of a run that goes on
    kBlackMakeUp = 10,
    kCommonMakeUp = 11,
    kEndOfLine = 12,
};

struct TableEntry {
    State state = State::kInvalid;
    std::uint8_t length = 0;  ///< bits of the code word
    std::uint16_t parameter = 0;

    bool operator==(const TableEntry&) const = default;
};

/// Tables are indexed by the next bits of the data, the first of them lowest. A code word that is shorter than the
/// index stands at every index that begins with it.
inline constexpr int kMainBits = 7;
inline constexpr int kWhiteBits = 12;
inline constexpr int kBlackBits = 13;

/// Two-dimensional coding. The zeros that an end of line begins with stand at 0; there is no invalid entry.
extern const std::array<TableEntry, 1 << kMainBits> kMainTable;

/// Run lengths. The entry of an end of line covers its first eleven zeros, which any number of further ones may follow.
extern const std::array<TableEntry, 1 << kWhiteBits> kWhiteTable;
extern const std::array<TableEntry, 1 << kBlackBits> kBlackTable;

}  // namespace Kavra::Devices::Ccitt
