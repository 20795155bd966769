/// PICT pictures: recognising and reading them.
///
/// A frame and a stream of opcodes, behind 512 bytes of the program that wrote the file. Numbers are big-endian.
///
///     offset  bytes  field
///          0    512  not used
///        512      2  size of the picture, its low 16 bits
///        514    4x2  frame: top, left, bottom, right
///        522         zero bytes, then the version: 11 01, or 11 02 FF
///                    opcodes, 1 byte each in version 1; 2 bytes at even offsets in version 2
#pragma once

#include "common/ByteSource.h"
#include "common/PixelBlock.h"
#include "readers/ImageReaderInterface.h"
#include "readers/Reading.h"
#include "readers/pict/PictCommonStream.h"
#include "readers/pict/PictStream.h"

#include <cstdint>
#include <optional>
#include <span>

namespace Kavra::Devices {

/// Whether a picture follows the 512 bytes that every file begins with: a frame that is not empty, and the opcode of
/// version 1 or 2. Needs 512 bytes after those, and takes no file of 2 GiB or more. The position of the source does not
/// matter and is not kept.
bool IsPict(Common::ByteSource& source);

/// What only the common reading knows: a picture without those 512 bytes, or in fewer bytes, of any length, in a frame
/// that may begin above or to the left of the origin (`FindPict`).
bool IsCommonPict(Common::ByteSource& source);

/// Reads the bitmaps and pixel maps of a picture of version 1 or 2 onto a white canvas of its frame; everything else
/// that the picture draws is left out.
///
/// Holds the file's bytes while it is open, and a few rows while it reads. A file that is damaged anywhere is refused
/// with the warning "The data is corrupted."; one of less than 512 bytes, or of 2 GiB or more, silently. The common
/// reading, which has no least size, shows a picture that breaks off as far as it goes, with the same warning.
class PictReader final : public ImageReaderInterface {
public:
    explicit PictReader(ELegacyReading reading = kLegacyContract) : mReading(reading) {}

    void Close() override;
    Common::Result<> OpenFiles(PictureFiles files) override;
    /// `frame` does not matter.
    Common::Result<> ReadFrame(Common::RowSink& rows, int frame) override;

    int GetWidth() override { return Frame().Width(); }
    int GetHeight() override { return Frame().Height(); }
    int GetRowPitch() override { return 4 * Frame().Width(); }
    std::uint64_t GetWorkingBytes() override;

    void LookForDifferences() override { mIsCompared = true; }
    const char* GetDifference() override { return mReading.Difference(); }

private:
    Common::Result<> TakeFile(Common::ByteSource& file);
    Common::Result<> TakePicture();
    Common::Result<> TakeCommonPicture();
    bool IsReadElsewhere();
    void ReadContractRows(Common::RowSink& rows);
    const PictRect& Frame() const { return mReading.IsCommon() ? mCommon.frame : mHeader.frame; }
    std::span<const unsigned char> Bytes() const;

    Common::PixelBlock mFile;  // its bytes
    Reading mReading;
    bool mIsCompared = false;                   // with the common reading, which draws some pictures twice
    std::optional<Common::ByteSource> mSource;  // over them; nothing unless a file is open
    PictPicture mHeader;                        // and all that follows it but the rows; in the contract's reading
    PictCommonPicture mCommon;                  // the same in the common reading
};

}  // namespace Kavra::Devices
