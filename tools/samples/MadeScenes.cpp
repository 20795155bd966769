// Scenes of made things.

#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Kavra::Samples {
namespace {

// --- The city --------------------------------------------------------------------------------------------------------

constexpr float kQuay = 0.72F;

struct Block {
    float top;    ///< of the house at that place
    float place;  ///< 0 to 1 across it
    int number;
};

Block BlockAt(float x, float width, int row) {
    const float cell = std::floor(x / width);
    const int number = static_cast<int>(cell);
    const float middle = 1 - 0.8F * std::abs(x / 1.5F - 0.52F);
    const float height = (0.12F + 0.42F * Hash(number, row, 501)) * middle - 0.05F * static_cast<float>(row);
    return {kQuay - height, x / width - cell, number};
}

/// One row of houses; false where the sky shows.
bool PaintHouses(float x, float y, int row, Colour& colour) {
    static constexpr float kWidths[] = {0.105F, 0.080F, 0.062F};
    const float width = kWidths[row];
    const Block block = BlockAt(x + 0.031F * static_cast<float>(row), width, row);
    const bool gap = block.place < 0.06F || block.place > 0.94F;
    const bool spire =
        row == 0 && Hash(block.number, 7, 505) > 0.6F && std::abs(block.place - 0.5F) < 0.025F && y > block.top - 0.07F;
    if ((y < block.top || gap) && !spire) return false;
    colour = Mix(FromDisplay(0x16203A), FromDisplay(0x2C3350), static_cast<float>(2 - row) * 0.5F);
    if (y < block.top) return true;
    const float across = block.place * width / 0.0145F, down = (y - block.top) / 0.021F;
    const float wx = Wrapped(across, 1), wy = Wrapped(down, 1);
    const int column = block.number * 40 + static_cast<int>(across), floor = static_cast<int>(down);
    const float mood = Hash(column, floor, 510 + row);
    if (down < 0.6F || wx < 0.22F || wx > 0.80F || wy < 0.30F || wy > 0.78F || mood < 0.52F) return true;
    const float strength = 0.5F + 3.2F * std::pow(Hash(column, floor, 520 + row), 3.0F);
    colour = Scaled(mood > 0.90F ? Colour{0.55F, 0.80F, 1.0F} : Colour{1.0F, 0.70F, 0.28F}, strength);
    return true;
}

Colour NightSky(float x, float y) {
    Colour sky = Mix(FromDisplay(0x060B1E), FromDisplay(0x42305E), Smooth(0.0F, 0.72F, y));
    sky = Mix(sky, FromDisplay(0xB2583F), 0.55F * Smooth(0.45F, 0.74F, y));
    const float dx = x - 0.30F, dy = y - 0.17F;
    const float distance = std::hypot(dx, dy);
    sky = Add(sky, {0.50F, 0.55F, 0.65F}, 0.35F * std::exp(-distance * 14));
    if (distance < 0.055F && std::hypot(dx - 0.030F, dy + 0.012F) > 0.050F) return {2.2F, 2.1F, 1.8F};
    const int column = static_cast<int>(std::floor(x * 110)), row = static_cast<int>(std::floor(y * 110));
    const float at = std::hypot(Wrapped(x * 110, 1) - 0.5F, Wrapped(y * 110, 1) - 0.5F);
    if (y < 0.5F && Hash(column, row, 530) > 0.985F && at < 0.35F) sky = Add(sky, {1, 1, 1}, 0.8F);
    return sky;
}

Colour AboveQuay(float x, float y) {
    Colour colour{};
    for (int row = 2; row >= 0; --row) {
        if (PaintHouses(x, y, row, colour)) return colour;
    }
    return NightSky(x, y);
}

// --- The map ---------------------------------------------------------------------------------------------------------

Colour Belt(float metres) {
    struct Step {
        float from;
        unsigned colour;
    };
    static constexpr Step kSteps[] = {{-1e9F, 0x6FA8DC}, {-90, 0x8DBDE6}, {-30, 0xB3D5F0}, {0, 0xC9DFA8},
                                      {120, 0xA9CF8C},   {300, 0xE6E2A3}, {520, 0xE3C583}, {760, 0xCFA06B},
                                      {1000, 0xB58A6F},  {1230, 0xF5F3F0}};
    Colour colour{};
    for (const Step& step : kSteps) {
        if (metres < step.from) break;
        for (int c = 0; c < 3; ++c)
            colour[static_cast<std::size_t>(c)] = static_cast<float>((step.colour >> (16 - 8 * c)) & 0xFF) / 255;
    }
    return colour;
}

Colour Display(unsigned rgb) {
    return {static_cast<float>(rgb >> 16) / 255, static_cast<float>((rgb >> 8) & 0xFF) / 255,
            static_cast<float>(rgb & 0xFF) / 255};
}

// --- The circuit -----------------------------------------------------------------------------------------------------

struct Chip {
    float left, top, right, bottom;
    int pins;
    std::string_view name;
};

constexpr Chip kChips[] = {{0.52F, 0.30F, 0.94F, 0.62F, 8, "K2026"},
                           {0.12F, 0.12F, 0.30F, 0.34F, 4, "U1"},
                           {1.14F, 0.66F, 1.36F, 0.88F, 4, "U2"}};

/// The gold of a pin, or the body of a chip with its name; false elsewhere.
bool PaintChip(float x, float y, const Chip& chip, Colour& colour) {
    const float pitch = (chip.right - chip.left) / static_cast<float>(chip.pins);
    const bool beside = x > chip.left && x < chip.right &&
                        ((y > chip.top - 0.045F && y < chip.top) || (y > chip.bottom && y < chip.bottom + 0.045F));
    if (beside && std::abs(Wrapped(x - chip.left, pitch) - pitch / 2) < 0.011F) {
        colour = Display(0xE0D8C0);
        return true;
    }
    if (x < chip.left || x > chip.right || y < chip.top || y > chip.bottom) return false;
    colour = Display(0x1C1D22);
    const float height = chip.pins > 4 ? 0.075F : 0.060F;
    const float textX = (x - (chip.left + chip.right) / 2) / height + TextWidth(chip.name) / 2;
    if (Text(textX, (y - (chip.top + chip.bottom) / 2) / height + 0.5F, chip.name) > 0) colour = Display(0xB8BCC4);
    if (std::hypot(x - chip.left - 0.03F, y - chip.bottom + 0.03F) < 0.013F) colour = Display(0x4A4C55);
    return true;
}

/// Traces run in bundles that turn by 45 degrees.
float Trace(float x, float y) {
    struct Bundle {
        std::array<float, 2> a, b, c, d;
        int count;
        float stepX, stepY;
    };
    static constexpr Bundle kBundles[] = {
        {{0.546F, 0.64F}, {0.546F, 0.72F}, {0.38F, 0.886F}, {-0.1F, 0.886F}, 4, 0.0525F, 0.022F},
        {{0.756F, 0.64F}, {0.756F, 0.80F}, {0.92F, 0.964F}, {1.6F, 0.964F}, 2, 0.0525F, -0.030F},
        {{0.546F, 0.28F}, {0.546F, 0.20F}, {0.40F, 0.054F}, {-0.1F, 0.054F}, 1, 0, 0},
        {{0.651F, 0.28F}, {0.651F, 0.22F}, {0.80F, 0.071F}, {1.6F, 0.071F}, 5, 0.0525F, 0.030F},
        {{0.142F, 0.36F}, {0.142F, 0.46F}, {0.18F, 0.50F}, {0.18F, 0.62F}, 4, 0.045F, 0},
        {{1.168F, 0.64F}, {1.168F, 0.50F}, {1.06F, 0.392F}, {1.06F, 0.30F}, 4, 0.055F, 0},
    };
    for (const Bundle& bundle : kBundles) {
        for (int i = 0; i < bundle.count; ++i) {
            const auto moved = [&](std::array<float, 2> point, bool wholly) -> std::array<float, 2> {
                const float n = static_cast<float>(i);
                return {point[0] + n * bundle.stepX, point[1] + (wholly ? n * bundle.stepY : 0)};
            };
            const auto a = moved(bundle.a, false), d = moved(bundle.d, true);
            const auto c = moved(bundle.c, true);
            // The slant stays at 45 degrees: the corner moves along the first straight.
            const std::array<float, 2> b = {a[0],
                                            c[1] + (bundle.b[1] < bundle.c[1] ? -1.0F : 1.0F) * std::abs(c[0] - a[0])};
            if (Stroke(x, y, a, b, 0.0075F) + Stroke(x, y, b, c, 0.0075F) + Stroke(x, y, c, d, 0.0075F) > 0) return 1;
            if (bundle.d[0] > 0 && bundle.d[0] < 1.5F && std::hypot(x - d[0], y - d[1]) < 0.017F) return 1;
        }
    }
    return 0;
}

}  // namespace

