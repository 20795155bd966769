#include "load/ColourMeaning.h"

#include "formats/Attributes.h"

#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace Kavra::Devices {

namespace {

/// Whether the load's pixels have an alpha that is the file's: as it is named, or as the fourth of several channels in
/// one plane.
bool HasAlpha(const OIIO::ImageSpec& spec) {
    if (spec.alpha_channel >= 0) return true;
    if (spec.nchannels == 2) return spec.channel_name(1) == "A";
    const bool isFirstFour = spec.nchannels == 4 || (spec.nchannels > 4 && spec.format == OIIO::TypeUInt8);
    return isFirstFour && TextAttribute(spec, "planarconfig") != "separate";
}

bool IsStraightAsStored(const OIIO::ImageSpec& spec) {
    return spec.alpha_channel < 0 || IntegerAttribute(spec, "oiio:UnassociatedAlpha") == 1;
}

// --- Light -----------------------------------------------------------------------------------------------------------

constexpr Transfer kLinear = {kTransferLinear, 1};
constexpr Transfer kSrgb = {kTransferSrgb, 2.2};

Transfer OfGamma(double exponent) {
    constexpr double kNear = 0.001;
    if (std::abs(exponent - 1) < kNear) return kLinear;
    return {kTransferGamma, exponent};
}

bool IsPossibleGamma(double exponent) {
    return exponent >= 0.1 && exponent <= 10;  // not of one that is no number either
}

/// "g22_rec709_scene" is an exponent of 2.2, and so is "Gamma2.2".
std::optional<double> ExponentOfName(std::string_view name) {
    const bool isLong = name.starts_with("gamma");
    if (!name.starts_with('g')) return std::nullopt;
    name.remove_prefix(isLong ? 5 : 1);
    while (isLong && (name.starts_with(' ') || name.starts_with('_')))
        name.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool isWhole = error == std::errc() && (end == name.data() + name.size() || *end == '_' || isLong);
    if (!isWhole) return std::nullopt;
    const double exponent = isLong ? number : number / 10;
    return IsPossibleGamma(exponent) ? std::optional(exponent) : std::nullopt;
}

/// What a colour space is by its name; nothing where the name says none of this.
std::optional<Transfer> TransferOfName(std::string_view colourSpace) {
    const std::string name = OIIO::Strutil::lower(colourSpace);
    const auto has = [&](std::string_view word) { return name.find(word) != std::string::npos; };
    if (name.starts_with("lin") || has("linear") || name == "acescg" || name == "aces2065-1") return kLinear;
    if (has("log")) return Transfer{};
    if (has("srgb")) return kSrgb;
    if (const auto exponent = ExponentOfName(name)) return OfGamma(*exponent);
    return std::nullopt;
}

std::optional<double> StatedExponent(std::string_view format, const OIIO::ImageSpec& spec) {
    const auto stated = FloatAttribute(spec, "oiio:Gamma");
    if (!stated) return std::nullopt;
    // Of Radiance files it is the exponent that encodes, of all others the one that decodes.
    const double exponent = format == "hdr" ? 1.0 / double{*stated} : double{*stated};
    return IsPossibleGamma(exponent) ? std::optional(exponent) : std::nullopt;
}

bool IsOfFloats(const OIIO::ImageSpec& spec) {
    const auto isFloat = [](OIIO::TypeDesc type) { return type.is_floating_point(); };
    return isFloat(spec.format) || std::ranges::any_of(spec.channelformats, isFloat);
}

bool IsOfNoOneMeaning(std::string_view format) {
    constexpr auto kKinds = std::to_array<std::string_view>({"cineon", "dicom", "dpx", "fits", "openvdb", "zfile"});
    return std::ranges::find(kKinds, format) != kKinds.end();
}

// --- The ruler -------------------------------------------------------------------------------------------------------

double NumberAttribute(const OIIO::ImageSpec& spec, const char* name) {
    if (const auto number = FloatAttribute(spec, name)) return double{*number};
    return IntegerAttribute(spec, name).value_or(0);
}

/// Units that make an inch; 0 of what is no length. Where nothing is said it is the inch, as in TIFF.
double UnitsPerInch(const OIIO::ImageSpec& spec) {
    if (const auto exif = IntegerAttribute(spec, "ResolutionUnit")) {
        constexpr int kInch = 2, kCentimetre = 3;  // TIFF 6.0
        return *exif == kInch ? 1 : *exif == kCentimetre ? 2.54 : 0;
    }
    const std::string unit = OIIO::Strutil::lower(TextAttribute(spec, "ResolutionUnit").value_or("in"));
    if (unit == "in" || unit == "inch" || unit == "inches") return 1;
    if (unit == "cm") return 2.54;
    if (unit == "m") return 0.0254;
    return 0;
}

double DotsPerInch(double dots, double unitsPerInch) {
    constexpr double kMaxDots = 1e6;
    const double perInch = dots * unitsPerInch;
    return perInch > 0 && perInch <= kMaxDots ? perInch : 0;
}

}  // namespace

EAlphaKind AlphaKindOf(std::string_view format, const OIIO::ImageSpec& spec) {
    if (!HasAlpha(spec)) return kAlphaNone;
    if (format == "openexr") return kAlphaPremultiplied;
    if (format == "tiff" || format == "heif") return IsStraightAsStored(spec) ? kAlphaStraight : kAlphaPremultiplied;
    constexpr int kTargaPremultiplied = 4;  // "attributes type" of the extension area
    const bool isPremultiplied = format == "targa" && IntegerAttribute(spec, "targa:alpha_type") == kTargaPremultiplied;
    return isPremultiplied ? kAlphaPremultiplied : kAlphaStraight;
}

Transfer TransferOf(std::string_view format, const OIIO::ImageSpec& spec) {
    const bool isRadiance = format == "hdr";  // which is always called linear
    const auto exponent = StatedExponent(format, spec);
    if (isRadiance && exponent) return OfGamma(*exponent);
    if (const auto named = TransferOfName(TextAttribute(spec, "oiio:ColorSpace").value_or(""))) return *named;
    if (exponent) return OfGamma(*exponent);
    if (IsOfNoOneMeaning(format)) return {};
    return IsOfFloats(spec) ? kLinear : kSrgb;
}

Resolution ResolutionOf(std::string_view format, const OIIO::ImageSpec& spec) {
    // PSD files count dots per inch whatever unit they are shown in.
    const double unitsPerInch = format == "psd" ? 1 : UnitsPerInch(spec);
    const double x = DotsPerInch(NumberAttribute(spec, "XResolution"), unitsPerInch);
    const double y = DotsPerInch(NumberAttribute(spec, "YResolution"), unitsPerInch);
    return {x > 0 ? x : y, y > 0 ? y : x};
}

}  // namespace Kavra::Devices
