#include "DdsSamples.h"

#include "Picture.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/objects/OS.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace Kavra::Samples {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;

/// The picture at another size, each pixel the mean of the box it covers.
Picture Shrink(const Picture& picture, int width, int height) {
    Picture small{width, height, picture.channels,
                  std::vector<float>(static_cast<std::size_t>(width) * height * picture.channels)};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int x0 = x * picture.width / width;
            const int y0 = y * picture.height / height;
            const int x1 = std::max((x + 1) * picture.width / width, x0 + 1);
            const int y1 = std::max((y + 1) * picture.height / height, y0 + 1);
            for (int c = 0; c < picture.channels; ++c) {
                float sum = 0;
                for (int sy = y0; sy < y1; ++sy) {
                    for (int sx = x0; sx < x1; ++sx)
                        sum += picture.At(sx, sy)[c];
                }
                small.At(x, y)[c] = sum / static_cast<float>((x1 - x0) * (y1 - y0));
            }
        }
    }
    return small;
}

Bytes ToRgba8(const Picture& picture) {
    const Bytes colours = ToBytes(picture);
    Bytes bytes;
    for (std::size_t i = 0; i < colours.size(); i += 3)
        bytes.insert(bytes.end(), {colours[i], colours[i + 1], colours[i + 2], 255});
    return bytes;
}

std::uint16_t To565(const std::array<float, 3>& colour) {
    return static_cast<std::uint16_t>((static_cast<int>(colour[0] * 31 + 0.5F) << 11) |
                                      (static_cast<int>(colour[1] * 63 + 0.5F) << 5) |
                                      static_cast<int>(colour[2] * 31 + 0.5F));
}

/// One BC1 block: the box of the 16 colours spans the line, each pixel takes the nearest of its four points.
void AppendBc1Block(const Picture& picture, int left, int top, Bytes& out) {
    std::array<float, 3> low = {1, 1, 1};
    std::array<float, 3> high = {0, 0, 0};
    for (int i = 0; i < 16; ++i) {
        const float* p = picture.At(left + i % 4, top + i / 4);
        for (int c = 0; c < 3; ++c) {
            low[c] = std::min(low[c], std::clamp(p[c], 0.0F, 1.0F));
            high[c] = std::max(high[c], std::clamp(p[c], 0.0F, 1.0F));
        }
    }
    const std::uint16_t first = To565(high);
    const std::uint16_t second = To565(low);
    float length = 0;
    for (int c = 0; c < 3; ++c)
        length += (high[c] - low[c]) * (high[c] - low[c]);
    std::uint32_t indices = 0;
    for (int i = 0; i < 16 && first > second; ++i) {
        static constexpr std::array<std::uint32_t, 4> kIndexAlongLine = {1, 3, 2, 0};
        const float* p = picture.At(left + i % 4, top + i / 4);
        float along = 0;
        for (int c = 0; c < 3; ++c)
            along += (p[c] - low[c]) * (high[c] - low[c]);
        const int step = std::clamp(static_cast<int>(along / length * 3 + 0.5F), 0, 3);
        indices |= kIndexAlongLine[static_cast<std::size_t>(step)] << (2 * i);
    }
    for (const std::uint16_t value : {first, second}) {
        out.push_back(static_cast<unsigned char>(value & 0xFF));
        out.push_back(static_cast<unsigned char>(value >> 8));
    }
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<unsigned char>((indices >> (8 * i)) & 0xFF));
}

Bytes ToBc1(const Picture& picture) {
    Bytes bytes;
    for (int y = 0; y + 4 <= picture.height; y += 4) {
        for (int x = 0; x + 4 <= picture.width; x += 4)
            AppendBc1Block(picture, x, y, bytes);
    }
    return bytes;
}

void WriteDds(const std::string& path, ETextureType type, EFormat format, int width, int height, int depth, int mips,
              const Bytes& bytes) {
    DDSWriter writer;
    const Objects::KString name(OS::FromUtf8(path.c_str()).c_str());
    if (!writer.Construct(type, format, width, height, depth, mips, static_cast<int>(bytes.size()), 0) ||
        !writer.Write(name, bytes.data())) {
        throw std::runtime_error(path + ": cannot be written");
    }
}

/// A face is a tint of its own with the letter F on it.
Picture CubeFace(int face, int size) {
    static constexpr std::array<Colour, 6> kTints = {
        {{1, 0.5F, 0.5F}, {0.5F, 1, 1}, {0.5F, 1, 0.5F}, {1, 0.5F, 1}, {0.55F, 0.55F, 1}, {1, 1, 0.5F}}};
    return Paint(
        size, size,
        [face](float x, float y) {
            Colour colour = LetterF(x, y);
            for (int c = 0; c < 3; ++c)
                colour[c] *= kTints[static_cast<std::size_t>(face)][c];
            return colour;
        },
        false);
}

Bytes CubeBytes(int size, int mips) {
    Bytes bytes;
    for (int face = 0; face < 6; ++face) {
        const Picture picture = CubeFace(face, size);
        for (int level = 0; level < mips; ++level)
            bytes.append_range(ToRgba8(Shrink(picture, size >> level, size >> level)));
    }
    return bytes;
}

Bytes VolumeBytes(int size, int depth) {
    Bytes bytes;
    for (int z = 0; z < depth; ++z) {
        const float slice = static_cast<float>(z) / static_cast<float>(depth - 1);
        bytes.append_range(
            ToRgba8(Paint(size, size, [slice](float x, float y) { return Colour{x, y, slice}; }, false)));
    }
    return bytes;
}

// --- Relief ----------------------------------------------------------------------------------------------------------

