// How the channels of a file become the channels of the block.

#include "load/TextureFiles.h"
#include "support/MessageRecorder.h"

#include <Imath/half.h>
#include <OpenImageIO/deepdata.h>
#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using Words = std::vector<std::uint16_t>;
using Floats = std::vector<float>;
using Imath::half;
using OIIO::ImageSpec;

class TextureChannels : public ::testing::Test {
protected:
    template <class T>
    std::filesystem::path Write(const char* name, int channels, const std::vector<T>& pixels,
                                std::vector<std::string> names = {}) {
        ImageSpec spec(static_cast<int>(pixels.size()) / channels, 1, channels, ElementType<T>());
        if (!names.empty()) spec.channelnames = std::move(names);
        return WritePicture(folder / name, spec, pixels);
    }
    std::filesystem::path WriteExr(const std::string& channel, float value, OIIO::TypeDesc type) {
        ImageSpec spec(1, 1, 1, type);
        spec.channelnames = {channel};
        return WritePicture<float>(folder / "one.exr", spec, {value});
    }
    /// A TIFF of four channels none of which is called alpha.
    std::filesystem::path FourChannelTiff(const char* planes) {
        ImageSpec spec(1, 1, 4, OIIO::TypeUInt8);
        spec.channelnames = {"R", "G", "B", "X"};
        spec.alpha_channel = -1;
        spec.attribute("planarconfig", planes);
        return WritePicture<unsigned char>(folder / "four.tif", spec, {10, 20, 30, 40});
    }
    LoadedTexture Exr(const std::filesystem::path& path, EFormat format = kUnknown) {
        return LoadFile(path, {.format = format}, OpenEXR);
    }

    TemporaryFolder folder;
    MessageRecorder messages;
};

/// An 8-bit value as the library's float: times the single-precision 1 / 255.
float Unit(int value) {
    return static_cast<float>(value) * (1.0F / 255.0F);
}

Floats FromHalves(const LoadedTexture& texture) {
    Floats values;
    for (const half value : texture.As<half>())
        values.push_back(value);
    return values;
}

// --- Alpha -----------------------------------------------------------------------------------------------------------

TEST_F(TextureChannels, AlphaLeavesTheColoursAsTheyAreStored) {
    const auto path = Write<unsigned char>("a.png", 4, {200, 100, 50, 128, 1, 2, 3, 0});
    const LoadedTexture texture = LoadFile(path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{200, 100, 50, 128, 1, 2, 3, 0}));
    EXPECT_TRUE(texture.desc.hasAlpha);
    EXPECT_TRUE(texture.desc.hasTransparentPixels);
    EXPECT_TRUE(texture.desc.hasTranslucentPixels);
}

TEST_F(TextureChannels, OpaqueAlphaIsAlphaAllTheSame) {
    const LoadedTexture texture = LoadFile(Write<unsigned char>("a.png", 4, {1, 2, 3, 255}));
    ASSERT_TRUE(texture);
    EXPECT_TRUE(texture.desc.hasAlpha);
    EXPECT_FALSE(texture.desc.hasTransparentPixels);
    EXPECT_FALSE(texture.desc.hasTranslucentPixels);
}

TEST_F(TextureChannels, FilesWithoutAlphaAreOpaqueInEveryType) {
    const LoadedTexture bytes = LoadFile(Write<unsigned char>("a.png", 3, {1, 2, 3}));
    EXPECT_EQ(bytes.bytes, (Bytes{1, 2, 3, 255}));
    const LoadedTexture words = LoadFile(Write<std::uint16_t>("b.png", 3, {1000, 2000, 65535}));
    EXPECT_EQ(words.desc.format, kR16G16B16A16);
    EXPECT_EQ(words.As<std::uint16_t>(), (Words{1000, 2000, 65535, 65535}));
    const LoadedTexture halves = Exr(Write<half>("c.exr", 3, {half(0.5F), half(2), half(-1)}));
    EXPECT_EQ(halves.desc.format, kR16G16B16A16F);
    EXPECT_EQ(FromHalves(halves), (Floats{0.5F, 2, -1, 1}));
    const LoadedTexture floats = LoadFile(Write<float>("d.tif", 3, {0.1F, 2, -1}));
    EXPECT_EQ(floats.As<float>(), (Floats{0.1F, 2, -1, 1}));
    for (const LoadedTexture* texture : {&bytes, &words, &halves, &floats})
        EXPECT_FALSE(texture->desc.hasAlpha);
}

