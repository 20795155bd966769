#include "readers/pict/PictComparison.h"

#include <algorithm>
#include <new>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

namespace {

// What the contract's reading does. In the order in which it is told: what shows most comes first.
constexpr const char* kCutToFrame = "a picture of more than 72 dpi is cut to its frame by the host's rules";
constexpr const char* kNoQuickTime = "pictures compressed by QuickTime are left out by the host's rules";
constexpr const char* kNothingShown =
    "bitmaps that are stretched, moved or of masked direct colour are left out by the host's rules";
constexpr const char* kTwoColours = "copied colours are drawn in two colours by the host's rules";
constexpr const char* kNotMoved = "bitmaps are not drawn where and as large as they should be by the host's rules";
constexpr const char* kNotClipped = "clipping and mask regions are ignored by the host's rules";
constexpr const char* kLastColours = "bitmaps are drawn in the colours of the picture's end by the host's rules";
constexpr const char* kNoAlpha = "transparency is left out by the host's rules";
constexpr const char* kOtherwise = "bitmaps are put together in another way by the host's rules";

bool IsSame(const PictRect& a, const PictRect& b) {
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}

/// Whether both readings find the same bytes for each row. The contract's keeps a high bit that is not of the length.
bool IsStoredAlike(const PictRowLayout& contract, const PictRowLayout& common) {
    if (contract.pixelSize != common.pixelSize || contract.IsPacked() != common.IsPacked()) return false;
    if (contract.pixelSize == 32 && contract.components != common.components) return false;
    return contract.IsPacked() ? contract.HasWordCounts() == common.HasWordCounts()
                               : (contract.rowBytes & 0x7FFF) == common.PlainBytes();
}

bool IsMode(const PictRecord& record, std::initializer_list<std::uint16_t> modes) {
    return std::ranges::contains(modes, record.mode);
}

/// Whether one record, of which the picture has no other, is copied by indices in both readings to the same colours.
bool IsCopiedAlike(const PictCommonRecord& common) {
    const PictRecord& bitmap = common.bitmap;
    const bool hasUsualColours =
        common.inks.foreground == ToPictPixel(kPictBlack) && common.inks.background == ToPictPixel(kPictWhite);
    return bitmap.mode == 0 && !bitmap.colours.empty() && (bitmap.layout.pixelSize > 1 || hasUsualColours);
}

/// Why records whose pixels lie alike may be drawn differently, or null.
const char* HowDrawn(const PictPicture& picture, const PictRecord& contract, const PictCommonRecord& common) {
    if (picture.indexed) return IsCopiedAlike(common) ? nullptr : kOtherwise;
    if (common.bitmap.mode == 0) return kTwoColours;
    const PictColours& colours = picture.colours;
    const bool hasSameColours = ToPictPixel(colours.foreground) == common.inks.foreground &&
                                ToPictPixel(colours.background) == common.inks.background &&
                                colours.operation == common.inks.operation;
    if (!hasSameColours) return kLastColours;
    // Exact in 8 bits: the others carry what 16 bits keep from one bitmap to the next, or weigh otherwise.
    const bool isOneBit = contract.layout.pixelSize == 1;
    return !isOneBit && IsMode(contract, {36, 37, 39}) ? nullptr : kOtherwise;
}

const char* HowRecord(const PictPicture& picture, const PictRecord& contract, const PictCommonRecord& common) {
    const PictRecord& bitmap = common.bitmap;
    const bool isInPlace = IsSame(bitmap.source, bitmap.destination);
    if (!isInPlace) return kNotMoved;
    if (!common.clip.IsRect() || !common.mask.IsRect()) return kNotClipped;
    if (!IsSame(bitmap.bounds, contract.bounds) || !IsStoredAlike(contract.layout, bitmap.layout)) return kOtherwise;
    if (!IsSame(bitmap.covered, contract.covered)) return kNotClipped;
    if (const char* how = HowDrawn(picture, contract, common)) return how;
    return bitmap.layout.components == 4 && bitmap.layout.pixelSize == 32 ? kNoAlpha : nullptr;
}

bool HasCompressed(const PictCommonPicture& picture) {
    return std::ranges::any_of(picture.records, &PictCommonRecord::IsCompressed);
}

/// Why the pictures may differ, or null where they do not.
const char* How(const PictPicture& contract, const PictCommonPicture& common) {
    if (!IsSame(contract.frame, common.frame)) return kCutToFrame;
    if (HasCompressed(common)) return kNoQuickTime;
    if (contract.records.empty()) return common.records.empty() ? nullptr : kNothingShown;
    if (contract.records.size() != common.records.size()) return kOtherwise;
    for (std::size_t i = 0; i < contract.records.size(); ++i) {
        if (const char* how = HowRecord(contract, contract.records[i], common.records[i])) return how;
    }
    return nullptr;
}

}  // namespace

PictComparison::PictComparison(const PictPicture& contract, std::span<const unsigned char> file) {
    if (contract.records.size() > kMaxComparedPictRecords) return;
    try {
        ByteSource source(file);
        Result<PictCommonPicture> picture = ReadPictCommonPicture(source, kMaxComparedPictRecords);
        if (!picture) return;
        mPicture = *std::move(picture);
        mHow = How(contract, *mPicture);
        // Compressed pictures are decoded whole, which is more than a load that does not show them may take.
        mDiffers = mHow != nullptr && (!IsSame(contract.frame, mPicture->frame) || HasCompressed(*mPicture));
        if (mHow != nullptr && !mDiffers) mCanvas = std::make_unique<PictCommonCanvas>(*mPicture, file);
    } catch (const std::bad_alloc&) {
        mCanvas = nullptr;  // nothing is said then
    }
}

void PictComparison::Look(std::span<const unsigned char> row) {
    if (!mCanvas) return;
    try {
        mRow.resize(row.size());
        mCanvas->DrawRow(mRow);
        mDiffers = !std::ranges::equal(mRow, row);
        if (mDiffers) mCanvas = nullptr;
    } catch (const std::bad_alloc&) {
        mCanvas = nullptr;
    }
}

}  // namespace Kavra::Devices
