/// FLI and FLC animations.
#pragma once

#include "readers/ByteSource.h"
#include "readers/ImageReaderInterface.h"
#include "readers/flic/FlicFrame.h"
#include "readers/flic/FlicHeader.h"

#include <optional>

namespace Kavra::Devices {

/// Every frame comes out as opaque `kR8G8B8A8`. A file that ends early, or whose chunks are damaged, gives the last
/// picture that was reached: `ReadImage` fails only when no file is open. Throws `std::bad_alloc` where there is no
/// memory for a byte a pixel besides the block.
class FLICReader final : public ImageReaderInterface {
public:
    bool Open(const KString& path) override;
    /// Negative frames are the first.
    bool ReadImage(unsigned char* buffer, int frame) override;

    int GetWidth() override { return mHeader.width; }
    int GetHeight() override { return mHeader.height; }
    int GetRowPitch() override { return 4 * mHeader.width; }
    int GetFrameCount() override { return mHeader.frames; }
    std::uint64_t GetWorkingBytes() override { return FlicFrame::BytesOf(mHeader.width, mHeader.height); }

private:
    std::optional<ByteSource> mFile;  // nothing unless an animation is open
    FlicHeader mHeader;
};

}  // namespace Kavra::Devices
