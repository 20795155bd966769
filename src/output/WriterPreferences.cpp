#include "output/WriterPreferences.h"

#include <kavra/devices/IccProfile.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <format>
#include <string>

namespace Kavra::Devices {

namespace {

/// Whether a list of words, with a space around each, has a word.
bool Has(std::string_view list, std::string_view word) {
    return !word.empty() && !word.contains(' ') && list.contains(std::format(" {} ", word));
}

constexpr std::string_view kWithMetadata = " png jpeg tiff openexr ";
constexpr std::string_view kWithProfile = " png jpeg tiff webp ";
constexpr std::string_view kWithQuality = " jpeg webp jpegxl heif ";
constexpr std::string_view kWithTiles = " openexr tiff ";
constexpr std::string_view kWithLinear = " png jpegxl openexr dpx ";
constexpr std::string_view kWithSrgb = " png jpegxl openexr dpx jpeg tiff ";
constexpr std::string_view kWithGamma = " png targa ";

struct Compressions {
    std::string_view writer;
    std::string_view names;
};

/// Those that were written and read back. The TIFF writer takes more names and makes files of them that nobody can read.
constexpr std::array kCompressions = {
    Compressions{"openexr", " none rle zip zips piz pxr24 b44 b44a dwaa dwab "},
    Compressions{"tiff", " none lzw zip packbits "},
    Compressions{"png", " none zip filtered huffman rle fixed pngfast "},
    Compressions{"webp", " lossless "},
    Compressions{"jpegxl", " lossless "},
    Compressions{"targa", " none rle "},
    Compressions{"sgi", " none rle "},
    Compressions{"iff", " none rle "},
};

/// The name in lower case where the writer knows it; else empty.
std::string KnownCompression(const char* name, std::string_view writer) {
    constexpr std::size_t kMaxName = 16;
    std::string lower;
    for (const char* c = name; c != nullptr && *c != '\0'; ++c) {
        lower += *c >= 'A' && *c <= 'Z' ? static_cast<char>(*c - 'A' + 'a') : *c;
        if (lower.size() > kMaxName) return {};
    }
    const auto* const found = std::ranges::find(kCompressions, writer, &Compressions::writer);
    const bool isKnown = !lower.empty() && found != kCompressions.end() && Has(found->names, lower);
    return isKnown ? lower : std::string();
}

/// How much DWA throws away: 45, which is said to show nowhere, for a quality of 90, and in proportion.
int DwaLevel(int quality) {
    return std::max(1, (100 - quality) * 9 / 2);
}

void AddCompression(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer) {
    std::string name = KnownCompression(preferences.compression, writer);
    int quality = std::clamp(preferences.quality, 0, 100);
    const bool isLossless = name == "lossless";
    if (isLossless && writer == "jpegxl") quality = 100;
    if (name.starts_with("dwa") && quality > 0) name += std::format(":{}", DwaLevel(quality));
    const bool isByQuality = writer == "jpegxl" || name.empty();
    if (!isByQuality) spec.attribute("compression", name);
    if (quality > 0 && Has(kWithQuality, writer) && !(isLossless && writer == "webp"))
        spec.attribute("CompressionQuality", quality);
}

void AddResolution(OIIO::ImageSpec& spec, double resolution, std::string_view writer) {
    constexpr double kMin = 0.01, kMax = 65535;
    const bool isWritable = resolution >= kMin && resolution <= kMax;
    if (!isWritable || !Has(kWithMetadata, writer)) return;
    spec.attribute("XResolution", static_cast<float>(resolution));
    spec.attribute("YResolution", static_cast<float>(resolution));
    spec.attribute("ResolutionUnit", "in");
}

/// Only TIFF can say it without values being divided or multiplied.
void AddAlpha(OIIO::ImageSpec& spec, EAlphaKind alpha, std::string_view writer) {
    if (alpha == kAlphaPremultiplied && writer == "tiff") spec.attribute("oiio:UnassociatedAlpha", 0);
    if (alpha == kAlphaNone || spec.nchannels != 2) return;
    spec.channelnames = {"Y", "A"};
    spec.alpha_channel = 1;
}

void AddTransfer(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer) {
    constexpr double kMin = 0.1, kMax = 10;
    if (writer == "jpegxl" && spec.nchannels < 3) return;  // which would fail
    if (preferences.transfer == kTransferLinear && Has(kWithLinear, writer)) {
        spec.attribute("oiio:ColorSpace", "linear");
    } else if (preferences.transfer == kTransferSrgb && Has(kWithSrgb, writer)) {
        spec.attribute("oiio:ColorSpace", "sRGB");
    } else if (preferences.transfer == kTransferGamma && Has(kWithGamma, writer) && preferences.gamma >= kMin &&
               preferences.gamma <= kMax) {
        spec.attribute("oiio:ColorSpace", std::format("Gamma{:.3f}", preferences.gamma));
    }
}

/// A profile is told in place of a transfer, which it contains.
bool AddProfile(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer) {
    constexpr std::size_t kMaxInJpeg =
        65519;  // that a marker holds; in the last of several the writer puts wrong bytes
    const bool isJpeg = writer == "jpeg";
    if (!Has(kWithProfile, writer) || (isJpeg && (preferences.iccBytes > kMaxInJpeg || spec.nchannels == 2)) ||
        !IsSoundIccProfile(preferences.iccProfile, preferences.iccBytes, spec.nchannels)) {
        return false;
    }
    spec.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, static_cast<int>(preferences.iccBytes)),
                   preferences.iccProfile);
    return true;
}

