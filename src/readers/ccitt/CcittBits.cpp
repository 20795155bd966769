#include "readers/ccitt/CcittBits.h"

#include <algorithm>
#include <span>

namespace Kavra::Devices::Ccitt {

namespace {

/// Each byte with its bits the other way round.
constexpr auto kReversed = [] {
    std::array<unsigned char, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            if ((byte >> bit & 1) != 0) table[byte] |= static_cast<unsigned char>(0x80 >> bit);
        }
    }
    return table;
}();

}  // namespace

BitWindow Input::RefillAtEdge(BitWindow window) {
    window.count = std::max(window.count, 0);
    while (window.count < 56) {
        if (mNext == mEnd && !ReadBlock()) break;
        window.bits |= std::uint64_t{mBuffer[mNext++]} << window.count;
        window.count += 8;
    }
    return window;
}

/// Makes space for a block behind the last bytes of the one before, and reads it. False at the end of the data.
bool Input::ReadBlock() {
    const std::size_t kept = std::min(mEnd, kKeptBytes);
    std::ranges::copy(std::span(mBuffer).subspan(mEnd - kept, kept), mBuffer.begin());
    mStart += mEnd - kept;
    const std::span<unsigned char> unused = std::span(mBuffer).subspan(kept, kBlockBytes);
    const std::span<unsigned char> block = unused.first(mSource.ReadSome(unused));
    if (mOrder == BitOrder::kMostSignificantFirst) {
        std::ranges::transform(block, block.begin(), [](unsigned char byte) { return kReversed[byte]; });
    }
    mNext = kept;
    mEnd = kept + block.size();
    return !block.empty();
}

/// The bytes drawn by a row whose look-ups reached so far.
std::uint64_t Input::Drawn(std::uint64_t reach) const {
    return std::min(std::max(mDrawn, (reach + 7) / 8), mStart + mNext);
}

void Input::Keep(BitWindow window, std::uint64_t reach) {
    const std::uint64_t position = Position(window);
    mDrawn = Drawn(reach);
    mReady = mDrawn * 8 > position ? mDrawn * 8 - position : 0;
    mWindow = window.count > 0 ? window : BitWindow{};
}

void Input::GiveUp(std::uint64_t reach) {
    mDrawn = Drawn(reach);
    mNext = static_cast<std::size_t>(mDrawn - mStart);
    mWindow.bits &= (std::uint64_t{1} << mReady) - 1;
    mWindow.count = static_cast<int>(mReady);
}

void Input::Finish() {
    mNext = mEnd;
    mDrawn = mStart + mEnd;
    mReady = 0;
    mWindow = {};
}

}  // namespace Kavra::Devices::Ccitt
