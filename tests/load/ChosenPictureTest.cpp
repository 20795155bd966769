// Loads of one face, slice, level or some channels, through the whole handler.

#include "common/HostObject.h"
#include "load/ChosenChannels.h"
#include "load/DdsFile.h"
#include "load/TextureFiles.h"
#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/Program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;

class ChosenPicture : public testing::Test {
protected:
    /// A load with the preferences that `choose` sets.
    std::optional<Loaded> Load(const std::filesystem::path& path, const std::function<void(LoadPreferences&)>& choose,
                               LoadRequest request = {}) {
        LoadPreferences preferences;
        choose(preferences);
        const LoadPreferencesScope scope(preferences);
        return Tests::LoadFile(handler, path, request);
    }
    std::optional<Loaded> LoadFace(const std::filesystem::path& path, int face, LoadRequest request = {}) {
        return Load(path, [face](LoadPreferences& preferences) { preferences.face = face; }, request);
    }
    std::optional<Loaded> LoadSlice(const std::filesystem::path& path, int slice, LoadRequest request = {}) {
        return Load(path, [slice](LoadPreferences& preferences) { preferences.slice = slice; }, request);
    }
    std::optional<Loaded> LoadChannels(const std::filesystem::path& path, const char* names, LoadRequest request = {}) {
        return Load(path, [names](LoadPreferences& preferences) { preferences.channels = names; }, request);
    }
    std::optional<Loaded> LoadLevel(const std::filesystem::path& path, int level, LoadRequest request = {}) {
        return Load(path, [level](LoadPreferences& preferences) { preferences.mipLevel = level; }, request);
    }

    void ExpectNoSuchFrame() {
        ASSERT_FALSE(messages.Texts().empty());
        EXPECT_EQ(messages.Texts().front(), L"Frame index out of range");
        messages.Clear();
    }

    TemporaryFolder folder;
    MessageRecorder messages;
    OIIOImageHandler handler;
};

template <class T>
std::vector<T> As(const Loaded& image) {
    std::vector<T> values(image.bytes.size() / sizeof(T));
    std::memcpy(values.data(), image.bytes.data(), values.size() * sizeof(T));
    return values;
}

/// A cube of 2 x 2 pixels a face and two levels: every byte of a level is 10 x face + level + 1.
DdsFile Cube(std::uint32_t faces = 63) {
    DdsFile dds{.width = 2, .height = 2, .mips = 2, .faces = faces};
    for (unsigned face = 0; face < 6; ++face) {
        if ((faces >> face & 1) == 0) continue;
        const auto value = static_cast<unsigned char>(10 * face + 1), below = static_cast<unsigned char>(value + 1);
        AppendPixels(dds.data, 4, {value, value, value, value});
        AppendPixels(dds.data, 1, {below, below, below, below});
    }
    return dds;
}

/// A volume of 2 x 2 x 4, then 1 x 1 x 2, then 1 x 1 x 1: every byte is 10 x level + slice + 1.
DdsFile Volume() {
    DdsFile dds{.width = 2, .height = 2, .depth = 4, .mips = 3};
    for (unsigned level = 0, side = 2, depth = 4; level < 3; ++level, side = 1, depth /= 2) {
        for (unsigned slice = 0; slice < depth; ++slice) {
            const auto value = static_cast<unsigned char>(10 * level + slice + 1);
            AppendPixels(dds.data, std::size_t{side} * side, {value, value, value, value});
        }
    }
    return dds;
}

}  // namespace

// --- Faces -----------------------------------------------------------------------------------------------------------

TEST_F(ChosenPicture, AFaceIsAFlatPicture) {
    const auto path = folder.Write("cube.dds", Cube().Bytes());
    for (int face = 0; face < 6; ++face) {
        const auto image = LoadFace(path, face);
        ASSERT_TRUE(image) << face;
        EXPECT_EQ(image->desc.textureType, kTexture2D);
        EXPECT_EQ(image->desc.width, 2);
        EXPECT_EQ(image->desc.height, 2);
        EXPECT_EQ(image->desc.depth, 1);
        EXPECT_EQ(image->desc.dataSize, 16U);
        EXPECT_EQ(image->bytes, Bytes(16, static_cast<unsigned char>(10 * face + 1)));
        const auto level = LoadFace(path, face, {.level = 1});
        ASSERT_TRUE(level) << face;
        EXPECT_EQ(level->bytes, Bytes(4, static_cast<unsigned char>(10 * face + 2)));
    }
    EXPECT_TRUE(messages.Texts().empty());
}

