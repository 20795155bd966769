#include "Picture.h"

#include <algorithm>
#include <fstream>
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
    full.attribute("DateTime", "2026:01:01 00:00:00");  // the same bytes whenever they are made
    return full;
}

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
    throw std::runtime_error(path + ": " + why);
}

}  // namespace

Picture Paint(int width, int height, const Painter& painter, bool display) {
    const Picture cutout =
        PaintCutout(width, height, [&painter](float x, float y) { return Cutout{painter(x, y), 1}; }, display);
    Picture picture{width, height, 3, {}};
    for (std::size_t i = 0; i < cutout.values.size(); i += 4)
        picture.values.insert(picture.values.end(), &cutout.values[i], &cutout.values[i] + 3);
    return picture;
}

Picture PaintCutout(int width, int height, const CutoutPainter& painter, bool display) {
    constexpr int kSamples = 3;
    constexpr float kMin = 1e-4F;  // so that a pixel without coverage has a colour too
    Picture picture{width, height, 4, std::vector<float>(static_cast<std::size_t>(width) * height * 4)};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Colour sum = {0, 0, 0};
            float weights = 0, coverage = 0;
            for (int i = 0; i < kSamples * kSamples; ++i) {
                const auto across = (static_cast<float>(i % kSamples) + 0.5F) / kSamples;
                const auto down = (static_cast<float>(i / kSamples) + 0.5F) / kSamples;
                const Cutout sample = painter((static_cast<float>(x) + across) / static_cast<float>(width),
                                              (static_cast<float>(y) + down) / static_cast<float>(height));
                const float weight = std::max(sample.coverage, kMin);
                sum = Add(sum, sample.colour, weight);
                weights += weight;
                coverage += sample.coverage;
            }
            std::ranges::transform(sum, picture.At(x, y),
                                   [&](float value) { return display ? ToDisplay(value / weights) : value / weights; });
            picture.At(x, y)[3] = coverage / (kSamples * kSamples);
        }
    }
    return picture;
}

Picture Stored(const Picture& upright, int orientation) {
    const bool turned = orientation >= 5;
    const int width = turned ? upright.height : upright.width;
    const int height = turned ? upright.width : upright.height;
    // Whether a stored column or row counts from the far end of the side that it lies along when displayed.
    const bool columnsBack = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool rowsBack = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    Picture stored{width, height, upright.channels, std::vector<float>(upright.values.size())};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int column = columnsBack ? width - 1 - x : x;
            const int row = rowsBack ? height - 1 - y : y;
            std::copy_n(turned ? upright.At(row, column) : upright.At(column, row), upright.channels, stored.At(x, y));
        }
    }
    return stored;
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

std::vector<unsigned char> ToBytes(const Picture& picture) {
    std::vector<unsigned char> bytes(picture.values.size());
    std::ranges::transform(picture.values, bytes.begin(), [](float value) {
        return static_cast<unsigned char>(std::clamp(value, 0.0F, 1.0F) * 255 + 0.5F);
    });
    return bytes;
}

void WriteBytes(const std::string& path, std::span<const unsigned char> bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) Fail(path, "cannot be written");
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
