/// What the common reading shows otherwise of a picture that is read as the contract has it.
#pragma once

#include "common/ByteSource.h"
#include "readers/pcx/PcxCommonRows.h"
#include "readers/pcx/PcxReader.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Decodes the picture a second time, in the common reading, and looks at it row by row.
class PcxComparison {
public:
    /// `source` is the picture's own, with a position of its own, and outlives the comparison. `palette` is the
    /// contract's, null for 24 bits.
    PcxComparison(Common::ByteSource& source, const PcxHeader& header, const PcxPalette* palette);

    /// Takes the next row as the contract's reading shows it.
    void Look(std::span<const unsigned char> pixels);

    /// How the contract's reading came to show another picture, for `Reading::IsCommon`; null where it did not. `lines`
    /// are those that it read.
    const char* Difference(const PcxLines& lines) const;

private:
    const char* HowColoursDiffer(const PcxPalette& palette) const;

    PcxHeader mHeader;
    PcxCommonColours mColours;
    const char* mHow = nullptr;          // the colours and planes differ, if they do
    std::optional<PcxCommonRows> mRows;  // nothing where the common reading does not show the picture
    std::vector<unsigned char> mRow;
    bool mIsOther = false;
};

}  // namespace Kavra::Devices
