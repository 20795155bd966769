// Describing a file: readers of legacy formats or the host's DDS reader first, then OpenImageIO, then the host's
// OpenEXR reader. Where memory fails, nothing further is asked: another way would describe the file differently.

#include "common/HostExtras.h"
#include "common/HostObject.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "common/Reasons.h"
#include "frame/module/Dispatch.h"
#include "load/DdsCommonLoad.h"
#include "load/FileDescription.h"
#include "load/HostReaders.h"
#include "load/OpenInput.h"
#include "readers/FileTypeDetection.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/EXRHandler.h>

#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace Kavra::Devices {

namespace {

using OwnedDesc = Common::HostObject<ImageDesc>;

/// Describes one flat upright picture.
void SetFlat(ImageDesc& desc, int width, int height, EFormat format) {
    desc.width = width;
    desc.height = height;
    desc.depth = 1;
    desc.format = format;
    desc.textureType = kTexture2D;
    desc.frameCount = 1;
    desc.orientation = kTopLeft;
    desc.gamma = Common::kDefaultGamma;
}

bool DescribeByReader(ImageDesc& desc, DetectedFile& file, ELegacyReading reading) {
    if (!HasImageReader(file.type)) return false;
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(file.type, reading));
    if (!reader) throw std::bad_alloc();
    if (const auto opened = reader->Open(*std::exchange(file.files, std::nullopt)); !opened) {
        Common::Say(opened.error());
        return false;
    }
    SetFlat(desc, reader->GetWidth(), reader->GetHeight(), reader->GetFormat());
    desc.frameCount = reader->GetFrameCount();
    desc.orientation = reader->GetOrientation();
    return true;
}

/// Formats that only the host's reader tells: OpenImageIO decodes them, or takes them for grey.
bool OnlyHostDescribes(EFormat format) {
    using Common::FormatKind;
    const Common::PixelFormat& facts = Common::FactsOf(format);
    return facts.IsAlphaOnly() || facts.kind == FormatKind::kBlocks || facts.kind == FormatKind::kLaterBlocks;
}

/// Fills `desc` whenever the file opens: what OpenImageIO cannot open then keeps these values.
bool DescribeByDdsReader(ImageDesc& desc, const KString& path, bool& alphaVariant) {
    DDSReader reader;
    if (!OpenHostDds(reader, path)) return false;
    SetFlat(desc, reader.Width(), reader.Height(), reader.Format());
    desc.depth = reader.Depth();
    desc.textureType = reader.TextureType();
    desc.frameCount = reader.Mipmaps();
    alphaVariant = Common::FactsOf(desc.format).kind == Common::FormatKind::kAlphaVariant;
    return OnlyHostDescribes(desc.format);
}

/// What the common reading gives of a DDS, where that is another one.
bool DescribeByCommonReading(ImageDesc& desc, const KString& path, DetectedFile& file) {
    Common::ByteSource* const open = file.files ? &file.files->source : nullptr;
    const auto picture = OpenCommonDds(path, open, 0);
    if (picture) DescribeCommonDds(desc, *picture);
    return picture.has_value();
}

void DescribeByExrHandler(ImageDesc& desc, const KString& path, const DetectedFile& file) {
    if (!PrefersExrHandler(path, file)) return;
    EXRHandler exr(true);
    if (!ReadHostExr(exr, path)) return;
    SetFlat(desc, exr.width(), exr.height(), exr.supportsAlpha() ? kR32G32B32A32F : kR32G32B32F);
}

/// A legacy file that its reader has taken over, and then refused, is opened once more.
std::unique_ptr<OIIO::ImageInput> OpenForLibrary(const KString& path, DetectedFile& file) {
    return file.files ? OpenInput(path, file.files->source) : OpenInput(path);
}

}  // namespace

ImageDesc* DescribeImage(const KString& path) {
    const LoadPreferences preferences = Common::HostLoadPreferences();
    const ELegacyReading reading = preferences.legacy;
    DetectedFile file = DetectFile(path, reading);
    OwnedDesc desc(new ImageDesc);
    if (file.type == None || !desc) return nullptr;

    bool alphaVariant = false;
    bool found =
        file.type == DDS ? DescribeByDdsReader(*desc, path, alphaVariant) : DescribeByReader(*desc, file, reading);
    // What the library decodes is described as it comes, not as the blocks that the host's reader sees.
    if (file.type == DDS && reading == kLegacyCommon) found = DescribeByCommonReading(*desc, path, file);
    if (const auto input = found ? nullptr : OpenForLibrary(path, file)) {
        const OwnedDesc described(GetImageDescByOIIO(input.get(), file.type, alphaVariant));
        if (!described) return nullptr;
        if (described->format != kUnknown) {
            *desc = *described;
            desc->frameCount = GetNumberOfFrames(input.get(), file.type);
        } else {
            SayNoFormatHolds(input->spec());
        }
    }
    if (desc->format == kUnknown) DescribeByExrHandler(*desc, path, file);
    if (desc->format != kUnknown) return desc.release();
    TellOfCommonReading(path, preferences, file.type);
    return nullptr;
}

}  // namespace Kavra::Devices
