/// Spot rasters: raw samples of one or three bands in a ".bil" file, described by a ".hdr" file beside it.
///
/// The header is text: a keyword and a value on each line. Counts are in bytes unless said otherwise; what is not listed
/// is not used.
///
///     keyword          value                                                        where it is absent
///     NCOLS, NROWS     columns, rows                                                not accepted
///     NBITS            bits of a sample                                             8
///     NBANDS           bands: 1 or 3                                                1
///     PIXELTYPE        S... signed, F... floats of 32 bits                          unsigned
///     BYTEORDER        MOTOROLA is not accepted                                     little-endian
///     LAYOUT           how bands interleave: bil by line, bip by pixel, bsq not     bil
///     SKIPBYTES        before the first row                                         0
///     RECORDSKIPBYTES  before the samples of a row                                  0
///     BANDROWBYTES     one row of one band                                          what its samples and the skip take
///     TOTALROWBYTES    one row of all bands                                         the same of them all
///     BANDGAPBYTES     between bands that lie one after another                     0
///     BAND_RGB         1 or 123; 3 or 321: the first of three bands is blue         1
///
/// XDIM, YDIM, ULXMAP, ULYMAP, MAPUNITS, Projection, Datum and Zone say where the raster lies on the map. 8-bit samples may
/// have a palette in a ".pal" or ".clr" file: text, too.
#pragma once

#include "common/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/Reading.h"
#include "readers/spot/SpotHeader.h"

#include <optional>
#include <string>

namespace Kavra::Devices {

/// Whether open files are those of a raster: the data are not empty, and the header describes them.
bool IsSpot(PictureFiles& files);

/// What the common reading takes the files of a path for.
enum class SpotFiles {
    kOther,
    kWhole,
    kCut,  ///< a raster by its name and header, of which rows are missing
};
SpotFiles AreSpotCommon(PictureFiles& files);

/// 8-bit rasters of one band come out as `kL8`, or as `kR8G8B8A8` where a palette colours them; of three bands as
/// `kR8G8B8A8`. Each band of a deeper raster is a frame of its own: `kL16`, or `kR32F` for floats. Samples are
/// little-endian. A sample that its row does not hold is zero.
///
/// The common reading has a header (`SpotCommonHeader.h`) and pixels (`SpotCommonRows.h`) of its own, and takes the
/// samples from the file that is named. A raster of which rows are missing is described; reading it raises a warning that
/// says how many rows there are, and fails.
class SpotReader final : public ImageReaderInterface {
public:
    explicit SpotReader(ELegacyReading reading = kLegacyContract) : mReading(reading) {}

    /// Any path beside the ".bil" and the ".hdr" file that shares their name leads to them; in the common reading that of
    /// the samples.
    Common::Result<PictureFiles> FindFiles(const KString& path) override;
    void Close() override;
    Common::Result<> OpenFiles(PictureFiles files) override;
    /// Frames beyond the last are the last, negative ones the first. Fails, and writes nothing, for a depth or a layout
    /// that cannot be decoded.
    Common::Result<> ReadFrame(Common::RowSink& rows, int frame) override;

    int GetWidth() override { return mHeader.columns; }
    int GetHeight() override { return mHeader.rows; }
    int GetRowPitch() override;
    EFormat GetFormat() override { return mFormat; }
    int GetFrameCount() override { return mFrameCount; }
    std::uint64_t GetWorkingBytes() override;

    /// Looks at the files once more when it is asked, and at the samples where these decide.
    const char* GetDifference() override;

private:
    Common::Result<> OpenContractFiles(PictureFiles files);
    Common::Result<> OpenCommonFiles(PictureFiles files);

    /// The files that are open in the contract's reading, for whoever asks what the other would make of them.
    struct ContractFiles {
        std::wstring path;
        bool isShown = false;
        bool isAsked = false;
    };

    Reading mReading;
    std::optional<Common::ByteSource> mSource;  // nothing unless a raster is open
    SpotHeader mHeader;
    ContractFiles mContract;
    EFormat mFormat = kUnknown;
    int mFrameCount = 1;
};

}  // namespace Kavra::Devices
