/// Reading CALS raster files of type 1.
#pragma once

#include "readers/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/cals/CalsHeader.h"

#include <cstdint>
#include <optional>

namespace Kavra::Devices {

/// One bilevel image in Group 4 coding behind a text header (`CalsHeader`). It is shown in negative: what the coding
/// calls white comes out opaque black, and black opaque white.
///
/// A row that cannot be decoded raises one warning and shows the row before it once more; decoding goes on. Rows for
/// which there is no data are black. Nothing makes `ReadImage` fail.
class CALSReader final : public ImageReaderInterface {
public:
    /// The header's counts are taken as they are, even where no image can have them.
    bool Open(const KString& path) override;
    /// `frame` does not matter. Writes nothing where the header's counts are not above 0.
    bool ReadImage(unsigned char* buffer, int frame) override;

    int GetWidth() override { return mWidth; }
    int GetHeight() override { return mHeight; }
    /// At most the largest `int`.
    int GetRowPitch() override;
    EDataOrientation GetOrientation() override { return mHeader.Orientation(); }

private:
    std::optional<ByteSource> mSource;
    CalsHeader mHeader;
    std::int32_t mWidth = 0;
    std::int32_t mHeight = 0;
};

}  // namespace Kavra::Devices
