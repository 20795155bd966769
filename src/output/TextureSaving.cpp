#include "output/TextureSaving.h"

#include "common/PixelFormats.h"
#include "common/Reasons.h"
#include "output/DDSSaving.h"
#include "output/LibrarySaving.h"
#include "output/PathPreparation.h"

#include <kavra/devices/Sys.h>

namespace Kavra::Devices {

namespace {

/// The formats that are warned about before anything is done. The newer block-compressed ones are not among them:
/// for those a file of another kind fails silently.
bool IsDDSOnly(EFormat format) {
    return Common::FactsOf(format).kind == Common::FormatKind::kBlocks;
}

}  // namespace

bool SaveTexture(const KString& path, const ImageDescription& desc, const void* data) {
    const bool dds = IsDDSPath(path);
    if (IsDDSOnly(desc.format) && !dds) {
        Common::Say(kFailureFormat, "block-compressed pixels go into DDS files only");
        Sys::Warning(L"format is not supported", nullptr);
        return false;
    }
    if (!PrepareFolder(path)) return false;
    if (!Common::Require(data != nullptr, kFailureArguments, "there are no pixels to save")) return false;
    if (desc.width < 1 || desc.height < 1) {
        Common::Say(kFailureArguments, "a picture of {} x {} pixels cannot be saved", desc.width, desc.height);
        return false;
    }
    return dds ? SaveDDS(path, desc, data) : SaveByLibrary(path, desc, data);
}

}  // namespace Kavra::Devices