constexpr int kReliefSize = 64;

/// How far a surface leans to the right and down, each from -1 to 1: that of the tile, as high as it is bright.
std::array<float, 2> SlopeAt(const Picture& tile, int x, int y) {
    const auto height = [&](int column, int row) {
        const float* p = tile.At((column + kReliefSize) % kReliefSize, (row + kReliefSize) % kReliefSize);
        return p[0] + p[1] + p[2];
    };
    const float right = height(x - 1, y) - height(x + 1, y), down = height(x, y - 1) - height(x, y + 1);
    const float length = std::sqrt(right * right + down * down + 1);
    return {right / length, down / length};
}

/// A channel of 4 x 4 values in 8 bytes: their range in seven equal steps, each value the nearest of eight.
void AppendBc4Block(const std::array<int, 16>& values, Bytes& out) {
    const auto [low, high] = std::ranges::minmax(values);
    std::uint64_t indices = 0;
    for (std::size_t i = 0; i < values.size() && high > low; ++i) {
        const int step = (14 * (high - values[i]) + high - low) / (2 * (high - low));  // from the high end
        const std::uint64_t index = step == 0 ? 0 : step == 7 ? 1 : static_cast<std::uint64_t>(step) + 1;
        indices |= index << (3 * i);
    }
    out.push_back(static_cast<unsigned char>(high));
    out.push_back(static_cast<unsigned char>(low));
    for (int i = 0; i < 6; ++i)
        out.push_back(static_cast<unsigned char>(indices >> (8 * i)));
}

/// The slopes in two channels around 128.
Bytes ToBc5(const Picture& tile) {
    Bytes bytes;
    for (int top = 0; top < kReliefSize; top += 4) {
        for (int left = 0; left < kReliefSize; left += 4) {
            for (const std::size_t channel : {0, 1}) {
                std::array<int, 16> values{};
                for (int i = 0; i < 16; ++i) {
                    const float slope = SlopeAt(tile, left + i % 4, top + i / 4)[channel];
                    values[static_cast<std::size_t>(i)] = static_cast<int>((slope + 1) * 127.5F + 0.5F);
                }
                AppendBc4Block(values, bytes);
            }
        }
    }
    return bytes;
}

/// The slopes in two signed channels of 8 bits, under a header that the host does not write: of a bump map.
Bytes BumpMap(const Picture& tile) {
    constexpr std::uint32_t kBump = 0x80000, kSide = kReliefSize;
    std::array<std::uint32_t, 32> header = {0x20534444, 124, 0x1007, kSide, kSide};
    header[19] = 32;
    header[20] = kBump;
    header[22] = 16;
    header[23] = 0xFF;
    header[24] = 0xFF00;
    header[27] = 0x1000;
    Bytes bytes(sizeof header);
    std::memcpy(bytes.data(), header.data(), sizeof header);
    for (int y = 0; y < kReliefSize; ++y) {
        for (int x = 0; x < kReliefSize; ++x) {
            for (const float slope : SlopeAt(tile, x, y))
                bytes.push_back(static_cast<unsigned char>(static_cast<signed char>(std::lround(slope * 127))));
        }
    }
    return bytes;
}

void WriteRelief(const std::string& folder) {
    const Picture tile = Paint(kReliefSize, kReliefSize, Ornament, false);
    WriteDds(folder + "/normals.dds", kTexture2D, kBC5, kReliefSize, kReliefSize, 1, 1, ToBc5(tile));
    const Bytes bump = BumpMap(tile);
    std::ofstream file(folder + "/bump.dds", std::ios::binary);
    file.write(reinterpret_cast<const char*>(bump.data()), static_cast<std::streamsize>(bump.size()));
    if (!file.flush()) throw std::runtime_error(folder + "/bump.dds: cannot be written");
}

}  // namespace

void WriteDdsSamples(const std::string& folder) {
    const auto spheres = [](float x, float y) { return Spheres(x, y, 1).colour; };
    WriteDds(folder + "/photo.dds", kTexture2D, kR8G8B8A8, 128, 128, 1, 1, ToRgba8(Paint(128, 128, spheres, true)));

    const Picture tile = Paint(128, 128, Ornament, false);
    Bytes mips;
    for (int level = 0; level < 8; ++level)
        mips.append_range(ToRgba8(Shrink(tile, 128 >> level, 128 >> level)));
    WriteDds(folder + "/mips.dds", kTexture2D, kR8G8B8A8, 128, 128, 1, 8, mips);

    const Bytes bricks = ToBc1(Paint(128, 128, Bricks, false));
    WriteDds(folder + "/bc1.dds", kTexture2D, kBC1, 128, 128, 1, 1, bricks);
    WriteDds(folder + "/dx10.dds", kTexture2D, kBC1Srgb, 128, 128, 1, 1, bricks);

    const Picture flame = PaintCutout(64, 64, Flame, false);
    Bytes floats(flame.values.size() * sizeof(float));
    std::memcpy(floats.data(), flame.values.data(), floats.size());
    WriteDds(folder + "/float.dds", kTexture2D, kR32G32B32A32F, 64, 64, 1, 1, floats);

    WriteDds(folder + "/cube.dds", kTextureCube, kR8G8B8A8, 64, 64, 1, 1, CubeBytes(64, 1));
    WriteDds(folder + "/cube-mips.dds", kTextureCube, kR8G8B8A8, 32, 32, 1, 6, CubeBytes(32, 6));
    WriteDds(folder + "/volume.dds", kTextureVolume, kR8G8B8A8, 32, 32, 8, 1, VolumeBytes(32, 8));
    WriteRelief(folder);
}

}  // namespace Kavra::Samples
