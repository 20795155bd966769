#include "readers/dds/DdsCommonPicture.h"

#include "common/ParallelRange.h"
#include "common/PixelFormats.h"
#include "common/Progress.h"
#include "readers/WriteRows.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kBandBytes = std::size_t{1} << 20;     // that are read at a time, or one row of blocks
constexpr std::size_t kMaxBandRows = 4096;                   // whose height the image library takes
constexpr std::size_t kSerialPixels = std::size_t{1} << 16;  // which are not worth waking a thread for
constexpr std::size_t kColourBytes = 4;
constexpr std::size_t kCopiedBytes = std::size_t{4} << 20;  // of pixels that need no decoding, between two looks

}  // namespace

/// Some rows of pixels or blocks as they are stored.
struct DdsCommonPicture::Band {
    std::span<const unsigned char> stored;
    std::size_t rowBytes;  ///< of one row of pixels or blocks
    int width, rows;       ///< in pixels
};

std::optional<DdsCommonPicture> DdsCommonPicture::Open(Common::ByteSource file) {
    std::array<unsigned char, Dds::kMaxHeaderBytes> start{};
    if (!file.Seek(0)) return std::nullopt;
    const std::size_t count = file.ReadSome(start);
    const auto header = Dds::ParseHeader(std::span(start).first(count), Dds::ExtensionRule::kAnyCode);
    if (!header) return std::nullopt;
    const auto layout = Dds::FindCommonLayout(*header);
    if (!layout) return std::nullopt;
    const std::uint64_t begin = header->Bytes() + (layout->hasPalette ? Dds::kPaletteBytes : 0);
    const std::uint64_t pixelBytes = file.Size() > begin ? file.Size() - begin : 0;
    const auto shape = Dds::CommonShapeOf(*header, layout->pixels.unit, pixelBytes);
    if (!shape) return std::nullopt;
    DdsCommonPicture picture(std::move(file), *header, *layout, *shape, begin);
    if (layout->hasPalette && !picture.ReadPalette()) return std::nullopt;
    picture.FindGaps();
    return picture;
}

DdsCommonPicture::DdsCommonPicture(Common::ByteSource file, const Dds::Header& header, const Dds::CommonLayout& layout,
                                   const Dds::Shape& shape, std::uint64_t pixelsBegin)
    : mFile(std::move(file)), mHeader(header), mLayout(layout), mShape(shape), mPixelsBegin(pixelsBegin) {}

/// A palette without any alpha was written without thinking of one.
bool DdsCommonPicture::ReadPalette() {
    if (!mFile.Seek(mHeader.Bytes()) || !mFile.Read(mPalette)) return false;
    bool hasAlpha = false;
    for (std::size_t i = 3; i < mPalette.size(); i += kColourBytes)
        hasAlpha = hasAlpha || mPalette[i] != 0;
    if (hasAlpha) return true;
    for (std::size_t i = 3; i < mPalette.size(); i += kColourBytes)
        mPalette[i] = 255;
    mLayout.pixels.hasAlpha = mLayout.pixels.unit.bytes > 1;
    return true;
}

void DdsCommonPicture::FindGaps() {
    const Dds::StoredUnit& unit = mLayout.pixels.unit;
    const std::uint64_t rowBytes = Dds::StoredRowBytes(unit, mShape.size.width), pitch = mHeader.pitch;
    const bool isFlat = mShape.type == kTexture2D && mShape.levels == 1 && mHeader.arraySize < 2 && !unit.IsBlock();
    if (!isFlat || (mHeader.flags & Dds::kHasPitch) == 0 || pitch <= rowBytes) return;
    const std::uint64_t bytes = mFile.Size() - std::min(mFile.Size(), mPixelsBegin);
    const std::uint64_t all = pitch * static_cast<unsigned>(mShape.size.height), gap = pitch - rowBytes;
    const bool isLastWithout = bytes == all - gap && mShape.size.height > 1;
    if (bytes == all || isLastWithout) mGapBytes = gap;
}

