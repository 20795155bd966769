/// CALS raster files of type 1: recognising and reading them.
///
/// One bilevel image in Group 4 coding (ITU-T T.6) behind a header of 2048 bytes: records of 128 bytes of text,
/// "key: value", padded with spaces (MIL-R-28002).
///
///     record  offset  key        value
///          0       0  srcdocid:  text; this record or the next one tells that the file is CALS
///          1     128  dstdocid:  text
///          6     768  rtype:     kind of raster, 1
///          7     896  rorient:   two angles in degrees, of the rows and of the columns
///          8    1024  rpelcnt:   pixels a row, rows
///
/// Records that are not listed are not used.
#pragma once

#include "common/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/Reading.h"
#include "readers/cals/CalsCommonHeader.h"

#include <kavra/devices/EDataOrientation.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace Kavra::Devices {

/// The records of a header. Of one without any they say 0.
class CalsHeader {
public:
    static constexpr std::size_t kBytes = 2048;

    CalsHeader() = default;
    /// The bytes at the start of a file, which may be shorter; what is missing reads as zero.
    explicit CalsHeader(std::span<const unsigned char> bytes);

    bool HasDocumentId() const;  ///< in a record that the file holds whole, as below
    bool IsOfRasterType1() const;

    // Whatever the record says; 0 where it has no number. Neither is checked.
    std::int32_t Width() const { return Counts().first; }
    std::int32_t Height() const { return Counts().second; }

    /// Rows that run to the right below each other for angles that are not listed.
    EDataOrientation Orientation() const;

private:
    std::string_view Record(std::size_t number) const;
    std::pair<std::int32_t, std::int32_t> NumbersFrom(std::size_t record) const;
    std::pair<std::int32_t, std::int32_t> Counts() const;

    std::string mText = std::string(kBytes, '\0');
    std::size_t mPresent = 0;  // characters that the file holds
};

/// The header of a file that begins with a document identifier and whose raster type is 1. The position of the source
/// does not matter and is not kept.
[[nodiscard]] Common::Result<CalsHeader> ReadCalsHeader(Common::ByteSource& source);

/// Whether the file is one that the reader opens.
bool IsCals(Common::ByteSource& source);

/// Shows the image in negative: what the coding calls white comes out opaque black, and black opaque white.
///
/// A row that cannot be decoded raises one warning and shows the row before it once more; decoding goes on. Rows for
/// which there is no data are black. Nothing makes `ReadFrame` fail but that no file is open.
///
/// The common reading shows ink in black on white paper, and takes headers as real files have them
/// (`CalsCommonHeader`). The image ends with its end of block, or with the first row that cannot be decoded, which
/// raises one warning; the rest is white. A missing number of rows is counted. Rasters of another type than 1 are described;
/// reading them raises a warning that says why, and fails.
class CALSReader final : public ImageReaderInterface {
public:
    explicit CALSReader(ELegacyReading reading = kLegacyContract) : mReading(reading) {}

    void Close() override;
    /// The header's counts are taken as they are, even where no image can have them.
    Common::Result<> OpenFiles(PictureFiles files) override;
    /// `frame` does not matter. Writes nothing where the header's counts are not above 0.
    Common::Result<> ReadFrame(Common::RowSink& rows, int frame) override;

    int GetWidth() override { return mCommonHeader ? mCommonHeader->width : mHeader.Width(); }
    int GetHeight() override { return mCommonHeader ? mCommonHeader->height : mHeader.Height(); }
    /// At most the largest `int`.
    int GetRowPitch() override;
    EDataOrientation GetOrientation() override {
        return mCommonHeader ? mCommonHeader->orientation : mHeader.Orientation();
    }

    const char* GetDifference() override { return mReading.Difference(); }

private:
    Common::Result<> OpenCommonFiles(PictureFiles files);
    Common::Result<> ReadCommonFrame(Common::RowSink& rows);

    Reading mReading;
    std::optional<Common::ByteSource> mSource;  // nothing unless a file is open
    CalsHeader mHeader;
    std::optional<CalsCommonHeader> mCommonHeader;  // of the common reading, instead
};

}  // namespace Kavra::Devices
