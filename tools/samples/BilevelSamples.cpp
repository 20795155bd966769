#include "BilevelSamples.h"

#include "Picture.h"
#include "legacy/CalsFile.h"
#include "legacy/CcittEncoder.h"
#include "legacy/RlcFile.h"

#include <array>
#include <cmath>
#include <numbers>
#include <string>

namespace Kavra::Samples {
namespace {

using Legacy::Bitmap;
using Legacy::ByteBuilder;

/// How far a point is from a circle.
float FromCircle(float x, float y, float centreX, float centreY, float radius) {
    return std::abs(std::hypot(x - centreX, y - centreY) - radius);
}

/// Whether a point of a line lies in one of its dashes, long and short in turn.
bool IsDash(float along) {
    const float place = along - 34 * std::floor(along / 34);
    return place < 22 || (place > 26 && place < 30);
}

/// A flange with eight bolts in a frame, as a draughtsman draws it. Points are pixels of 640 x 480.
bool IsInk(float x, float y) {
    constexpr float kCentreX = 270, kCentreY = 240, kBolts = 142;
    if (x < 8 || y < 8 || x > 632 || y > 472) return false;
    if (x < 11 || y < 11 || x > 629 || y > 469) return true;
    if (x > 470 && y > 380) return x < 473 || y < 383 || std::abs(y - 411) < 1 || std::abs(y - 440) < 1;
    for (const float radius : {50.0F, 64.0F, 100.0F, 190.0F}) {
        if (FromCircle(x, y, kCentreX, kCentreY, radius) < 1.6F) return true;
    }
    const float turn = std::atan2(y - kCentreY, x - kCentreX);
    if (FromCircle(x, y, kCentreX, kCentreY, kBolts) < 0.8F && IsDash(turn * kBolts + 1000)) return true;
    for (int bolt = 0; bolt < 8; ++bolt) {
        const float angle = (static_cast<float>(bolt) + 0.5F) * std::numbers::pi_v<float> / 4;
        const float boltX = kCentreX + kBolts * std::cos(angle);
        const float boltY = kCentreY + kBolts * std::sin(angle);
        if (FromCircle(x, y, boltX, boltY, 15) < 1.4F) return true;
    }
    const bool hatched = std::hypot(x - kCentreX, y - kCentreY) > 64 && std::hypot(x - kCentreX, y - kCentreY) < 100;
    if (hatched && std::fmod(x + y, 9.0F) < 1.3F) return true;
    if (std::abs(x - kCentreX) < 0.8F && std::abs(y - kCentreY) < 215 && IsDash(y)) return true;
    return std::abs(y - kCentreY) < 0.8F && std::abs(x - kCentreX) < 215 && IsDash(x);
}

Bitmap Drawing() {
    Bitmap image(640, 480);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (IsInk(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F)) image.Set(x, y);
        }
    }
    return image;
}

/// The image after a quarter turn anticlockwise.
Bitmap Turned(const Bitmap& image) {
    Bitmap turned(image.height, image.width);
    for (int y = 0; y < turned.height; ++y) {
        for (int x = 0; x < turned.width; ++x) {
            if (image.At(image.width - 1 - y, x)) turned.Set(x, y);
        }
    }
    return turned;
}

/// The image mirrored at the diagonal that rises to the right.
Bitmap Transverse(const Bitmap& image) {
    Bitmap turned(image.height, image.width);
    for (int y = 0; y < turned.height; ++y) {
        for (int x = 0; x < turned.width; ++x) {
            if (image.At(image.width - 1 - y, image.height - 1 - x)) turned.Set(x, y);
        }
    }
    return turned;
}

/// Light and shade by lines that swell, as in an engraving.
Bitmap Engraving(const Picture& picture) {
    constexpr int kSpacing = 5;
    // By the place between two lines: how bright the picture has to be there.
    constexpr std::array<float, kSpacing> kThresholds = {0.22F, 0.42F, 0.75F, 0.58F, 0.32F};
    const Picture grey = Brightness(picture);
    Bitmap image(grey.width, grey.height);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (*grey.At(x, y) > kThresholds[static_cast<std::size_t>(y % kSpacing)]) image.Set(x, y);
        }
    }
    return image;
}

/// A flower in its shadow, on a ground that grows brighter outwards.
Colour FlowerOnGround(float x, float y) {
    const Cutout flower = Flower(x, y);
    const float aside = std::hypot((x - 0.5F) * 1.5F, y - 0.5F);
    return flower.coverage > 0 ? flower.colour : Scaled({1, 1, 1}, 0.02F + 0.40F * Smooth(0.46F, 0.90F, aside));
}

}  // namespace

void WriteCommonBilevelSamples(const std::string& folder) {
    const Bitmap stored = Transverse(Drawing());
    // Pixels go up, rows to the left.
    ByteBuilder file;
    file.Text("srcdocid: flange\r\ndstdocid: NONE\r\nrtype: 1\r\nrorient: 090,090\r\n");
    file.Text("rpelcnt: " + std::to_string(stored.width) + " , " + std::to_string(stored.height) + "\r\n");
    file.Text("rdensty: 0100\r\nnotes: lines instead of records\r\n");
    WriteBytes(folder + "/drawing-lines.cal", file.Append(Legacy::EncodeGroup4(stored)).Bytes());
}

void WriteBilevelSamples(const std::string& folder) {
    const Bitmap drawing = Drawing();
    WriteBytes(folder + "/drawing.cal", Legacy::CalsFile(drawing).Bytes());
    // What is stored needs a quarter turn clockwise to be displayed.
    WriteBytes(folder + "/drawing-turned.cal", Legacy::CalsFile(Turned(drawing), {.orientation = "270,270"}).Bytes());

    ByteBuilder engraving = Legacy::RlcFile(Engraving(Paint(480, 320, FlowerOnGround, true)));
    WriteBytes(folder + "/engraving.rlc", engraving.Bytes());
    Legacy::AddRlcDirectory(engraving, std::array{Legacy::RlcEntry{.type = 2}, Legacy::RlcEntry{.type = 2}});
    WriteBytes(folder + "/engraving-directory.rlc", engraving.Bytes());
}

}  // namespace Kavra::Samples