TEST_F(ChosenPicture, AFaceIsThatOfTheWholeCube) {
    for (const char* name : {"cube.dds", "cube-mips.dds"}) {
        const auto whole = Tests::LoadFile(handler, Sample(name));
        ASSERT_TRUE(whole);
        for (int face = 0; face < 6; ++face) {
            const auto image = LoadFace(Sample(name), face);
            ASSERT_TRUE(image);
            const auto size = static_cast<std::ptrdiff_t>(image->bytes.size());
            EXPECT_TRUE(std::equal(image->bytes.begin(), image->bytes.end(), whole->bytes.begin() + face * size))
                << name << face;
        }
    }
}

TEST_F(ChosenPicture, AFaceIsResizedTurnedAndConvertedAsAnyPicture) {
    const auto face = LoadFace(Sample("cube.dds"), 3);
    ASSERT_TRUE(face);
    const int half = face->desc.width / 2;
    const auto small = LoadFace(Sample("cube.dds"), 3, {.width = half, .height = half, .format = kR16G16B16A16F});
    ASSERT_TRUE(small);
    EXPECT_EQ(small->desc.width, half);
    EXPECT_EQ(small->desc.format, kR16G16B16A16F);
    const auto turned = LoadFace(Sample("cube.dds"), 3, {.orientation = kBottomRight});
    ASSERT_TRUE(turned);
    Bytes backwards;  // rotated by 180 degrees: the pixels in reverse
    for (std::size_t i = face->bytes.size(); i > 0; i -= 4)
        backwards.insert(backwards.end(), face->bytes.data() + i - 4, face->bytes.data() + i);
    EXPECT_EQ(turned->bytes, turned->desc.orientation == kBottomRight ? backwards : Bytes());
}

TEST_F(ChosenPicture, WithoutAFaceTheLoadFails) {
    const auto partial = folder.Write("partial.dds", Cube(0b010001).Bytes());
    EXPECT_TRUE(LoadFace(partial, 4));
    EXPECT_TRUE(messages.Texts().empty());
    EXPECT_FALSE(LoadFace(partial, 1));  // left out of the file
    ExpectNoSuchFrame();
    EXPECT_FALSE(LoadFace(partial, 6));
    ExpectNoSuchFrame();
    for (const char* name : {"photo.dds", "volume.dds", "photo.jpg", "rgba.exr", "photo.pcx"}) {
        EXPECT_FALSE(LoadFace(Sample(name), 0)) << name;
        ExpectNoSuchFrame();
    }
    EXPECT_FALSE(Load(partial, [](LoadPreferences& preferences) { preferences.face = preferences.slice = 0; }));
    ExpectNoSuchFrame();
}

TEST_F(ChosenPicture, ACubeThatOnlyItsExtensionNamesHasFacesToo) {
    DdsFile dds{.width = 1, .height = 1};
    dds.Dxgi(28).miscFlags = 4;
    for (unsigned char face = 0; face < 6; ++face)
        AppendPixels(dds.data, 1, {face, face, face, 255});
    const auto path = folder.Write("dx10.dds", dds.Bytes());
    for (unsigned char face = 0; face < 6; ++face) {
        const auto image = LoadFace(path, face);
        ASSERT_TRUE(image) << int{face};
        EXPECT_EQ(image->bytes, (Bytes{face, face, face, 255}));
    }
}

