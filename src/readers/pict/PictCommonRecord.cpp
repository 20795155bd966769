#include "readers/pict/PictCommonRecord.h"

#include "common/Limits.h"
#include "readers/pict/PictStream.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <span>
#include <utility>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

// --- Where a bitmap is drawn -----------------------------------------------------------------------------------------

namespace {

/// The places of an axis that show something between `first` and `last` of the bitmap, `last` excluded.
std::pair<int, int> Shown(const PictAxis& axis, int first, int last) {
    const auto places = std::views::iota(axis.page, axis.page + axis.pageLength);
    const auto at = [&](int place) { return axis.At(place); };
    const auto begin = std::ranges::lower_bound(places, first, {}, at);
    const auto end = std::ranges::lower_bound(places, last, {}, at);
    return {axis.page + static_cast<int>(begin - places.begin()), axis.page + static_cast<int>(end - places.begin())};
}

std::uint64_t Pixels(std::uint64_t columns, std::uint64_t rows) {
    return Common::Product<std::uint64_t>(columns, rows);
}

}  // namespace

PictAxis PictCommonRecord::Columns() const {
    return {bitmap.destination.left, bitmap.destination.Width(), bitmap.source.left, bitmap.source.Width()};
}

PictAxis PictCommonRecord::Rows() const {
    return {bitmap.destination.top, bitmap.destination.Height(), bitmap.source.top, bitmap.source.Height()};
}

std::uint64_t PictCommonRecord::Work() const {
    const PictRect& covered = bitmap.covered;
    if (covered.IsEmpty()) return 0;
    const auto rows = static_cast<std::uint64_t>(covered.Height());
    const std::uint64_t drawn = Pixels(static_cast<std::uint64_t>(covered.Width()), rows);
    // Alpha is looked for in all rows.
    const bool mayHaveAlpha = bitmap.layout.pixelSize == 32 && bitmap.layout.components == 4;
    const std::uint64_t unpacked = Pixels(static_cast<std::uint64_t>(bitmap.bounds.Width()),
                                          mayHaveAlpha ? static_cast<std::uint64_t>(storedRows) : rows);
    const std::uint64_t regions =
        Common::Sum<std::uint64_t>(PictRegionSteps(clip, covered.Height()), PictRegionSteps(mask, covered.Height()));
    const std::uint64_t work =
        Common::Sum<std::uint64_t>(Common::Sum<std::uint64_t>(drawn, std::max(drawn, unpacked)), regions);
    if (!IsCompressed()) return work;
    // The image library opens it at a price, and decodes all of it.
    constexpr std::uint64_t kOpening = 1 << 16;
    return Common::Sum<std::uint64_t>(work, kOpening + Pixels(static_cast<std::uint64_t>(bitmap.bounds.Width()),
                                                              static_cast<std::uint64_t>(bitmap.bounds.Height())));
}

/// Without pixels in its source the whole bitmap is meant; without any in its destination it has its own size.
void PlacePictRecord(PictCommonRecord& record, const PictState& state) {
    PictRecord& bitmap = record.bitmap;
    if (bitmap.source.IsEmpty()) bitmap.source = bitmap.bounds;
    PictRect& to = bitmap.destination;
    if (to.IsEmpty()) {
        to.right = to.left + bitmap.source.Width();
        to.bottom = to.top + bitmap.source.Height();
    }
    record.clip = state.clip;
    record.inks = {ToPictPixel(state.colours.foreground), ToPictPixel(state.colours.background),
                   ToPictPixel(state.highlight), state.colours.operation};
    const auto [left, right] = Shown(record.Columns(), bitmap.bounds.left, bitmap.bounds.right);
    const auto [top, bottom] = Shown(record.Rows(), bitmap.bounds.top, bitmap.bounds.top + record.storedRows);
    bitmap.covered = Intersection({top, left, bottom, right}, state.frame);
    bitmap.covered = Intersection(bitmap.covered, Intersection(record.clip.box, record.mask.box));
}

// --- How it is stored ------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint16_t kPixelMapFlag = 0x8000;
constexpr unsigned kMaxRowBytesOfByteCounts = 250;
constexpr unsigned kMinPackedRowBytes = 8;

