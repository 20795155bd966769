#include "readers/pict/PictPixelMap.h"

#include "common/ByteOrder.h"

#include <algorithm>
#include <utility>

namespace Kavra::Devices {

using Common::BigAt;
using Common::ByteSource;
using Common::Result;

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

/// Takes the bounds and what follows from them.
bool SetBounds(PictRecord& record, const PictRect& bounds) {
    record.bounds = bounds;
    record.layout.width = bounds.Width();
    return !bounds.IsEmpty() && record.layout.HoldsItsPixels();
}

bool ReadBitmapHeader(ByteSource& source, std::uint16_t rowBytes, PictRecord& record) {
    record.layout.rowBytes = rowBytes;
    record.colours = {kPictWhite, kPictBlack};
    const std::optional<PictRect> bounds = ReadPictRect(source);
    return bounds && SetBounds(record, *bounds);
}

/// The header of a pixel map after its row bytes; what is not listed is not used.
///
///     offset  bytes  field
///          0    4x2  bounds: top, left, bottom, right
///         26      2  bits a pixel
///         28      2  components
bool ReadPixelMapHeader(ByteSource& source, std::uint16_t rowBytes, bool direct, PictRecord& record) {
    const auto header = Next<44>(source);
    if (!header) return false;
    record.layout.pixelSize = BigAt<std::uint16_t, 26>(*header);
    record.layout.components = BigAt<std::uint16_t, 28>(*header);
    record.layout.rowBytes = direct ? rowBytes : rowBytes & ~kPixelMapFlag;
    return IsKnown(record.layout, direct) && SetBounds(record, RectAt<0>(*header));
}

/// A seed (4 bytes), flags (2), the number of the last entry (2, signed: -1 where there is none); then the entries: a
/// number, red, green, blue (2 each). The number says where an entry belongs unless the table is a device's, or has no
/// such place.
std::optional<std::vector<PictColour>> ReadColourTable(ByteSource& source) {
    const auto header = Next<8>(source);
    if (!header) return std::nullopt;
    const bool inOrder = (BigAt<std::uint16_t, 4>(*header) & kDeviceTableFlag) != 0;
    const int count = std::max(BigAt<std::int16_t, 6>(*header) + 1, 0);
    std::vector<PictColour> colours(static_cast<std::size_t>(std::min(count, kMaxColours)));
    for (int i = 0; i < count; ++i) {
        const auto entry = Next<8>(source);
        if (!entry) return std::nullopt;
        const int number = BigAt<std::uint16_t, 0>(*entry);
        const auto place = static_cast<std::size_t>(inOrder || number >= count ? i : number);
        if (place < colours.size()) colours[place] = ColourAt<2>(*entry);
    }
    return colours;
}

bool ReadIndexedPixelMap(ByteSource& source, std::uint16_t rowBytes, PictRecord& record) {
    if (!ReadPixelMapHeader(source, rowBytes, false, record)) return false;
    std::optional<std::vector<PictColour>> colours = ReadColourTable(source);
    if (!colours) return false;
    record.colours = std::move(*colours);
    return true;
}

bool ReadHeader(ByteSource& source, PictBitmapKind kind, PictRecord& record) {
    const bool direct = kind == PictBitmapKind::kDirect;
    if (direct && !source.Skip(4)) return false;  // an address in the memory of the writer
    const Result<std::uint16_t> rowBytes = source.Big<std::uint16_t>();
    if (!rowBytes) return false;
    if (direct) return ReadPixelMapHeader(source, *rowBytes, true, record);
    return (*rowBytes & kPixelMapFlag) != 0 ? ReadIndexedPixelMap(source, *rowBytes, record)
                                            : ReadBitmapHeader(source, *rowBytes, record);
}

/// Source and destination rectangle (8 bytes each), mode (2).
bool ReadPlacement(ByteSource& source, const PictRect& frame, PictRecord& record) {
    const auto placement = Next<18>(source);
    if (!placement) return false;
    record.source = RectAt<0>(*placement);
    record.destination = RectAt<8>(*placement);
    record.mode = BigAt<std::uint16_t, 16>(*placement);
    record.covered = Intersection(Intersection(record.destination, record.bounds), frame);
    return true;
}

/// Notes where the rows begin that are drawn.
bool LookThroughRows(ByteSource& source, PictRecord& record) {
    for (int y = record.bounds.top; y < record.bounds.bottom; ++y) {
        if (y == record.covered.top) record.rows = source.Position();
        const auto stored = NextPictRow(source, record.layout);
        if (!stored || !IsSoundPictRow(*stored, record.layout)) return false;
    }
    return true;
}

}  // namespace

std::optional<PictRect> ReadPictRect(ByteSource& source) {
    const auto bytes = Next<8>(source);
    if (!bytes) return std::nullopt;
    return RectAt<0>(*bytes);
}

std::optional<PictColour> ReadPictColour(ByteSource& source) {
    const auto bytes = Next<6>(source);
    if (!bytes) return std::nullopt;
    return ColourAt<0>(*bytes);
}

bool SkipPictRegion(ByteSource& source) {
    const Result<std::uint16_t> size = source.Big<std::uint16_t>();
    return size && *size >= 2 && source.Skip(*size - 2U);
}

bool SkipPictPattern(ByteSource& source) {
    const Result<std::uint16_t> kind = source.Big<std::uint16_t>();
    if (!kind || !source.Skip(8)) return false;
    switch (*kind) {
        case 0:
            return true;
        case 1: {
            PictRecord pattern;
            const Result<std::uint16_t> rowBytes = source.Big<std::uint16_t>();
            return rowBytes && ReadIndexedPixelMap(source, *rowBytes, pattern) && LookThroughRows(source, pattern);
        }
        case 2:
            return ReadPictColour(source).has_value();
        default:
            return false;  // of no known length
    }
}

std::optional<PictRecord> ReadPictRecord(ByteSource& source, PictBitmapKind kind, const PictRect& frame) {
    PictRecord record;
    if (!ReadHeader(source, kind, record) || !ReadPlacement(source, frame, record)) return std::nullopt;
    if (kind == PictBitmapKind::kIndexedRegion && !SkipPictRegion(source)) return std::nullopt;
    if (!LookThroughRows(source, record)) return std::nullopt;
    return record;
}

}  // namespace Kavra::Devices
