/// DDS cube maps and volumes through OpenImageIO, one face or slice at a time.
///
/// The library reports the lower levels of a cube map with wrong sizes, reads them from wrong places, keeps the face
/// it read last in process-wide variables, and delivers the first slice of a volume for every slice. A single 2-D
/// picture it decodes right: so each face and slice is presented to it as a small DDS file of its own, in memory.
#pragma once

#include "common/FileHandle.h"

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// What a level's spec should say, from level 0's as the library reports it: width, height and depth
/// halved `level` times, never below 1. A cube map stands on its side: 6 faces of `full_width` x `full_height` on top
/// of one another.
OIIO::ImageSpec DdsLevelSpec(const OIIO::ImageSpec& top, int level);

/// The same for the level at which `input`, an open DDS file, stands. Flat textures have the library's own spec.
OIIO::ImageSpec DdsLevelSpec(OIIO::ImageInput& input);

/// Where the pixels of a DDS file lie, as its header says
/// (https://learn.microsoft.com/windows/win32/direct3ddds/dx-graphics-dds-pguide). Of an array, its first element.
class DdsLayout {
public:
    static constexpr std::size_t kMostHeaderBytes = 148;  ///< with the DX10 part; 128 without

    /// From the first bytes of a file. Nothing when they are no DDS header or the library does not decode the layout.
    static std::optional<DdsLayout> Parse(std::span<const std::uint8_t> start);

    int Width(int level) const;
    int Height(int level) const;
    int Levels() const { return mLevels; }                  ///< 1 to the full chain of the size
    int Slices(int level) const;                            ///< 6 for a cube map, the depth of a volume's level, else 1
    bool HasSlice(int slice) const;                         ///< false for a face that a partial cube map leaves out
    std::uint64_t SliceBytes(int level) const;              ///< bytes of one face or slice in the file
    std::uint64_t SliceOffset(int level, int slice) const;  ///< from the start of the file

    /// The header of a DDS file that holds one face or slice of the level alone, as a flat texture.
    std::vector<std::uint8_t> FlatHeader(int level) const;

private:
    DdsLayout() = default;
    bool ParseShape();
    std::uint64_t LevelBytes(int level) const;

    std::array<std::uint8_t, kMostHeaderBytes> mHeader{};
    std::size_t mHeaderBytes = 0;
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    std::uint32_t mDepth = 1;
    int mLevels = 1;
    bool mCube = false;
    std::uint32_t mFaces = 0;          // bit n: face n is in the file
    std::uint32_t mBytesPerPixel = 0;  // 0 for block-compressed layouts
    std::uint32_t mBytesPerBlock = 0;  // of 4 x 4 pixels; 0 for the others
};

/// Decodes the faces and slices of one file. Objects share nothing, so files may be read on any number of threads, each
/// object on one at a time.
class DdsSlices {
public:
    /// Nothing when the file cannot be opened or `DdsLayout` does not know it.
    static std::optional<DdsSlices> Open(const KString& path);

    const DdsLayout& Layout() const { return mLayout; }

    /// Whether the file is long enough to hold every face or slice of the level: a header alone may claim gigabytes.
    bool HasLevel(int level) const;

    /// Decodes channels 0 to `channels` - 1 of all faces or slices of a level into `out`, one after another in tight
    /// rows of pixels that are `pixelStride` bytes apart; faces that the file leaves out become zero bytes. `levelSpec`
    /// is the level's spec as from `DdsLevelSpec`, and `out` has room for width x height x depth x `pixelStride` bytes
    /// of it. False when the file ends early, the library refuses a slice, or file and spec disagree.
    bool ReadLevel(int level, const OIIO::ImageSpec& levelSpec, int channels, OIIO::TypeDesc type, unsigned char* out,
                   std::size_t pixelStride);

private:
    DdsSlices(Common::FileHandle file, std::uint64_t fileBytes, const DdsLayout& layout);
    bool ReadBytes(std::uint64_t offset, std::span<std::uint8_t> bytes);

    Common::FileHandle mFile;
    std::uint64_t mFileBytes;
    DdsLayout mLayout;
};

}  // namespace Kavra::Devices
