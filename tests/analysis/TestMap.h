/// Environment maps for tests, in every pixel format.
#pragma once

#include <kavra/devices/ImageDescription.h>

#include <array>
#include <functional>
#include <vector>

namespace Kavra::Tests {

using Rgb = std::array<float, 3>;
using Direction = std::array<double, 3>;

/// Pixels with their description. The block ends with the last pixel, so a read of anything behind it is noticed; bytes
/// between the rows and all fourth channels are all ones, which is NaN in halves and floats.
struct TestMap {
    Devices::ImageDescription desc;
    std::vector<unsigned char> bytes;
    std::size_t offset = 0;  ///< of the first pixel in `bytes`

    const void* Data() const { return bytes.data() + offset; }
};

/// The formats that a map may have.
constexpr std::array kMapFormats = {Devices::kR8G8B8A8,     Devices::kR8G8B8A8Alt, Devices::kR8G8B8X8,
                                    Devices::kB8G8R8A8,     Devices::kB8G8R8X8,    Devices::kR16G16B16A16F,
                                    Devices::kR32G32B32A32F};

bool HoldsBytes(Devices::EFormat format);

/// Where and how pixels lie in memory: `padding` bytes between the rows, `offset` bytes before the first.
struct MapLayout {
    int padding = 0;
    int offset = 0;
};

/// A map whose pixel in column x of row y is `colour(x, y)`: rounded to the nearest of what the format holds, for bytes
/// after multiplying by 255 and limiting to 0..255.
TestMap MakeMap(int width, int height, Devices::EFormat format, const std::function<Rgb(int x, int y)>& colour,
                MapLayout layout = {});

/// The same, by the direction through the middle of each pixel: +y up, u = 0 along +z, u = 1/4 along -x.
TestMap MakeSphere(int width, int height, Devices::EFormat format, const std::function<Rgb(const Direction&)>& colour);

/// A float map of one colour.
TestMap MakeUniform(int width, int height, Rgb colour);

double Dot(const Direction& a, const Direction& b);
Direction Normalised(const Direction& a);

constexpr double kDegree = 0.017453292519943295;

/// Whether `direction` lies within `degrees` of `centre`, which has length 1.
bool InDisc(const Direction& direction, const Direction& centre, double degrees);

}  // namespace Kavra::Tests