TEST_F(TextureChannels, AFourthInterleavedChannelIsTakenAsAlpha) {
    const LoadedTexture texture = LoadFile(FourChannelTiff("contig"));
    ASSERT_TRUE(texture);
    EXPECT_TRUE(texture.desc.hasAlpha);
    EXPECT_TRUE(texture.desc.hasTranslucentPixels);
    EXPECT_EQ(texture.bytes, (Bytes{10, 20, 30, 40}));
}

TEST_F(TextureChannels, AFourthPlaneIsNotTakenAsAlpha) {
    const LoadedTexture texture = LoadFile(FourChannelTiff("separate"));
    ASSERT_TRUE(texture);
    EXPECT_FALSE(texture.desc.hasAlpha);
    EXPECT_EQ(texture.bytes, (Bytes{10, 20, 30, 255}));
}

TEST_F(TextureChannels, OfFiveChannelsTheFirstFourAreRead) {
    ImageSpec spec(2, 1, 5, OIIO::TypeUInt8);
    spec.alpha_channel = -1;
    spec.channelnames = {"R", "G", "B", "X", "Y"};
    const auto path = WritePicture<unsigned char>(folder / "five.tif", spec, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    const LoadedTexture texture = LoadFile(path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{1, 2, 3, 4, 6, 7, 8, 9}));
}

TEST_F(TextureChannels, HasAlphaSpeaksOfTheFileNotOfTheBlock) {
    const auto path = Write<unsigned char>("a.png", 4, {255, 255, 255, 0});
    const LoadedTexture grey = LoadFile(path, {.format = kL8});
    ASSERT_TRUE(grey);
    EXPECT_EQ(grey.bytes, Bytes{255});
    EXPECT_TRUE(grey.desc.hasAlpha);
    EXPECT_FALSE(grey.desc.hasTransparentPixels) << "the block has no alpha to look at";
}

// --- Palettes, planes, tiles -----------------------------------------------------------------------------------------

TEST_F(TextureChannels, PalettesAreLookedUp) {
    PngFile png{.width = 3, .height = 1, .colourType = 3};
    png.palette = {9, 8, 7, 200, 100, 50};
    png.rows = {0, 1, 0, 1};
    const LoadedTexture texture = LoadFile(folder.Write("p.png", png.Bytes()));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{200, 100, 50, 255, 9, 8, 7, 255, 200, 100, 50, 255}));
}

TEST_F(TextureChannels, PlanesAndTilesComeInterleavedRowByRow) {
    Bytes pixels, expected;
    for (int i = 0; i < 40 * 20; ++i) {
        const auto value = static_cast<unsigned char>(i * 7);
        const Bytes pixel = {value, static_cast<unsigned char>(value ^ 0x55), static_cast<unsigned char>(i >> 3)};
        pixels.insert(pixels.end(), pixel.begin(), pixel.end());
        expected.insert(expected.end(), pixel.begin(), pixel.end());
        expected.push_back(255);
    }
    ImageSpec planar(40, 20, 3, OIIO::TypeUInt8);
    planar.attribute("planarconfig", "separate");
    ImageSpec tiled(40, 20, 3, OIIO::TypeUInt8);
    tiled.tile_width = tiled.tile_height = 16;
    EXPECT_EQ(LoadFile(WritePicture(folder / "planar.tif", planar, pixels)).bytes, expected);
    EXPECT_EQ(LoadFile(WritePicture(folder / "tiled.tif", tiled, pixels)).bytes, expected);
}

TEST_F(TextureChannels, FramesOfAnAnimationHaveAlpha) {
    const std::string name = (folder / "a.gif").string();
    const ImageSpec spec(2, 1, 3, OIIO::TypeUInt8);
    const std::vector<ImageSpec> specs = {spec, spec};
    const auto output = OIIO::ImageOutput::create(name);
    ASSERT_TRUE(output->open(name, 2, specs.data()));
    const Bytes first = {255, 0, 0, 255, 0, 0}, second = {0, 0, 255, 0, 0, 255};
    ASSERT_TRUE(output->write_image(OIIO::TypeUInt8, first.data()));
    ASSERT_TRUE(output->open(name, spec, OIIO::ImageOutput::AppendSubimage));
    ASSERT_TRUE(output->write_image(OIIO::TypeUInt8, second.data()));
    output->close();
    const LoadedTexture frame = LoadFile(name, {.level = 1});
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame.bytes, (Bytes{0, 0, 255, 255, 0, 0, 255, 255}));
    EXPECT_TRUE(frame.desc.hasAlpha);
    EXPECT_FALSE(frame.desc.hasTransparentPixels);
}

