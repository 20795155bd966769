#include "formats/PixelFormatMapping.h"

#include "formats/Attributes.h"

namespace Kavra::Devices {

using OIIO::ImageSpec;
using OIIO::TypeDesc;

namespace {

struct PixelShape {
    TypeDesc type;
    int channels = 0;
};

/// What the pixels hold apart from a depth channel; several types merge into one that holds them all.
PixelShape ShapeWithoutDepth(const ImageSpec& spec) {
    if (spec.z_channel < 0) return {spec.format, spec.nchannels};
    PixelShape shape;
    for (int i = 0; i < spec.nchannels; ++i) {
        if (i == spec.z_channel) continue;
        ++shape.channels;
        shape.type = TypeDesc(TypeDesc::basetype_merge(shape.type, spec.channelformat(i)));
    }
    return shape;
}

}  // namespace

ImageSpec FormatToImageSpec(const EFormat& format, const ImageSpec& base) {
    ImageSpec spec = base;
    if (format == kUnknown) return spec;
    const Common::PixelFormat& facts = Common::FactsOf(format);
    if (!facts.inLibrary) {
        spec.format = TypeDesc::UNKNOWN;  // set_format would also clear the types of the single channels
        return spec;
    }
    spec.set_format(LibraryType(facts.element));
    spec.nchannels = facts.channels;
    if (spec.nchannels == 4) spec.alpha_channel = 3;
    return spec;
}

EFormat ImageSpecToFormat(const ImageSpec& spec) {
    PixelShape shape = ShapeWithoutDepth(spec);
    if (IsGreyTiff(spec)) shape.channels = 1;

    // By the number of channels; an 8-bit pixel always has a format, however many channels there are.
    const auto choose = [&](EFormat one, EFormat two, EFormat threeOrFour, EFormat more) {
        if (shape.channels <= 0) return kUnknown;
        if (shape.channels == 1) return one;
        if (shape.channels == 2) return two;
        return shape.channels <= 4 ? threeOrFour : more;
    };
    switch (shape.type.basetype) {
        case TypeDesc::UINT8:
            return choose(kL8, kR8G8B8A8, kR8G8B8A8, kR8G8B8A8);
        case TypeDesc::UINT16:
            return choose(kL16, kL16, kR16G16B16A16, kUnknown);
        case TypeDesc::HALF:
            return choose(kR16F, kR16G16F, kR16G16B16A16F, kUnknown);
        case TypeDesc::FLOAT:
            return choose(kR32F, kR32G32F, kR32G32B32A32F, kUnknown);
        default:
            return kUnknown;
    }
}

bool NeedConvert(EFormat from, int fromKind, EFormat to, int toKind) {
    if (fromKind != toKind) return from != to;
    const Common::PixelFormat &a = Common::FactsOf(from), &b = Common::FactsOf(to);
    return (a.IsRedFirst() && b.blueFirst) || (a.blueFirst && b.IsRedFirst());
}

}  // namespace Kavra::Devices
