#include "analysis/TestMap.h"

#include <kavra/devices/AFormatConvertor.h>

#include <Imath/half.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace Kavra::Tests {

using namespace Devices;

namespace {

template <class T, class Convert>
void StoreColours(unsigned char* pixel, const Rgb& colour, const Convert& convert) {
    for (std::size_t c = 0; c < 3; ++c) {
        const T element = convert(colour[c]);
        std::memcpy(pixel + c * sizeof(T), &element, sizeof element);
    }
}

void Store(unsigned char* pixel, Rgb colour, EFormat format) {
    if (format == kB8G8R8A8 || format == kB8G8R8X8) std::swap(colour[0], colour[2]);
    if (format == kR32G32B32A32F) {
        StoreColours<float>(pixel, colour, [](float v) { return v; });
    } else if (format == kR16G16B16A16F) {
        StoreColours<half>(pixel, colour, [](float v) { return half(v); });
    } else {
        StoreColours<unsigned char>(pixel, colour, [](float v) {
            return static_cast<unsigned char>(std::lround(std::clamp(v * 255.0F, 0.0F, 255.0F)));
        });
    }
}

}  // namespace

bool HoldsBytes(EFormat format) {
    return format != kR16G16B16A16F && format != kR32G32B32A32F;
}

TestMap MakeMap(int width, int height, EFormat format, const std::function<Rgb(int, int)>& colour, MapLayout layout) {
    const int pixelBytes = format == kR32G32B32A32F ? 16 : format == kR16G16B16A16F ? 8 : 4;
    TestMap map;
    map.desc.width = width;
    map.desc.height = height;
    map.desc.depth = 1;
    map.desc.format = format;
    map.desc.textureType = kTexture2D;
    map.desc.rowPitch = width * pixelBytes + layout.padding;
    map.offset = static_cast<std::size_t>(layout.offset);
    const auto pitch = static_cast<std::size_t>(map.desc.rowPitch);
    map.desc.dataSize = pitch * static_cast<std::size_t>(height);
    map.bytes.assign(map.offset + map.desc.dataSize - static_cast<std::size_t>(layout.padding), 0xFF);
    for (int y = 0; y < height; ++y) {
        unsigned char* row = map.bytes.data() + map.offset + static_cast<std::size_t>(y) * pitch;
        for (int x = 0; x < width; ++x)
            Store(row + x * pixelBytes, colour(x, y), format);
    }
    return map;
}

TestMap MakeSphere(int width, int height, EFormat format, const std::function<Rgb(const Direction&)>& colour) {
    return MakeMap(width, height, format, [&](int x, int y) {
        const double azimuth = 2 * std::numbers::pi * (x + 0.5) / width;
        const double zenith = std::numbers::pi * (y + 0.5) / height;
        return colour({-std::sin(zenith) * std::sin(azimuth), std::cos(zenith), std::sin(zenith) * std::cos(azimuth)});
    });
}

TestMap MakeUniform(int width, int height, Rgb colour) {
    return MakeMap(width, height, kR32G32B32A32F, [colour](int, int) { return colour; });
}

double Dot(const Direction& a, const Direction& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Direction Normalised(const Direction& a) {
    const double length = std::sqrt(Dot(a, a));
    return {a[0] / length, a[1] / length, a[2] / length};
}

bool InDisc(const Direction& direction, const Direction& centre, double degrees) {
    return Dot(direction, centre) > std::cos(degrees * kDegree);
}

}  // namespace Kavra::Tests