/// As many bytes of a text as there are, at most `max`, to the end of a character of UTF-8.
std::string_view Cut(std::string_view text, std::size_t max) {
    if (text.size() <= max) return text;
    while (max > 0 && (static_cast<unsigned char>(text[max]) & 0xC0) == 0x80)
        --max;
    return text.substr(0, max);
}

/// A number that is one, and none that overflows the fractions of Exif.
void AddNumber(OIIO::ImageSpec& spec, const SavedText& known, std::string_view value) {
    constexpr double kMin = 1e-5, kMaxFraction = 1e5, kMaxWhole = 65535;
    double number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    const bool isNumber = error == std::errc() && end == value.data() + value.size();
    if (!isNumber || !(number >= kMin)) return;
    if (known.kind == SavedText::kNumber && number <= kMaxFraction) {
        spec.attribute(known.name, static_cast<float>(number));
    } else if (known.kind == SavedText::kWhole && number >= 1 && number <= kMaxWhole) {
        spec.attribute(known.name, static_cast<int>(std::lround(number)));
    }
}

/// Bytes of all texts together: a JPEG holds up to 64 KiB of them, each in two places, and its library ends the process
/// over more.
constexpr std::size_t kMaxTextBytes = std::size_t{32} << 10;
constexpr std::size_t kMaxTexts = 1024;  // that are looked at

void AddTexts(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer) {
    if (preferences.texts == nullptr) return;
    const bool hasAll = Has(kWithMetadata, writer);
    const bool hasSome = Has(" targa dpx sgi rla iff ", writer);
    std::size_t left = kMaxTextBytes;
    const std::size_t count = hasAll || hasSome ? std::min(preferences.textCount, kMaxTexts) : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const FileText& text = preferences.texts[i];
        if (text.name == nullptr || text.value == nullptr || *text.value == '\0') continue;
        const auto* const known = FindSavedText(text.name);
        if (known == nullptr || (!hasAll && !known->isCommon) || spec.find_attribute(known->name) != nullptr) continue;
        const std::string_view value = Cut(text.value, left);
        left -= value.size();
        if (known->kind == SavedText::kText && !value.empty()) spec.attribute(known->name, std::string(value));
        if (known->kind != SavedText::kText) AddNumber(spec, *known, value);
    }
}

void AddSpeed(OIIO::ImageSpec& spec, double framesPerSecond, std::string_view writer) {
    constexpr double kMin = 0.01, kMax = 100;
    if (writer != "gif" || !(framesPerSecond > 0)) return;
    const std::array<int, 2> fraction = {static_cast<int>(std::lround(std::clamp(framesPerSecond, kMin, kMax) * 100)),
                                         100};
    spec.attribute("FramesPerSecond", OIIO::TypeRational, fraction.data());
}

}  // namespace

void AddPreferences(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer) {
    AddCompression(spec, preferences, writer);
    AddResolution(spec, preferences.resolution, writer);
    AddAlpha(spec, preferences.alpha, writer);
    if (!AddProfile(spec, preferences, writer)) AddTransfer(spec, preferences, writer);
    AddTexts(spec, preferences, writer);
    AddSpeed(spec, preferences.framesPerSecond, writer);
}

void AddTiles(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer) {
    constexpr int kStep = 16, kMaxSide = 4096;  // sides of TIFF are multiples of 16
    if (preferences.tileSize <= 0 || !Has(kWithTiles, writer)) return;
    const int wanted = std::clamp(preferences.tileSize, kStep, kMaxSide);
    const int useful = std::min(std::max(spec.width, spec.height), kMaxSide);
    const int side = std::min(wanted, (useful + kStep - 1) / kStep * kStep);
    spec.tile_width = spec.tile_height = writer == "tiff" ? (side + kStep - 1) / kStep * kStep : side;
    spec.tile_depth = 1;
}

bool HoldsFrames(std::string_view writer) {
    return Has(" gif tiff openexr ", writer);
}

bool HoldsUnequalFrames(std::string_view writer) {
    return writer == "tiff";
}

}  // namespace Kavra::Devices
