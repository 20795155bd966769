#include "load/ChosenChannels.h"

#include "common/ParallelRange.h"
#include "common/PixelFormats.h"
#include "common/Reasons.h"

#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kSerialPixels = 1 << 16;

int NumberOf(const OIIO::ImageSpec& spec, const OIIO::string_view& name) {
    for (int channel = 0; channel < spec.nchannels; ++channel) {
        if (spec.channel_name(channel) == name) return channel;
    }
    return -1;
}

bool IsAlpha(const OIIO::ImageSpec& spec, int channel) {
    const std::string name = OIIO::Strutil::lower(spec.channel_name(channel));
    return channel == spec.alpha_channel || name == "a" || name == "alpha" || name.ends_with(".a") ||
           name.ends_with(".alpha");
}

/// The format of four channels whose type holds all values of the channels: half those of bytes and halves, float all.
EFormat FormatFor(const OIIO::ImageSpec& spec, const std::vector<int>& channels) {
    const auto areAll = [&](std::initializer_list<OIIO::TypeDesc::BASETYPE> types) {
        return std::ranges::all_of(
            channels, [&](int channel) { return std::ranges::contains(types, spec.channelformat(channel).basetype); });
    };
    using Type = OIIO::TypeDesc;
    if (areAll({Type::UINT8})) return kR8G8B8A8;
    if (areAll({Type::UINT8, Type::UINT16})) return kR16G16B16A16;
    if (areAll({Type::UINT8, Type::INT8, Type::HALF})) return kR16G16B16A16F;
    return kR32G32B32A32F;
}

std::array<int, 4> Places(const OIIO::ImageSpec& spec, const std::vector<int>& channels) {
    std::array<int, 4> from = {-1, -1, -1, -1};
    std::ranges::copy(channels, from.begin());
    const bool isGreyAlpha = channels.size() == 2 && IsAlpha(spec, channels[1]);
    if (isGreyAlpha) from[3] = channels[1];
    if (isGreyAlpha || channels.size() == 1) from[1] = from[2] = from[0];
    return from;
}

/// T holds the bits of an element.
template <class T>
void Gather(const std::array<int, 4>& from, int base, int channels, const unsigned char* pixels, std::size_t count,
            unsigned char* out, T opaque) {
    using Pixel = std::array<T, 4>;
    const auto* const source = reinterpret_cast<const T*>(pixels);
    auto* const target = reinterpret_cast<Pixel*>(out);
    const auto stride = static_cast<std::size_t>(channels);
    Common::ForEachRange(count, kSerialPixels, [=](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            Pixel pixel = {0, 0, 0, opaque};
            for (std::size_t c = 0; c < 4; ++c) {
                if (from[c] >= 0) pixel[c] = source[i * stride + static_cast<std::size_t>(from[c] - base)];
            }
            target[i] = pixel;
        }
    });
}

}  // namespace

std::optional<ChosenChannels> ChooseChannels(const OIIO::ImageSpec& spec, const OIIO::string_view& names) {
    std::vector<int> channels;
    for (const auto& name : OIIO::Strutil::splitsv(names, ",")) {
        channels.push_back(NumberOf(spec, name));
        if (channels.back() < 0 || channels.size() > 4) return std::nullopt;
    }
    if (channels.empty()) return std::nullopt;
    const auto [first, last] = std::ranges::minmax(channels);
    return ChosenChannels{
        .from = Places(spec, channels), .format = FormatFor(spec, channels), .first = first, .last = last};
}

void SayOfChannels(const OIIO::ImageSpec& spec, std::string_view names) noexcept {
    try {
        constexpr int kMaxNamed = 16;
        std::string there;
        for (int channel = 0; channel < std::min(spec.nchannels, kMaxNamed); ++channel)
            there += (channel > 0 ? ", " : "") + std::string(spec.channel_name(channel));
        if (spec.nchannels > kMaxNamed) there += ", ...";
        Common::Say(kFailureOutOfRange, "there are no channels {}; the file has {}", Common::OneLine(names),
                    Common::OneLine(there));
    } catch (...) {
        Common::SayCaught();
    }
}

void GatherChannels(const ChosenChannels& chosen, int base, int channels, const unsigned char* pixels,
                    std::size_t count, unsigned char* out) {
    using Common::ElementType;
    switch (Common::FactsOf(chosen.format).element) {
        case ElementType::kUInt8:
            return Gather<std::uint8_t>(chosen.from, base, channels, pixels, count, out, 0xFF);
        case ElementType::kUInt16:
            return Gather<std::uint16_t>(chosen.from, base, channels, pixels, count, out, 0xFFFF);
        case ElementType::kHalf:
            return Gather<std::uint16_t>(chosen.from, base, channels, pixels, count, out, 0x3C00);
        default:
            return Gather<std::uint32_t>(chosen.from, base, channels, pixels, count, out, 0x3F800000);
    }
}

}  // namespace Kavra::Devices