Colour City(float x, float y) {
    x *= 1.5F;
    if (y < kQuay) return AboveQuay(x, y);
    if (y < kQuay + 0.012F) return FromDisplay(0x0B0F1C);
    const float depth = (y - kQuay) / (1 - kQuay);
    const float ripple =
        (Noise(y * 130, 540) - 0.5F) * 0.035F * (0.3F + depth) + (Noise(x * 10, y * 60, 541) - 0.5F) * 0.02F;
    // Water draws lights out downwards.
    Colour mirrored{};
    for (int i = 0; i < 5; ++i) {
        const float up = kQuay - (y - kQuay) * 1.7F - static_cast<float>(i) * 0.012F;
        mirrored = Add(mirrored, AboveQuay(x + ripple, std::max(0.0F, up)), 0.2F);
    }
    return Mix(mirrored, FromDisplay(0x0A1426), 0.30F + 0.25F * depth);
}

Colour Poster(float x, float y) {
    const auto fifths = [](int red, int green, int blue) -> Colour {
        return {static_cast<float>(red) / 5, static_cast<float>(green) / 5, static_cast<float>(blue) / 5};
    };
    x *= 1.5F;
    const float textX = x - 0.75F, textY = y - 0.70F;
    constexpr std::string_view kName = "KAVRA";
    const float width = 0.26F * TextWidth(kName);
    const auto in = [&](float dx, float dy) {
        return Text((textX - dx + width / 2) / 0.26F, (textY - dy + 0.13F) / 0.26F, kName) > 0;
    };
    if (in(0, 0)) return fifths(5, 5, 4);
    if (in(0.014F, 0.014F)) return fifths(1, 0, 1);
    if (y > 0.54F) return y > 0.90F ? fifths(5, 3, 0) : y < 0.56F ? fifths(5, 5, 4) : fifths(4, 0, 1);
    const float angle = std::atan2(y - 0.56F, x - 0.75F), radius = std::hypot(x - 0.75F, y - 0.56F);
    if (radius < 0.20F) return fifths(5, 5, 4);
    if (radius < 0.23F) return fifths(4, 0, 1);
    const bool ray = Wrapped(angle * 11 / std::numbers::pi_v<float>, 1) < 0.5F;
    return ray ? fifths(5, 4, 0) : radius > 0.62F ? fifths(5, 1, 0) : fifths(5, 2, 0);
}

