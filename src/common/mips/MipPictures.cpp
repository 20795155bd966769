#include "common/mips/MipPictures.h"

#include "common/resample/AcrossFilter.h"

#include <kavra/devices/CubeFaces.h>

#include <algorithm>
#include <cstring>

namespace Kavra::Common {

namespace {

constexpr std::size_t kMaxFloats = 512;  // of slices that are read at a time

/// Room for one pixel with what kernels write behind it.
using PixelBuffer = std::array<float, 4 + kSlack>;

}  // namespace

// --- Pictures --------------------------------------------------------------------------------------------------------

void StoredPicture::Read(int y, int x, std::size_t count, float* out) const {
    const std::size_t at = static_cast<std::size_t>(y) * mPitch + static_cast<std::size_t>(x) * mColours.PixelBytes();
    mColours.Decode(mRows + at, count, out);
}

void FloatPicture::Read(int y, int x, std::size_t count, float* out) const {
    const std::size_t at = static_cast<std::size_t>(y) * mWidth + static_cast<std::size_t>(x);
    std::memcpy(out, mPixels + at * mChannels, count * mChannels * sizeof(float));
}

void BlendedSlices::Read(int y, int x, std::size_t count, float* out) const {
    const std::size_t most = kMaxFloats / mChannels;
    for (std::size_t done = 0; done < count; done += most)
        ReadPart(y, x + static_cast<int>(done), std::min(most, count - done), out + done * mChannels);
}

/// Each slice is added to the sum, and widens the range, while it is near.
void BlendedSlices::ReadPart(int y, int x, std::size_t count, float* out) const {
    const ResampleKernels& kernels = GetResampleKernels();
    std::array<float, kMaxFloats + kSlack> values, low, high;
    const FloatRows row{values.data(), 0};
    const std::size_t floats = count * mChannels;
    bool begins = true;
    for (const Slice& slice : mSlices) {
        slice.picture->Read(y, x, count, values.data());
        kernels.addRowsUnfused(row, &slice.weight, 1, floats, out, begins);
        if (mIsBounded) kernels.rangeRows(row, &slice.weight, 1, floats, low.data(), high.data(), begins);
        begins = false;
    }
    if (mIsBounded) ClampToRange(low.data(), high.data(), floats, out);
}

// --- Planes ----------------------------------------------------------------------------------------------------------

/// From left to right: what is written behind the pixels that are there is written over.
template <class One>
void MipPlane::ReadRow(int y, std::int64_t x, std::size_t count, float* out, const One& one) const {
    const std::int64_t end = x + static_cast<std::int64_t>(count);
    const std::int64_t first = std::clamp<std::int64_t>(x, 0, mWidth),
                       last = std::clamp<std::int64_t>(end, first, mWidth);
    const auto at = [&](std::int64_t column) { return out + static_cast<std::size_t>(column - x) * mChannels; };
    for (std::int64_t column = x; column < std::min<std::int64_t>(end, 0); ++column)
        one(column, at(column));
    if (last > first) mPicture.Read(y, static_cast<int>(first), static_cast<std::size_t>(last - first), at(first));
    for (std::int64_t column = std::max<std::int64_t>(x, mWidth); column < end; ++column)
        one(column, at(column));
}

int PlaceWithin(std::int64_t place, int count, Devices::EMipEdges edges) {
    if (edges == Devices::kMipWrap) return static_cast<int>((place % count + count) % count);
    return static_cast<int>(std::clamp<std::int64_t>(place, 0, count - 1));
}

void FlatPlane::Read(std::int64_t y, std::int64_t x, std::size_t count, float* out) const {
    const int row = PlaceWithin(y, mHeight, mEdges);
    ReadRow(row, x, count, out, [&](std::int64_t column, float* pixel) {
        PixelBuffer one;
        mPicture.Read(row, PlaceWithin(column, mWidth, mEdges), 1, one.data());
        std::copy_n(one.begin(), mChannels, pixel);
    });
}

void CubePlane::Read(std::int64_t y, std::int64_t x, std::size_t count, float* out) const {
    if (y >= 0 && y < mHeight) {
        return ReadRow(static_cast<int>(y), x, count, out,
                       [&](std::int64_t column, float* pixel) { ReadOne(column, y, pixel); });
    }
    for (std::size_t i = 0; i < count; ++i)
        ReadOne(x + static_cast<std::int64_t>(i), y, out + i * mChannels);
}

CubePlane::Texel CubePlane::Neighbour(std::int64_t x, std::int64_t y) const {
    const auto side = static_cast<float>(mWidth);
    const auto middle = [&](std::int64_t i) { return (2 * static_cast<float>(i) + 1) / side - 1; };
    const bool isAcross = x < 0 || x >= mWidth;
    const std::int64_t beyond = isAcross ? x : y;
    const float edge = beyond < 0 ? -1.0F : 1.0F;
    // No neighbour is deeper than itself.
    const std::int64_t depth = std::min<std::int64_t>(beyond < 0 ? -beyond : beyond - mWidth + 1, mWidth);
    // Towards the edge, and from there not on along this face, but back along the direction that it looks in.
    const vec3<float> ahead = Devices::CubeDirection({mFace, 0, 0});
    const vec3<float> towards =
        Devices::CubeDirection({mFace, isAcross ? edge : middle(x), isAcross ? middle(y) : edge});
    const float back = (2 * static_cast<float>(depth) - 1) / side;
    const Devices::CubePlace place =
        Devices::CubePlaceOf({towards.x - back * ahead.x, towards.y - back * ahead.y, towards.z - back * ahead.z});
    const auto within = [&](float t) { return std::clamp(static_cast<int>((t + 1) / 2 * side), 0, mWidth - 1); };
    return {place.face, within(place.s), within(place.t)};
}

void CubePlane::ReadOne(std::int64_t x, std::int64_t y, float* out) const {
    const bool isAcross = x < 0 || x >= mWidth, isDown = y < 0 || y >= mHeight;
    if (isAcross && isDown) return ReadCorner(x, y, out);
    const Texel texel = isAcross || isDown ? Neighbour(x, y) : Texel{mFace, static_cast<int>(x), static_cast<int>(y)};
    PixelBuffer one;
    mFaces[static_cast<std::size_t>(texel.face)]->Read(texel.y, texel.x, 1, one.data());
    std::copy_n(one.begin(), mChannels, out);
}

void CubePlane::ReadCorner(std::int64_t x, std::int64_t y, float* out) const {
    const std::int64_t column = x < 0 ? 0 : mWidth - 1, row = y < 0 ? 0 : mHeight - 1;
    const std::int64_t left = x < 0 ? -1 : mWidth, up = y < 0 ? -1 : mHeight;
    PixelBuffer own, across, down;
    ReadOne(column, row, own.data());
    ReadOne(left, row, across.data());
    ReadOne(column, up, down.data());
    constexpr float kThird = 1.0F / 3.0F;
    for (std::size_t c = 0; c < mChannels; ++c)
        out[c] = (own[c] + across[c] + down[c]) * kThird;
}

}  // namespace Kavra::Common
