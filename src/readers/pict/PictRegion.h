/// Regions of a PICT picture: the pixels inside an outline of any shape.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"
#include "readers/pict/PictBitmap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// A region as a picture stores it: its size in bytes, which counts itself (2), its bounding box (4 x 2), and where it
/// is no rectangle the rows at which it changes (Inside Macintosh: Imaging With QuickDraw, chapter 2; the form of the
/// rows is that of the region's record):
///
///     y, x, x ..., 7FFF    from row y on, what is to the right of each x changes sides, beside what did before
///     7FFF                 the end
struct PictRegion {
    PictRect box;
    std::uint64_t offset = 0;  ///< of the first row in the file
    std::uint32_t words = 0;   ///< of all rows; 0: the region is its box

    bool IsRect() const { return words == 0; }
};

/// All that coordinates reach.
inline constexpr PictRect kPictEverywhere = {-0x8000, -0x8000, 0x7FFF, 0x7FFF};

/// Reads a region and leaves the source, a whole file in memory, behind it. One that is too short for a box is
/// everywhere. Fails where the file ends within it, or its size is less than its own two bytes.
[[nodiscard]] Common::Result<PictRegion> ReadPictRegion(Common::ByteSource& source);

/// The steps, at most, that it takes to move a scan down so many rows.
std::uint64_t PictRegionSteps(const PictRegion& region, int rows);

/// The row of a region, moving down. Rows that are out of order end the region's changes.
class PictRegionScan {
public:
    /// The file must outlive the scan.
    PictRegionScan(const PictRegion& region, std::span<const unsigned char> file);

    /// Moves to a row, not above the one before.
    void MoveTo(int y);

    /// Calls `draw(left, right)` for the runs of the row that lie in [left, right), from left to right.
    template <class Draw>
    void ForEachRun(int left, int right, Draw draw) const {
        left = std::max(left, mRegion.box.left);
        right = std::min(right, mRegion.box.right);
        if (left >= right) return;
        if (mRegion.IsRect()) {
            draw(left, right);
            return;
        }
        auto next = std::ranges::upper_bound(mEdges, left);
        bool inside = (next - mEdges.begin()) % 2 != 0;
        int from = left;
        for (; next != mEdges.end() && *next < right; ++next) {
            if (inside) draw(from, *next);
            inside = !inside;
            from = *next;
        }
        if (inside) draw(from, right);
    }

private:
    int NextWord();
    void TakeRow();

    PictRegion mRegion;
    std::span<const unsigned char> mWords;  // those to come
    int mNextY;                             // of the next change
    std::vector<int> mEdges;                // of the row, in order: inside and outside change there
    std::vector<int> mChanges;
};

}  // namespace Kavra::Devices
