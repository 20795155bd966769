/// What is done to colours, pixel by pixel.
#pragma once

#include "Exposure.h"
#include "Pixel.h"
#include "Transfer.h"

#include <kavra/devices/IImageInspector.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::App {

/// How light beyond white is brought into 0..1.
enum class ToneMap {
    kNone,
    kReinhard,          ///< `Exposure`, of the whole picture
    kReinhardIfBright,  ///< the same where anything is brighter than white
    kFilmic,            ///< `Filmic`
};

/// Red, green and blue as light.
using Light = std::array<float, 3>;

/// From what values are to what they are to be. As it stands, nothing changes.
///
/// Alpha was multiplied into the values as they are stored, so premultiplied colours are divided before a curve bends
/// them and multiplied after it: light as light, encoded ones encoded. Where alpha is 0 a division leaves colours as
/// they are, and what came premultiplied is not multiplied by it: such colours are light that is added to what lies
/// behind, as of a fire. An alpha counts as 0 below 0 and for NaN, as 1 above it.
struct ColourChange {
    Transfer from = {}, to = {};  ///< `to` is linear or sRGB
    /// `kAlphaNone` of `alphaFrom`: alpha is left alone. `alphaTo` is that, too, where a background makes it opaque.
    Devices::EAlphaKind alphaFrom = Devices::kAlphaNone, alphaTo = Devices::kAlphaNone;
    bool dropsAlpha = false;                         ///< alpha becomes opaque, and was left alone
    std::optional<Light> background = std::nullopt;  ///< what the picture is put on, as light; it becomes opaque
    float brightness = 1;                            ///< light is multiplied by it
    ToneMap tone = ToneMap::kNone;

    /// Whether colours get other values than those that alpha and what lies behind make.
    bool ChangesValues() const;
    /// Whether the values are light at some point on their way.
    bool PassesLight() const { return ChangesValues() || background; }
    /// Whether pixels stay what they are, in whatever format.
    bool IsNothing() const;
};

/// What a change met on its way, counted in pixels.
struct ColourFindings {
    std::size_t pixels = 0;
    std::size_t bright = 0;   ///< seen, with a colour brighter than white that nothing brought down
    std::size_t glowing = 0;  ///< with colour, and no alpha by which straight colours could show it

    void Add(const ColourFindings& other);
};

/// Puts pixels through a change.
class ColourSteps {
public:
    /// `sourceMax` is the largest integer that the values were read from, by which curves are looked up; 0: floats.
    ColourSteps(const ColourChange& change, unsigned sourceMax);

    /// Whether all pixels are to be seen by `Look` before the first goes through `Run`.
    bool LooksFirst() const;
    /// Counts pixels, which it changes, for the exposure.
    void Look(std::span<Pixel> pixels, Exposure& exposure, float& brightest) const;
    /// What was counted of all pixels.
    void SetExposure(const Exposure& exposure, float brightest);

    void Run(std::span<Pixel> pixels, ColourFindings& findings) const;

private:
    bool ToLight(std::span<Pixel> pixels) const;
    void MapTones(std::span<Pixel> pixels) const;
    void DecodeAll(std::span<Pixel> pixels, bool isDivided) const;
    void Compose(std::span<Pixel> pixels, bool isPremultiplied) const;
    void Multiply(std::span<Pixel> pixels) const;
    void Count(std::span<const Pixel> pixels, ColourFindings& findings) const;

    ColourChange mChange;
    std::vector<float> mDecoded;  ///< by integer; empty for floats
    std::optional<Exposure> mExposure;
};

}  // namespace Kavra::App
