/// Band-interleaved rasters: raw samples in a ".bil" file, described by a ".hdr" file beside it.
#pragma once

#include "common/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/spot/BandHeader.h"

#include <optional>

namespace Kavra::Devices {

/// 8-bit rasters of one band come out as `kL8`, or as `kR8G8B8A8` where a palette colours them; of three bands as
/// `kR8G8B8A8`. Each band of a deeper raster is a frame of its own: `kL16`, or `kR32F` for floats. Samples are
/// little-endian. A sample that its row does not hold is zero.
class SpotReader final : public ImageReaderInterface {
public:
    /// Any file beside the ".bil" and the ".hdr" file that shares their name leads to them.
    bool Open(const KString& path) override;
    bool ReadImage(unsigned char* buffer, int frame) override;

    int GetWidth() override { return mHeader.columns; }
    int GetHeight() override { return mHeader.rows; }
    int GetRowPitch() override;
    EFormat GetFormat() override { return mFormat; }
    int GetFrameCount() override { return mFrameCount; }

private:
    std::optional<Common::ByteSource> mData;  // nothing unless a raster is open
    BandHeader mHeader;
    EFormat mFormat = kUnknown;
    int mFrameCount = 1;
};

}  // namespace Kavra::Devices
