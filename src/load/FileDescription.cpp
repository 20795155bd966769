#include "load/FileDescription.h"

#include "common/PackedLayout.h"
#include "common/Reasons.h"
#include "common/dds/DdsShape.h"
#include "formats/Attributes.h"
#include "formats/PixelFormatMapping.h"
#include "load/DdsSlices.h"
#include "readers/ImageFileType.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace Kavra::Devices {

namespace {

constexpr int kMaxSubimages = 1 << 20;

EFormat FileFormat(const OIIO::ImageSpec& spec, int fileType, bool ddsAlphaVariant) {
    const EFormat format = ImageSpecToFormat(spec);
    if (fileType == DDS) {
        const bool sixteenBits =
            spec.format == OIIO::TypeUInt8 && spec.nchannels == 1 && IntegerAttribute(spec, "oiio:BitsPerSample") == 16;
        if (sixteenBits) return kR16;
        if (format == kR8G8B8A8 && ddsAlphaVariant) return kB8G8R8A8;
    }
    if (fileType == OpenEXR) {
        if (format == kR16F) return kR16G16B16A16F;
        if (format == kR32F) return kR32G32B32A32F;
    }
    return format;
}

/// Whether the pixels are six faces on one another. A file may say "cube" of any picture; but whoever is told of a cube
/// counts on six blocks of a face's size.
bool HoldsSixFaces(const OIIO::ImageSpec& spec) {
    return spec.depth <= 1 && spec.full_width == spec.width &&
           std::int64_t{kCubeFaces} * spec.full_height == spec.height;
}

ETextureType FileTextureType(const OIIO::ImageSpec& spec) {
    const OIIO::string_view textureFormat = TextAttribute(spec, "textureformat").value_or("");
    if (OIIO::Strutil::contains(textureFormat, "Cube")) return HoldsSixFaces(spec) ? kTextureCube : kTexture2D;
    if (OIIO::Strutil::contains(textureFormat, "Volume")) return kTextureVolume;
    return spec.depth < 2 ? kTexture2D : kTextureVolume;
}

EDataOrientation FromExifOrientation(int orientation) {
    constexpr std::array kOrientations = {kTopLeft, kTopRight, kBottomRight, kBottomLeft,
                                          kLeftTop, kRightTop, kRightBottom, kLeftBottom};
    if (orientation < 1 || orientation > static_cast<int>(kOrientations.size())) return kTopLeft;
    return kOrientations[static_cast<std::size_t>(orientation - 1)];
}

EDataOrientation FileOrientation(const OIIO::ImageSpec& spec, bool isRadiance) {
    if (const auto lineOrder = TextAttribute(spec, "openexr:lineOrder")) {
        return OIIO::Strutil::contains(*lineOrder, "decreasingY") ? kBottomLeft : kTopLeft;
    }
    return isRadiance ? kTopLeft : FromExifOrientation(IntegerAttribute(spec, "Orientation").value_or(1));
}

/// The file says the exponent it was encoded with, the description the one that decodes it.
double FileGamma(const OIIO::ImageSpec& spec) {
    auto encoding = FloatAttribute(spec, "oiio:Gamma");
    if (!encoding) encoding = FloatAttribute(spec, "Exif:Gamma");
    if (!encoding) return Common::kDefaultGamma;
    const float decoding = 1.0F / *encoding;
    return *encoding > 0 && std::isfinite(decoding) ? decoding : Common::kDefaultGamma;
}

int CountSubimages(OIIO::ImageInput& input) {
    int count = 1;
    while (count < kMaxSubimages && input.seek_subimage(count, 0))
        ++count;
    return count;
}

/// A DDS header may claim any number of levels, and the library lets one seek to all of them.
int CountMipLevels(OIIO::ImageInput& input) {
    if (!input.seek_subimage(0, 0)) return 1;
    const ImageDesc level0 = DescribeSpec(input.spec(), false, DDS, false);
    const int maximum = Dds::FullMipChain({level0.width, level0.height, level0.depth});
    int count = 1;
    while (count < maximum && input.seek_subimage(0, count))
        ++count;
    return count;
}

}  // namespace

ImageDesc DescribeSpec(const OIIO::ImageSpec& spec, bool isRadiance, int fileType, bool ddsAlphaVariant) {
    ImageDesc desc;
    desc.textureType = FileTextureType(spec);
    const bool isCube = desc.textureType == kTextureCube;
    desc.width = isCube ? spec.full_width : spec.width;
    desc.height = isCube ? spec.full_height : spec.height;
    desc.depth = spec.depth;
    desc.format = FileFormat(spec, fileType, ddsAlphaVariant);
    desc.orientation = FileOrientation(spec, isRadiance);
    desc.gamma = FileGamma(spec);
    return desc;
}

void SayNoFormatHolds(const OIIO::ImageSpec& spec) {
    if (spec.nchannels == 1 && spec.z_channel == 0) {
        Common::Say(kFailureUnsupported,
                    "holds depth alone (channel {}), which is no colour unless chosen by that name",
                    Common::OneLine(spec.channel_name(0)));
    } else {
        Common::Say(kFailureUnsupported, "no format of pixels here holds {} channel{} of {}", spec.nchannels,
                    spec.nchannels == 1 ? "" : "s", spec.format.c_str());
    }
}

ImageDesc* GetImageDescByOIIO(OIIO::ImageInput* input, int fileType, bool ddsAlphaVariant) {
    const bool isRadiance = OIIO::string_view(input->format_name()) == "hdr";
    const OIIO::ImageSpec spec = fileType == DDS ? DdsLevelSpec(*input) : input->spec();
    return new ImageDesc(DescribeSpec(spec, isRadiance, fileType, ddsAlphaVariant));
}

int CountPictures(OIIO::ImageInput& input, int fileType) {
    return fileType == DDS ? CountMipLevels(input) : CountSubimages(input);
}

int GetNumberOfFrames(OIIO::ImageInput* input, int fileType) {
    int count = 0;
    if (IsGreyTiff(input->spec())) {
        // A grey TIFF counts its channels.
        count = std::max(input->spec().nchannels, 1);
    } else {
        count = CountPictures(*input, fileType);
    }
    (void)input->seek_subimage(0, 0);
    return count;
}

}  // namespace Kavra::Devices
