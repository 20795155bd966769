/// FLI and FLC animations: recognising and playing them.
///
/// A header, and chunks behind it. Numbers are little-endian; what is not listed is not used.
///
///     offset  bytes  field
///          4      2  kind: 0xAF11 (FLI) or 0xAF12 (FLC)
///          6      2  frames
///          8      2  width
///         10      2  height
///        128         chunks
///
/// A chunk:
///
///     offset  bytes  field
///          0      4  size, these bytes included
///          4      2  kind
///          6         body
///
/// A frame is a chunk too, of which only the count of chunks inside (2) and 8 unused bytes are the body: the chunks
/// inside follow like any other.
///
/// So the contract has it; how the common reading plays files stands in `FlicMovie.h`.
#pragma once

#include "common/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/Reading.h"
#include "readers/flic/FlicChunks.h"
#include "readers/flic/FlicHeader.h"
#include "readers/flic/FlicMovie.h"

#include <cstdint>
#include <optional>

namespace Kavra::Devices {

/// Plays the chunks from the first on into `frame` and `palette`, until those of frame `wanted` are done and the next
/// frame has begun, the file ends, or as many chunks were read as the header counts frames. The last limit means that
/// an animation whose frames hold several chunks each is never played to its end. Chunks of other kinds are skipped.
/// A reading that is given is asked for what the common one would show otherwise.
void PlayFlic(Common::ByteSource& source, const FlicHeader& header, int wanted, FlicFrame& frame, FlicPalette& palette,
              Reading* reading = nullptr);

/// Every frame comes out as opaque `kR8G8B8A8`. A file that ends early, or whose chunks are damaged, gives the last
/// picture that was reached: `ReadFrame` fails only when no file is open. Throws `std::bad_alloc` where there is no
/// memory for a byte a pixel besides the block.
class FLICReader final : public ImageReaderInterface {
public:
    explicit FLICReader(ELegacyReading reading = kLegacyContract) : mReading(reading) {}

    void Close() override;
    Common::Result<> OpenFiles(PictureFiles files) override;
    /// Negative frames are the first.
    Common::Result<> ReadFrame(Common::RowSink& rows, int frame) override;

    int GetWidth() override { return mHeader.width; }
    int GetHeight() override { return mHeader.height; }
    int GetRowPitch() override { return 4 * mHeader.width; }
    int GetFrameCount() override { return mReading.IsCommon() ? mMovie.frames : mHeader.frames; }
    std::uint64_t GetWorkingBytes() override { return FlicFrame::BytesOf(mHeader.width, mHeader.height); }

    void LookForDifferences() override { mIsCompared = true; }
    const char* GetDifference() override { return mReading.Difference(); }

private:
    void PlayContract(int frame, FlicFrame& played, FlicPalette& palette);

    Reading mReading;
    bool mIsCompared = false;                   // with the common reading, in which small frames are played once more
    std::optional<Common::ByteSource> mSource;  // nothing unless a file is open
    FlicHeader mHeader;
    FlicMovie mMovie;  // of the common reading
};

}  // namespace Kavra::Devices
