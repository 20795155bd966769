#include "readers/pict/PictCommonCanvas.h"

#include "readers/pict/PictCommonPixels.h"
#include "readers/pict/PictQuickTime.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <ranges>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;

namespace {

constexpr std::size_t kPixelBytes = 4;

/// Pixels that are worked on at a time, few enough to stay in the processor's nearest cache.
constexpr std::size_t kTile = 1024;

using Tile = std::array<unsigned char, kTile * kPixelBytes>;

/// The first to begin is the last.
std::vector<const PictCommonRecord*> InReverseOfBeginning(const std::vector<PictCommonRecord>& records) {
    std::vector<const PictCommonRecord*> order;
    order.reserve(records.size());
    for (const PictCommonRecord& record : records)
        order.push_back(&record);
    std::ranges::sort(order, std::greater(),
                      [](const PictCommonRecord* record) { return std::pair(record->bitmap.covered.top, record); });
    return order;
}

/// Calls `draw(first, count)` for tiles that are together [0, count).
template <class DrawTile>
void ForEachTile(std::size_t count, DrawTile draw) {
    for (std::size_t first = 0; first < count; first += kTile)
        draw(first, std::min(kTile, count - first));
}

/// Copies to each place of the page the pixel of a bitmap's row that it shows. By steps: a division a pixel would take
/// longer than all else.
void Pick(std::span<const unsigned char> row, const PictAxis& axis, int firstInRow, int left,
          std::span<unsigned char> out) {
    const std::int64_t whole = 2 * std::int64_t{axis.pageLength};
    const std::int64_t start = (2 * std::int64_t{left - axis.page} + 1) * axis.bitmapLength;
    std::int64_t rest = start % whole;
    const unsigned char* from = row.data() + kPixelBytes * static_cast<std::size_t>(axis.At(left) - firstInRow);
    const std::int64_t step = 2 * std::int64_t{axis.bitmapLength} / whole;
    const std::int64_t stepRest = 2 * std::int64_t{axis.bitmapLength} % whole;
    for (std::size_t at = 0; at < out.size(); at += kPixelBytes) {
        std::memcpy(&out[at], from, kPixelBytes);
        if (at + kPixelBytes == out.size()) break;  // what is behind the last may not be there
        rest += stepRest;
        const bool carries = rest >= whole;
        if (carries) rest -= whole;
        from += kPixelBytes * static_cast<std::size_t>(step + (carries ? 1 : 0));
    }
}

}  // namespace

PictCommonCanvas::PictCommonCanvas(const PictCommonPicture& picture, std::span<const unsigned char> file)
    : mPicture(picture), mFile(file), mY(picture.frame.top), mWaiting(InReverseOfBeginning(picture.records)) {}

void PictCommonCanvas::DrawRow(std::span<unsigned char> out) {
    StartRecords();
    std::ranges::fill(out, 0xFF);
    for (Drawing& drawing : mDrawings)
        Draw(drawing, out);
    ++mY;
    std::erase_if(mDrawings, [this](const Drawing& drawing) { return drawing.record->bitmap.covered.bottom <= mY; });
}

/// Records lie in memory in the order of the picture.
void PictCommonCanvas::StartRecords() {
    const auto drawn = static_cast<std::ptrdiff_t>(mDrawings.size());
    for (; !mWaiting.empty() && mWaiting.back()->bitmap.covered.top == mY; mWaiting.pop_back())
        mDrawings.push_back(Start(*mWaiting.back()));
    std::ranges::inplace_merge(mDrawings, mDrawings.begin() + drawn, std::less(), &Drawing::record);
}

PictCommonCanvas::Drawing PictCommonCanvas::Start(const PictCommonRecord& record) const {
    std::vector<unsigned char> decoded;
    if (record.IsCompressed()) decoded = DecodePictCompressed(mFile, record.compressed);
    ByteSource rows(record.IsCompressed() ? std::span<const unsigned char>(decoded) : mFile);
    (void)rows.Seek(record.bitmap.rows);  // where rows were found
    return {.record = &record,
            .decoded = std::move(decoded),
            .rows = std::move(rows),
            .clip = PictRegionScan(record.clip, mFile),
            .mask = PictRegionScan(record.mask, mFile),
            .palette = PictCommonPalette(record),
            .hasAlpha = HasAlpha(record),
            .stored = std::nullopt};
}