Colour Page(float x, float y, char number) {
    x *= 1.5F;
    const Colour paper = Display(0xF6F1E3), ink = Display(0x2E2A26);
    static constexpr unsigned kHues[] = {0xB5322C, 0x2F6DA8, 0x3C8A4B};
    const Colour hue = Display(kHues[static_cast<std::size_t>(number - '1') % 3]);
    if (x < 0.06F) return hue;
    const std::string_view numeral(&number, 1);
    if (Text((x - 0.16F) / 0.44F, (y - 0.14F) / 0.44F, numeral) > 0) return hue;
    if (y > 0.14F && y < 0.17F && x > 0.58F && x < 1.36F) return ink;
    // Lines of words, the first ones beside the numeral.
    const float line = (y - 0.24F) / 0.105F;
    if (line < 0 || line >= 6.5F || Wrapped(line, 1) > 0.36F) return paper;
    const int row = static_cast<int>(line);
    const float left = row < 4 ? 0.58F : 0.16F, right = row == 6 ? 0.90F : 1.36F;
    if (x < left || x > right) return paper;
    return Noise(x * 13 + 40, static_cast<float>(row) * 7.3F, 560 + number) > 0.30F ? Mix(ink, paper, 0.35F) : paper;
}

Colour TestCard(float x, float y) {
    const float px = (x - 0.5F) * 1.5F, py = y - 0.5F;
    const float radius = std::hypot(px, py);
    static constexpr unsigned kBars[] = {0xEBEBEB, 0xEBEB10, 0x10EBEB, 0x10EB10,
                                         0xEB10EB, 0xEB1010, 0x1010EB, 0x101010};
    if (std::abs(radius - 0.455F) < 0.011F) return {1, 1, 1};
    if (radius < 0.455F) {
        if (y < 0.36F)
            return Display(kBars[static_cast<std::size_t>(std::clamp((px + 0.44F) / 0.88F * 8, 0.0F, 7.0F))]);
        if (y < 0.50F) {
            const float step = std::floor(std::clamp((px + 0.46F) / 0.92F, 0.0F, 0.999F) * 9) / 8;
            return {step, step, step};
        }
        if (y < 0.64F) {  // ever finer lines
            const float wave = std::sin(150 * std::pow(px + 0.50F, 2.4F)) > 0 ? 1.0F : 0.0F;
            return {wave, wave, wave};
        }
        if (y < 0.78F) return Mix({1, 0, 0}, {0, 0, 1}, (px + 0.40F) / 0.8F);
        const float height = 0.10F, textX = px / height + TextWidth("KAVRA") / 2;
        return Text(textX, (y - 0.815F) / height, "KAVRA") > 0 ? Colour{1, 1, 1} : Display(0x202428);
    }
    const bool line = Wrapped(px + 0.75F, 0.125F) < 0.012F || Wrapped(py + 0.5F, 0.125F) < 0.012F;
    const bool border = x < 0.033F || x > 0.967F || y < 0.05F || y > 0.95F;
    if (border)
        return Wrapped(std::floor((px + 0.75F) / 0.0625F) + std::floor((py + 0.5F) / 0.0625F), 2) > 0.5F
                   ? Colour{1, 1, 1}
                   : Colour{0, 0, 0};
    return line ? Colour{0.9F, 0.9F, 0.9F} : Display(0x6E7680);
}

