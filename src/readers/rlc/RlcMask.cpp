#include "readers/rlc/RlcMask.h"

#include <algorithm>

namespace Kavra::Devices {

namespace {

/// `count` bits (up to 8) of a byte from bit `first` on, counted from the highest.
unsigned char Bits(std::size_t first, std::size_t count) {
    return static_cast<unsigned char>((0xFF00U >> count & 0xFF) >> first);
}

}  // namespace

RlcMask::RlcMask(std::int16_t columns)
    : mColumns(static_cast<std::uint16_t>(columns)), mBytes((static_cast<std::size_t>(mColumns) + 7) / 8) {}

void RlcMask::Clear() {
    std::ranges::fill(mBytes, 0);
}

bool RlcMask::SetRun(std::uint16_t start, std::uint16_t end) {
    if (start == 0 && end == mColumns) {
        std::ranges::fill(mBytes, 0xFF);
        return true;
    }
    const auto left = static_cast<std::uint16_t>(mColumns - end);
    const std::size_t length = static_cast<std::uint16_t>(mColumns - start - left);
    const std::size_t first = left / 8;
    const std::size_t offset = left % 8;
    if (first >= mBytes.size()) return false;
    if (length <= 8 - offset) {
        mBytes[first] |= Bits(offset, length);
        return true;
    }
    if (length / 8 + 1 + first >= mBytes.size()) return false;
    const std::size_t behind = offset + length - 8;
    mBytes[first] |= Bits(offset, 8 - offset);
    std::ranges::fill(std::span(mBytes).subspan(first + 1, behind / 8), 0xFF);
    if (behind % 8 != 0) mBytes[first + 1 + behind / 8] |= Bits(0, behind % 8);
    return true;
}

}  // namespace Kavra::Devices
