/// The levels of one texture, one after another.
///
/// The levels of a box are the means of the ones before. Those of a wider filter are made by it from the means two levels
/// above, which have four times their sides, or from level 0 where that is nearer, and not from one another: a filter on a
/// filter on a filter is another one and softer. In photographs tents that followed one another lost a tenth of the contrast
/// and cubics a twentieth, beside one filter over level 0; from such means it is a hundredth, and level 0 is read three
/// times and not once for each level. Everything is kept in floats on the way, so that neither rounding nor clipping adds
/// up.
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

    const Devices::Dds::Extent& Size() const { return mMade.size; }
    /// Bytes of a face of the level as it is stored.
    std::uint64_t FaceBytes() const { return Pixels(mMade.size) * mColours.PixelBytes(); }
    /// Writes a face of the level, packed.
    void Store(std::size_t face, unsigned char* out) const;

private:
    using Floats = std::unique_ptr<float[]>;
    using Pictures = std::vector<std::unique_ptr<MipPicture>>;

    /// Floats of all faces; of level 0 there are none, as it is in memory as it is stored.
    struct Level {
        int number = 0;
        Devices::Dds::Extent size;
        std::vector<Floats> faces;
    };

    static std::size_t Pixels(const Devices::Dds::Extent& size);
    /// Slice by slice, face by face.
    Pictures PicturesOf(const Level& level) const;
    /// A level below another one.
    Level Filtered(const Level& from, int number, Devices::EResampleFilter filter) const;
    void FilterFace(const Pictures& pictures, const Devices::Dds::Extent& from, std::size_t face,
                    const Devices::Dds::Extent& to, Devices::EResampleFilter filter, float* out) const;
    double ShareOfLevel0() const;
    float ScaleOfLevel() const;

    MipTexture mTexture;
    const MipColours& mColours;
    Devices::MipOptions mOptions;
    Level mMade;          ///< what is asked for
    Level mMeans;         ///< what wider filters make it from
    float mSeenFrom = 0;  ///< the alpha, of those whose share is kept; 0: it is not
    double mShare = 0;
    float mAlphaScale = 1;
};

}  // namespace Kavra::Common