/// What a pixel map says of itself behind its bounds (36 bytes); what is not listed is not used.
///
///     offset  bytes  field
///          2      2  packing
///         18      2  bits a pixel
///         20      2  components
struct MapHeader {
    std::uint16_t packing = 0, bits = 1, components = 1;
};

Result<MapHeader> ReadMapHeader(ByteSource& source) {
    return source.BytesAt<36>(source.Position()).transform([](const auto& bytes) {
        return MapHeader{Common::BigAt<std::uint16_t, 2>(bytes), Common::BigAt<std::uint16_t, 18>(bytes),
                         Common::BigAt<std::uint16_t, 20>(bytes)};
    });
}

bool IsDepth(unsigned bits) {
    return std::ranges::contains(std::array{1U, 2U, 4U, 8U, 16U, 32U}, bits);
}

/// The ways in which rows may be stored, the published one first.
using Layouts = std::vector<PictRowLayout>;

/// Rows of fewer than 8 bytes are never packed, whatever is said of them. A count is one byte up to 250 row bytes; some
/// writers make it two for direct colour at any width. Bitmaps of the opcodes for what is not packed are packed all the
/// same in some files. Rows of 32 bits may have another number of components than is said.
Layouts LayoutsOf(const PictRowLayout& layout, PictBitmapOpcode opcode, std::uint16_t packing) {
    using enum PictRowStorage;
    const auto stored = [&](PictRowStorage storage) {
        PictRowLayout result = layout;
        result.storage = storage;
        return result;
    };
    if (layout.rowBytes < kMinPackedRowBytes) return {stored(kPlain)};
    if (layout.IsDirect() && packing == 2 && layout.pixelSize == 32) return {stored(kWithoutPad), stored(kPlain)};
    if (layout.IsDirect() && (packing == 1 || packing == 2)) return {stored(kPlain)};
    const bool wide = layout.rowBytes > kMaxRowBytesOfByteCounts;
    const PictRowLayout published = stored(wide ? kWordCounts : kByteCounts);
    if (!opcode.isPacked) return {published, stored(kPlain)};
    Layouts layouts = {published, stored(wide ? kByteCounts : kWordCounts)};
    if (layout.pixelSize == 32) {
        for (const std::size_t i : {0U, 1U}) {
            PictRowLayout other = layouts[i];
            other.components = 7 - other.components;  // 3 or 4
            layouts.push_back(other);
        }
    }
    return layouts;
}

/// How far rows of a layout go.
struct Stretch {
    int rows = 0;           ///< that the file has
    int wholeRows = 0;      ///< that give all their pixels
    std::uint64_t end = 0;  ///< offset behind them
};

Stretch LookThrough(ByteSource& source, const PictRowLayout& layout, int rows) {
    Stretch stretch;
    for (; stretch.rows < rows; ++stretch.rows) {
        const auto stored = NextPictRow(source, layout);
        if (!stored) break;
        stretch.wholeRows += IsWholePictRow(*stored, layout) ? 1 : 0;
    }
    stretch.end = source.Position();
    return stretch;
}

/// Settles how the rows are stored, by the first layout in which all are whole or else that in which most are, and goes
/// behind them.
Result<> TakeRows(ByteSource& source, const Layouts& layouts, PictCommonRecord& record) {
    const int rows = record.bitmap.bounds.Height();
    record.bitmap.rows = source.Position();
    Stretch best{.wholeRows = -1};
    for (const PictRowLayout& layout : layouts) {
        if (const Result<> back = source.Seek(record.bitmap.rows); !back) return back;
        const Stretch stretch = LookThrough(source, layout, rows);
        if (stretch.wholeRows <= best.wholeRows) continue;
        best = stretch;
        record.bitmap.layout = layout;
        if (best.wholeRows == rows) break;
    }
    record.storedRows = best.rows;
    return source.Seek(best.end);
}

