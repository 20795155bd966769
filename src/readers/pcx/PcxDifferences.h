/// What the common reading shows otherwise of a picture that is read as the contract has it.
#pragma once

#include "common/ByteSource.h"
#include "readers/Reading.h"
#include "readers/pcx/PcxReader.h"

#include <cstdint>

namespace Kavra::Devices {

/// Asks the reading for everything in which the two differ over one picture.
class PcxDifferences {
public:
    /// Compares the colours. `palette` is null for 24 bits. Moves the source.
    PcxDifferences(Reading& reading, Common::ByteSource& source, const PcxHeader& header, const PcxPalette* palette);

    /// Compares where the lines stood, once all are read.
    void CompareLines(const PcxLines& lines);

private:
    void CompareColours(Common::ByteSource& source, const PcxHeader& common, const PcxPalette& palette);

    Reading& mReading;
    PcxHeader mHeader;
    std::uint64_t mDataEnd = 0;  // by the common reading
};

}  // namespace Kavra::Devices
