#include "readers/rlc/RlcProbe.h"

#include "common/Limits.h"
#include "readers/rlc/RlcTrailer.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace Kavra::Devices {

namespace {

constexpr std::int64_t kFewestBytes = 5;

/// Whether the bytes between the two sizes and the end can be so many rows. A row of the most runs is counted as it
/// always was, a little short: files that come close to it are not taken. The largest sizes allow for
/// less than 2 GiB.
bool LengthFits(std::int64_t length, std::int64_t rows, std::int64_t columns) {
    constexpr std::uint64_t kMinRowBytes = 2;  // the number of its runs
    return rows >= 1 && columns >= 1 &&
           Common::CanHold(static_cast<std::uint64_t>(length), static_cast<std::uint64_t>(rows), kMinRowBytes) &&
           length <= (columns + 1) * rows * 2;
}

/// The runs of a row follow one another inside it. Positions are compared with each other as unsigned numbers and
/// with the columns as signed ones.
bool RunsFit(ByteSource& source, int runs, std::int16_t columns) {
    std::uint16_t end = 0;
    for (int run = 0; run < runs; ++run) {
        const auto start = source.Big<std::uint16_t>();
        const auto stop = source.Big<std::uint16_t>();
        if (!start || !stop) return false;
        if (*start < end || static_cast<std::int16_t>(*start) > columns) return false;
        if (*stop < *start || static_cast<std::int16_t>(*stop) > columns) return false;
        end = *stop;
    }
    return true;
}

bool RowsFit(ByteSource& source, int rows, std::int16_t columns) {
    for (int row = 0; row < rows; ++row) {
        const auto runs = source.Big<std::int16_t>();
        if (!runs || (*runs <= 0 && rows == 1) || !RunsFit(source, *runs, columns)) return false;
    }
    return true;
}

}  // namespace

bool IsRlc(ByteSource& source) {
    const auto length = static_cast<std::int64_t>(source.Size());
    if (length < kFewestBytes) return false;
    const std::optional<RlcTrailer> trailer = ReadRlcTrailer(source);
    if (!source.Seek(0)) return false;
    const auto rows = source.Big<std::int16_t>();
    const auto columns = source.Big<std::int16_t>();
    if (!rows || !columns || !LengthFits(length, *rows, *columns)) return false;

    const bool limited = trailer && HasDirectory(*trailer);
    const int checkedRows = limited ? std::min<int>(*rows, std::max(*rows / 4, 100)) : *rows;
    return RowsFit(source, checkedRows, *columns);
}

}  // namespace Kavra::Devices
