#include "PcxSamples.h"

#include "legacy/PcxFile.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace Kavra::Samples {
namespace {

using Bytes = std::vector<unsigned char>;
using Legacy::PcxPicture;

unsigned char ToByte(float value) {
    return static_cast<unsigned char>(std::clamp(value, 0.0F, 1.0F) * 255 + 0.5F);
}

Bytes Triples(const Picture& picture) {
    Bytes bytes(picture.values.size());
    std::ranges::transform(picture.values, bytes.begin(), ToByte);
    return bytes;
}

/// `steps` levels of red, green and blue each.
Bytes ColourCube(const std::array<int, 3>& steps) {
    const auto level = [](int i, int count) { return static_cast<unsigned char>(i * 255 / (count - 1)); };
    Bytes palette;
    for (int red = 0; red < steps[0]; ++red) {
        for (int green = 0; green < steps[1]; ++green) {
            for (int blue = 0; blue < steps[2]; ++blue)
                palette.insert(palette.end(), {level(red, steps[0]), level(green, steps[1]), level(blue, steps[2])});
        }
    }
    return palette;
}

std::size_t Nearest(const Bytes& palette, const float* colour) {
    std::size_t best = 0;
    float least = std::numeric_limits<float>::max();
    for (std::size_t i = 0; i < palette.size() / 3; ++i) {
        float distance = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const float difference = colour[c] - static_cast<float>(palette[3 * i + c]) / 255;
            distance += difference * difference;
        }
        if (distance < least) {
            least = distance;
            best = i;
        }
    }
    return best;
}

/// Each pixel's nearest colour, its error spread over the pixels not yet done (Floyd and Steinberg, 1976).
Bytes Dither(Picture picture, const Bytes& palette) {
    struct Share {
        int dx, dy;
        float weight;
    };
    constexpr std::array<Share, 4> kShares = {
        {{1, 0, 7 / 16.0F}, {-1, 1, 3 / 16.0F}, {0, 1, 5 / 16.0F}, {1, 1, 1 / 16.0F}}};
    Bytes indices;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::size_t index = Nearest(palette, picture.At(x, y));
            indices.push_back(static_cast<unsigned char>(index));
            for (const Share& share : kShares) {
                const int tx = x + share.dx;
                const int ty = y + share.dy;
                if (tx < 0 || tx >= picture.width || ty >= picture.height) continue;
                for (int c = 0; c < 3; ++c) {
                    const float is = static_cast<float>(palette[3 * index + static_cast<std::size_t>(c)]) / 255;
                    picture.At(tx, ty)[c] += (picture.At(x, y)[c] - is) * share.weight;
                }
            }
        }
    }
    return indices;
}

void Write(const std::string& path, const PcxPicture& picture) {
    const Bytes bytes = Legacy::PcxFile(picture);
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) throw std::runtime_error(path + ": cannot be written");
}

}  // namespace

void WritePcxSamples(const std::string& folder) {
    const Picture photo = Paint(120, 80, Landscape, true);
    Write(folder + "/photo.pcx", {photo.width, photo.height, 8, 3, true, {}, Triples(photo)});

    const Picture wide = Paint(180, 120, Landscape, true);
    Bytes colours = ColourCube({6, 7, 6});
    const Bytes indices = Dither(wide, colours);
    colours.resize(768);
    Write(folder + "/palette.pcx", {wide.width, wide.height, 8, 1, true, colours, indices});

    const Bytes sixteen = ColourCube({2, 4, 2});
    Write(folder + "/planes.pcx", {wide.width, wide.height, 1, 4, true, sixteen, Dither(wide, sixteen)});

    // A set bit is the first colour.
    const Bytes inkAndPaper = {24, 32, 64, 250, 244, 230};
    const Picture letter = Paint(90, 60, LetterF, false);
    Bytes bits;
    for (int y = 0; y < letter.height; ++y) {
        for (int x = 0; x < letter.width; ++x)
            bits.push_back(Nearest(inkAndPaper, letter.At(x, y)) == 0 ? 1 : 0);
    }
    Write(folder + "/letter.pcx", {letter.width, letter.height, 1, 1, true, inkAndPaper, bits});
}

}  // namespace Kavra::Samples
