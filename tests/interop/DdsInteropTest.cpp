// DDS files of every kind in the common reading, against the pixels that make-dds gave them, and against what ImageMagick,
// ffmpeg and Pillow see in those of them, and in files of their own, that they read as they are described.

#include "interop/PeerFiles.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/FormatFacts.h>
#include <kavra/devices/LoadPreferences.h>

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;
using Pixel = std::array<float, 4>;

Loaded LoadCommon(const std::filesystem::path& file) {
    LoadPreferences preferences;
    preferences.legacy = kLegacyCommon;
    const LoadPreferencesScope scope(preferences);
    return LoadPeer(file);
}

template <class T>
float ElementAt(const Bytes& bytes, std::size_t index) {
    T value;
    std::memcpy(&value, bytes.data() + index * sizeof value, sizeof value);
    return static_cast<float>(value);
}

/// Elements as they are of floats, and over their maximum of integers.
float ValueAt(const Loaded& loaded, ElementType element, std::size_t index) {
    switch (element) {
        case ElementType::kUInt8:
            return ElementAt<unsigned char>(loaded.bytes, index) / 255;
        case ElementType::kUInt16:
            return ElementAt<std::uint16_t>(loaded.bytes, index) / 65535;
        case ElementType::kHalf:
            return ElementAt<Imath::half>(loaded.bytes, index);
        default:
            return ElementAt<float>(loaded.bytes, index);
    }
}

FormatFacts FactsOf(EFormat format) {
    FormatFacts facts;
    EXPECT_TRUE(GetFormatFacts(format, facts));
    return facts;
}

/// One channel is grey, of two blue is nothing, and what has no alpha is opaque.
std::vector<Pixel> PixelsOf(const Loaded& loaded) {
    const FormatFacts facts = FactsOf(loaded.desc.format);
    const auto channels = static_cast<std::size_t>(facts.channels);
    std::vector<Pixel> pixels(channels == 0 ? 0 : loaded.bytes.size() / static_cast<std::size_t>(facts.bytesPerPixel));
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto value = [&](std::size_t channel) { return ValueAt(loaded, facts.element, i * channels + channel); };
        pixels[i] = {0, 0, 0, 1};
        for (std::size_t channel = 0; channel < channels; ++channel)
            pixels[i][channel] = value(channel);
        if (channels == 1) pixels[i][1] = pixels[i][2] = pixels[i][0];
    }
    return pixels;
}

std::vector<Pixel> DescribedPixels(const std::filesystem::path& file) {
    const Bytes bytes = ReadAll(std::filesystem::path(file).replace_extension(".values"));
    std::vector<Pixel> pixels(bytes.size() / sizeof(Pixel));
    std::memcpy(pixels.data(), bytes.data(), bytes.size());
    return pixels;
}

std::vector<Pixel> PixelsOfPeer(const std::filesystem::path& file, const std::string& peer) {
    const Bytes bytes = ReadAll(file.string() + "." + peer);
    std::vector<Pixel> pixels(bytes.size() / 4);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        pixels[i / 4][i % 4] = static_cast<float>(bytes[i]) / 255;
    return pixels;
}

/// The largest difference of one channel; more than all where the pictures are of different sizes.
float Distance(const std::vector<Pixel>& a, const std::vector<Pixel>& b) {
    if (a.empty() || a.size() != b.size()) return 1000;
    float largest = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t c = 0; c < 4; ++c)
            largest = std::max(largest, std::abs(a[i][c] - b[i][c]));
    }
    return largest;
}

constexpr float kStep = 1.0F / 255;

/// Half a step of what is delivered; decoders of blocks agree on one of 8 bits.
float Allowed(const std::string& name, EFormat format) {
    const bool isBlocks = name.find("bc") != std::string::npos || name.find("dxt") != std::string::npos ||
                          name.find("ati") != std::string::npos || name.find("rxgb") != std::string::npos;
    if (isBlocks) return kStep;
    switch (FactsOf(format).element) {
        case ElementType::kUInt8:
            return 0.5001F * kStep;
        case ElementType::kUInt16:
            return 0.5001F / 65535;
        case ElementType::kHalf:
            return name.find("-xr") != std::string::npos ? 0.0005F : 0;
        default:
            return 0;
    }
}

