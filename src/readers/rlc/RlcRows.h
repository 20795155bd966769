/// The rows of an RLC raster, one after another.
#pragma once

#include "readers/ByteSource.h"
#include "readers/rlc/RlcMask.h"

#include <cstdint>
#include <vector>

namespace Kavra::Devices {

/// Each row's runs are followed by the number of runs of the next. Where the file ends, the runs that are not whole do
/// not exist, nor do those of later rows.
class RlcRows {
public:
    /// Stands at the first row's number of runs. The source must outlive this object.
    explicit RlcRows(ByteSource& source);

    /// Applies the runs of the next row from the last to the first. False when one of them is refused, which leaves
    /// those before it unapplied; the row behind can be read all the same. `isLast` says that no row follows.
    [[nodiscard]] bool ReadInto(RlcMask& mask, bool isLast);

private:
    ByteSource& mSource;
    std::int16_t mRuns;
    std::vector<unsigned char> mNumbers;  // of a row, as in the file
};

}  // namespace Kavra::Devices
