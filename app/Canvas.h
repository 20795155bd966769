/// A picture to draw on: smooth-edged shapes and text.
#pragma once

#include "LoadOptions.h"

#include <kavra/objects/Vec.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string_view>
#include <vector>

namespace Kavra::App {

using Display = vec3<float>;  ///< red, green, blue as a screen shows them (sRGB), 0 to 1

struct Ink {
    Display colour;
    float opacity = 1;
};

/// In pixels from the top left corner of the picture; the middle of the first pixel is (0.5, 0.5).
struct Point {
    float x, y;
};
struct Box {
    float left, top, right, bottom;
};

class Canvas {
public:
    Canvas(int width, int height, const Display& background);

    int Width() const { return mWidth; }
    int Height() const { return mHeight; }
    Display& At(int x, int y) {
        return mPixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(mWidth) + static_cast<std::size_t>(x)];
    }
    const Display& At(int x, int y) const { return const_cast<Canvas*>(this)->At(x, y); }

    /// Everything where `distance(point)`, in pixels from the shape's edge and negative inside, is below 0; the edge is
    /// one pixel soft. `bounds` contains the shape. What lies outside of the picture is left out.
    template <class Distance>
    void Fill(const Box& bounds, const Ink& ink, const Distance& distance);

    void Disc(Point centre, float radius, const Ink& ink);
    void Ring(Point centre, float radius, float thickness, const Ink& ink);
    void RoundedBox(const Box& box, float radius, const Ink& ink);
    /// A line through all points, round at its ends and corners.
    void Stroke(std::span<const Point> points, float thickness, const Ink& ink);

    /// The picture as opaque 8-bit pixels, for the handler to save.
    LoadedImage ToImage() const;

private:
    void Blend(int x, int y, const Ink& ink, float coverage);

    int mWidth;
    int mHeight;
    std::vector<Display> mPixels;
};

template <class Distance>
void Canvas::Fill(const Box& bounds, const Ink& ink, const Distance& distance) {
    const auto pixel = [](float position, int size) {
        return static_cast<int>(std::clamp(std::floor(position), 0.0F, static_cast<float>(size)));
    };
    const int right = pixel(bounds.right + 2, mWidth);
    const int bottom = pixel(bounds.bottom + 2, mHeight);
    for (int y = pixel(bounds.top - 1, mHeight); y < bottom; ++y) {
        for (int x = pixel(bounds.left - 1, mWidth); x < right; ++x) {
            const float edge = distance(Point{static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F});
            if (edge < 0.5F) Blend(x, y, ink, std::min(0.5F - edge, 1.0F));
        }
    }
}

}  // namespace Kavra::App
