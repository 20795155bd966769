// Band rasters and CALS drawings of known pixels in the common reading, with GDAL and GraphicsMagick as the witnesses where
// they are right.

#include "interop/PeerFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <set>
#include <span>
#include <string>
#include <utility>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;
using Numbers = std::vector<double>;

Numbers NumbersOf(std::span<const unsigned char> bytes) {
    Numbers numbers(bytes.size() / sizeof(double));
    std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(double));
    return numbers;
}

/// "NAME.values": a line of text and the samples, those of a pixel side by side.
struct Known {
    std::filesystem::path raster;
    std::size_t columns = 0, rows = 0, bands = 0, bits = 0;
    Numbers values;

    explicit Known(const std::filesystem::path& file) : raster(std::filesystem::path(file).replace_extension()) {
        std::ifstream(file) >> columns >> rows >> bands >> bits;
        const Bytes bytes = ReadAll(file);
        const auto text = std::ranges::find(bytes, '\n') - bytes.begin() + 1;
        values = NumbersOf(std::span(bytes).subspan(static_cast<std::size_t>(text)));
    }
    std::string Name() const { return raster.filename().string(); }
};

template <class Element>
void Append(Numbers& numbers, const Bytes& bytes, double white) {
    std::vector<Element> elements(bytes.size() / sizeof(Element));
    std::memcpy(elements.data(), bytes.data(), bytes.size());
    for (const Element element : elements)
        numbers.push_back(static_cast<double>(element) / white);
}

/// The elements of a block; integers as parts of their white.
Numbers ElementsOf(const Loaded& loaded) {
    Numbers numbers;
    switch (loaded.desc.format) {
        case kL8:
        case kR8G8B8A8:
            Append<unsigned char>(numbers, loaded.bytes, 255);
            break;
        case kL16:
        case kR16G16B16A16:
            Append<std::uint16_t>(numbers, loaded.bytes, 65535);
            break;
        default:
            Append<float>(numbers, loaded.bytes, 1);
    }
    return numbers;
}

bool IsFloat(const Loaded& loaded) {
    return loaded.desc.format == kR32F || loaded.desc.format == kR32G32B32A32F;
}

/// How many samples of the pictures that the common reading makes of a raster are not those that went in.
std::size_t WrongSamples(const Known& known) {
    const std::size_t colours = known.bands >= 3 ? 3 : 1;
    std::size_t wrong = 0;
    for (std::size_t frame = 0; frame < (known.bands == 2 ? 2 : 1); ++frame) {
        const Loaded loaded = LoadPeerCommon(known.raster, {.level = static_cast<int>(frame)});
        const Numbers ours = ElementsOf(loaded);
        const std::size_t channels = colours == 3 ? 4 : 1;
        const std::size_t pixels = known.columns * known.rows;
        if (ours.size() != pixels * channels) return pixels;
        const double white = IsFloat(loaded) ? 1 : std::ldexp(1.0, static_cast<int>(known.bits)) - 1;
        const double step = loaded.desc.format == kL8 || loaded.desc.format == kR8G8B8A8 ? 0.5 / 255 : 0;
        for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
            for (std::size_t colour = 0; colour < colours; ++colour) {
                const double expected = known.values[pixel * known.bands + colour + frame] / white;
                const double rounded = IsFloat(loaded) ? static_cast<float>(expected) : expected;
                wrong += std::abs(ours[pixel * channels + colour] - rounded) > step;
            }
            if (channels == 4) wrong += ours[pixel * 4 + 3] != 1;
        }
    }
    return wrong;
}

TEST(KnownRasters, EveryKindIsReadAsItWasMade) {
    const auto files = Peers("known", ".values");
    ASSERT_GT(files.size(), 170U);
    for (const auto& file : files)
        EXPECT_EQ(WrongSamples(Known(file)), 0U) << file;
}