TEST(DdsInterop, EveryKindIsWhatItsDescriptionSays) {
    int count = 0;
    for (const auto& path : Peers("dds", ".values")) {
        const auto file = std::filesystem::path(path).replace_extension(".dds");
        const Loaded loaded = LoadCommon(file);
        const std::string name = file.stem().string();
        EXPECT_LE(Distance(PixelsOf(loaded), DescribedPixels(file)), Allowed(name, loaded.desc.format)) << name;
        ++count;
    }
    EXPECT_GE(count, 120);
}

/// The kinds of which a peer sees what is described, of those that it knows.
struct Witness {
    std::string peer;
    std::vector<std::string> kinds;
};

const Witness kWitnesses[] = {
    {"magick", {"code-ati2-a2xy",  "code-bc5u",     "code-dxt1",    "code-dxt1-edge", "code-dxt3",     "code-dxt5",
                "code-dxt5-pitch", "dxgi-28-rgba8", "dxgi-61-r8",   "dxgi-71-bc1",    "dxgi-74-bc2",   "dxgi-77-bc3",
                "dxgi-83-bc5",     "dxgi-85-565",   "dxgi-86-5551", "dxgi-87-bgra8",  "dxgi-88-bgrx8", "luminance-8",
                "luminance-88",    "masks-1555",    "masks-4444",   "masks-565",      "masks-8332",    "masks-bgr",
                "masks-bgra",      "masks-bgrx",    "masks-r8",     "masks-rgb",      "masks-rgba5551"}},
    {"ffmpeg",
     {"alpha-8",
      "code-bc4s",
      "code-dxt3",
      "code-dxt5",
      "code-uyvy",
      "code-yuy2",
      "dxgi-73-bc2-typeless",
      "dxgi-76-bc3-typeless",
      "dxgi-81-bc4-snorm",
      "luminance-16",
      "luminance-8",
      "luminance-88",
      "masks-bgr",
      "masks-bgra",
      "masks-bgrx",
      "masks-r16",
      "masks-r8",
      "masks-rgba",
      "masks-rgbx",
      "palette-8"}},
    {"pillow",
     {"code-ati1",
      "code-bc4u",
      "code-bc5s",
      "code-bc5u",
      "code-dxt1",
      "dxgi-27-rgba8-typeless",
      "dxgi-29-rgba8-srgb",
      "dxgi-70-bc1-typeless",
      "dxgi-73-bc2-typeless",
      "dxgi-76-bc3-typeless",
      "dxgi-79-bc4-typeless",
      "dxgi-82-bc5-typeless",
      "dxgi-84-bc5-snorm",
      "luminance-8",
      "luminance-88",
      "masks-1010102",
      "masks-1555",
      "masks-2101010",
      "masks-24of32",
      "masks-332",
      "masks-4444",
      "masks-555",
      "masks-565",
      "masks-argb",
      "masks-b565",
      "masks-g16r16",
      "masks-odd",
      "masks-rgb",
      "masks-x444",
      "palette-8"}},
};

TEST(DdsInterop, PeersSeeTheSame) {
    constexpr float kRounding = 3.1F * kStep;  // they cut where we round, also between the ends of blocks, and by steps
    for (const Witness& witness : kWitnesses) {
        for (const std::string& kind : witness.kinds) {
            const auto file = Peer("dds/" + kind + ".dds");
            EXPECT_LE(Distance(PixelsOf(LoadCommon(file)), PixelsOfPeer(file, witness.peer)), kRounding)
                << witness.peer << ": " << kind;
        }
    }
}

TEST(DdsInterop, FilesOfPeersReadAsTheirWritersReadThem) {
    int count = 0;
    for (const auto& file : Peers("dds", ".dds")) {
        const std::string name = file.stem().string();
        const std::string writer = name.starts_with("magick-") ? "magick" : name.starts_with("pillow-") ? "pillow" : "";
        if (writer.empty()) continue;
        EXPECT_LE(Distance(PixelsOf(LoadCommon(file)), PixelsOfPeer(file, writer)), 1.1F * kStep) << name;
        ++count;
    }
    EXPECT_EQ(count, 13);
}

}  // namespace
