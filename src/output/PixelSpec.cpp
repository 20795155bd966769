#include "output/PixelSpec.h"

#include "formats/PixelFormatMapping.h"

#include <array>
#include <string>

namespace Kavra::Devices {

OIIO::ImageSpec PictureSpec(int width, int height, int channels, OIIO::TypeDesc type) {
    constexpr std::array kNames = {"R", "G", "B", "A"};
    constexpr int kNamed = static_cast<int>(kNames.size());
    OIIO::ImageSpec spec(type);
    spec.width = spec.full_width = width;
    spec.height = spec.full_height = height;
    spec.full_depth = 1;
    spec.nchannels = channels;
    spec.channelnames.reserve(static_cast<std::size_t>(channels));
    for (int channel = 0; channel < channels; ++channel) {
        const bool isNamed = channel < kNamed;
        spec.channelnames.push_back(isNamed ? kNames[static_cast<std::size_t>(channel)]
                                            : "channel" + std::to_string(channel));
    }
    if (channels == 1) spec.channelnames.front() = "Y";
    if (channels >= kNamed) spec.alpha_channel = kNamed - 1;
    return spec;
}

OIIO::ImageSpec PixelSpec(EFormat format, int width, int height) {
    const Common::PixelFormat& facts = Common::FactsOf(format);
    OIIO::ImageSpec spec = PictureSpec(width, height, facts.channels, LibraryType(facts.element));
    if (facts.channels == 1) spec.channelnames.front() = "R";
    return spec;
}

}  // namespace Kavra::Devices
