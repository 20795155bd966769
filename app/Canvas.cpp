#include "Canvas.h"

#include "Picture.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kavra::App {
namespace {

float Length(float x, float y) {
    return std::sqrt(x * x + y * y);
}

float DistanceToLine(Point p, Point a, Point b) {
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    const float squared = dx * dx + dy * dy;
    const float along = squared > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / squared, 0.0F, 1.0F) : 0;
    return Length(p.x - a.x - along * dx, p.y - a.y - along * dy);
}

unsigned char ToByte(float value) {
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
}

}  // namespace

Canvas::Canvas(int width, int height, const Display& background)
    : mWidth(width),
      mHeight(height),
      mPixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), background) {}

void Canvas::Blend(int x, int y, const Ink& ink, float coverage) {
    const float opacity = ink.opacity * coverage;
    Display& pixel = At(x, y);
    pixel.x += (ink.colour.x - pixel.x) * opacity;
    pixel.y += (ink.colour.y - pixel.y) * opacity;
    pixel.z += (ink.colour.z - pixel.z) * opacity;
}

void Canvas::Disc(Point centre, float radius, const Ink& ink) {
    const Box bounds = {centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius};
    Fill(bounds, ink, [=](Point p) { return Length(p.x - centre.x, p.y - centre.y) - radius; });
}

void Canvas::Ring(Point centre, float radius, float thickness, const Ink& ink) {
    const float outer = radius + thickness / 2;
    const Box bounds = {centre.x - outer, centre.y - outer, centre.x + outer, centre.y + outer};
    Fill(bounds, ink,
         [=](Point p) { return std::abs(Length(p.x - centre.x, p.y - centre.y) - radius) - thickness / 2; });
}

void Canvas::RoundedBox(const Box& box, float radius, const Ink& ink) {
    const Point middle = {(box.left + box.right) / 2, (box.top + box.bottom) / 2};
    const float halfWidth = (box.right - box.left) / 2 - radius;
    const float halfHeight = (box.bottom - box.top) / 2 - radius;
    Fill(box, ink, [=](Point p) {
        const float dx = std::abs(p.x - middle.x) - halfWidth;
        const float dy = std::abs(p.y - middle.y) - halfHeight;
        return Length(std::max(dx, 0.0F), std::max(dy, 0.0F)) + std::min(std::max(dx, dy), 0.0F) - radius;
    });
}

void Canvas::Stroke(std::span<const Point> points, float thickness, const Ink& ink) {
    constexpr float kFar = std::numeric_limits<float>::max();
    Box bounds = {kFar, kFar, -kFar, -kFar};
    for (const Point& p : points) {
        bounds.left = std::min(bounds.left, p.x - thickness);
        bounds.top = std::min(bounds.top, p.y - thickness);
        bounds.right = std::max(bounds.right, p.x + thickness);
        bounds.bottom = std::max(bounds.bottom, p.y + thickness);
    }
    Fill(bounds, ink, [=](Point p) {
        float nearest = kFar;
        for (std::size_t i = 0; i + 1 < points.size(); ++i)
            nearest = std::min(nearest, DistanceToLine(p, points[i], points[i + 1]));
        return nearest - thickness / 2;
    });
}

LoadedImage Canvas::ToImage() const {
    LoadedImage image = NewPicture(mWidth, mHeight, Devices::kR8G8B8A8);
    auto* out = static_cast<unsigned char*>(image.block->mData);
    for (const Display& pixel : mPixels) {
        *out++ = ToByte(pixel.x);
        *out++ = ToByte(pixel.y);
        *out++ = ToByte(pixel.z);
        *out++ = 255;
    }
    return image;
}

}  // namespace Kavra::App
