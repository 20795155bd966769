#include "readers/ccitt/CcittRow.h"

#include <algorithm>

namespace Kavra::Devices::Ccitt {

namespace {

/// Sets the bits from `begin` (included) to `end` (excluded).
void SetBits(std::span<unsigned char> packed, std::size_t begin, std::size_t end) {
    if (begin >= end) return;
    const std::size_t first = begin / 8;
    const std::size_t last = (end - 1) / 8;
    const unsigned head = 0xFFU >> begin % 8;
    const unsigned tail = 0xFF00U >> ((end - 1) % 8 + 1);
    if (first == last) {
        packed[first] |= static_cast<unsigned char>(head & tail);
        return;
    }
    packed[first] |= static_cast<unsigned char>(head);
    std::ranges::fill(packed.subspan(first + 1, last - first - 1), 0xFF);
    packed[last] |= static_cast<unsigned char>(tail);
}

}  // namespace

Row::Row(std::int32_t width) : mWidth(width), mEnds(Capacity() + 5) {
    Close(1);
}

void Row::Close(std::size_t count) {
    mCount = count;
    std::fill_n(mEnds.begin() + static_cast<std::ptrdiff_t>(count), 3, mWidth);
}

void Row::Fill(std::span<unsigned char> packed) const {
    std::ranges::fill(packed, 0);
    const std::span<const std::int32_t> ends(Ends(), mCount);
    for (std::size_t black = 1; black < ends.size(); black += 2) {
        SetBits(packed, static_cast<std::size_t>(ends[black - 1]), static_cast<std::size_t>(ends[black]));
    }
}

}  // namespace Kavra::Devices::Ccitt
