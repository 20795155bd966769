/// Reading PCX pictures.
#pragma once

#include "readers/ImageReaderInterface.h"
#include "readers/pcx/PcxHeader.h"
#include "readers/pcx/PcxPalette.h"

#include <optional>

namespace Kavra::Devices {

/// One frame of `kR8G8B8A8`, rows from the top. Files of 1, 4 and 8 bits a pixel have a palette, in one plane or in one
/// plane a bit; files of 24 bits have three planes of colour.
///
/// Only `Open` fails: for what is no PCX file, has no pixels or lacks its palette. Pixels whose index has no colour are
/// left alone. Where the data end early there is one warning for each line that they end in or do not reach, and the
/// picture is finished with what `PcxIndexRows` and `PcxColourRows` say of missing bytes.
class PCXReader final : public ImageReaderInterface {
public:
    bool Open(const KString& path) override;
    bool ReadImage(unsigned char* buffer, int frame) override;
    int GetWidth() override { return mSource ? mHeader.Width() : 0; }
    int GetHeight() override { return mSource ? mHeader.Height() : 0; }
    int GetRowPitch() override { return 4 * GetWidth(); }

private:
    std::optional<Common::ByteSource> mSource;  // nothing unless a file is open
    PcxHeader mHeader;
    std::optional<PcxPalette> mPalette;  // nothing for 24 bits
};

}  // namespace Kavra::Devices
