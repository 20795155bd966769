/// Reading RLC run-length rasters.
#pragma once

#include "readers/ByteSource.h"
#include "readers/ImageReaderInterface.h"

#include <cstdint>
#include <optional>

namespace Kavra::Devices {

/// A bilevel raster stored as runs of set pixels, shown in opaque white on opaque black. Numbers are big-endian.
///
///     offset  bytes  field
///          0      2  rows
///          2      2  columns
///          4      2  runs of the first row, then 4 bytes a run: start and end, counted from the right
///          ...       the other rows likewise
///       -344    344  trailer, in some files (`RlcTrailer`)
///
/// A row with a run that is refused (`RlcMask`) raises one warning and shows only the runs that the file has behind
/// that one. Where the file ends the rest is black. Nothing makes `ReadImage` fail.
class RlcReader final : public ImageReaderInterface {
public:
    /// Neither the sizes nor the rows are checked.
    bool Open(const KString& path) override;
    /// Reads the first image, whatever `frame`. Writes nothing where a size is not above 0.
    bool ReadImage(unsigned char* buffer, int frame) override;

    int GetWidth() override { return mColumns; }
    int GetHeight() override { return mRows; }
    int GetRowPitch() override;
    /// 1, or what the directory in the trailer lists, which may be none. Opening another file with a directory adds to
    /// the count of the one before.
    int GetFrameCount() override { return mFrameCount; }

private:
    void CountFrames();

    std::optional<ByteSource> mSource;
    std::int16_t mRows = 0;
    std::int16_t mColumns = 0;
    int mFrameCount = 0;
};

}  // namespace Kavra::Devices
