#include "readers/pict/PictRegion.h"

#include "common/Limits.h"

#include <iterator>
#include <limits>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

namespace {

constexpr int kEnd = 0x7FFF;  // of a row, and in the place of a row of all rows
constexpr unsigned kSizeBytes = 2;
constexpr unsigned kBoxBytes = 10;  // with the size
constexpr int kNoRow = std::numeric_limits<int>::max();

}  // namespace

Result<PictRegion> ReadPictRegion(ByteSource& source) {
    const Result<std::uint16_t> size = source.Big<std::uint16_t>();
    if (!size) return std::unexpected(size.error());
    if (*size < kSizeBytes) return std::unexpected(Failure::kMalformed);
    if (*size < kBoxBytes) {
        return source.Skip(*size - kSizeBytes).transform([] { return PictRegion{.box = kPictEverywhere}; });
    }
    return ReadPictRect(source).and_then([&](const PictRect& box) {
        const PictRegion region{.box = box, .offset = source.Position(), .words = (*size - kBoxBytes) / 2};
        return source.Skip(*size - kBoxBytes).transform([&] { return region; });
    });
}

std::uint64_t PictRegionSteps(const PictRegion& region, int rows) {
    if (region.IsRect()) return 0;
    // A row of changes takes at least four words, and no row has more edges than columns.
    const std::uint64_t edges =
        std::min<std::uint64_t>(region.words, static_cast<std::uint64_t>(std::max(region.box.Width(), 0) + 1));
    const std::uint64_t visits = region.words / 4 + static_cast<std::uint64_t>(std::max(rows, 0));
    return Common::Product<std::uint64_t>(visits, edges);
}

PictRegionScan::PictRegionScan(const PictRegion& region, std::span<const unsigned char> file)
    : mRegion(region), mWords(file.subspan(region.offset, 2 * std::size_t{region.words})), mNextY(kNoRow) {
    if (!mWords.empty()) mNextY = NextWord();
    if (mNextY == kEnd) mNextY = kNoRow;
}

int PictRegionScan::NextWord() {
    if (mWords.empty()) return kEnd;
    const auto word = static_cast<std::int16_t>(mWords[0] << 8 | mWords[1]);
    mWords = mWords.subspan(2);
    return word;
}

void PictRegionScan::MoveTo(int y) {
    while (mNextY <= y)
        TakeRow();
}

/// Edges that come twice cancel out.
void PictRegionScan::TakeRow() {
    mChanges.clear();
    for (int x = NextWord(); x != kEnd; x = NextWord()) {
        // What lies outside the box shows nowhere, but tells inside from outside.
        mChanges.push_back(std::clamp(x, mRegion.box.left, mRegion.box.right));
    }
    std::ranges::sort(mChanges);
    std::vector<int> all;
    all.reserve(mEdges.size() + mChanges.size());
    std::ranges::merge(mEdges, mChanges, std::back_inserter(all));
    std::vector<int> edges;
    edges.reserve(all.size());
    for (const int x : all) {
        if (!edges.empty() && edges.back() == x) {
            edges.pop_back();
        } else {
            edges.push_back(x);
        }
    }
    mEdges = std::move(edges);
    const int y = NextWord();
    mNextY = y == kEnd || y <= mNextY ? kNoRow : y;
}

}  // namespace Kavra::Devices
