#include "readers/spot/SpotReader.h"

#include "readers/spot/BandDecoder.h"
#include "readers/spot/SideFiles.h"

#include <kavra/devices/AFormatConvertor.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

namespace {

std::int64_t RowBytes(EFormat format, std::int32_t columns) {
    return std::int64_t{Utilities::AFormatConvertor::BytesPerPixel(format)} * columns;
}

}  // namespace

bool SpotReader::Open(const KString& path) {
    *this = {};
    const std::optional<KString> dataPath = PathWithExtension(path, L".bil");
    const std::optional<KString> headerPath = PathWithExtension(path, L".hdr");
    if (!dataPath || !headerPath) return false;
    Result<ByteSource> data = ByteSource::Open(*dataPath);
    if (!data) return false;
    std::optional<BandHeader> header = ReadBandHeader(*headerPath, data->Size());
    const std::optional<EFormat> format = header.and_then(FormatOf);
    if (!format) return false;
    mData = *std::move(data);
    mHeader = *std::move(header);
    mFormat = *format;
    mFrameCount = FrameCountOf(mHeader);
    return true;
}

int SpotReader::GetRowPitch() {
    return static_cast<int>(
        std::min<std::int64_t>(RowBytes(mFormat, mHeader.columns), std::numeric_limits<int>::max()));
}

bool SpotReader::ReadImage(unsigned char* buffer, int frame) {
    const int rowPitch = GetRowPitch();
    // A row whose bytes an int cannot count is one that no caller has room for.
    if (!mData || rowPitch != RowBytes(mFormat, mHeader.columns)) return false;
    const std::size_t bytes = static_cast<std::size_t>(rowPitch) * static_cast<std::size_t>(mHeader.rows);
    return DecodeBands(*mData, mHeader, std::clamp(frame, 0, mFrameCount - 1), {buffer, bytes});
}

}  // namespace Kavra::Devices
