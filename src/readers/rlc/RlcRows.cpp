#include "readers/rlc/RlcRows.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kNumberBytes = 2;
constexpr std::size_t kRunBytes = 2 * kNumberBytes;

std::uint16_t BigNumber(std::span<const unsigned char> bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

}  // namespace

RlcRows::RlcRows(ByteSource& source) : mSource(source), mRuns(source.Big<std::int16_t>().value_or(0)) {}

bool RlcRows::ReadInto(RlcMask& mask, bool isLast) {
    const std::size_t runBytes = kRunBytes * static_cast<std::size_t>(std::max<int>(mRuns, 0));
    const std::size_t rowBytes = runBytes + (isLast ? 0 : kNumberBytes);
    if (mNumbers.size() < rowBytes) mNumbers.resize(rowBytes);
    const auto row =
        std::span<const unsigned char>(mNumbers).first(mSource.ReadSome(std::span(mNumbers).first(rowBytes)));
    const bool hasNext = row.size() == runBytes + kNumberBytes;
    mRuns = hasNext ? static_cast<std::int16_t>(BigNumber(row.subspan(runBytes))) : std::int16_t{0};

    for (std::size_t run = std::min(row.size(), runBytes) / kRunBytes; run-- > 0;) {
        const auto numbers = row.subspan(run * kRunBytes, kRunBytes);
        if (!mask.SetRun(BigNumber(numbers), BigNumber(numbers.subspan(kNumberBytes)))) return false;
    }
    return true;
}

}  // namespace Kavra::Devices
