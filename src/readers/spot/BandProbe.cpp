#include "readers/spot/BandProbe.h"

#include "readers/ByteSource.h"
#include "readers/spot/BandHeader.h"
#include "readers/spot/SideFiles.h"

namespace Kavra::Devices {

bool IsBandRaster(const KString& path) {
    const std::optional<KString> dataPath = PathWithExtension(path, L".bil");
    const std::optional<KString> headerPath = PathWithExtension(path, L".hdr");
    if (!dataPath || !headerPath) return false;
    const ReadResult<ByteSource> data = ByteSource::Open(*dataPath);
    return data && data->Size() > 0 && ReadBandHeader(*headerPath, data->Size()).has_value();
}

}  // namespace Kavra::Devices