TEST_F(ChosenPicture, WhatOnlyTheHostReadsIsCut) {
    DdsFile dds{.width = 1, .height = 2, .depth = 3};
    dds.FourCC("").fourCC = 116;  // four floats
    for (int value = 0; value < 3 * 2 * 4; ++value) {
        const auto number = static_cast<float>(value);
        const auto* const bytes = reinterpret_cast<const unsigned char*>(&number);
        dds.data.insert(dds.data.end(), bytes, bytes + sizeof(number));
    }
    const auto path = folder.Write("floats.dds", dds.Bytes());
    const auto image = LoadSlice(path, 1);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->desc.textureType, kTexture2D);
    EXPECT_EQ(As<float>(*image), (std::vector<float>{8, 9, 10, 11, 12, 13, 14, 15}));
    const auto flipped = LoadSlice(path, 1, {.orientation = kBottomLeft});
    ASSERT_TRUE(flipped);
    EXPECT_EQ(As<float>(*flipped), (std::vector<float>{12, 13, 14, 15, 8, 9, 10, 11}));
    EXPECT_TRUE(LoadSlice(path, 1, {.height = 1}));
    EXPECT_FALSE(LoadSlice(path, 3));
    ExpectNoSuchFrame();
}

TEST_F(ChosenPicture, ChannelsOfWhatOnlyTheHostReadsAreChosenToo) {
    const auto green = LoadChannels(Sample("float.dds"), "G"), all = Tests::LoadFile(handler, Sample("float.dds"));
    ASSERT_TRUE(green && all);
    const auto greys = As<float>(*green), colours = As<float>(*all);
    ASSERT_EQ(greys.size(), colours.size());
    EXPECT_EQ(greys[4], colours[5]);
    EXPECT_EQ(greys[6], colours[5]);
    EXPECT_EQ(greys[7], 1.0F);
    EXPECT_FALSE(green->desc.hasAlpha);
    EXPECT_FALSE(LoadChannels(Sample("float.dds"), "W"));
    ExpectNoSuchFrame();
    EXPECT_FALSE(LoadChannels(Sample("photo.dds"), "W"));
    ExpectNoSuchFrame();
}

TEST_F(ChosenPicture, GreyOfSixteenBitsKeepsThemInDds) {
    DdsFile dds{.width = 1, .height = 1};
    dds.Luminance16().data = {0x34, 0x12};
    const auto image = LoadChannels(folder.Write("grey.dds", dds.Bytes()), "Y");
    ASSERT_TRUE(image);
    EXPECT_EQ(As<std::uint16_t>(*image), (std::vector<std::uint16_t>{0x1234, 0x1234, 0x1234, 0xFFFF}));
}

// --- Slices ----------------------------------------------------------------------------------------------------------

TEST_F(ChosenPicture, ASliceIsAFlatPictureAtEveryLevel) {
    const auto path = folder.Write("volume.dds", Volume().Bytes());
    for (const auto& [level, slice, bytes] : {std::array{0, 0, 16}, {0, 3, 16}, {1, 1, 4}, {2, 0, 4}}) {
        const auto image = LoadSlice(path, slice, {.level = level});
        ASSERT_TRUE(image) << level;
        EXPECT_EQ(image->desc.textureType, kTexture2D);
        EXPECT_EQ(image->desc.depth, 1);
        EXPECT_EQ(image->bytes,
                  Bytes(static_cast<std::size_t>(bytes), static_cast<unsigned char>(10 * level + slice + 1)));
    }
    EXPECT_FALSE(LoadSlice(path, 2, {.level = 1}));
    ExpectNoSuchFrame();
}

TEST_F(ChosenPicture, ASliceCanBeResizedThoughAVolumeCannot) {
    EXPECT_TRUE(LoadSlice(Sample("volume.dds"), 5, {.width = 16, .height = 16}));
    EXPECT_FALSE(Tests::LoadFile(handler, Sample("volume.dds"), {.width = 16, .height = 16}));
}

// --- Faces of the library's files ---------------------------------------------------------------------------

