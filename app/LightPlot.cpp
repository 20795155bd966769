#include "LightPlot.h"

#include "FormatNames.h"
#include "Lettering.h"
#include "ToneMapping.h"

#include <array>
#include <cmath>
#include <format>
#include <numbers>

namespace Kavra::App {
namespace {

constexpr float kWidth = kPlotWidth, kMapHeight = kPlotMapHeight;

// The legend, in pixels.
constexpr float kMargin = 28, kHeadHeight = 88, kHeadingHeight = 26, kRowHeight = 30, kFoot = 16;

constexpr Display kPaper = {0.085F, 0.09F, 0.10F}, kPanel = {0.125F, 0.13F, 0.145F};
constexpr Ink kBright = {{0.95F, 0.95F, 0.93F}}, kDim = {{0.58F, 0.60F, 0.63F}}, kAccent = {{1.0F, 0.76F, 0.32F}};
constexpr Ink kWhite = {{1, 1, 1}}, kShade = {{0, 0, 0}, 0.5F}, kBlack = {{0.03F, 0.03F, 0.035F}, 0.85F};

/// Where the columns of the legend begin, or end where they are numbers.
constexpr float kNumberMiddle = 42, kSwatchLeft = 70, kDirectionEnd = 330, kAzimuthEnd = 430, kElevationEnd = 525,
                kColourEnd = 730, kLuminanceEnd = 815, kBarLeft = 835, kBarRight = 935, kShareEnd = kWidth - kMargin;

float Fraction(double degrees, double of) {
    return static_cast<float>(degrees / of);
}

/// Where a direction lies on the map.
Point PlaceOf(const LightFinding& light) {
    return {(Fraction(light.Azimuth(), 360) + 0.5F) * kWidth, (0.5F - Fraction(light.Elevation(), 180)) * kMapHeight};
}

void DrawGrid(Canvas& canvas) {
    const auto line = [&](Point from, Point to, float opacity) {
        canvas.Stroke(std::array{from, to}, 1, {kWhite.colour, opacity});
    };
    for (int degrees = 30; degrees < 180; degrees += 30) {
        const float y = std::floor(Fraction(degrees, 180) * kMapHeight) + 0.5F;
        line({0, y}, {kWidth, y}, degrees == 90 ? 0.30F : 0.12F);
    }
    for (int degrees = 45; degrees < 360; degrees += 45) {
        const float x = std::floor(Fraction(degrees, 360) * kWidth) + 0.5F;
        line({x, 0}, {x, kMapHeight}, degrees == 180 ? 0.30F : 0.12F);
    }
    struct Label {
        float place;
        std::string_view text;
    };
    for (const auto& [place, text] : {Label{0.25F, "left -X"}, {0.5F, "ahead -Z"}, {0.75F, "right +X"}})
        DrawTextCentred(canvas, {place * kWidth, kMapHeight - 12}, text, {10, kWhite, 0.15F, true});
    DrawText(canvas, {12, kMapHeight - 12}, "behind +Z", {10, kWhite, 0.15F, true});
    DrawTextRight(canvas, {kWidth - 12, kMapHeight - 12}, "behind +Z", {10, kWhite, 0.15F, true});
}

/// The area of a ring grows with the light's share.
float RadiusOf(const LightFinding& light) {
    return 13 + 47 * std::sqrt(static_cast<float>(light.share));
}

void DrawRing(Canvas& canvas, const LightFinding& light) {
    const Point place = PlaceOf(light);
    const float radius = RadiusOf(light);
    for (const float turn : {-kWidth, 0.0F, kWidth}) {  // what leaves on one side comes in on the other
        canvas.Ring({place.x + turn, place.y}, radius, 6, kShade);
        canvas.Ring({place.x + turn, place.y}, radius, 2.5F, kWhite);
    }
}

void DrawNumber(Canvas& canvas, Point middle, std::size_t number) {
    constexpr float kSize = 11;
    const std::string text = std::to_string(number);
    const float radius = std::max(11.5F, TextWidth(text, kSize) / 2 + 6);
    canvas.Disc(middle, radius + 1.5F, kWhite);
    canvas.Disc(middle, radius, {kBlack.colour});
    DrawTextCentred(canvas, {middle.x, middle.y + kSize / 2}, text, {kSize, kAccent, 0.19F});
}

/// The number sits on the ring, at its upper right unless that leaves the map.
void DrawRingNumber(Canvas& canvas, const LightFinding& light, std::size_t number) {
    constexpr float kRoom = 16;
    const Point place = PlaceOf(light);
    const float offset = RadiusOf(light) * std::numbers::sqrt2_v<float> / 2;
    const float right = place.x + offset < kWidth - kRoom ? offset : -offset;
    const float up = place.y - offset > kRoom ? -offset : offset;
    DrawNumber(canvas, {std::max(place.x + right, kRoom), std::min(place.y + up, kMapHeight - kRoom)}, number);
}

/// A name and a value under it; `right` is where they end.
void DrawValue(Canvas& canvas, float right, float top, std::string_view name, float value) {
    DrawTextRight(canvas, {right, top + 26}, name, {9, kDim, 0.14F});
    DrawTextRight(canvas, {right, top + 50}, std::format("{:.4g}", value), {13, kBright, 0.15F});
}

/// Text that ends in dots where it would be wider than `width`.
std::string Shortened(std::string text, float size, float width) {
    if (TextWidth(text, size) <= width) return text;
    const auto isInside = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    while (!text.empty() && TextWidth(text + "...", size) > width) {
        while (text.size() > 1 && isInside(text.back()))
            text.pop_back();
        text.pop_back();
    }
    return text + "...";
}

void DrawHead(Canvas& canvas, const std::string& title, const LightFindings& findings) {
    constexpr float kTop = kMapHeight;
    DrawText(canvas, {kMargin, kTop + 39}, Shortened(title, 15, 380), {15, kBright, 0.16F});
    DrawText(canvas, {kMargin, kTop + 64},
             std::format("{} x {}   {}", findings.desc.width, findings.desc.height, Enumerator(findings.desc.format)),
             {9, kDim, 0.14F});
    DrawValue(canvas, 565, kTop, "brightest channel", findings.intensity.x);
    DrawValue(canvas, 700, kTop, "mean brightest", findings.intensity.y);
    DrawValue(canvas, kLuminanceEnd, kTop, "luminance", findings.intensity.z);
    DrawTextRight(canvas, {kLuminanceEnd, kTop + 72},
                  findings.upperHemisphere ? "upper hemisphere, by cosine" : "whole sphere", {9, kDim, 0.14F});
    DrawTextRight(canvas, {kShareEnd, kTop + 26}, "average", {9, kDim, 0.14F});
    canvas.RoundedBox({kBarRight - 30, kTop + 36, kShareEnd, kTop + 72}, 4, {HueOf(findings.weightedAverage)});
}

void DrawHeadings(Canvas& canvas, float baseLine) {
    const Lettering small = {9, kDim, 0.14F};
    DrawText(canvas, {kSwatchLeft, baseLine}, "colour", small);
    DrawTextRight(canvas, {kDirectionEnd, baseLine}, "direction  x, y, z", small);
    DrawTextRight(canvas, {kAzimuthEnd, baseLine}, "azimuth", small);
    DrawTextRight(canvas, {kElevationEnd, baseLine}, "elevation", small);
    DrawTextRight(canvas, {kColourEnd, baseLine}, "red, green, blue", small);
    DrawTextRight(canvas, {kLuminanceEnd, baseLine}, "luminance", small);
    DrawTextRight(canvas, {kShareEnd, baseLine}, "share", small);
}

void DrawRow(Canvas& canvas, float top, std::size_t number, const LightFinding& light) {
    const Lettering text = {11, kBright, 0.14F};
    const float baseLine = top + kRowHeight / 2 + 5.5F;
    const auto column = [&](float end, const std::string& value) {
        DrawTextRight(canvas, {end, baseLine}, value, text);
    };
    if (number % 2 == 1) canvas.RoundedBox({kMargin - 12, top, kWidth - kMargin + 12, top + kRowHeight}, 5, {kPanel});
    DrawNumber(canvas, {kNumberMiddle, top + kRowHeight / 2}, number);
    canvas.RoundedBox({kSwatchLeft, top + 6, kSwatchLeft + 44, top + kRowHeight - 6}, 4, {HueOf(light.colour)});
    const auto& [x, y, z] = light.direction;
    column(kDirectionEnd, std::format("{:+.3f}  {:+.3f}  {:+.3f}", x, y, z));
    column(kAzimuthEnd, std::format("{:+.1f}°", light.Azimuth()));
    column(kElevationEnd, std::format("{:+.1f}°", light.Elevation()));
    column(kColourEnd, std::format("{:.3g}  {:.3g}  {:.3g}", light.colour.x, light.colour.y, light.colour.z));
    column(kLuminanceEnd, std::format("{:.4g}", light.luminance));
    column(kShareEnd, std::format("{:.0f} %", 100 * light.share));
    const Box whole = {kBarLeft, top + 11, kBarRight, top + kRowHeight - 11};
    canvas.RoundedBox(whole, 4, {{0.25F, 0.26F, 0.28F}});
    const float length = std::max(8.0F, (kBarRight - kBarLeft) * static_cast<float>(light.share));
    canvas.RoundedBox({whole.left, whole.top, whole.left + length, whole.bottom}, 4, kAccent);
}

}  // namespace

LoadedImage DrawLightPlot(const std::string& title, const SmallEnvironment& map, const LightFindings& findings) {
    const auto& lights = findings.lights;
    const float rows = lights.empty() ? 0 : kHeadingHeight + kRowHeight * static_cast<float>(lights.size());
    Canvas canvas(kPlotWidth, static_cast<int>(kMapHeight + kHeadHeight + rows + kFoot), kPaper);
    DrawMap(canvas, map, kPlotWidth, kPlotMapHeight);
    DrawGrid(canvas);
    for (const LightFinding& light : lights)
        DrawRing(canvas, light);
    for (std::size_t i = lights.size(); i-- > 0;)  // the strongest on top
        DrawRingNumber(canvas, lights[i], i + 1);
    // What hangs over the edge of the map is covered by the legend.
    canvas.Fill({0, kMapHeight, kWidth, static_cast<float>(canvas.Height())}, {kPaper},
                [](Point p) { return kMapHeight - p.y; });
    DrawHead(canvas, title, findings);
    if (lights.empty()) return canvas.ToImage();
    DrawHeadings(canvas, kMapHeight + kHeadHeight + 14);
    for (std::size_t i = 0; i < lights.size(); ++i)
        DrawRow(canvas, kMapHeight + kHeadHeight + kHeadingHeight + kRowHeight * static_cast<float>(i), i + 1,
                lights[i]);
    return canvas.ToImage();
}

}  // namespace Kavra::App
