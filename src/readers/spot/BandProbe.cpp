#include "readers/spot/BandProbe.h"

#include "common/ByteSource.h"
#include "readers/spot/BandHeader.h"
#include "readers/spot/SideFiles.h"

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

bool IsBandRaster(const KString& path) {
    const std::optional<KString> dataPath = PathWithExtension(path, L".bil");
    const std::optional<KString> headerPath = PathWithExtension(path, L".hdr");
    if (!dataPath || !headerPath) return false;
    const Result<ByteSource> data = ByteSource::Open(*dataPath);
    return data && data->Size() > 0 && ReadBandHeader(*headerPath, data->Size()).has_value();
}

}  // namespace Kavra::Devices
