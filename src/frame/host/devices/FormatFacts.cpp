#include "common/KnownFields.h"
#include "common/PixelFormats.h"
#include "common/SrgbFormats.h"

#include <kavra/devices/FormatFacts.h>

#include <algorithm>

namespace Kavra::Devices {

namespace {

/// Reserved numbers mean nothing to a host.
bool IsNamed(const Common::PixelFormat& format) {
    return format.HasPixels() || format.bytesPerBlock > 0 || format.value == kUnknown;
}

}  // namespace

bool GetFormatFacts(EFormat format, FormatFacts& facts) {
    const Common::PixelFormat& known = Common::FactsOf(format);
    if (known.value != format || !IsNamed(known)) return false;
    FormatFacts whole;
    whole.name = known.name.data();
    if (!known.shortName.empty()) whole.shortName = known.shortName.data();  // an empty view may point nowhere
    whole.channels = known.channels + known.blockChannels;
    whole.bytesPerPixel = known.BytesPerPixel();
    whole.bytesPerBlock = known.bytesPerBlock;
    whole.element = known.element;
    whole.blueFirst = known.blueFirst;
    whole.hasAlpha = known.hasAlpha;
    whole.isInLibrary = known.inLibrary;
    Common::CopyKnownFields(whole, facts);
    return true;
}

EFormat NextFormat(EFormat format) {
    const auto& formats = Common::FormatTable::kFormats;
    const auto next = std::ranges::find_if(formats, [&](const Common::PixelFormat& candidate) {
        return candidate.value > format && candidate.value != kUnknown && IsNamed(candidate);
    });
    return next == formats.end() ? kUnknown : next->value;
}

EFormat SrgbVariant(EFormat format, bool isSrgb) {
    const EFormat plain = Common::WithoutSrgb(format);
    return isSrgb ? Common::WithSrgb(plain) : plain;
}

}  // namespace Kavra::Devices
