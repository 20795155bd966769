/// The levels of one texture, each made from the one before.
#pragma once

#include "common/dds/DdsShape.h"
#include "common/mips/MipPictures.h"

#include <kavra/devices/MipChain.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Kavra::Common {

/// One flat picture, the six faces of a cube map, or a volume: level 0, somebody else's.
struct MipTexture {
    Devices::Dds::Extent size;
    std::span<const void* const> faces;  ///< one, or six
    std::size_t pitch, slicePitch;
};

class MipBuilder {
public:
    /// `options` are possible, and sizes sane; `colours` live longer. Throws `std::bad_alloc`, as all of this does.
    MipBuilder(const MipTexture& texture, const MipColours& colours, const Devices::MipOptions& options);

    /// Filters the next level, of which there must be one. The first is level 1.
    void Next();

    const Devices::Dds::Extent& Size() const { return mSize; }
    /// Bytes of a face of the level as it is stored.
    std::uint64_t FaceBytes() const { return Pixels(mSize) * mColours.PixelBytes(); }
    /// Writes a face of the level, packed.
    void Store(std::size_t face, unsigned char* out) const;

private:
    using Floats = std::unique_ptr<float[]>;
    using Pictures = std::vector<std::unique_ptr<MipPicture>>;

    static std::size_t Pixels(const Devices::Dds::Extent& size);
    /// Slice by slice, face by face.
    Pictures PicturesOfLevel() const;
    std::vector<Floats> FilteredFaces(const Devices::Dds::Extent& size) const;
    void FilterFace(const Pictures& pictures, std::size_t face, const Devices::Dds::Extent& size, float* out) const;
    double ShareOfLevel0() const;
    float ScaleOfLevel() const;

    MipTexture mTexture;
    const MipColours& mColours;
    Devices::MipOptions mOptions;
    Devices::Dds::Extent mSize;  ///< of the level
    std::vector<Floats> mFaces;  ///< of the level; none of level 0
    float mSeenFrom = 0;         ///< the alpha, of those whose share is kept; 0: it is not
    double mShare = 0;
    float mAlphaScale = 1;
};

}  // namespace Kavra::Common
