/// DDS cube maps and volumes through OpenImageIO, one face or slice at a time.
///
/// The library reports the lower levels of a cube map with wrong sizes, reads them from wrong places, keeps the face
/// it read last in process-wide variables, and delivers the first slice of a volume for every slice. A single 2-D
/// picture it decodes right: so each face and slice is presented to it as a small DDS file of its own, in memory.
#pragma once

#include "common/ByteSource.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Kavra::Devices {

/// What a level's spec should say, from level 0's as the library reports it: width, height and depth
/// halved `level` times, never below 1. A cube map stands on its side: 6 faces of `full_width` x `full_height` on top
/// of one another.
OIIO::ImageSpec DdsLevelSpec(const OIIO::ImageSpec& top, int level);

/// The same for the level at which `input`, an open DDS file, stands. Flat textures have the library's own spec.
OIIO::ImageSpec DdsLevelSpec(OIIO::ImageInput& input);

/// Reads channels 0 to `channels` - 1 of the one picture of a DDS file in memory, which must have this size and number of
/// channels, into pixels that are `pixelStride` bytes apart in tight rows. False when the library refuses it.
bool DecodeFlatDds(std::span<const unsigned char> file, int width, int height, int fileChannels, int channels,
                   OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride);

/// Decodes the faces and slices of one file. Objects share nothing, so files may be read on any number of threads, each
/// object on one at a time.
class DdsSlices {
public:
    /// Nothing when the file is no DDS or none that the library decodes.
    static std::optional<DdsSlices> Open(Common::ByteSource file);

    /// The same with cubes and volumes as the format has them, where the library sees flat textures too.
    static std::optional<DdsSlices> OpenStored(Common::ByteSource file);

    ETextureType Type() const { return mShape.type; }
    /// Of one face.
    Dds::Extent LevelSize(int level) const { return Dds::LevelSize(mShape.size, level); }
    /// Faces of a cube, those that are not there included, or slices.
    int SliceCount(int level) const { return mShape.FaceCount() * LevelSize(level).depth; }
    /// Whether a face of a cube is in the file; slices are.
    bool HasFace(int face) const { return mShape.type != kTextureCube || mShape.HasFace(face); }

    /// Mip levels, 1 to the full chain of the size.
    int Levels() const { return mShape.levels; }

    /// Whether the file is long enough to hold every face or slice of the level: a header alone may claim gigabytes.
    bool HasLevel(int level) const;

    /// Decodes channels 0 to `channels` - 1 of all faces or slices of a level into `out`, one after another in tight
    /// rows of pixels that are `pixelStride` bytes apart; faces that the file leaves out become zero bytes. `levelSpec`
    /// is the level's spec as from `DdsLevelSpec`, and `out` holds width x height x depth x `pixelStride` bytes
    /// of it. False when the file ends early, the library refuses a slice, or file and spec disagree.
    bool ReadLevel(int level, const OIIO::ImageSpec& levelSpec, int channels, OIIO::TypeDesc type, unsigned char* out,
                   std::size_t pixelStride);

    /// The same of `count` faces or slices from `first` on; `levelSpec` may be that of a single one, too. False also
    /// where the level has not so many.
    bool ReadSlices(int level, const OIIO::ImageSpec& levelSpec, int first, int count, int channels,
                    OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride);

private:
    DdsSlices(Common::ByteSource file, const Dds::Header& header, const Dds::Shape& shape, const Dds::StoredUnit& unit);
    static std::optional<DdsSlices> Open(Common::ByteSource file,
                                         std::optional<Dds::Shape> (*shapeOf)(const Dds::Header& header));
    std::uint64_t SliceOffset(int level, int slice) const;
    bool ReadBytes(std::uint64_t offset, std::span<unsigned char> bytes);

    Common::ByteSource mFile;
    Dds::Header mHeader;
    Dds::Shape mShape;
    Dds::StoredUnit mUnit;
};

}  // namespace Kavra::Devices
