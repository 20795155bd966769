#include "readers/cals/CalsReader.h"

#include "readers/BilevelRow.h"
#include "readers/cals/CalsProbe.h"
#include "readers/ccitt/CcittDecoder.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>
#include <vector>

namespace Kavra::Devices {

bool CALSReader::Open(const KString& path) {
    mSource.reset();
    ReadResult<ByteSource> source = ByteSource::Open(path);
    if (!source || !IsCals(*source)) return false;
    mSource = std::move(*source);
    mHeader = CalsHeader(*mSource);
    mWidth = mHeader.Width();
    mHeight = mHeader.Height();
    return true;
}

int CALSReader::GetRowPitch() {
    constexpr std::int64_t kPixelBytes = 4;
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<std::int64_t>(mWidth * kPixelBytes, Limits::min(), Limits::max()));
}

bool CALSReader::ReadImage(unsigned char* buffer, int /*frame*/) {
    if (!mSource) return false;
    if (mWidth < 1 || mHeight < 1) return true;
    (void)mSource->Seek(std::min<std::uint64_t>(CalsHeader::kBytes, mSource->Size()));
    Ccitt::Decoder decoder(*mSource, mWidth, Ccitt::Mode::kGroup4, Ccitt::BitOrder::kMostSignificantFirst);
    const auto pitch = static_cast<std::size_t>(GetRowPitch());
    const std::span<unsigned char> pixels(buffer, pitch * static_cast<std::size_t>(mHeight));
    std::vector<unsigned char> packed((static_cast<std::size_t>(mWidth) + 7) / 8);
    for (std::size_t y = 0; y < static_cast<std::size_t>(mHeight); ++y) {
        (void)decoder.DecodeRows(packed);  // a row that fails shows what the row before left
        ExpandBilevelRow(packed, pixels.subspan(y * pitch, pitch));
    }
    return true;
}

}  // namespace Kavra::Devices
