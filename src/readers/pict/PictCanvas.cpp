#include "readers/pict/PictCanvas.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <ranges>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;

// --- Colours ---------------------------------------------------------------------------------------------------------

namespace {

constexpr auto kGreys = [] {
    std::array<PictColour, 256> greys{};
    for (unsigned i = 0; i < greys.size(); ++i)
        greys[i].fill(static_cast<std::uint16_t>(i * 257));
    return greys;
}();

}  // namespace

std::span<const PictColour> PictColourTable(const PictRecord& record) {
    if (record.colours.empty()) return kGreys;
    return record.colours;
}

PictPalette::PictPalette(std::span<const PictColour> colours) : mCount(std::min(colours.size(), mPixels.size())) {
    for (std::size_t i = 0; i < mCount; ++i) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            mPixels[i][channel] = static_cast<unsigned char>(colours[i][channel] >> 8);
        mPixels[i][3] = 0xFF;
    }
}

bool PictPalette::ToRgba(std::span<const unsigned char> indices, std::span<unsigned char> out) const {
    unsigned char* to = out.first(4 * indices.size()).data();
    if (LargestIndex(indices) < mCount) {
        for (std::size_t i = 0; i < indices.size(); ++i)
            std::memcpy(to + 4 * i, mPixels[indices[i]].data(), 4);
        return true;
    }
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (indices[i] < mCount) std::memcpy(to + 4 * i, mPixels[indices[i]].data(), 4);
    }
    return false;
}

// --- The canvas ------------------------------------------------------------------------------------------------------

namespace {

/// Pixels that are worked on at a time, few enough to stay in the processor's nearest cache.
constexpr std::size_t kTile = 1024;

struct TileIndices {
    std::array<unsigned char, kTile> bytes;
    std::span<unsigned char> First(std::size_t count) { return std::span(bytes).first(count); }
};

struct TileColours {
    std::array<std::array<std::uint16_t, kTile>, 3> channels;
    PictRun First(std::size_t count) {
        return {std::span(channels[0]).first(count), std::span(channels[1]).first(count),
                std::span(channels[2]).first(count)};
    }
};

/// Puts back the colours that `canvas` had, `before`, where an index has no colour of its own: a mask a pixel costs the
/// same whether these come in long stretches or every second pixel.
void RestoreWhereBeyond(std::span<const unsigned char> indices, unsigned char last, const PictConstRun& before,
                        const PictRun& canvas) {
    std::array<std::uint16_t, kTile> kept;
    for (std::size_t i = 0; i < indices.size(); ++i)
        kept[i] = indices[i] > last ? 0xFFFF : 0;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const std::uint16_t* from = before[channel].data();
        std::uint16_t* to = canvas[channel].data();
        for (std::size_t i = 0; i < indices.size(); ++i)
            to[i] = static_cast<std::uint16_t>(to[i] ^ ((to[i] ^ from[i]) & kept[i]));
    }
}

PictRun Part(const PictRun& run, std::size_t first, std::size_t count) {
    return {run[0].subspan(first, count), run[1].subspan(first, count), run[2].subspan(first, count)};
}

PictConstRun Const(const PictRun& run) {
    return {run[0], run[1], run[2]};
}

/// Calls `draw(first, count)` for tiles that are together [0, count).
template <class Draw>
void ForEachTile(std::size_t count, Draw draw) {
    for (std::size_t first = 0; first < count; first += kTile)
        draw(first, std::min(kTile, count - first));
}

/// The first to begin is the last.
std::vector<const PictRecord*> InReverseOfBeginning(const std::vector<PictRecord>& records) {
    std::vector<const PictRecord*> order;
    order.reserve(records.size());
    for (const PictRecord& record : records)
        order.push_back(&record);
    std::ranges::sort(order, std::greater(),
                      [](const PictRecord* record) { return std::pair(record->covered.top, record); });
    return order;
}

PictPalette PaletteOf(const PictPicture& picture) {
    return PictPalette(picture.indexed ? PictColourTable(picture.records[0]) : std::span<const PictColour>());
}

}  // namespace

PictCanvas::PictCanvas(const PictPicture& picture, std::span<const unsigned char> file)
    : mPicture(picture),
      mFile(file),
      mY(picture.frame.top),
      mWaiting(InReverseOfBeginning(picture.records)),
      mPalette(PaletteOf(picture)) {
    if (picture.indexed) return;
    for (std::vector<std::uint16_t>& channel : mRow)
        channel.resize(static_cast<std::size_t>(picture.frame.Width()));
}

void PictCanvas::DrawRow(std::span<unsigned char> out) {
    StartRecords();
    if (mPicture.indexed) {
        PutIndices(out);
    } else {
        DrawColours(out);
    }
    ++mY;
    std::erase_if(mDrawings, [this](const Drawing& drawing) { return drawing.record->covered.bottom <= mY; });
}

