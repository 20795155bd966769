#include "readers/pict/PictRows.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

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
    const Result<unsigned> count = wide ? source.Big<std::uint16_t>().transform([](auto n) { return unsigned{n}; })
                                            : source.Big<std::uint8_t>().transform([](auto n) { return unsigned{n}; });
    if (!count || *count > layout.rowBytes + kCountSlack) return std::nullopt;
    return *count;
}

/// Calls `repeat(unit, bytes)` or `copy(bytes)` for each packet: a flag byte, and one unit to be repeated 257 - flag
/// times where the flag is 128 or more (as a signed byte: 1 - flag times), or else flag + 1 units. Stops with false at
/// a packet that is not whole or gives more than `room` bytes in all.
template <std::size_t kUnit, class Repeat, class Copy>
bool ForEachPacket(std::span<const unsigned char> packed, std::size_t room, Repeat repeat, Copy copy) {
    while (!packed.empty()) {
        const std::size_t flag = packed.front();
        const bool repeats = flag >= 0x80;
        const std::size_t given = kUnit * (repeats ? 257 - flag : flag + 1);
        const std::size_t stored = repeats ? kUnit : given;
        if (given > room || stored >= packed.size()) return false;
        packed = packed.subspan(1);
        if (repeats) {
            repeat(packed, given);
        } else {
            copy(packed, given);
        }
        room -= given;
        packed = packed.subspan(stored);
    }
    return true;
}

template <std::size_t kUnit>
bool IsSound(std::span<const unsigned char> packed, std::size_t room) {
    const auto nothing = [](std::span<const unsigned char>, std::size_t) {};
    return ForEachPacket<kUnit>(packed, room, nothing, nothing);
}

// Most packets are short: a step or two of a fixed size takes less time than finding out how to copy so few bytes. A
// step may go on behind the packet's bytes, never behind a span.
constexpr std::size_t kStep = 16;

constexpr std::size_t WholeSteps(std::size_t bytes) {
    return (bytes + kStep - 1) / kStep * kStep;
}

/// Copies `bytes` bytes from the start of `from` to that of `to`.
void CopyBytes(std::span<unsigned char> to, std::span<const unsigned char> from, std::size_t bytes) {
    if (WholeSteps(bytes) > std::min(to.size(), from.size())) {
        std::memcpy(to.data(), from.data(), bytes);
        return;
    }
    for (std::size_t at = 0; at < bytes; at += kStep)
        std::memcpy(to.data() + at, from.data() + at, kStep);
}

/// Fills `bytes` bytes from the start of `to` with a unit.
template <std::size_t kUnit>
void FillBytes(std::span<unsigned char> to, std::span<const unsigned char> unit, std::size_t bytes) {
    std::array<unsigned char, kStep> pattern;
    for (std::size_t at = 0; at < kStep; ++at)
        pattern[at] = unit[at % kUnit];
    if (WholeSteps(bytes) > to.size()) {
        for (std::size_t at = 0; at < bytes; ++at)
            to[at] = pattern[at % kUnit];
        return;
    }
    for (std::size_t at = 0; at < bytes; at += kStep)
        std::memcpy(to.data() + at, pattern.data(), kStep);
}

/// Returns how many bytes were unpacked. Less than a step behind them may have changed, too.
template <std::size_t kUnit>
std::size_t UnpackInto(std::span<unsigned char> out, std::span<const unsigned char> packed) {
    std::size_t used = 0;
    const auto repeat = [&](std::span<const unsigned char> rest, std::size_t bytes) {
        FillBytes<kUnit>(out.subspan(used), rest.first(kUnit), bytes);
        used += bytes;
    };
    const auto copy = [&](std::span<const unsigned char> rest, std::size_t bytes) {
        CopyBytes(out.subspan(used), rest, bytes);
        used += bytes;
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
    const std::size_t changed = std::min(used + kStep, bytes);
    std::ranges::fill(std::span(mBytes).first(std::max(mUsed, changed)).subspan(used), 0);
    mUsed = used;
    return row;
}

}  // namespace Kavra::Devices