float Altitude(float x, float y) {
    const auto peak = [x, y](float atX, float atY, float width, float metres) {
        const float dx = (x - atX) / width, dy = (y - atY) / width;
        return metres * std::exp(-(dx * dx + dy * dy));
    };
    const float hills =
        90 * std::sin(9 * x + 4 * y) * std::sin(11 * y - 3 * x) + 40 * std::sin(23 * x) * std::sin(19 * y);
    const float land =
        peak(0.42F, 0.40F, 0.22F, 1500) + peak(0.66F, 0.60F, 0.18F, 900) + peak(0.30F, 0.68F, 0.13F, 500);
    return land + hills * std::min(1.0F, land / 300) - 160;
}

Colour IslandMap(float x, float y) {
    const float metres = Altitude(x, y);
    Colour colour = Belt(metres);
    const float slope = Altitude(x - 0.01F, y - 0.01F) - metres;
    if (metres > 0) colour = Scaled(colour, std::clamp(1 - slope / 420, 0.72F, 1.12F));
    const float steep = std::hypot(Altitude(x + 0.004F, y) - metres, Altitude(x, y + 0.004F) - metres) / 0.004F;
    const float toLine = std::abs(Wrapped(metres + 125, 250) - 125) / std::max(steep, 1.0F);
    if (metres > 60 && toLine < 0.0022F) colour = Mix(colour, Display(0x7A4A2A), 0.7F);
    if (std::abs(metres) / std::max(steep, 1.0F) < 0.0035F) colour = Display(0x2A5B8C);
    const float px = x * 1.5F;
    if (Wrapped(px, 0.25F) < 0.004F || Wrapped(y, 0.25F) < 0.004F) colour = Mix(colour, Display(0x4A6E92), 0.45F);
    // A walk over the island, and where it ends.
    const float path = 0.70F - 0.34F * std::sin((x - 0.28F) * 5.6F);
    if (x > 0.28F && x < 0.66F && std::abs(y - path) < 0.008F && Wrapped(x, 0.030F) < 0.018F)
        colour = Display(0xC62828);
    const float end = 0.70F - 0.34F * std::sin(0.38F * 5.6F);
    if (std::abs(std::abs(px - 0.99F) - std::abs(y - end)) < 0.012F && std::abs(px - 0.99F) < 0.036F)
        return Display(0xC62828);
    return colour;
}