/// Records lie in memory in the order of the picture.
void PictCanvas::StartRecords() {
    const auto drawn = static_cast<std::ptrdiff_t>(mDrawings.size());
    for (; !mWaiting.empty() && mWaiting.back()->covered.top == mY; mWaiting.pop_back()) {
        ByteSource rows(mFile);
        if (rows.Seek(mWaiting.back()->rows)) mDrawings.push_back({mWaiting.back(), std::move(rows)});
    }
    std::ranges::inplace_merge(mDrawings, mDrawings.begin() + drawn, std::less(), &Drawing::record);
}

/// Its rows were looked through when the file was opened.
std::span<const unsigned char> PictCanvas::NextRow(Drawing& drawing) {
    const PictRowLayout& layout = drawing.record->layout;
    return mBuffer.Unpack(NextPictRow(drawing.rows, layout).value_or(std::span<const unsigned char>()), layout);
}

void PictCanvas::DrawColours(std::span<unsigned char> out) {
    for (std::vector<std::uint16_t>& channel : mRow)
        std::ranges::fill(channel, kPictWhite[0]);
    for (Drawing& drawing : mDrawings)
        DrawRecord(*drawing.record, NextRow(drawing));
    PictToRgba({mRow[0], mRow[1], mRow[2]}, out);
}

void PictCanvas::DrawRecord(const PictRecord& record, std::span<const unsigned char> row) {
    const auto inCanvas = static_cast<std::size_t>(record.covered.left - mPicture.frame.left);
    const auto inRecord = static_cast<std::size_t>(record.covered.left - record.bounds.left);
    const auto count = static_cast<std::size_t>(record.covered.Width());
    const PictRun canvas = Part({mRow[0], mRow[1], mRow[2]}, inCanvas, count);
    ForEachTile(count, [&](std::size_t first, std::size_t length) {
        const PictRun tile = Part(canvas, first, length);
        if (record.layout.IsDirect()) {
            DrawDirectRun(record, row, inRecord + first, tile);
        } else {
            DrawIndexedRun(record, row, inRecord + first, tile);
        }
    });
}

void PictCanvas::DrawDirectRun(const PictRecord& record, std::span<const unsigned char> row, std::size_t first,
                               const PictRun& canvas) {
    TileColours colours;
    const PictRun source = colours.First(canvas[0].size());
    PictDirectColours(row, record.layout, first, source);
    TransferPictRun(record.mode, mPicture.colours, Const(source), canvas);
}

void PictCanvas::DrawIndexedRun(const PictRecord& record, std::span<const unsigned char> row, std::size_t first,
                                const PictRun& canvas) {
    TileIndices tile;
    TileColours colours;
    const std::span<unsigned char> indices = tile.First(canvas[0].size());
    PictIndices(row, record.layout, first, indices);
    const std::span<const PictColour> table = PictColourTable(record);
    const PictRun source = colours.First(canvas[0].size());
    if (LargestIndex(indices) < table.size()) {
        PictIndexedColours(table, indices, source);
        TransferPictRun(record.mode, mPicture.colours, Const(source), canvas);
        return;
    }
    mLeavesPixelsOut = true;
    const auto last = static_cast<unsigned char>(table.size() - 1);
    TileIndices bounded;
    for (std::size_t i = 0; i < indices.size(); ++i)
        bounded.bytes[i] = std::min(indices[i], last);
    PictIndexedColours(table, bounded.First(indices.size()), source);
    TileColours kept;
    const PictRun before = kept.First(indices.size());
    for (std::size_t channel = 0; channel < 3; ++channel)
        std::ranges::copy(canvas[channel], before[channel].begin());
    TransferPictRun(record.mode, mPicture.colours, Const(source), canvas);
    RestoreWhereBeyond(indices, last, Const(before), canvas);
}

/// The one record of an indexed picture.
void PictCanvas::PutIndices(std::span<unsigned char> out) {
    if (mDrawings.empty()) {
        std::ranges::fill(out, 0xFF);
        return;
    }
    const PictRecord& record = *mDrawings[0].record;
    const std::span<const unsigned char> row = NextRow(mDrawings[0]);
    const auto before = static_cast<std::size_t>(record.covered.left - mPicture.frame.left);
    const auto inRecord = static_cast<std::size_t>(record.covered.left - record.bounds.left);
    const auto count = static_cast<std::size_t>(record.covered.Width());
    std::ranges::fill(out.first(4 * before), 0xFF);
    std::ranges::fill(out.subspan(4 * (before + count)), 0xFF);
    ForEachTile(count, [&](std::size_t first, std::size_t length) {
        TileIndices tile;
        const std::span<unsigned char> indices = tile.First(length);
        PictIndices(row, record.layout, inRecord + first, indices);
        if (!mPalette.ToRgba(indices, out.subspan(4 * (before + first), 4 * length))) mLeavesPixelsOut = true;
    });
}

}  // namespace Kavra::Devices
