#include "readers/pict/PictRows.h"

#include <cstdint>
#include <cstring>

namespace Kavra::Devices {

namespace {

constexpr unsigned kMostRowBytesOfByteCounts = 250;
constexpr unsigned kCountSlack = 100;  // packets may make a row longer

/// Packets speak of bytes, but of pixels at 16 bits.
std::size_t UnitBytes(const PictRowLayout& layout) {
    return layout.pixelSize == 16 ? 2 : 1;
}

std::optional<unsigned> ReadCount(ByteSource& source, const PictRowLayout& layout) {
    if (!layout.IsPacked()) return layout.rowBytes;
    const bool wide = layout.IsDirect() || layout.rowBytes > kMostRowBytesOfByteCounts;
    const ReadResult<unsigned> count = wide ? source.Big<std::uint16_t>().transform([](auto n) { return unsigned{n}; })
                                            : source.Big<std::uint8_t>().transform([](auto n) { return unsigned{n}; });
    if (!count || *count > layout.rowBytes + kCountSlack) return std::nullopt;
    return *count;
}

/// Calls `repeat(unit, bytes)` or `copy(bytes)` for each packet: a flag byte, and one unit to be repeated 1 - flag
/// times where the flag is negative (-128 included), or else flag + 1 units. Stops with false at a packet that is not
/// whole or gives more than `room` bytes in all.
template <std::size_t kUnit, class Repeat, class Copy>
bool ForEachPacket(std::span<const unsigned char> packed, std::size_t room, Repeat repeat, Copy copy) {
    while (!packed.empty()) {
        const int flag = static_cast<signed char>(packed.front());
        const bool repeats = flag < 0;
        const std::size_t given = kUnit * static_cast<std::size_t>(1 + (repeats ? -flag : flag));
        const std::size_t stored = repeats ? kUnit : given;
        if (given > room || stored >= packed.size()) return false;
        if (repeats) {
            repeat(packed.subspan(1, stored), given);
        } else {
            copy(packed.subspan(1, stored));
        }
        room -= given;
        packed = packed.subspan(1 + stored);
    }
    return true;
}

template <std::size_t kUnit>
bool IsSound(std::span<const unsigned char> packed, std::size_t room) {
    return ForEachPacket<kUnit>(packed, room, [](auto, std::size_t) {}, [](auto) {});
}

/// Returns how many bytes were unpacked.
template <std::size_t kUnit>
std::size_t UnpackInto(std::span<unsigned char> out, std::span<const unsigned char> packed) {
    std::size_t used = 0;
    const auto repeat = [&](std::span<const unsigned char> unit, std::size_t bytes) {
        unsigned char* to = out.subspan(used, bytes).data();
        if constexpr (kUnit == 1) {
            std::memset(to, unit.front(), bytes);
        } else {
            for (std::size_t at = 0; at < bytes; at += kUnit)
                std::memcpy(to + at, unit.data(), kUnit);
        }
        used += bytes;
    };
    const auto copy = [&](std::span<const unsigned char> bytes) {
        std::memcpy(out.subspan(used, bytes.size()).data(), bytes.data(), bytes.size());
        used += bytes.size();
    };
    (void)ForEachPacket<kUnit>(packed, out.size(), repeat, copy);
    return used;
}

}  // namespace

bool PictRowLayout::HoldsItsPixels() const {
    if (IsDirect() && IsPacked()) return true;  // what is unpacked is counted in pixels, not in row bytes
    return std::uint64_t{rowBytes} * 8 >= static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(pixelSize);
}

std::size_t PictRowLayout::UnpackedBytes() const {
    const auto pixels = static_cast<std::size_t>(width);
    if (!IsDirect() || !IsPacked()) return rowBytes;
    if (pixelSize == 32) return pixels * static_cast<std::size_t>(components);
    return std::max<std::size_t>(2 * pixels, rowBytes & 0x7FFF);  // a row may be padded
}

std::optional<std::span<const unsigned char>> NextPictRow(ByteSource& source, const PictRowLayout& layout) {
    const std::optional<unsigned> count = ReadCount(source, layout);
    if (!count) return std::nullopt;
    const std::span<const unsigned char> rest = source.Peek();
    if (!source.Skip(*count)) return std::nullopt;
    return rest.first(*count);
}

bool IsSoundPictRow(std::span<const unsigned char> stored, const PictRowLayout& layout) {
    if (!layout.IsPacked()) return true;
    return UnitBytes(layout) == 2 ? IsSound<2>(stored, layout.UnpackedBytes())
                                  : IsSound<1>(stored, layout.UnpackedBytes());
}

std::span<const unsigned char> PictRowBuffer::Unpack(std::span<const unsigned char> stored,
                                                     const PictRowLayout& layout) {
    if (!layout.IsPacked()) return stored;
    const std::size_t bytes = layout.UnpackedBytes();
    if (mBytes.size() < bytes) mBytes.resize(bytes);
    const std::span<unsigned char> row = std::span(mBytes).first(bytes);
    const std::size_t used = UnitBytes(layout) == 2 ? UnpackInto<2>(row, stored) : UnpackInto<1>(row, stored);
    if (used < mUsed) std::memset(mBytes.data() + used, 0, mUsed - used);
    mUsed = used;
    return row;
}

}  // namespace Kavra::Devices