Colour Fields(float x, float y) {
    const float px = x * 1.5F;
    const float river = y - 0.46F - 0.16F * std::sin(px * 3.6F + 0.7F) - 0.03F * std::sin(px * 11);
    if (std::abs(river) < 0.032F)
        return Mix(FromDisplay(0x1F5A78), FromDisplay(0x4F93A8), Smooth(0.032F, 0.0F, std::abs(river)) * 0.7F);
    if (std::abs(river) < 0.052F) return Mix(FromDisplay(0x1E3D1C), FromDisplay(0x3F6A2E), Noise(px * 60, y * 60, 601));
    const float road = px * 0.28F + y * 0.96F - 0.93F;
    if (std::abs(road) < 0.008F) return FromDisplay(0xD9D2C2);
    // Strips of land, each cut into fields of its own lengths.
    const float u = px * 0.96F - y * 0.28F, v = px * 0.28F + y * 0.96F;
    const int strip = static_cast<int>(std::floor(v / 0.165F));
    const float length = 0.20F + 0.16F * Hash(strip, 1, 610), start = Hash(strip, 2, 611);
    const int field = static_cast<int>(std::floor((u + start) / length));
    const float hedge = std::min(std::min(Wrapped(v, 0.165F), 0.165F - Wrapped(v, 0.165F)),
                                 std::min(Wrapped(u + start, length), length - Wrapped(u + start, length)));
    if (hedge < 0.006F) return Mix(FromDisplay(0x23431D), FromDisplay(0x4A6B35), Noise(px * 80, y * 80, 612));
    static constexpr unsigned kCrops[] = {0xE2C257, 0x86A844, 0x4E7A35, 0xB98A55,
                                          0xC9B26A, 0x6B9440, 0x9C6B42, 0xF0D33C};
    const Colour crop = FromDisplay(kCrops[static_cast<std::size_t>(Hash(field, strip, 620) * 7.99F)]);
    const float angle = Hash(field, strip, 621) * 3;
    const float furrow = std::sin((px * std::cos(angle) + y * std::sin(angle)) * 260);
    return Scaled(crop, 0.85F + 0.13F * furrow + 0.25F * (Clouds(px * 14, y * 14, 630, 4) - 0.5F));
}

Colour Bricks(float x, float y) {
    const float row = y * 8;
    const int course = static_cast<int>(std::floor(row));
    const float along = Wrapped(x * 4 + (course % 2 == 0 ? 0.0F : 0.5F), 4);
    const int brick = static_cast<int>(along);
    const float dx = std::min(Wrapped(along, 1), 1 - Wrapped(along, 1)) * 2,
                dy = std::min(Wrapped(row, 1), 1 - Wrapped(row, 1));
    const float grain = Clouds(x * 40, y * 40, 640, 4);
    const Colour mortar = Scaled(Display(0xB9B0A2), 0.75F + 0.4F * grain);
    if (std::min(dx, dy) < 0.07F) return mortar;
    static constexpr unsigned kClay[] = {0x9C4A34, 0xB05A3C, 0x8A3E2E, 0xA8503A, 0xBC6B48, 0x7C3A30};
    Colour clay = Display(kClay[static_cast<std::size_t>(Hash(brick, course, 650) * 5.99F)]);
    clay = Scaled(clay, 0.70F + 0.55F * grain);
    // Light falls from the upper left.
    const bool shade = Wrapped(row, 1) > 0.86F || (Wrapped(along, 1) > 0.93F && dx < 0.14F);
    return shade ? Scaled(clay, 0.70F) : dy < 0.13F || dx < 0.13F ? Scaled(clay, 1.15F) : clay;
}

