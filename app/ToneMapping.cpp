#include "ToneMapping.h"

#include "Exposure.h"
#include "Transfer.h"

#include <cmath>
#include <cstring>

namespace Kavra::App {
namespace {

using Linear = vec3<float>;

constexpr double kDark = 1e-6;       // black pixels count as this: a light in the dark is to shine
constexpr float kBrightest = 1e15F;  // what a square may still be taken of

double Luminance(const Linear& colour) {
    return 0.212671 * colour.x + 0.71516 * colour.y + 0.072169 * colour.z;
}

/// The pixels of a map in colours that can be reckoned with: NaN and negative ones are black, infinite ones bright.
class Pixels {
public:
    explicit Pixels(const LoadedImage& image)
        : mWidth(image.desc.width),
          mHeight(image.desc.height),
          mPitch(static_cast<std::size_t>(image.desc.rowPitch)),
          mData(static_cast<const unsigned char*>(image.block->mData)) {}

    /// Linear interpolation; u goes on round the sphere, v ends at the poles.
    Linear At(float u, float v) const {
        const float x = u * static_cast<float>(mWidth) - 0.5F;
        const float y = v * static_cast<float>(mHeight) - 0.5F;
        const float left = std::floor(x);
        const float top = std::floor(y);
        const Linear upper = Mix(Get(left, top), Get(left + 1, top), x - left);
        return Mix(upper, Mix(Get(left, top + 1), Get(left + 1, top + 1), x - left), y - top);
    }

private:
    static Linear Mix(const Linear& a, const Linear& b, float t) {
        return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
    }

    static float Mend(float value) { return value > 0 ? std::min(value, kBrightest) : 0; }

    Linear Get(float column, float row) const {
        const int x = (static_cast<int>(column) + mWidth) % mWidth;
        const int y = std::clamp(static_cast<int>(row), 0, mHeight - 1);
        float pixel[3];
        std::memcpy(pixel, mData + static_cast<std::size_t>(y) * mPitch + static_cast<std::size_t>(x) * 16,
                    sizeof pixel);
        return {Mend(pixel[0]), Mend(pixel[1]), Mend(pixel[2])};
    }

    int mWidth;
    int mHeight;
    std::size_t mPitch;
    const unsigned char* mData;
};

Display ToDisplay(const Linear& colour) {
    return {EncodeSrgb(colour.x), EncodeSrgb(colour.y), EncodeSrgb(colour.z)};
}

Display Shown(const Linear& colour, const Exposure& exposure) {
    const auto scale = static_cast<float>(exposure.Scale(Luminance(colour)));
    return ToDisplay({colour.x * scale, colour.y * scale, colour.z * scale});
}

}  // namespace

Display HueOf(const vec3<float>& colour) {
    const float brightest = std::max(std::max(colour.x, colour.y), colour.z);
    if (!(brightest > 0)) return {};
    return ToDisplay(Linear{colour.x / brightest, colour.y / brightest, colour.z / brightest});
}

void DrawMap(Canvas& canvas, const SmallEnvironment& map, int width, int height) {
    const Pixels pixels(map.image);
    Exposure exposure(1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Display& pixel = canvas.At(x, y);
            pixel = pixels.At((static_cast<float>(x) + 0.5F) / static_cast<float>(width),
                              (static_cast<float>(y) + 0.5F) / static_cast<float>(height));
            exposure.Look(std::max(Luminance(pixel), kDark));
        }
    }
    if (!map.isLight) return;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            canvas.At(x, y) = Shown(canvas.At(x, y), exposure);
    }
}

}  // namespace Kavra::App
