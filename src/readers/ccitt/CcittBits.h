/// The bits of fax data.
#pragma once

#include "common/ByteSource.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Kavra::Devices::Ccitt {

enum class BitOrder {
    kLeastSignificantFirst,
    kMostSignificantFirst,  ///< codes run from the highest bit of each byte to its lowest
};

/// Bits at hand, the next one lowest. Passed by value: decoding loops keep it in registers.
struct BitWindow {
    std::uint64_t bits = 0;
    int count = 0;  ///< zero or less only when no bit is left

    void Drop(int length) {
        bits >>= length;
        count -= length;
    }
};

/// Bits out of a byte source, row by row, with the possibility to give a row up.
///
/// A row that is given up is taken back by half: the bits that stood ready when it began stand ready again, but the
/// bytes that it drew stay drawn, and what is decoded next begins with the former and goes on behind the latter. Bytes
/// count as drawn one at a time and only when a look-up needed their bits. The windows here hold more than that, for
/// speed, so a decoder tells how far its look-ups reached.
class Input {
public:
    /// Reads on from the source's present position. The source must outlive this object.
    Input(Common::ByteSource& source, BitOrder order) : mSource(source), mOrder(order) {}

    /// The bits with which the next row begins.
    BitWindow Window() const { return mWindow; }

    /// Adds bits until there are at least 56, or all that are left. Bits beyond the last one are zeros.
    BitWindow Refill(BitWindow window) {
        if (mEnd - mNext < sizeof(std::uint64_t)) return RefillAtEdge(window);
        window.bits |= NextBits() << window.count;
        mNext += static_cast<std::size_t>(63 - window.count) >> 3;
        window.count |= 56;
        return window;
    }

    /// Where the window's next bit lies, counted in bits from the start of the data.
    std::uint64_t Position(BitWindow window) const {
        return (mStart + mNext) * 8 - static_cast<std::uint64_t>(window.count);
    }

    /// Whether a look-up that reached up to this bit took zeros for bits that are not there.
    bool IsBeyondEnd(std::uint64_t reach) const { return reach > (mStart + mNext) * 8; }

    /// Ends a row that came out. Its look-ups reached up to the bit `reach` (excluded, as counted by `Position`).
    void Keep(BitWindow window, std::uint64_t reach);
    /// Gives a row up.
    void GiveUp(std::uint64_t reach);
    /// Leaves nothing to be read.
    void Finish();

private:
    static constexpr std::size_t kBlockBytes = 8192;
    /// More than a window holds: giving a row up never leads back to before what is kept.
    static constexpr std::size_t kKeptBytes = 16;

    std::uint64_t NextBits() const {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &mBuffer[mNext], sizeof(bits));
        return std::endian::native == std::endian::little ? bits : std::byteswap(bits);
    }

    BitWindow RefillAtEdge(BitWindow window);
    bool ReadBlock();
    std::uint64_t Drawn(std::uint64_t reach) const;

    Common::ByteSource& mSource;
    BitOrder mOrder;
    std::array<unsigned char, kKeptBytes + kBlockBytes> mBuffer{};  // with the first bit of each byte lowest
    std::uint64_t mStart = 0;                                       // of the buffer in the data
    std::size_t mNext = 0;                                          // byte that no window holds yet
    std::size_t mEnd = 0;
    BitWindow mWindow;         // at the start of the row
    std::uint64_t mDrawn = 0;  // bytes, up to the start of the row
    std::uint64_t mReady = 0;  // bits of them that were left then
};

}  // namespace Kavra::Devices::Ccitt