// --- Grey with alpha -------------------------------------------------------------------------------------------------

TEST_F(TextureChannels, GreyAlphaIsSpreadOverTheColours) {
    const LoadedTexture texture = LoadFile(Write<unsigned char>("ga.png", 2, {10, 128, 20, 0}));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kR8G8B8A8);
    EXPECT_EQ(texture.bytes, (Bytes{10, 10, 10, 128, 20, 20, 20, 0}));
    EXPECT_TRUE(texture.desc.hasAlpha);
    EXPECT_TRUE(texture.desc.hasTransparentPixels);
    EXPECT_TRUE(texture.desc.hasTranslucentPixels);
}

TEST_F(TextureChannels, GreyThatEqualsItsAlphaEverywhereIsAnInvertedMask) {
    const auto path = Write<unsigned char>("mask.png", 2, {0, 0, 100, 100, 255, 255});
    const LoadedTexture texture = LoadFile(path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{255, 255, 255, 255, 155, 155, 155, 255, 0, 0, 0, 255}));
    EXPECT_FALSE(texture.desc.hasAlpha);
    EXPECT_FALSE(texture.desc.hasTransparentPixels);
}

TEST_F(TextureChannels, OneDifferentPixelMakesItNoMask) {
    const LoadedTexture texture = LoadFile(Write<unsigned char>("ga.png", 2, {7, 7, 7, 7, 7, 8}));
    EXPECT_EQ(texture.bytes, (Bytes{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 8}));
}

TEST_F(TextureChannels, GreyAlphaComesInEveryFormat) {
    const auto path = Write<unsigned char>("ga.png", 2, {51, 102});
    const auto load = [&](EFormat format) { return LoadFile(path, {.format = format}); };
    EXPECT_EQ(load(kB8G8R8A8).bytes, (Bytes{51, 51, 51, 102}));
    EXPECT_EQ(load(kR8G8B8X8).bytes, (Bytes{51, 51, 51, 102}));
    EXPECT_EQ(load(kL8).bytes, Bytes{51});
    EXPECT_EQ(load(kA8).bytes, Bytes{51}) << "the first channel";
    EXPECT_EQ(load(kR16G16B16A16).As<std::uint16_t>(), (Words{51 * 257, 51 * 257, 51 * 257, 102 * 257}));
    EXPECT_EQ(load(kR32G32B32A32F).As<float>(), (Floats{Unit(51), Unit(51), Unit(51), Unit(102)}));
    EXPECT_EQ(FromHalves(load(kR16G16B16A16F)), (Floats{half(0.2F), half(0.2F), half(0.2F), half(0.4F)}));
    EXPECT_EQ(load(kR16G16).As<std::uint16_t>(), (Words{51 * 257, 51 * 257}));
    EXPECT_EQ(load(kR32F).As<float>(), Floats{Unit(51)});
}

TEST_F(TextureChannels, AlphaOfGreyAlphaIsLookedAtInTheFormatDelivered) {
    const auto path = Write<unsigned char>("ga.png", 2, {51, 102, 51, 0});
    for (const EFormat format : {kR16G16B16A16, kR32G32B32A32F, kR16G16B16A16F}) {
        const LoadedTexture texture = LoadFile(path, {.format = format});
        ASSERT_TRUE(texture) << format;
        EXPECT_TRUE(texture.desc.hasTransparentPixels) << format;
        EXPECT_TRUE(texture.desc.hasTranslucentPixels) << format;
    }
}

TEST_F(TextureChannels, AMaskIsInvertedBeforeItChangesType) {
    const auto path = Write<unsigned char>("mask.png", 2, {51, 51});
    EXPECT_EQ(LoadFile(path, {.format = kR32G32B32A32F}).As<float>(), (Floats{Unit(204), Unit(204), Unit(204), 1}));
}