std::uint64_t DdsCommonPicture::SliceOffset(int level, int slice) const {
    const Dds::StoredUnit& unit = mLayout.pixels.unit;
    if (mShape.type == kTextureCube) return mPixelsBegin + Dds::LevelOffset(unit, mShape, slice, level);
    const std::uint64_t sliceBytes = Dds::StoredSliceBytes(unit, LevelSize(level));
    return mPixelsBegin + Dds::LevelOffset(unit, mShape, 0, level) + static_cast<unsigned>(slice) * sliceBytes;
}

bool DdsCommonPicture::IsWhole(int level) const {
    return mPixelsBegin + Dds::LevelEnd(mLayout.pixels.unit, mShape, level) <= mFile.Size();
}

Dds::RowCount DdsCommonPicture::CountRows(int level) const {
    const std::uint64_t pixels = mFile.Size() - std::min(mFile.Size(), mPixelsBegin);
    return Dds::RowsWithin(mLayout.pixels.unit, mShape, level, pixels);
}

bool DdsCommonPicture::HasRows(int level, int slice) const {
    return SliceOffset(level, slice) + Dds::StoredRowBytes(mLayout.pixels.unit, LevelSize(level).width) <= mFile.Size();
}

std::size_t DdsCommonPicture::PixelRowBytes(int width) const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(Common::FactsOf(Format()).BytesPerPixel());
}

std::size_t DdsCommonPicture::RowsOfBand(int width) const {
    return std::clamp<std::size_t>(kBandBytes / (Dds::StoredRowBytes(mLayout.pixels.unit, width) + mGapBytes), 1,
                                   kMaxBandRows);
}

std::uint64_t DdsCommonPicture::WorkingBytes(int width) const {
    const std::uint64_t rows = RowsOfBand(width);
    const std::uint64_t rowBytes = Dds::StoredRowBytes(mLayout.pixels.unit, width) + mGapBytes;
    return rows * (rowBytes + mLayout.pixels.unit.height * PixelRowBytes(width));
}

/// One row of pixels or blocks.
void DdsCommonPicture::DecodeRow(std::span<const unsigned char> stored, int width, int rows, unsigned char* out) const {
    const Dds::StoredLayout& pixels = mLayout.pixels;
    const auto columns = static_cast<std::size_t>(width);
    if (mLayout.decodeBlock != nullptr) {
        const auto pixelBytes = static_cast<std::size_t>(Common::FactsOf(Format()).BytesPerPixel());
        Common::DecodeBlockRow(mLayout.decodeBlock, stored, pixels.unit.bytes, columns, rows, pixelBytes, out,
                               PixelRowBytes(width));
    } else if (mLayout.hasPalette) {
        const std::size_t bytes = pixels.unit.bytes;
        for (std::size_t x = 0; x < columns; ++x) {
            std::memcpy(out + x * kColourBytes, mPalette.data() + stored[x * bytes] * kColourBytes, kColourBytes);
            if (bytes > 1) out[x * kColourBytes + 3] = stored[x * bytes + 1];
        }
    } else if (pixels.widen != nullptr) {
        pixels.widen(pixels, stored, out, columns);
    } else {
        std::memcpy(out, stored.data(), PixelRowBytes(width));
    }
}

void DdsCommonPicture::Decode(const Band& band, unsigned char* out) const {
    const int unitRows = mLayout.pixels.unit.height;
    const std::size_t outBytes = static_cast<std::size_t>(unitRows) * PixelRowBytes(band.width);
    const std::size_t rowPixels = static_cast<std::size_t>(band.width) * static_cast<std::size_t>(unitRows);
    Common::ForEachRange(
        band.stored.size() / band.rowBytes, kSerialPixels / rowPixels, [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                const int rows = std::min(unitRows, band.rows - static_cast<int>(i) * unitRows);
                DecodeRow(band.stored.subspan(i * band.rowBytes, band.rowBytes), band.width, rows, out + i * outBytes);
            }
        });
}