Colour Ornament(float x, float y) {
    const Colour cream = Display(0xF3E8CF), blue = Display(0x1F4E8C), ochre = Display(0xD99A2B),
                 green = Display(0x2E7D5B);
    // Four tiles; each has stars of eight points in the middle and quarters of them at its corners.
    const float u = Wrapped(x * 2, 1) - 0.5F, v = Wrapped(y * 2, 1) - 0.5F;
    const auto star = [](float a, float b) {
        const float square = std::max(std::abs(a), std::abs(b));
        const float diamond = (std::abs(a) + std::abs(b)) * 0.7071F;
        return std::min(square, diamond);
    };
    const float middle = star(u, v);
    const float corner = star(0.5F - std::abs(u), 0.5F - std::abs(v));
    const float gap = Clouds(x * 20, y * 20, 660, 3) * 0.10F;
    const auto glaze = [gap](const Colour& colour) { return Scaled(colour, 0.93F + gap); };
    if (std::max(std::abs(u), std::abs(v)) > 0.488F) return Display(0x9A917F);
    const float radius = std::hypot(u, v), angle = std::atan2(v, u);
    if (radius < 0.115F * (0.72F + 0.28F * std::cos(8 * angle))) return glaze(cream);
    if (middle < 0.125F) return glaze(ochre);
    if (middle < 0.150F) return glaze(cream);
    if (middle < 0.225F) return glaze(blue);
    if (middle < 0.250F) return glaze(cream);
    if (corner < 0.085F) return glaze(ochre);
    if (corner < 0.105F) return glaze(cream);
    if (corner < 0.165F) return glaze(green);
    if (corner < 0.185F) return glaze(cream);
    const float band = std::min(std::abs(u), std::abs(v));
    return band < 0.020F ? glaze(ochre) : band < 0.045F ? glaze(cream) : glaze(blue);
}

Colour Circuit(float x, float y) {
    x *= 1.5F;
    Colour colour{};
    for (const Chip& chip : kChips) {
        if (PaintChip(x, y, chip, colour)) return colour;
    }
    // Resistors, holes, and a round capacitor.
    for (int i = 0; i < 3; ++i) {
        const float left = 0.62F + 0.15F * static_cast<float>(i);
        if (x > left && x < left + 0.085F && y > 0.80F && y < 0.845F)
            return x < left + 0.016F || x > left + 0.069F ? Display(0xE0D8C0) : Display(0x2A2A2E);
    }
    const float toCan = std::hypot(x - 1.22F, y - 0.20F);
    if (toCan < 0.105F)
        return toCan > 0.085F ? Display(0x55585F)
                              : Mix(Display(0xD9DDE2), Display(0x8A9098), (x - 1.12F + y - 0.10F) * 3);
    for (const auto& [holeX, holeY] :
         {std::array{0.06F, 0.06F}, std::array{1.44F, 0.06F}, std::array{0.06F, 0.94F}, std::array{1.44F, 0.94F}}) {
        const float distance = std::hypot(x - holeX, y - holeY);
        if (distance < 0.022F) return Display(0x101010);
        if (distance < 0.042F) return Display(0xD9B64A);
    }
    if (Trace(x, y) > 0) return Display(0xC9A63C);
    return Mix(Display(0x0B5D3B), Display(0x0F7449), Clouds(x * 6, y * 6, 670, 3));
}

}  // namespace Kavra::Samples
