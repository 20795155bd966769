#include "common/dds/DdsComposing.h"

#include "common/PixelFormats.h"

#include <limits>

namespace Kavra::Devices::Dds {

namespace {

void DescribeShape(const Shape& shape, Header& header) {
    header.flags |= kHasCaps | kHasHeight | kHasWidth | kHasPixelFormat;
    header.width = static_cast<std::uint32_t>(shape.size.width);
    header.height = static_cast<std::uint32_t>(shape.size.height);
    header.caps1 = kCapsTexture;
    if (shape.levels > 1) {
        header.flags |= kHasMipCount;
        header.mipCount = static_cast<std::uint32_t>(shape.levels);
        header.caps1 |= kCapsMipmaps | kCapsComplex;
    }
    if (shape.type == kTextureCube) {
        header.caps1 |= kCapsComplex;
        header.caps2 = kCapsCube | kCapsAllFaces;
    }
    if (shape.type == kTextureVolume) {
        header.flags |= kHasDepth;
        header.depth = static_cast<std::uint32_t>(shape.size.depth);
        header.caps1 |= kCapsComplex;
        header.caps2 = kCapsVolume;
    }
}

/// The bytes of a row, or of the first level where there are no rows. A size that does not fit the field is left out.
void DescribePitch(const StoredLayout& layout, const Shape& shape, Header& header) {
    const bool compressed = layout.IsCompressed();
    const std::uint64_t bytes =
        compressed ? StoredLevelBytes(layout.unit, shape.size) : StoredRowBytes(layout.unit, shape.size.width);
    if (bytes > std::numeric_limits<std::uint32_t>::max()) return;
    header.flags |= compressed ? kHasLinearSize : kHasPitch;
    header.pitch = static_cast<std::uint32_t>(bytes);
}

void DescribeExtension(const Shape& shape, const Extras& extras, Header& header) {
    if (!header.isExtended) return;
    header.dimension = shape.type == kTextureVolume ? kDimensionVolume : kDimension2D;
    if (shape.type == kTextureCube) header.misc = kMiscCube;
    header.arraySize = extras.elements == 0 ? 1 : extras.elements;
}

/// The format that stands in for one that has no number, with the same bytes.
EFormat StandIn(EFormat format) {
    switch (format) {
        case kL8:
            return kR8;
        case kL16:
            return kR16;
        case kR8G8B8A8Alt:
        case kR8G8B8X8:
            return kR8G8B8A8;
        default:
            return format;
    }
}

bool DescribeByNumber(EFormat format, const Extras& extras, Header& header) {
    const DxgiRow* const row = extras.isSrgb ? FindSrgbDxgiOf(StandIn(format)) : FindDxgiOf(StandIn(format));
    if (row == nullptr || row->format == kUnknown) return false;
    header.pixelFlags = kPixelFourCC;
    header.fourCC = kFourCCDX10;
    header.isExtended = true;
    header.dxgiFormat = row->code;
    header.misc2 = format == kR8G8B8X8 ? kAlphaModeOpaque : extras.alpha;
    return true;
}

/// Whether an old header would leave something out.
bool NeedsNumber(EFormat format, const Extras& extras) {
    if (extras.elements > 0 || extras.isSrgb || extras.isExtended) return true;
    const bool hasNumber = StandIn(format) == format || format == kR8G8B8A8Alt;
    return extras.alpha != kAlphaModeUnknown && hasNumber;
}

}  // namespace

std::optional<StoredLayout> LayoutToWrite(EFormat format) {
    Header header;
    if (!DescribeFormat(format, header)) return std::nullopt;
    return FindLayout(header);
}

std::optional<Header> DescribeTexture(EFormat format, const Shape& shape, const Extras& extras) {
    Header header;
    const bool isDescribed =
        NeedsNumber(format, extras) ? DescribeByNumber(format, extras, header) : DescribeFormat(format, header);
    const std::optional<StoredLayout> layout = LayoutToWrite(format);
    if (!isDescribed || !layout) return std::nullopt;
    DescribeShape(shape, header);
    DescribePitch(*layout, shape, header);
    DescribeExtension(shape, extras, header);
    return header;
}

}  // namespace Kavra::Devices::Dds
