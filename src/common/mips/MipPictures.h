/// Pictures that levels are filtered from, as floats, and what lies beyond their edges.
#pragma once

#include "common/mips/MipColours.h"
#include "common/resample/ResampleKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Kavra::Common {

/// Pixels of so many floats each. Buffers that take them have `kSlack` floats more, which may be written. Any number of
/// threads may read side by side.
class MipPicture {
public:
    virtual ~MipPicture() = default;
    /// `count` pixels of row `y` from column `x` on, which are all there.
    virtual void Read(int y, int x, std::size_t count, float* out) const = 0;
};

/// Pixels as they are stored, `pitch` bytes from row to row.
class StoredPicture final : public MipPicture {
public:
    StoredPicture(const MipColours& colours, const unsigned char* rows, std::size_t pitch)
        : mColours(colours), mRows(rows), mPitch(pitch) {}
    void Read(int y, int x, std::size_t count, float* out) const override;

private:
    const MipColours& mColours;
    const unsigned char* mRows;
    std::size_t mPitch;
};

/// Packed floats.
class FloatPicture final : public MipPicture {
public:
    FloatPicture(const float* pixels, int width, int channels)
        : mPixels(pixels), mWidth(static_cast<std::size_t>(width)), mChannels(static_cast<std::size_t>(channels)) {}
    void Read(int y, int x, std::size_t count, float* out) const override;

private:
    const float* mPixels;
    std::size_t mWidth, mChannels;
};

/// The weighted sum of slices; `isBounded`: between the least and the largest of their values.
class BlendedSlices final : public MipPicture {
public:
    BlendedSlices(int channels, bool isBounded)
        : mChannels(static_cast<std::size_t>(channels)), mIsBounded(isBounded) {}
    void Add(const MipPicture& slice, float weight) { mSlices.push_back({&slice, weight}); }
    void Read(int y, int x, std::size_t count, float* out) const override;

private:
    struct Slice {
        const MipPicture* picture;
        float weight;
    };
    void ReadPart(int y, int x, std::size_t count, float* out) const;

    std::size_t mChannels;
    bool mIsBounded;
    std::vector<Slice> mSlices;
};

/// A picture that goes on beyond its edges.
class MipPlane {
public:
    virtual ~MipPlane() = default;
    /// The same as `MipPicture::Read`, from anywhere.
    virtual void Read(std::int64_t y, std::int64_t x, std::size_t count, float* out) const = 0;

protected:
    MipPlane(const MipPicture& picture, int width, int height, int channels)
        : mPicture(picture), mWidth(width), mHeight(height), mChannels(static_cast<std::size_t>(channels)) {}

    /// Pixels of a row that is there from columns that need not be; `one(x, out)` reads one that is not.
    template <class One>
    void ReadRow(int y, std::int64_t x, std::size_t count, float* out, const One& one) const;

    const MipPicture& mPicture;
    int mWidth, mHeight;
    std::size_t mChannels;
};

/// Beyond the edges stand the last pixels, or those of the other side.
class FlatPlane final : public MipPlane {
public:
    FlatPlane(const MipPicture& picture, int width, int height, int channels, Devices::EMipEdges edges)
        : MipPlane(picture, width, height, channels), mEdges(edges) {}
    void Read(std::int64_t y, std::int64_t x, std::size_t count, float* out) const override;

private:
    Devices::EMipEdges mEdges;
};

/// The place within 0 to `count - 1` that stands for one beyond.
int PlaceWithin(std::int64_t place, int count, Devices::EMipEdges edges);

/// Beyond the edges of a face lie its neighbours, as if folded flat; beyond a corner the mean of the pixels of the three
/// faces there.
class CubePlane final : public MipPlane {
public:
    /// All six faces, square.
    CubePlane(std::span<const MipPicture* const> faces, int face, int side, int channels)
        : MipPlane(*faces[static_cast<std::size_t>(face)], side, side, channels), mFaces(faces), mFace(face) {}
    void Read(std::int64_t y, std::int64_t x, std::size_t count, float* out) const override;

private:
    struct Texel {
        int face, x, y;
    };
    /// For a place that lies beyond one edge.
    Texel Neighbour(std::int64_t x, std::int64_t y) const;
    void ReadOne(std::int64_t x, std::int64_t y, float* out) const;
    void ReadCorner(std::int64_t x, std::int64_t y, float* out) const;

    std::span<const MipPicture* const> mFaces;
    int mFace;
};

}  // namespace Kavra::Common