TEST_F(TextureChannels, SixteenBitGreyAlphaIsGreyAlone) {
    const LoadedTexture texture = LoadFile(Write<std::uint16_t>("ga.png", 2, {0x1234, 0x8000}));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kL16);
    EXPECT_EQ(texture.As<std::uint16_t>(), Words{0x1234});
    EXPECT_TRUE(texture.desc.hasAlpha);
}

TEST_F(TextureChannels, GreyAlphaInATiffIsGreyAlone) {
    ImageSpec spec(1, 1, 2, OIIO::TypeUInt8);
    spec.channelnames = {"Y", "A"};
    spec.alpha_channel = 1;
    const LoadedTexture texture = LoadFile(WritePicture<unsigned char>(folder / "ga.tif", spec, {77, 99}));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kL8);
    EXPECT_EQ(texture.bytes, Bytes{77});
}

// --- From one format to another --------------------------------------------------------------------------------------

TEST_F(TextureChannels, WhatTheEngineConvertsGoesThroughIt) {
    const auto grey = Write<unsigned char>("g.png", 1, {100});
    EXPECT_EQ(LoadFile(grey).desc.format, kL8);
    EXPECT_EQ(LoadFile(grey, {.format = kR8G8B8A8}).bytes, (Bytes{100, 100, 100, 255}));
    EXPECT_EQ(LoadFile(grey, {.format = kB8G8R8X8}).bytes, (Bytes{100, 100, 100, 255}));
    EXPECT_EQ(LoadFile(grey, {.format = kR16G16}).As<std::uint16_t>(), (Words{25700, 25700}));
    const auto colour = Write<unsigned char>("c.png", 4, {255, 0, 0, 9});
    EXPECT_EQ(LoadFile(colour, {.format = kL8}).bytes, Bytes{76});
    EXPECT_EQ(LoadFile(colour, {.format = kB8G8R8A8}).bytes, (Bytes{0, 0, 255, 9}));
}

TEST_F(TextureChannels, WhatTheEngineDoesNotConvertIsReadChannelByChannel) {
    const auto grey = Write<unsigned char>("g.png", 1, {51});
    EXPECT_EQ(LoadFile(grey, {.format = kR32G32B32A32F}).As<float>(), (Floats{Unit(51), 0, 0, 1})) << "red only";
    const auto colour = Write<unsigned char>("c.png", 4, {10, 20, 30, 40});
    EXPECT_EQ(LoadFile(colour, {.format = kA8}).bytes, Bytes{10}) << "red, not alpha";
    EXPECT_EQ(LoadFile(colour, {.format = kR16G16}).As<std::uint16_t>(), (Words{2570, 5140}));
    const auto words = Write<std::uint16_t>("w.png", 4, {0xFFFF, 0, 0, 0xFFFF});
    EXPECT_EQ(LoadFile(words, {.format = kL8}).bytes, Bytes{255}) << "red, not luminance";
}

TEST_F(TextureChannels, OneChannelReadIntoTwoLeavesTheSecondZero) {
    const auto grey = Write<unsigned char>("g.png", 1, {51});
    EXPECT_EQ(LoadFile(grey, {.format = kR32G32F}).As<float>(), (Floats{Unit(51), 0}));
}

TEST_F(TextureChannels, BlueFirstIsSwappedAfterAReadInEightBits) {
    const auto words = Write<std::uint16_t>("w.png", 3, {65535, 32768, 0});
    EXPECT_EQ(LoadFile(words, {.format = kB8G8R8A8}).bytes, (Bytes{0, 128, 255, 255}));
    const auto floats = Write<float>("f.tif", 4, {0.5F, 1.5F, -1, 0.2F});
    EXPECT_EQ(LoadFile(floats, {.format = kB8G8R8X8}).bytes, (Bytes{0, 255, 128, 51}));
    const auto grey = Write<float>("g.tif", 1, {1});
    EXPECT_EQ(LoadFile(grey, {.format = kB8G8R8A8}).bytes, (Bytes{0, 0, 255, 255}));
}

// --- OpenEXR ---------------------------------------------------------------------------------------------------------

TEST_F(TextureChannels, ALoneExrChannelGoesWhereItsNameSays) {
    const auto load = [&](const char* name) { return FromHalves(Exr(WriteExr(name, 0.5F, OIIO::TypeHalf))); };
    EXPECT_EQ(load("R"), (Floats{0.5F, 0.5F, 0.5F, 1}));
    EXPECT_EQ(load("Y"), (Floats{0.5F, 0.5F, 0.5F, 1}));
    EXPECT_EQ(load("height"), (Floats{0.5F, 0.5F, 0.5F, 1}));
    EXPECT_EQ(load("G"), (Floats{0, 0.5F, 0, 1}));
    EXPECT_EQ(load("B"), (Floats{0, 0, 0.5F, 1}));
    EXPECT_EQ(load("A"), (Floats{0, 0, 0, 0.5F}));
}

