/// PCX files: recognising and reading them.
///
/// A header, lines of pixels, and in some files a palette at the end. Numbers are little-endian; what is not listed is
/// not used.
///
///     offset  bytes  field
///          0      1  manufacturer, 10
///          1      1  version: 0, 2, 3 or 5
///          2      1  encoding: 0 raw, 1 run-length coded
///          3      1  bits a pixel, in each plane
///          4    4x2  first column, first row, last column, last row
///         16     48  palette of 16 colours: red, green, blue
///         65      1  planes
///         66      2  bytes of one row of one plane: a line
///         68      2  kind of palette: 2 is grey
///        128         lines, those of all planes of a row one after another
///       -769    769  of version 5 with 8 bits a pixel: a byte of any value, and a palette of 256 colours
///
/// What stands here is read as the contract has it; what the common reading does otherwise - and which other files it
/// knows, those of several pages among them - stands in `PcxCommonColours.h`, `PcxCommonRows.h` and `DcxPages.h`.
#pragma once

#include "common/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/Reading.h"
#include "readers/pcx/DcxPages.h"
#include "readers/pcx/PcxHeader.h"
#include "readers/pcx/PcxRuns.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

class PcxPalette {
public:
    /// The palette of a file with 1, 4 or 8 bits a pixel: the 256 colours at its end where it has those, else the first
    /// 2 or all 16 colours of the header. Two equal colours of a 1-bit file are told apart by making the second darker
    /// by one (and white, if they are black). Fails when the file is too short to hold the 256 colours.
    [[nodiscard]] static Common::Result<PcxPalette> Read(Common::ByteSource& source, const PcxHeader& header);

    /// Whether every colour is as grey as its index says: entry i is (i, i, i).
    bool IsGreyRamp() const;

    /// Writes red, green, blue and 255 to the pixels whose index has a colour. The others stay as they are.
    void Colour(std::span<const unsigned char> indices, std::span<unsigned char> pixels) const;

private:
    using Entry = std::array<unsigned char, 4>;

    explicit PcxPalette(std::span<const unsigned char> triples);
    void TellTwoColoursApart();

    std::array<Entry, 256> mEntries{};
    std::size_t mCount = 0;
};

/// The palette index that each value of four bits becomes, in files that pack two pixels into a byte.
using PcxNibbles = std::array<unsigned char, 16>;

/// There is one such table in the process, which whoever opens a 4-bit file writes and whoever reads one uses: a file's
/// pixels follow the 4-bit file that was opened last. With a grey ramp the values are spread over 0 to 255, else they
/// stay. Threads: any; while two open 4-bit files of different kinds, what either reads is unspecified.
void SetPcxNibbles(bool isGreyRamp);
PcxNibbles CurrentPcxNibbles();

/// Reads lines, each the bytes of one row of one plane.
class PcxLines {
public:
    /// Lines from the end of the header on, read into `capacity` bytes each: what a row needs of a line, which may be
    /// more or less than the file's own length of a line. The source is this reader's alone as long as it lives.
    PcxLines(Common::ByteSource& source, const PcxHeader& header, std::size_t capacity);

    std::size_t Capacity() const { return mCapacity; }

    /// Reads the next line into the first `Capacity()` bytes of `out` and tells how many bytes came. The others stay as
    /// they are.
    std::size_t Read(std::span<unsigned char> out);

    /// Forgets what is left of a run that did not fit into the last line.
    void DropRun();

    /// Whether each line began where those before it end by the file's length of a line.
    bool WereInStep() const { return mWereInStep; }

    /// Whether bytes were missing in lines behind such that had some.
    bool EndedEarly() const { return mEndedEarly; }

    /// Whether bytes were missing in any line.
    bool AreShort() const { return mAreShort; }

    /// Where in the source the next line begins.
    std::uint64_t Position() const { return mRuns ? mRuns->Position() : mSource.Position(); }

    /// How many lines since it was last asked the data ended in or before. Of run-length coded files: raw ones end
    /// unnoticed.
    int TakeLinesOutOfData();

private:
    std::size_t ReadRaw(std::span<unsigned char> out);
    std::size_t ReadCoded(std::span<unsigned char> out);