TEST_F(ChosenPicture, FacesThatStandOnOneAnotherInAnOpenExrAreTakenApart) {
    for (const int tile : {0, 2}) {
        ImageSpec spec(2, 12, 3, OIIO::TypeFloat);
        spec.full_height = 2;
        spec.tile_width = spec.tile_height = tile;
        spec.attribute("textureformat", "CubeFace Environment");
        std::vector<float> pixels;
        for (int face = 0; face < 6; ++face)
            pixels.insert(pixels.end(), 12, static_cast<float>(face));
        const auto path = WritePicture(folder / "cube.exr", spec, pixels);
        const auto whole = Tests::LoadFile(handler, path);
        ASSERT_TRUE(whole);
        ASSERT_EQ(whole->desc.textureType, kTextureCube);
        for (int face = 0; face < 6; ++face) {
            const auto image = LoadFace(path, face);
            ASSERT_TRUE(image) << face;
            EXPECT_EQ(image->desc.textureType, kTexture2D);
            EXPECT_EQ(image->desc.height, 2);
            const auto value = static_cast<float>(face);
            EXPECT_EQ(As<float>(*image), (std::vector<float>{value, value, value, 1, value, value, value, 1, value,
                                                             value, value, 1, value, value, value, 1}));
        }
        EXPECT_FALSE(LoadFace(path, 6));
        ExpectNoSuchFrame();
    }
}

// --- Channels --------------------------------------------------------------------------------------------------------

TEST_F(ChosenPicture, ADepthIsGrey) {
    const auto image = LoadChannels(Sample("depth.exr"), "Z");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->desc.format, kR32G32B32A32F);
    EXPECT_FALSE(image->desc.hasAlpha);
    const auto values = As<float>(*image);
    bool isGrey = true, isOpaque = true;
    for (std::size_t i = 0; i < values.size(); i += 4) {
        isGrey = isGrey && values[i] == values[i + 1] && values[i] == values[i + 2];
        isOpaque = isOpaque && values[i + 3] == 1.0F;
    }
    EXPECT_TRUE(isGrey && isOpaque);
    EXPECT_EQ(*std::ranges::max_element(values), 9.0F);  // the background
    EXPECT_GT(*std::ranges::max_element(values), *std::ranges::min_element(values) + 1);
    const auto small = LoadChannels(Sample("depth.exr"), "Z", {.width = 48, .height = 32, .format = kR8G8B8A8});
    ASSERT_TRUE(small);
    EXPECT_EQ(small->desc.format, kR8G8B8A8);
    EXPECT_EQ(small->desc.width, 48);
}

TEST_F(ChosenPicture, LayersAreChosenByTheNamesOfTheirChannels) {
    ImageSpec spec(2, 1, 6, OIIO::TypeHalf);
    spec.channelnames = {"R", "G", "B", "glow.R", "glow.G", "glow.B"};
    const auto path =
        WritePicture(folder / "layers.exr", spec, std::vector<Imath::half>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    const auto glow = LoadChannels(path, "glow.R,glow.G,glow.B");
    ASSERT_TRUE(glow);
    EXPECT_EQ(glow->desc.format, kR16G16B16A16F);
    EXPECT_EQ(As<Imath::half>(*glow), (std::vector<Imath::half>{4, 5, 6, 1, 10, 11, 12, 1}));
    const auto mixed = LoadChannels(path, "glow.B,R,B,G");  // in any order, the last as alpha
    ASSERT_TRUE(mixed);
    EXPECT_EQ(As<Imath::half>(*mixed), (std::vector<Imath::half>{6, 1, 3, 2, 12, 7, 9, 8}));
    EXPECT_TRUE(mixed->desc.hasAlpha);
    EXPECT_FALSE(glow->desc.hasAlpha);
}

TEST_F(ChosenPicture, GreyKeepsItsAlphaInSixteenBits) {
    ImageSpec spec(1, 1, 2, OIIO::TypeUInt16);
    spec.channelnames = {"Y", "A"};
    spec.alpha_channel = 1;
    const auto path = WritePicture(folder / "grey.png", spec, std::vector<std::uint16_t>{1000, 3000});
    const auto image = LoadChannels(path, "Y,A");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->desc.format, kR16G16B16A16);
    EXPECT_EQ(As<std::uint16_t>(*image), (std::vector<std::uint16_t>{1000, 1000, 1000, 3000}));
    EXPECT_TRUE(image->desc.hasAlpha);
}

