/// Whether the common reading would show a PICT picture otherwise than the contract's does.
#pragma once

#include "readers/pict/PictCommonCanvas.h"
#include "readers/pict/PictStream.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Pictures of more bitmaps are not compared: a second list of them would take more than a load is told to.
inline constexpr std::size_t kMaxComparedPictRecords = 4096;

/// Draws a picture in the common reading beside the contract's, until the first row that differs. Draws nothing where
/// the two are told to be alike, or not, by what the opcodes say: so most pictures cost no more than a look at these.
class PictComparison {
public:
    /// The picture and the bytes of its file must outlive the comparison.
    PictComparison(const PictPicture& contract, std::span<const unsigned char> file);

    /// Compares with the next row of the contract's reading, from the top.
    void Look(std::span<const unsigned char> row);

    /// What the contract's reading did differently in the rows so far, or null.
    const char* Difference() const { return mDiffers ? mHow : nullptr; }

private:
    std::optional<PictCommonPicture> mPicture;  // nothing where there is no picture to compare with
    const char* mHow = nullptr;                 // what seems to differ
    bool mDiffers = false;
    std::unique_ptr<PictCommonCanvas> mCanvas;  // null unless rows are compared
    std::vector<unsigned char> mRow;
};

}  // namespace Kavra::Devices
