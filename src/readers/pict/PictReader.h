/// The reader of PICT pictures.
#pragma once

#include "common/PixelBlock.h"
#include "common/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/pict/PictPicture.h"

#include <cstddef>
#include <optional>
#include <span>

namespace Kavra::Devices {

/// Reads the bitmaps and pixel maps of a picture of version 1 or 2 onto a white canvas of its frame; everything else
/// that the picture draws is left out.
///
/// Holds the file's bytes while it lives, and a few rows while it reads. A file that is damaged anywhere is refused
/// with the warning "The data is corrupted."; one of less than 512 bytes, or of 2 GiB or more, silently.
class PictReader final : public ImageReaderInterface {
public:
    bool Open(const KString& path) override;
    bool ReadImage(unsigned char* buffer, int frame) override;
    int GetWidth() override { return mPicture ? mPicture->frame.Width() : 0; }
    int GetHeight() override { return mPicture ? mPicture->frame.Height() : 0; }
    int GetRowPitch() override { return 4 * GetWidth(); }
    std::uint64_t GetWorkingBytes() override { return mFileBytes + (mPicture ? mPicture->WorkingBytes() : 0); }

private:
    bool ReadFile(const KString& path);
    std::span<const unsigned char> File() const { return {mFile.get(), mFileBytes}; }

    Common::PixelBlock mFile;
    std::size_t mFileBytes = 0;
    std::optional<PictPicture> mPicture;  // of a file that was accepted
};

}  // namespace Kavra::Devices