Result<Layouts> ReadHeader(ByteSource& source, PictBitmapOpcode opcode, PictCommonRecord& record) {
    PictRecord& bitmap = record.bitmap;
    PictRowLayout& layout = bitmap.layout;
    const std::uint64_t address = opcode.isDirect ? 4 : 0;  // in the memory of the writer
    const Result<std::uint16_t> rowBytes = source.Skip(address).and_then([&] { return source.Big<std::uint16_t>(); });
    if (!rowBytes) return std::unexpected(rowBytes.error());
    const Result<PictRect> bounds = ReadPictRect(source);
    if (!bounds) return std::unexpected(bounds.error());
    bitmap.bounds = *bounds;
    layout.width = bounds->Width();
    layout.rowBytes = *rowBytes & ~kPixelMapFlag;
    if (bounds->IsEmpty()) return std::unexpected(Failure::kMalformed);
    const auto bytes = [&](int bits) { return static_cast<unsigned>((layout.width * bits + 7) / 8); };
    const bool isMap = opcode.isDirect || (*rowBytes & kPixelMapFlag) != 0;
    const Result<MapHeader> map = isMap ? ReadMapHeader(source) : MapHeader{};
    if (!map) return std::unexpected(map.error());
    if (!IsDepth(map->bits)) return std::unexpected(Failure::kUnsupported);
    layout.pixelSize = map->bits;
    layout.components = map->components == 4 ? 4 : 3;
    // Rows of direct colour may be longer than their field can tell: then it holds the low bits of their length.
    if (layout.IsDirect()) layout.rowBytes = std::max(layout.rowBytes, bytes(layout.pixelSize));
    if (layout.rowBytes == 0) return std::unexpected(Failure::kMalformed);
    if (!isMap) {
        bitmap.colours = {kPictWhite, kPictBlack};
    } else if (!opcode.isDirect) {
        Result<std::vector<PictColour>> colours = ReadPictColourTable(source);
        if (!colours) return std::unexpected(colours.error());
        bitmap.colours = *std::move(colours);
    }
    return LayoutsOf(layout, {layout.IsDirect(), opcode.hasMask, opcode.isPacked}, map->packing);
}

Result<> ReadPlacement(ByteSource& source, PictRecord& bitmap) {
    const Result<PictRect> from = ReadPictRect(source);
    const Result<PictRect> to = from ? ReadPictRect(source) : from;
    const Result<std::uint16_t> mode = source.Big<std::uint16_t>();
    if (!to || !mode) return std::unexpected(Failure::kTruncated);
    bitmap.source = *from;
    bitmap.destination = *to;
    bitmap.mode = ToPictMode(*mode);
    return {};
}

}  // namespace

std::optional<PictBitmapOpcode> PictBitmapOpcodeOf(std::uint16_t opcode) {
    switch (opcode) {
        case PictOpcode::kBitsRect:
        case PictOpcode::kBitsRegion:
        case PictOpcode::kPackBitsRect:
        case PictOpcode::kPackBitsRegion:
        case PictOpcode::kDirectBitsRect:
        case PictOpcode::kDirectBitsRegion:
            return PictBitmapOpcode{.isDirect = opcode >= PictOpcode::kDirectBitsRect,
                                    .hasMask = (opcode & 1) != 0,
                                    .isPacked = opcode >= PictOpcode::kPackBitsRect};
        default:
            return std::nullopt;
    }
}

Result<PictCommonRecord> ReadPictCommonRecord(ByteSource& source, PictBitmapOpcode opcode, const PictState& state) {
    PictCommonRecord record;
    const Result<Layouts> layouts = ReadHeader(source, opcode, record);
    if (!layouts) return std::unexpected(layouts.error());
    if (const Result<> placed = ReadPlacement(source, record.bitmap); !placed) return std::unexpected(placed.error());
    record.mask.box = kPictEverywhere;
    if (opcode.hasMask) {
        const Result<PictRegion> mask = ReadPictRegion(source);
        if (!mask) return std::unexpected(mask.error());
        record.mask = *mask;
    }
    if (const Result<> taken = TakeRows(source, *layouts, record); !taken) return std::unexpected(taken.error());
    PlacePictRecord(record, state);
    return record;
}

}  // namespace Kavra::Devices