TEST_F(ChosenPicture, ChannelsOfFacesAndOfTilesAreChosenToo) {
    DdsFile cube = Cube();
    cube.data[20 * 2 + 2] = 77;  // blue of the first pixel of +y
    const auto path = folder.Write("cube.dds", cube.Bytes());
    const auto blue = Load(path, [](LoadPreferences& preferences) {
        preferences.face = 2;
        preferences.channels = "B";
    });
    ASSERT_TRUE(blue);
    EXPECT_EQ(Bytes(blue->bytes.begin(), blue->bytes.begin() + 8), (Bytes{77, 77, 77, 255, 21, 21, 21, 255}));
    const auto all = Tests::LoadFile(handler, Sample("tiled.tif"));
    const auto green = LoadChannels(Sample("tiled.tif"), "G");
    ASSERT_TRUE(all && green);
    const auto colours = As<std::uint16_t>(*all), greys = As<std::uint16_t>(*green);
    ASSERT_EQ(colours.size(), greys.size());
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < colours.size(); i += 4)
        wrong += greys[i] != colours[i + 1] || greys[i + 2] != colours[i + 1];
    EXPECT_EQ(wrong, 0U);
}

TEST_F(ChosenPicture, AChannelThatIsNotThereFailsTheLoad) {
    for (const char* names : {"W", "", "R,", "R,G,B,A,R", "r", "R, G"}) {
        EXPECT_FALSE(LoadChannels(Sample("rgba.exr"), names)) << names;
        ExpectNoSuchFrame();
    }
    EXPECT_FALSE(LoadChannels(Sample("photo.pcx"), "R"));
    ExpectNoSuchFrame();
}

TEST(ChooseChannels, TheirTypeIsOneThatHoldsThemAll) {
    ImageSpec spec(1, 1, 4, OIIO::TypeFloat);
    spec.channelnames = {"a", "b", "c", "d"};
    spec.channelformats = {OIIO::TypeUInt8, OIIO::TypeUInt16, OIIO::TypeHalf, OIIO::TypeUInt32};
    for (const auto& [names, format] :
         {std::pair("a", kR8G8B8A8), std::pair("a,b", kR16G16B16A16), std::pair("a,c", kR16G16B16A16F),
          std::pair("b,c", kR32G32B32A32F), std::pair("d", kR32G32B32A32F)}) {
        ASSERT_TRUE(ChooseChannels(spec, names)) << names;
        EXPECT_EQ(ChooseChannels(spec, names)->format, format) << names;
    }
}

// --- Levels ----------------------------------------------------------------------------------------------------------

TEST_F(ChosenPicture, ALevelOfATiledFileIsLoadedByItself) {
    for (const char* name : {"levels.exr", "levels.tif"}) {
        const std::string path = (folder / name).string();
        {
            const auto output = OIIO::ImageOutput::create(path);
            const auto next =
                output->supports("mipmap") ? OIIO::ImageOutput::AppendMIPLevel : OIIO::ImageOutput::AppendSubimage;
            for (int level = 0, side = 64; side > 0; ++level, side /= 2) {
                ImageSpec spec(side, side, 3, OIIO::TypeFloat);
                spec.tile_width = spec.tile_height = 16;
                spec.attribute("textureformat", "Plain Texture");
                AppendPicture(*output, path, spec,
                              std::vector<float>(spec.image_pixels() * 3, static_cast<float>(level + 1)),
                              level == 0 ? OIIO::ImageOutput::Create : next);
            }
        }
        for (int level = 0; level < 7; ++level) {
            const auto image = LoadLevel(path, level);
            ASSERT_TRUE(image) << name << level;
            EXPECT_EQ(image->desc.width, 64 >> level);
            EXPECT_EQ(As<float>(*image).front(), static_cast<float>(level + 1)) << name;
        }
        const auto fast = Load(path,
                               [](LoadPreferences& preferences) {
                                   preferences.mipLevel = 1;
                                   preferences.fast = true;
                               },
                               {.width = 8, .height = 8});
        ASSERT_TRUE(fast);
        EXPECT_EQ(As<float>(*fast).front(), 4.0F) << name;  // of the level with 8 pixels a side
        EXPECT_FALSE(LoadLevel(path, 7)) << name;
        ExpectNoSuchFrame();
    }
    EXPECT_FALSE(LoadLevel(Sample("photo.jpg"), 1));
    ExpectNoSuchFrame();
    EXPECT_TRUE(LoadLevel(Sample("mips.dds"), 5));  // whose levels the load's own number chooses
}

}  // namespace Kavra::Tests