TEST_F(TextureChannels, ALoneExrChannelOfFloatsComesAsFloats) {
    const LoadedTexture texture = Exr(WriteExr("Y", 0.1F, OIIO::TypeFloat));
    EXPECT_EQ(texture.desc.format, kR32G32B32A32F);
    EXPECT_EQ(texture.As<float>(), (Floats{0.1F, 0.1F, 0.1F, 1}));
    EXPECT_FALSE(texture.desc.hasAlpha);
}

TEST_F(TextureChannels, ALoneExrAlphaIsAlpha) {
    const LoadedTexture texture = Exr(WriteExr("A", 0.5F, OIIO::TypeHalf));
    EXPECT_TRUE(texture.desc.hasAlpha);
    EXPECT_TRUE(texture.desc.hasTranslucentPixels);
}

TEST_F(TextureChannels, ALoneExrChannelComesInEveryFormat) {
    const auto path = WriteExr("Y", 0.5F, OIIO::TypeHalf);
    EXPECT_EQ(Exr(path, kR8G8B8A8).bytes, (Bytes{128, 128, 128, 255}));
    EXPECT_EQ(Exr(path, kB8G8R8A8).bytes, (Bytes{128, 128, 128, 255}));
    EXPECT_EQ(Exr(path, kR16G16B16A16).As<std::uint16_t>(), (Words{32768, 32768, 32768, 65535}));
    EXPECT_EQ(Exr(path, kR32G32B32A32F).As<float>(), (Floats{0.5F, 0.5F, 0.5F, 1}));
    EXPECT_EQ(FromHalves(Exr(path, kR16F)), Floats{0.5F});
    EXPECT_EQ(Exr(path, kL8).bytes, Bytes{128});
    EXPECT_EQ(Exr(path, kR16G16).As<std::uint16_t>(), (Words{32768, 32768}));
    const auto blue = WriteExr("B", 0.2F, OIIO::TypeFloat);
    EXPECT_EQ(Exr(blue, kB8G8R8A8).bytes, (Bytes{51, 0, 0, 255}));
    EXPECT_EQ(Exr(blue, kR32F).As<float>(), Floats{0}) << "the red of the spread picture";
}

TEST_F(TextureChannels, ALoneDepthChannelIsNoPicture) {
    EXPECT_FALSE(Exr(WriteExr("Z", 3, OIIO::TypeFloat)));
    EXPECT_TRUE(messages.Texts().empty());
}

TEST_F(TextureChannels, DepthBesideColoursIsLeftOut) {
    ImageSpec spec(1, 1, 5, OIIO::TypeFloat);
    spec.channelnames = {"R", "G", "B", "A", "Z"};
    spec.channelformats = {OIIO::TypeHalf, OIIO::TypeHalf, OIIO::TypeHalf, OIIO::TypeHalf, OIIO::TypeFloat};
    spec.alpha_channel = 3;
    spec.z_channel = 4;
    const auto path = WritePicture<float>(folder / "z.exr", spec, {0.5F, 0.25F, 2, 1, 1000});
    const LoadedTexture texture = Exr(path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kR16G16B16A16F);
    EXPECT_EQ(FromHalves(texture), (Floats{0.5F, 0.25F, 2, 1}));
    EXPECT_TRUE(texture.desc.hasAlpha);
}

TEST_F(TextureChannels, DeepPicturesAreNotRead) {
    ImageSpec spec(1, 1, 2, OIIO::TypeFloat);
    spec.channelnames = {"R", "Z"};
    spec.deep = true;
    const std::string name = (folder / "deep.exr").string();
    OIIO::DeepData samples(spec);
    samples.set_samples(0, 1);
    const auto output = OIIO::ImageOutput::create(name);
    ASSERT_TRUE(output->open(name, spec));
    ASSERT_TRUE(output->write_deep_image(samples));
    output->close();
    EXPECT_FALSE(Exr(name));
}

}  // namespace
}  // namespace Kavra::Tests
