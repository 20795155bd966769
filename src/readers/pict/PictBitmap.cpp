#include "readers/pict/PictBitmap.h"

#include "common/ByteOrder.h"

#include <cstring>
#include <optional>
#include <utility>

namespace Kavra::Devices {

using Common::BigAt;
using Common::ByteSource;
using Common::Failure;
using Common::Result;

// --- Rows ------------------------------------------------------------------------------------------------------------

namespace {

constexpr unsigned kMaxRowBytesOfByteCounts = 250;
constexpr unsigned kCountSlack = 100;  // packets may make a row longer
constexpr std::size_t kNoOperation = 0x80;

/// Packets speak of bytes, but of pixels at 16 bits.
std::size_t UnitBytes(const PictRowLayout& layout) {
    return layout.pixelSize == 16 ? 2 : 1;
}

bool IsOfContract(const PictRowLayout& layout) {
    return layout.storage == PictRowStorage::kByRowBytes;
}

Result<std::size_t> ReadCount(ByteSource& source, const PictRowLayout& layout) {
    if (!layout.IsPacked()) return layout.PlainBytes();
    const auto toSize = [](auto number) { return std::size_t{number}; };
    const Result<std::size_t> count = layout.HasWordCounts() ? source.Big<std::uint16_t>().transform(toSize)
                                                             : source.Big<std::uint8_t>().transform(toSize);
    // Elsewhere the count is taken as it is: writers pack worse than they could.
    if (count && IsOfContract(layout) && *count > layout.rowBytes + kCountSlack)
        return std::unexpected(Failure::kMalformed);
    return count;
}

/// Calls `repeat(unit, bytes)` or `copy(bytes)` for each packet: a flag byte, and one unit to be repeated 257 - flag
/// times where the flag is 128 or more (as a signed byte: 1 - flag times), or else flag + 1 units. The flag 128 repeats
/// 129 times in the contract's reading; it is published to do nothing. Stops with false at a packet that is not whole
/// or gives more than `capacity` bytes in all.
template <std::size_t kUnit, class Repeat, class Copy>
bool ForEachPacket(std::span<const unsigned char> packed, std::size_t capacity, bool ofContract, Repeat repeat,
                   Copy copy) {
    while (!packed.empty()) {
        const std::size_t flag = packed.front();
        if (flag == kNoOperation && !ofContract) {
            packed = packed.subspan(1);
            continue;
        }
        const bool repeats = flag >= 0x80;
        const std::size_t given = kUnit * (repeats ? 257 - flag : flag + 1);
        const std::size_t stored = repeats ? kUnit : given;
        if (given > capacity || stored >= packed.size()) return false;
        packed = packed.subspan(1);
        if (repeats) {
            repeat(packed, given);
        } else {
            copy(packed, given);
        }
        capacity -= given;
        packed = packed.subspan(stored);
    }
    return true;
}

/// How many bytes the packets give; nothing where they are not sound.
template <std::size_t kUnit>
std::optional<std::size_t> CountBytes(std::span<const unsigned char> packed, const PictRowLayout& layout) {
    std::size_t bytes = 0;
    const auto count = [&](std::span<const unsigned char>, std::size_t given) { bytes += given; };
    if (!ForEachPacket<kUnit>(packed, layout.UnpackedBytes(), IsOfContract(layout), count, count)) return std::nullopt;
    return bytes;
}

std::optional<std::size_t> CountBytes(std::span<const unsigned char> packed, const PictRowLayout& layout) {
    return UnitBytes(layout) == 2 ? CountBytes<2>(packed, layout) : CountBytes<1>(packed, layout);
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
std::size_t UnpackInto(std::span<unsigned char> out, std::span<const unsigned char> packed, bool ofContract) {
    std::size_t used = 0;
    const auto repeat = [&](std::span<const unsigned char> rest, std::size_t bytes) {
        FillBytes<kUnit>(out.subspan(used), rest.first(kUnit), bytes);
        used += bytes;
    };
    const auto copy = [&](std::span<const unsigned char> rest, std::size_t bytes) {
        CopyBytes(out.subspan(used), rest, bytes);
        used += bytes;
    };
    (void)ForEachPacket<kUnit>(packed, out.size(), ofContract, repeat, copy);
    return used;
}

}  // namespace

bool PictRowLayout::HasWordCounts() const {
    if (!IsOfContract(*this)) return storage == PictRowStorage::kWordCounts;
    return IsDirect() || rowBytes > kMaxRowBytesOfByteCounts;
}

bool PictRowLayout::HoldsItsPixels() const {
    if (IsDirect() && IsPacked()) return true;  // what is unpacked is counted in pixels, not in row bytes
    return std::uint64_t{rowBytes} * 8 >= static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(pixelSize);
}

std::size_t PictRowLayout::PlainBytes() const {
    return storage == PictRowStorage::kWithoutPad ? 3 * static_cast<std::size_t>(width) : rowBytes;
}

std::size_t PictRowLayout::UnpackedBytes() const {
    const auto pixels = static_cast<std::size_t>(width);
    if (IsDirect() && IsPacked()) {
        if (pixelSize == 32) return pixels * static_cast<std::size_t>(components);
        return std::max<std::size_t>(2 * pixels, rowBytes & 0x7FFF);  // a row may be padded
    }
    if (IsOfContract(*this)) return rowBytes;  // which holds the pixels
    if (storage == PictRowStorage::kWithoutPad) return PlainBytes();
    return std::max<std::size_t>(rowBytes, (pixels * static_cast<std::size_t>(pixelSize) + 7) / 8);
}

Result<std::span<const unsigned char>> NextPictRow(ByteSource& source, const PictRowLayout& layout) {
    const Result<std::size_t> count = ReadCount(source, layout);
    if (!count) return std::unexpected(count.error());
    const std::span<const unsigned char> rest = source.Peek();
    return source.Skip(*count).transform([&] { return rest.first(*count); });
}

bool IsSoundPictRow(std::span<const unsigned char> stored, const PictRowLayout& layout) {
    return !layout.IsPacked() || CountBytes(stored, layout).has_value();
}

bool IsWholePictRow(std::span<const unsigned char> stored, const PictRowLayout& layout) {
    if (!layout.IsPacked()) return true;
    const std::size_t bits = static_cast<std::size_t>(layout.width) * static_cast<std::size_t>(layout.pixelSize);
    const std::size_t pixels = layout.pixelSize == 32 ? layout.UnpackedBytes() : (bits + 7) / 8;
    return CountBytes(stored, layout).value_or(0) >= pixels;
}

std::span<const unsigned char> PictRowBuffer::Unpack(std::span<const unsigned char> stored,
                                                     const PictRowLayout& layout) {
    const std::size_t bytes = layout.UnpackedBytes();
    const bool isPacked = layout.IsPacked();
    if (!isPacked && stored.size() >= bytes) return stored;
    if (mBytes.size() < bytes) mBytes.resize(bytes);
    const std::span<unsigned char> row = std::span(mBytes).first(bytes);
    const bool ofContract = IsOfContract(layout);
    std::size_t used = stored.size();
    if (!isPacked) {
        std::ranges::copy(stored, row.begin());  // a row that its pixels need more bytes than
    } else {
        used = UnitBytes(layout) == 2 ? UnpackInto<2>(row, stored, ofContract) : UnpackInto<1>(row, stored, ofContract);
    }
    const std::size_t changed = std::min(used + kStep, bytes);
    std::ranges::fill(std::span(mBytes).first(std::max(mUsed, changed)).subspan(used), 0);
    mUsed = used;
    return row;
}

// --- Bitmaps and pixel maps ------------------------------------------------------------------------------------------

namespace {

constexpr std::uint16_t kPixelMapFlag = 0x8000;  // of the row bytes; a one-bit bitmap has it clear
constexpr std::uint16_t kDeviceTableFlag = 0x8000;
constexpr int kMaxColours = 256;

template <std::size_t Count>
Result<std::array<unsigned char, Count>> Next(ByteSource& source) {
    return source.BytesAt<Count>(source.Position());
}

template <std::size_t Offset, std::size_t Size>
PictRect RectAt(const std::array<unsigned char, Size>& block) {
    return {.top = BigAt<std::int16_t, Offset>(block),
            .left = BigAt<std::int16_t, Offset + 2>(block),
            .bottom = BigAt<std::int16_t, Offset + 4>(block),
            .right = BigAt<std::int16_t, Offset + 6>(block)};
}

template <std::size_t Offset, std::size_t Size>
PictColour ColourAt(const std::array<unsigned char, Size>& block) {
    return {BigAt<std::uint16_t, Offset>(block), BigAt<std::uint16_t, Offset + 2>(block),
            BigAt<std::uint16_t, Offset + 4>(block)};
}

bool IsKnown(const PictRowLayout& layout, bool direct) {
    switch (layout.pixelSize) {
        case 1:
        case 2:
        case 4:
        case 8:
            return !direct;
        case 16:
            return direct;
        case 32:
            return direct && (layout.components == 3 || layout.components == 4);
        default:
            return false;
    }
}

Result<> Require(bool sound) {
    if (!sound) return std::unexpected(Failure::kMalformed);
    return {};
}

/// Takes the bounds and what follows from them.
Result<> SetBounds(PictRecord& record, const PictRect& bounds) {
    record.bounds = bounds;
    record.layout.width = bounds.Width();
    return Require(!bounds.IsEmpty() && record.layout.HoldsItsPixels());
}

Result<> ReadBitmapHeader(ByteSource& source, std::uint16_t rowBytes, PictRecord& record) {
    record.layout.rowBytes = rowBytes;
    record.colours = {kPictWhite, kPictBlack};
    return ReadPictRect(source).and_then([&](const PictRect& bounds) { return SetBounds(record, bounds); });
}

/// The header of a pixel map after its row bytes; what is not listed is not used.
///
///     offset  bytes  field
///          0    4x2  bounds: top, left, bottom, right
///         26      2  bits a pixel
///         28      2  components
Result<> ReadPixelMapHeader(ByteSource& source, std::uint16_t rowBytes, bool direct, PictRecord& record) {
    const auto header = Next<44>(source);
    if (!header) return std::unexpected(header.error());
    record.layout.pixelSize = BigAt<std::uint16_t, 26>(*header);
    record.layout.components = BigAt<std::uint16_t, 28>(*header);
    record.layout.rowBytes = direct ? rowBytes : rowBytes & ~kPixelMapFlag;
    if (!IsKnown(record.layout, direct)) return std::unexpected(Failure::kUnsupported);
    return SetBounds(record, RectAt<0>(*header));
}

Result<> ReadIndexedPixelMap(ByteSource& source, std::uint16_t rowBytes, PictRecord& record) {
    return ReadPixelMapHeader(source, rowBytes, false, record)
        .and_then([&] { return ReadPictColourTable(source); })
        .transform([&](std::vector<PictColour>&& colours) { record.colours = std::move(colours); });
}

Result<> ReadHeader(ByteSource& source, PictBitmapKind kind, PictRecord& record) {
    const bool direct = kind == PictBitmapKind::kDirect;
    const std::uint64_t address = direct ? 4 : 0;  // in the memory of the writer
    const Result<std::uint16_t> rowBytes = source.Skip(address).and_then([&] { return source.Big<std::uint16_t>(); });
    if (!rowBytes) return std::unexpected(rowBytes.error());
    if (direct) return ReadPixelMapHeader(source, *rowBytes, true, record);
    return (*rowBytes & kPixelMapFlag) != 0 ? ReadIndexedPixelMap(source, *rowBytes, record)
                                            : ReadBitmapHeader(source, *rowBytes, record);
}

/// Source and destination rectangle (8 bytes each), mode (2).
Result<> ReadPlacement(ByteSource& source, const PictRect& frame, PictRecord& record) {
    const auto placement = Next<18>(source);
    if (!placement) return std::unexpected(placement.error());
    record.source = RectAt<0>(*placement);
    record.destination = RectAt<8>(*placement);
    record.mode = BigAt<std::uint16_t, 16>(*placement);
    record.covered = Intersection(Intersection(record.destination, record.bounds), frame);
    return {};
}

/// Notes where the rows begin that are drawn.
Result<> LookThroughRows(ByteSource& source, PictRecord& record) {
    for (int y = record.bounds.top; y < record.bounds.bottom; ++y) {
        if (y == record.covered.top) record.rows = source.Position();
        const auto stored = NextPictRow(source, record.layout);
        if (!stored) return std::unexpected(stored.error());
        if (!IsSoundPictRow(*stored, record.layout)) return std::unexpected(Failure::kMalformed);
    }
    return {};
}

}  // namespace

Result<PictRect> ReadPictRect(ByteSource& source) {
    return Next<8>(source).transform([](const auto& bytes) { return RectAt<0>(bytes); });
}

Result<PictColour> ReadPictColour(ByteSource& source) {
    return Next<6>(source).transform([](const auto& bytes) { return ColourAt<0>(bytes); });
}

/// A seed (4 bytes), flags (2), the number of the last entry (2, signed: -1 where there is none); then the entries: a
/// number, red, green, blue (2 each). The number says where an entry belongs unless the table is a device's, or has no
/// such place.
Result<std::vector<PictColour>> ReadPictColourTable(ByteSource& source) {
    const auto header = Next<8>(source);
    if (!header) return std::unexpected(header.error());
    const bool inOrder = (BigAt<std::uint16_t, 4>(*header) & kDeviceTableFlag) != 0;
    const int count = std::max(BigAt<std::int16_t, 6>(*header) + 1, 0);
    std::vector<PictColour> colours(static_cast<std::size_t>(std::min(count, kMaxColours)));
    for (int i = 0; i < count; ++i) {
        const auto entry = Next<8>(source);
        if (!entry) return std::unexpected(entry.error());
        const int number = BigAt<std::uint16_t, 0>(*entry);
        const auto place = static_cast<std::size_t>(inOrder || number >= count ? i : number);
        if (place < colours.size()) colours[place] = ColourAt<2>(*entry);
    }
    return colours;
}

Result<> SkipPictRegion(ByteSource& source) {
    const Result<std::uint16_t> size = source.Big<std::uint16_t>();
    if (!size) return std::unexpected(size.error());
    return Require(*size >= 2).and_then([&] { return source.Skip(*size - 2U); });
}

Result<> SkipPictPattern(ByteSource& source) {
    const Result<std::uint16_t> kind = source.Big<std::uint16_t>();
    if (!kind) return std::unexpected(kind.error());
    if (const Result<> bits = source.Skip(8); !bits) return bits;
    switch (*kind) {
        case 0:
            return {};
        case 1: {
            PictRecord pattern;
            return source.Big<std::uint16_t>()
                .and_then([&](std::uint16_t rowBytes) { return ReadIndexedPixelMap(source, rowBytes, pattern); })
                .and_then([&] { return LookThroughRows(source, pattern); });
        }
        case 2:
            return ReadPictColour(source).transform([](const PictColour&) {});
        default:
            return std::unexpected(Failure::kMalformed);  // of no known length
    }
}

Result<PictRecord> ReadPictRecord(ByteSource& source, PictBitmapKind kind, const PictRect& frame) {
    PictRecord record;
    const bool hasRegion = kind == PictBitmapKind::kIndexedRegion;
    return ReadHeader(source, kind, record)
        .and_then([&] { return ReadPlacement(source, frame, record); })
        .and_then([&] { return hasRegion ? SkipPictRegion(source) : Result<>(); })
        .and_then([&] { return LookThroughRows(source, record); })
        .transform([&] { return std::move(record); });
}

}  // namespace Kavra::Devices