// What GDAL's driver knows nothing of: filled rows and bands, gaps, 64 bits, "=", the line ends of the Mac, and files that
// their name alone describes. Samples of few bits its present version cannot read at all.
bool IsBeyondGdal(const Known& known) {
    static const std::set<std::string> kNames = {
        "bandpad.bil", "rowpad.bil", "bothpad.bil", "rowpad-pixels.bip", "bandpad-bands.bsq",   "gap.bsq",
        "gap16.bsq",   "equals.bil", "mac.bil",     "name-tells.bip",    "bits1-no-counts.bil", "bits4-no-counts.bil"};
    return known.bits == 64 || kNames.contains(known.Name()) || known.bits < 8;
}

TEST(KnownRasters, GdalReadsThemLikewiseAsFarAsItsDriverGoes) {
    std::size_t witnessed = 0;
    for (const auto& file : Peers("known", ".values")) {
        const Known known(file);
        if (IsBeyondGdal(known)) continue;
        const Numbers theirs = NumbersOf(PeerPixels(file, ".raw"));
        EXPECT_EQ(theirs, known.values) << file;
        ++witnessed;
    }
    EXPECT_GT(witnessed, 100U);
}

TEST(KnownRasters, RastersThatGdalWroteAreReadAsGdalReadsThem) {
    for (const auto& [stem, channels, bands] : {std::tuple("four", 4U, 4U), {"int32", 1U, 1U}, {"signed16", 1U, 1U}}) {
        const auto path = Peer("bands/" + std::string(stem) + ".bil");
        const Loaded loaded = LoadPeerCommon(path);
        const Numbers ours = ElementsOf(loaded), theirs = NumbersOf(PeerPixels(path, ".doubles"));
        ASSERT_EQ(ours.size() / channels, theirs.size() / bands) << stem;
        const double white = IsFloat(loaded) ? 1 : loaded.desc.format == kL16 ? 65535 : 255;
        for (std::size_t pixel = 0; pixel < ours.size() / channels; ++pixel) {
            for (std::size_t colour = 0; colour < std::min(channels, 3U); ++colour)
                ASSERT_EQ(ours[pixel * channels + colour], theirs[pixel * bands + colour] / white) << stem;
        }
    }
}

// Its present version writes a byte for each of them, and reads nothing else.
TEST(KnownRasters, BitsThatGdalWroteShowThePictureThatTheyWereMadeOf) {
    const Loaded loaded = LoadPeerCommon(Peer("bands/bits1.bil"));
    EXPECT_EQ(loaded.desc.format, kL8) << "its palette is black and white";
    EXPECT_EQ(Differences(loaded.bytes, ReadAll(Peer("known/dots.gray"))), 0U);
}

TEST(KnownRasters, APaletteOfGdalHasAllItsColours) {
    const auto path = Peer("bands/palette.bil");
    EXPECT_EQ(Differences(Channels(LoadPeerCommon(path).bytes, 3), PeerPixels(path, ".raw")), 0U);
}

/// A drawing as it was meant, a byte a pixel.
Bytes Meant(const std::string& picture) {
    return ReadAll(Peer("known/" + picture + ".gray"));
}

TEST(KnownDrawings, StandUprightInBlackOnWhiteWhateverTheirHeader) {
    for (const std::string picture : {"dots", "drawing"}) {
        std::size_t drawings = 0;
        for (const auto& file : Peers("known", ".cal")) {
            if (!file.filename().string().starts_with(picture + "-")) continue;
            EXPECT_EQ(Differences(Channels(LoadPeerCommon(file).bytes, 1), Meant(picture)), 0U) << file;
            ++drawings;
        }
        EXPECT_EQ(drawings, 8U + 11U);
    }
}

TEST(KnownDrawings, OtherProgramsReadThePlainOnesLikewise) {
    for (const std::string picture : {"dots", "drawing"}) {
        const auto plain = Peer("known/" + picture + "-000-270.cal");
        EXPECT_EQ(Differences(PeerPixels(plain, ".gray"), Meant(picture)), 0U) << "GDAL";
        EXPECT_EQ(Differences(ReadAll(Peer("known/" + picture + ".gm")), Meant(picture)), 0U) << "GraphicsMagick";
    }
    for (const auto& file : Peers("cals", ".cal"))
        EXPECT_EQ(Differences(Channels(LoadPeerCommon(file).bytes, 1), PeerPixels(file, ".gray")), 0U) << file;
}

}  // namespace
