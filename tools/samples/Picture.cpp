#include "Picture.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Kavra::Samples {
namespace {

OIIO::ImageSpec SpecFor(const Picture& picture, OIIO::ImageSpec spec) {
    OIIO::ImageSpec full(picture.width, picture.height, picture.channels, spec.format);
    full.extra_attribs = spec.extra_attribs;
    full.tile_width = spec.tile_width;
    full.tile_height = spec.tile_height;
    full.tile_depth = spec.tile_depth;
    if (static_cast<int>(spec.channelnames.size()) == picture.channels) {
        full.channelnames = spec.channelnames;
        full.alpha_channel = spec.alpha_channel;
        full.z_channel = spec.z_channel;
    } else if (picture.channels == 2) {
        full.channelnames = {"Y", "A"};
        full.alpha_channel = 1;
    }
    full.attribute("oiio:UnassociatedAlpha", 1);
    return full;
}

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
    throw std::runtime_error(path + ": " + why);
}

}  // namespace

Picture Paint(int width, int height, const Painter& painter, bool display) {
    constexpr int kSamples = 3;
    Picture picture{width, height, 3, std::vector<float>(static_cast<std::size_t>(width) * height * 3)};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Colour sum = {0, 0, 0};
            for (int i = 0; i < kSamples * kSamples; ++i) {
                const float sx = (static_cast<float>(x) + (static_cast<float>(i % kSamples) + 0.5F) / kSamples);
                const float sy = (static_cast<float>(y) + (static_cast<float>(i / kSamples) + 0.5F) / kSamples);
                const Colour sample = painter(sx / static_cast<float>(width), sy / static_cast<float>(height));
                for (int c = 0; c < 3; ++c)
                    sum[c] += sample[c] / (kSamples * kSamples);
            }
            std::ranges::transform(sum, picture.At(x, y), [display](float v) { return display ? ToDisplay(v) : v; });
        }
    }
    return picture;
}

Picture WithAlpha(const Picture& picture) {
    Picture result{picture.width, picture.height, 4,
                   std::vector<float>(static_cast<std::size_t>(picture.width) * picture.height * 4)};
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            std::copy_n(picture.At(x, y), 3, result.At(x, y));
            const float dx = 2 * (static_cast<float>(x) + 0.5F) / static_cast<float>(picture.width) - 1;
            const float dy = 2 * (static_cast<float>(y) + 0.5F) / static_cast<float>(picture.height) - 1;
            result.At(x, y)[3] = std::clamp((0.95F - std::sqrt(dx * dx + dy * dy)) * 8, 0.0F, 1.0F);
        }
    }
    return result;
}

Picture Brightness(const Picture& picture) {
    Picture result{picture.width, picture.height, 1,
                   std::vector<float>(static_cast<std::size_t>(picture.width) * picture.height)};
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const float* p = picture.At(x, y);
            *result.At(x, y) = 0.2126F * p[0] + 0.7152F * p[1] + 0.0722F * p[2];
        }
    }
    return result;
}

void WriteImage(const std::string& path, const Picture& picture, OIIO::ImageSpec spec) {
    WriteImages(path, {picture}, spec);
}

void WriteImages(const std::string& path, const std::vector<Picture>& pictures, const OIIO::ImageSpec& spec) {
    const auto out = OIIO::ImageOutput::create(path);
    if (!out) Fail(path, OIIO::geterror());
    std::vector<OIIO::ImageSpec> specs;
    for (const Picture& picture : pictures)
        specs.push_back(SpecFor(picture, spec));
    const bool several = pictures.size() > 1;
    const bool opened = several && out->supports("multiimage") && path.ends_with(".exr")
                            ? out->open(path, static_cast<int>(specs.size()), specs.data())
                            : out->open(path, specs[0]);
    if (!opened) Fail(path, out->geterror());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        if (i > 0 && !out->open(path, specs[i], OIIO::ImageOutput::AppendSubimage)) Fail(path, out->geterror());
        if (!out->write_image(OIIO::TypeDesc::FLOAT, pictures[i].values.data())) Fail(path, out->geterror());
    }
    if (!out->close()) Fail(path, out->geterror());
}

}  // namespace Kavra::Samples