/// A fourth component is alpha unless it is 0 everywhere, which is what programs without alpha leave in it.
bool PictCommonCanvas::HasAlpha(const PictCommonRecord& record) const {
    const PictRowLayout& layout = record.bitmap.layout;
    if (layout.pixelSize != 32 || layout.components != 4) return false;
    if (layout.storage == PictRowStorage::kWithoutPad) return false;
    ByteSource rows(mFile);
    if (!rows.Seek(record.bitmap.rows)) return false;
    PictRowBuffer buffer;
    for (int row = 0; row < record.storedRows; ++row) {
        const auto stored = NextPictRow(rows, layout).value_or(std::span<const unsigned char>());
        if (HasPictAlpha(buffer.Unpack(stored, layout), layout)) return true;
    }
    return false;
}

/// Rows are asked for from the top, each any number of times.
std::span<const unsigned char> PictCommonCanvas::RowAt(Drawing& drawing, int row) {
    const PictRowLayout& layout = drawing.record->bitmap.layout;
    for (; drawing.nextRow <= row; ++drawing.nextRow) {
        const auto stored = NextPictRow(drawing.rows, layout);
        drawing.stored = stored ? std::optional(*stored) : std::nullopt;
    }
    if (!drawing.stored) return {};
    return mBuffer.Unpack(*drawing.stored, layout);
}

void PictCommonCanvas::Draw(Drawing& drawing, std::span<unsigned char> out) {
    const PictRecord& bitmap = drawing.record->bitmap;
    const std::span<const unsigned char> row = RowAt(drawing, drawing.record->Rows().At(mY) - bitmap.bounds.top);
    if (row.empty()) return;
    std::span<const unsigned char> pixels = row;
    if (drawing.record->Columns().IsScaled()) {
        const auto width = static_cast<std::size_t>(bitmap.bounds.Width());
        mWhole.resize(std::max(mWhole.size(), kPixelBytes * width));
        const std::span<unsigned char> whole = std::span(mWhole).first(kPixelBytes * width);
        PictCommonPixels(row, bitmap.layout, drawing.palette, drawing.hasAlpha, 0, whole);
        pixels = whole;
    }
    drawing.clip.MoveTo(mY);
    drawing.mask.MoveTo(mY);
    drawing.clip.ForEachRun(bitmap.covered.left, bitmap.covered.right, [&](int from, int to) {
        drawing.mask.ForEachRun(from, to, [&](int left, int right) { DrawRun(drawing, pixels, left, right, out); });
    });
}

/// `row` is as it was unpacked, or where it is scaled, as pixels.
void PictCommonCanvas::DrawRun(const Drawing& drawing, std::span<const unsigned char> row, int left, int right,
                               std::span<unsigned char> out) {
    const PictRecord& bitmap = drawing.record->bitmap;
    const PictAxis columns = drawing.record->Columns();
    const auto fetch = [&](int place, std::span<unsigned char> pixels) {
        if (columns.IsScaled()) {
            Pick(row, columns, bitmap.bounds.left, place, pixels);
        } else {
            const auto first = static_cast<std::size_t>(columns.At(place) - bitmap.bounds.left);
            PictCommonPixels(row, bitmap.layout, drawing.palette, drawing.hasAlpha, first, pixels);
        }
    };
    const auto inRow = static_cast<std::size_t>(left - mPicture.frame.left);
    ForEachTile(static_cast<std::size_t>(right - left), [&](std::size_t first, std::size_t count) {
        const std::span<unsigned char> page = out.subspan(kPixelBytes * (inRow + first), kPixelBytes * count);
        const int place = left + static_cast<int>(first);
        if (bitmap.mode == 0) {
            fetch(place, page);
            return;
        }
        Tile tile;
        const std::span<unsigned char> source = std::span(tile).first(page.size());
        fetch(place, source);
        DrawPictPixels(bitmap.mode, drawing.record->inks, source, page);
    });
}

}  // namespace Kavra::Devices
