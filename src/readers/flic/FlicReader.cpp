#include "readers/flic/FlicReader.h"

#include "readers/SampleTables.h"
#include "readers/flic/FlicPlayer.h"

#include <algorithm>
#include <utility>

namespace Kavra::Devices {

namespace {

Table256<std::uint32_t> PixelTable(const FlicPalette& palette) {
    Table256<std::uint32_t> table;
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = PackedPixel(palette[3 * i], palette[3 * i + 1], palette[3 * i + 2], 255);
    return table;
}

}  // namespace

bool FLICReader::Open(const KString& path) {
    *this = {};
    ReadResult<ByteSource> file = ByteSource::Open(path);
    const std::optional<FlicHeader> header = file ? ReadFlicHeader(*file) : std::nullopt;
    if (!header) return false;
    mFile = *std::move(file);
    mHeader = *header;
    return true;
}

bool FLICReader::ReadImage(unsigned char* buffer, int frame) {
    if (!mFile) return false;
    FlicFrame indices(mHeader.width, mHeader.height);
    FlicPalette palette{};
    PlayFlic(*mFile, mHeader, std::max(frame, 0), indices, palette);
    LookUp({buffer, 4 * indices.Indices().size()}, indices.Indices(), PixelTable(palette));
    return true;
}

}  // namespace Kavra::Devices