    Common::ByteSource& mSource;
    std::size_t mCapacity;
    std::size_t mLineBytes;
    std::optional<PcxRuns> mRuns;  // nothing for raw lines
    int mLinesOutOfData = 0;
    bool mHasBytes = false;
    bool mWereInStep = true;
    bool mEndedEarly = false;
    bool mAreShort = false;
};

/// Rows of a picture with a palette: an index a pixel.
///
/// Bytes that are not there are 0 in rows of 1 bit. In all others they are what the row before left: its indices, of
/// 4 packed bits already spread, or the bits of the same plane.
class PcxIndexRows {
public:
    PcxIndexRows(Common::ByteSource& source, const PcxHeader& header);

    /// The next row, as long as the picture is wide. Valid until the next call.
    std::span<const unsigned char> Next();

    PcxLines& Lines() { return mLines; }

private:
    void NextFromPlanes();
    void NextFromBits();
    void NextFromNibbles();
    void NextFromBytes();

    void (PcxIndexRows::*mNext)() = nullptr;  // for the layout of the file
    PcxLines mLines;
    std::size_t mWidth;
    std::size_t mPlanes;
    std::size_t mPlaneBytes;
    std::vector<unsigned char> mPacked;   // one plane behind the other
    std::vector<unsigned char> mIndices;  // the row, up to whole bytes of bits
    PcxNibbles mNibbles;
};

/// Rows of a picture of 24 bits, which has no palette: three lines a row - red, green, blue - whatever planes the
/// header claims. Bytes that are not there are 0.
class PcxColourRows {
public:
    PcxColourRows(Common::ByteSource& source, const PcxHeader& header);

    /// Writes the next row: red, green, blue and 255 a pixel.
    void Next(std::span<unsigned char> pixels);

    PcxLines& Lines() { return mLines; }

private:
    const unsigned char* ReadPlane(std::size_t plane);

    PcxLines mLines;
    std::size_t mPlaneBytes;
    std::vector<unsigned char> mPlanes;    // one behind the other
    std::array<std::size_t, 3> mFilled{};  // of each plane, how many bytes may be other than 0
};

/// Frames of `kR8G8B8A8`, rows from the top: one, but for files of several pages in the common reading, of which each has
/// a size of its own. Files of 1, 4 and 8 bits a pixel have a palette, in one plane or in one
/// plane a bit; files of 24 bits have three planes of colour.
///
/// Only opening fails: for what is no PCX file, has no pixels or lacks its palette. Pixels whose index has no colour
/// are left alone. Where the data end early there is one warning for each line that they end in or do not reach, and
/// the picture is finished with what `PcxIndexRows` and `PcxColourRows` say of missing bytes.
class PCXReader final : public ImageReaderInterface {
public:
    explicit PCXReader(ELegacyReading reading = kLegacyContract) : mReading(reading) {}

    void Close() override;
    Common::Result<> OpenFiles(PictureFiles files) override;
    bool SelectFrame(int frame) override;
    /// Reads the frame that was selected, whatever `frame` says.
    Common::Result<> ReadFrame(Common::RowSink& rows, int frame) override;

    int GetWidth() override { return mHeader.Width(); }
    int GetHeight() override { return mHeader.Height(); }
    int GetRowPitch() override { return 4 * mHeader.Width(); }
    int GetFrameCount() override { return mPages.empty() ? 1 : static_cast<int>(mPages.size()); }

    void LookForDifferences() override { mIsCompared = true; }
    const char* GetDifference() override { return mReading.Difference(); }

private:
    Common::Result<> OpenContractFile(Common::ByteSource source);
    Common::Result<> OpenCommonFile(Common::ByteSource source);
    Common::Result<> OpenPage(std::size_t page);
    void ReadContractFrame(Common::RowSink& rows);
    void ReadCommonFrame(Common::RowSink& rows);

    Reading mReading;
    bool mIsCompared = false;                   // with the common reading, which decodes the picture once more
    std::optional<Common::ByteSource> mSource;  // nothing unless a file is open; of several pages the selected one
    std::optional<Common::ByteSource> mBinder;  // the file with the pages
    std::vector<DcxPage> mPages;
    PcxHeader mHeader;
    std::optional<PcxPalette> mPalette;  // nothing for 24 bits
};

}  // namespace Kavra::Devices