/// Calls `take(band, y)` for the rows that are there, in order; `y` is the first row of the band.
template <class Take>
void DdsCommonPicture::ReadBands(int level, int slice, const Take& take) {
    const Dds::Extent size = LevelSize(level);
    const Dds::StoredUnit& unit = mLayout.pixels.unit;
    const std::size_t rowBytes = Dds::StoredRowBytes(unit, size.width) + mGapBytes;
    const int bandRows = static_cast<int>(RowsOfBand(size.width)) * unit.height;
    if (SliceOffset(level, slice) > mFile.Size() || !mFile.Seek(SliceOffset(level, slice))) return;
    std::vector<unsigned char> stored;
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(size.height));
    for (int y = 0; y < size.height; y += bandRows) {
        meter.Expect(static_cast<unsigned>(std::min(bandRows, size.height - y)));
        const int wanted = std::min(bandRows, size.height - y);
        const std::size_t unitRows = static_cast<std::size_t>((wanted + unit.height - 1) / unit.height);
        stored.resize(unitRows * rowBytes);
        const std::size_t whole = (mFile.ReadSome(stored) + mGapBytes) / rowBytes;  // the last may lack its gap
        const int rows = std::min(wanted, static_cast<int>(whole) * unit.height);
        if (rows > 0)
            take(Band{.stored = std::span(stored).first(whole * rowBytes),
                      .rowBytes = rowBytes,
                      .width = size.width,
                      .rows = rows},
                 y);
        meter.Advance(static_cast<unsigned>(wanted));
        if (whole < unitRows) return;
    }
}

bool DdsCommonPicture::IsStoredAsDelivered() const {
    return !HasGaps() && !mLayout.hasPalette && mLayout.pixels.widen == nullptr && !mLayout.pixels.unit.IsBlock();
}

/// Only whole rows count as being there.
void DdsCommonPicture::CopySlice(int level, int slice, unsigned char* out) {
    const Dds::Extent size = LevelSize(level);
    const std::size_t pitch = PixelRowBytes(size.width);
    const std::uint64_t begin = SliceOffset(level, slice);
    if (begin > mFile.Size() || !mFile.Seek(begin)) return;
    const std::uint64_t rows = std::min<std::uint64_t>(mFile.Remaining() / pitch, static_cast<unsigned>(size.height));
    Common::ProgressMeter meter(kProgressReading, rows);
    const std::uint64_t bandRows = std::max<std::uint64_t>(kCopiedBytes / pitch, 1);
    for (std::uint64_t y = 0, count = 0; y < rows; y += count) {
        count = std::min(bandRows, rows - y);
        (void)mFile.ReadSome(std::span(out + y * pitch, count * pitch));
        meter.Advance(count);
    }
}

void DdsCommonPicture::ReadSlice(int level, int slice, unsigned char* out) {
    if (IsStoredAsDelivered()) return CopySlice(level, slice, out);
    const std::size_t pitch = PixelRowBytes(LevelSize(level).width);
    ReadBands(level, slice, [&](const Band& band, int y) { Decode(band, out + static_cast<std::size_t>(y) * pitch); });
}

void DdsCommonPicture::ReadSlice(int level, int slice, Common::RowSink& sink) {
    const std::size_t pitch = PixelRowBytes(LevelSize(level).width);
    std::vector<unsigned char> pixels;
    ReadBands(level, slice, [&](const Band& band, int /*y*/) {
        pixels.resize(static_cast<std::size_t>(band.rows) * pitch);
        Decode(band, pixels.data());
        const unsigned char* next = pixels.data();
        WriteRows(sink, static_cast<std::size_t>(band.rows), pitch, [&](std::span<unsigned char> row) {
            std::memcpy(row.data(), next, pitch);
            next += pitch;
        });
    });
}

}  // namespace Kavra::Devices
