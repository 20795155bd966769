#include "output/LibrarySaving.h"
#include "output/SavingFixture.h"
#include "output/SmallDisk.h"

#include <Imath/half.h>
#include <gmock/gmock.h>

#include <sys/stat.h>

#include <algorithm>
#include <limits>
#include <string>
#include <thread>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Tests::FilePicture;
using Kavra::Tests::ReadAll;
using Kavra::Tests::SmallDisk;
using Kavra::Tests::Texture;
using Kavra::Tests::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using LibrarySaving = Kavra::Tests::Saving;

TEST_F(LibrarySaving, ARedFirstTextureIsWrittenUnchanged) {
    for (const EFormat format : {kR8G8B8A8, kR8G8B8X8}) {
        const Texture texture(3, 2, format);
        ASSERT_TRUE(Save("x.png", texture));
        const FilePicture picture = Read("x.png");
        EXPECT_EQ(picture.width, 3);
        EXPECT_EQ(picture.height, 2);
        EXPECT_EQ(picture.channels, 4);
        EXPECT_EQ(picture.pixels, texture.bytes);
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LibrarySaving, ABlueFirstTextureIsWrittenRedFirst) {
    for (const EFormat format : {kB8G8R8A8, kB8G8R8X8}) {
        Texture texture(2, 1, format);
        texture.bytes = {10, 20, 30, 40, 50, 60, 70, 80};
        ASSERT_TRUE(Save("x.png", texture));
        EXPECT_THAT(Read("x.png").pixels, ElementsAre(30, 20, 10, 40, 70, 60, 50, 80));
    }
}

TEST_F(LibrarySaving, AlphaIsNotMultipliedIntoTheColours) {
    Texture texture(1, 1, kR8G8B8A8);
    texture.bytes = {100, 50, 25, 128};
    for (const char* name : {"x.png", "x.tif", "x.tga"}) {
        ASSERT_TRUE(Save(name, texture));
        EXPECT_THAT(Read(name).pixels, ElementsAre(100, 50, 25, 128)) << name;
    }
    texture.desc.format = kB8G8R8A8;
    ASSERT_TRUE(Save("y.png", texture));
    EXPECT_THAT(Read("y.png").pixels, ElementsAre(25, 50, 100, 128));
}

TEST_F(LibrarySaving, EachFormatKeepsItsTypeAndChannels) {
    struct Case {
        EFormat format;
        const char* name;
        int channels;
        OIIO::TypeDesc type;
    };
    for (const Case& expected :
         {Case{kA8, "x.tif", 1, OIIO::TypeUInt8}, Case{kR8, "x.tif", 1, OIIO::TypeUInt8},
          Case{kL8, "x.tif", 1, OIIO::TypeUInt8}, Case{kR16, "x.tif", 1, OIIO::TypeUInt16},
          Case{kL16, "x.png", 1, OIIO::TypeUInt16}, Case{kR16F, "x.exr", 1, OIIO::TypeHalf},
          Case{kR32F, "x.exr", 1, OIIO::TypeFloat}, Case{kR16G16F, "x.exr", 2, OIIO::TypeHalf},
          Case{kR16G16, "x.tif", 2, OIIO::TypeUInt16}, Case{kR32G32F, "x.tif", 2, OIIO::TypeFloat},
          Case{kR16G16B16A16F, "x.exr", 4, OIIO::TypeHalf}, Case{kR16G16B16A16, "x.tif", 4, OIIO::TypeUInt16},
          Case{kR32G32B32A32F, "x.exr", 4, OIIO::TypeFloat}}) {
        Texture texture(5, 3, expected.format);
        // Bytes below 0x38 in every place make finite numbers of every type.
        for (unsigned char& byte : texture.bytes)
            byte %= 0x38;
        ASSERT_TRUE(Save(expected.name, texture)) << expected.format;
        const FilePicture picture = Read(expected.name);
        EXPECT_EQ(picture.channels, expected.channels) << expected.format;
        EXPECT_EQ(picture.type, expected.type) << expected.format;
        EXPECT_EQ(picture.pixels, texture.bytes) << expected.format;
    }
}

TEST_F(LibrarySaving, FourFloatsAPixelAreFourNamedChannels) {
    Texture texture(1, 1, kR32G32B32A32F);
    texture.SetElements<float>({-1.5F, 2.0F, 70000.0F, 0.25F});
    ASSERT_TRUE(Save("x.exr", texture));
    const FilePicture picture = Read("x.exr");
    EXPECT_THAT(picture.channelNames, ElementsAre("R", "G", "B", "A"));
    EXPECT_THAT(picture.As<float>(), ElementsAre(-1.5F, 2.0F, 70000.0F, 0.25F));
}

TEST_F(LibrarySaving, ThePitchIsHonoured) {
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8}) {
        Texture texture(2, 2, format);
        texture.desc.rowPitch = 11;
        texture.bytes = {1,  2, 3,  4,  5,  6,  7,  8,  99, 99,
                         99, 9, 10, 11, 12, 13, 14, 15, 16};  // no gap after the last row
        ASSERT_TRUE(Save("x.png", texture));
        if (format == kR8G8B8A8)
            EXPECT_THAT(Read("x.png").pixels, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16));
        else
            EXPECT_THAT(Read("x.png").pixels, ElementsAre(3, 2, 1, 4, 7, 6, 5, 8, 11, 10, 9, 12, 15, 14, 13, 16));
    }
}

TEST_F(LibrarySaving, APitchThatSplitsElementsIsHonouredToo) {
    Texture texture(1, 2, kR16);
    texture.desc.rowPitch = 3;
    texture.bytes = {0x34, 0x12, 99, 0x78, 0x56};
    ASSERT_TRUE(Save("x.tif", texture));
    EXPECT_THAT(Read("x.tif").As<std::uint16_t>(), ElementsAre(0x1234, 0x5678));
}

TEST_F(LibrarySaving, RowsOfAShortPitchOverlapAndEndWithTheBlock) {
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8}) {
        Texture texture(2, 2, format);
        texture.desc.rowPitch = 5;
        texture.bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};  // two times the pitch and not a byte more
        texture.bytes.shrink_to_fit();
        ASSERT_TRUE(Save("x.png", texture));
        if (format == kR8G8B8A8)
            EXPECT_THAT(Read("x.png").pixels, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 6, 7, 8, 9, 10, 0, 0, 0));
        else
            EXPECT_THAT(Read("x.png").pixels, ElementsAre(3, 2, 1, 4, 7, 6, 5, 8, 8, 7, 6, 9, 0, 0, 10, 0));
    }
}

TEST_F(LibrarySaving, OfACubeOrVolumeTheFirstImageIsWritten) {
    for (const ETextureType type : {kTextureCube, kTextureVolume}) {
        Texture texture(2, 2, kR8G8B8A8, 6);
        texture.desc.textureType = type;
        texture.desc.depth = type == kTextureVolume ? 6 : 1;
        ASSERT_TRUE(Save("x.png", texture));
        const FilePicture picture = Read("x.png");
        EXPECT_EQ(picture.height, 2);
        EXPECT_TRUE(std::equal(picture.pixels.begin(), picture.pixels.end(), texture.bytes.begin()));
    }
}

TEST_F(LibrarySaving, FormatsWithoutAPixelTypeAreRefusedSilently) {
    for (const int format : {0, 48, 63, 73, 74, 75, 76, 77, 78, 50, 51, 5, 18, 12345, -1}) {
        Texture texture(4, 4, kR32G32B32A32F);
        texture.desc.format = static_cast<EFormat>(format);
        EXPECT_FALSE(Save("x.png", texture)) << format;
        EXPECT_FALSE(Save("x.tif", texture)) << format;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LibrarySaving, APitchBelowOneIsRefused) {
    Texture texture(2, 2, kR8G8B8A8);
    for (const int pitch : {0, -8, std::numeric_limits<int>::min()}) {
        texture.desc.rowPitch = pitch;
        EXPECT_FALSE(Save("x.png", texture)) << pitch;
    }
    EXPECT_FALSE(Exists("x.png"));
}

TEST_F(LibrarySaving, AnExtensionWithoutAWriterIsRefusedSilently) {
    const Texture texture(2, 2, kR8G8B8A8);
    for (const char* name : {"x.xyz", "x", "x.", "x.png.bak", "x.term", "x.null"})
        EXPECT_FALSE(Save(name, texture)) << name;
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LibrarySaving, ManyRefusalsDoNotPileUpInsideTheLibrary) {
    const Texture texture(1, 1, kL8);
    for (int i = 0; i < 100; ++i)
        EXPECT_FALSE(Save("x.xyz", texture));
    EXPECT_EQ(OIIO::geterror(), "");
}

TEST_F(LibrarySaving, WritersThatDoNotOpenGiveFalse) {
    EXPECT_FALSE(Save("x.hdr", Texture(4, 4, kR32G32B32A32F)));
    EXPECT_FALSE(Save("x.hdr", Texture(4, 4, kR32F)));
    EXPECT_FALSE(Save("x.ppm", Texture(4, 4, kR8G8B8A8)));
    EXPECT_FALSE(Save("x.bmp", Texture(4, 4, kR16G16)));
    EXPECT_FALSE(Save("x.gif", Texture(4, 4, kL8)));
    EXPECT_FALSE(Save("x.webp", Texture(4, 4, kL8)));
    EXPECT_FALSE(Save("x.webp", Texture(4, 4, kR16G16)));
    EXPECT_FALSE(Save("x.jp2", Texture(40, 40, kR16G16)));
    EXPECT_FALSE(Save("x.hdr", Texture(4, 4, kB8G8R8A8)));
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(LibrarySaving, ARefusedPictureLeavesAnOldFileAsItIs) {
    const auto old = folder.Write("x.hdr", "old");
    EXPECT_FALSE(Save("x.hdr", Texture(4, 4, kR8G8B8A8)));
    EXPECT_THAT(ReadAll(old), ElementsAre('o', 'l', 'd'));
}

TEST_F(LibrarySaving, PicturesThatWritersMishandleAreRefused) {
    for (const EFormat format : {kR16G16F, kR16G16, kR32G32F}) {
        EXPECT_FALSE(Save("x.dpx", Texture(40, 40, format))) << format;
        EXPECT_FALSE(Save("x.jxl", Texture(40, 40, format))) << format;
    }
    EXPECT_FALSE(Save("x.jp2", Texture(31, 64, kR8G8B8A8)));
    EXPECT_FALSE(Save("x.jp2", Texture(64, 31, kR8G8B8A8)));
    EXPECT_FALSE(Save("x.j2c", Texture(16, 16, kR8G8B8A8)));
    EXPECT_FALSE(Save("x.jph", Texture(40, 40, kR8G8B8A8)));
    EXPECT_FALSE(Save("x.j2c", Texture(40, 40, kL8)));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LibrarySaving, HalvesBecomeFloatsWhereAWriterKnowsNoHalves) {
    const std::vector<float> values = {0.0F, 0.25F, 0.5F, 1.0F, 0.125F, 0.75F};
    Texture texture(2, 3, kR16F);
    texture.SetElements<half>({values.begin(), values.end()});
    for (const char* name : {"x.fits", "x.pnm", "x.pfm", "x.rla"}) {
        ASSERT_TRUE(Save(name, texture)) << name;
        const FilePicture picture = Read(name);
        EXPECT_EQ(picture.type, OIIO::TypeFloat) << name;
        EXPECT_EQ(picture.As<float>(), values) << name;
    }
    Texture colours(40, 40, kR16G16B16A16F);
    for (unsigned char& byte : colours.bytes)
        byte %= 0x38;
    for (const char* name : {"x.fits", "x.rla"}) {
        ASSERT_TRUE(Save(name, colours)) << name;
        std::vector<float> expected;
        for (std::size_t i = 0; i < colours.bytes.size(); i += 2) {
            half element;
            element.setBits(static_cast<unsigned short>(colours.bytes[i] | colours.bytes[i + 1] << 8));
            expected.push_back(element);
        }
        EXPECT_EQ(Read(name).As<float>(), expected) << name;
    }
}

TEST_F(LibrarySaving, TheSameWritersTakeTheOtherPictures) {
    const Texture texture(32, 32, kR8G8B8A8);
    for (const char* name : {"x.dpx", "x.jxl", "x.jp2", "x.j2c", "x.fits", "x.ico"}) {
        ASSERT_TRUE(Save(name, texture)) << name;
        EXPECT_EQ(Read(name).pixels, texture.bytes) << name;
    }
    EXPECT_TRUE(Save("large.ico", Texture(256, 256, kR8G8B8A8)));
}

TEST_F(LibrarySaving, JpegDropsTheAlphaAndSucceeds) {
    ASSERT_TRUE(Save("x.jpg", Texture(8, 8, kR8G8B8A8)));
    EXPECT_EQ(Read("x.jpg").channels, 3);
}

TEST_F(LibrarySaving, AFullDiskIsAFailureWithEveryWriter) {
    // Without a pattern, so that nothing shrinks below the limit.
    Texture texture(64, 48, kR8G8B8A8);
    unsigned state = 1;
    for (unsigned char& byte : texture.bytes)
        byte = static_cast<unsigned char>((state = state * 1664525U + 1013904223U) >> 24);
    const SmallDisk disk(600);
    for (const char* name : {"x.png", "x.tif", "x.exr", "x.jpg", "x.bmp", "x.tga", "x.sgi", "x.gif", "x.webp", "x.iff",
                             "x.fits", "x.dpx", "x.jp2", "x.j2c", "x.jxl", "x.ico", "x.rla"})
        EXPECT_FALSE(Save(name, texture)) << name;
    const Texture grey(64, 48, kL8);
    for (const char* name : {"x.pnm", "x.zfile"})
        EXPECT_FALSE(Save(name, grey)) << name;
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LibrarySaving, WhatIsNoFileIsNeverWrittenTo) {
    const Texture texture(2, 2, kR8G8B8A8);
    ASSERT_EQ(mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    std::filesystem::create_directory(folder / "folder.png");
    std::filesystem::create_symlink("/dev/full", folder / "device.png");
    std::filesystem::create_directory(folder / "folder.fits");
    for (const char* name : {"pipe.png", "folder.png", "device.png", "folder.fits"})
        EXPECT_FALSE(Save(name, texture)) << name;
    EXPECT_TRUE(std::filesystem::is_directory(folder / "folder.png"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LibrarySaving, NamesBeyondAsciiAreWritten) {
    const char* const name = "\xc3\xbc\xe4\xb8\xad\xf0\x9f\x98\x80.png";
    const Texture texture(2, 2, kR8G8B8A8);
    ASSERT_TRUE(Save(name, texture));
    EXPECT_EQ(Read(name).pixels, texture.bytes);
    ASSERT_TRUE(Save("\xc3\xbc.fits", texture));
    EXPECT_TRUE(Exists("\xc3\xbc.fits"));
}

TEST_F(LibrarySaving, ANameThatTheSystemDoesNotTakeIsFalse) {
    const Texture texture(2, 2, kR8G8B8A8);
    EXPECT_FALSE(Save(std::string(300, 'a') + ".png", texture));
    const std::wstring longName = std::wstring(5000, L'a') + L".png";
    EXPECT_FALSE(handler.SaveTexture(longName.c_str(), texture.desc, texture.bytes.data()));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LibrarySaving, AnOldFileIsReplacedWhole) {
    ASSERT_TRUE(Save("x.bmp", Texture(64, 64, kR8G8B8A8)));
    const Texture texture(2, 2, kR8G8B8A8);
    ASSERT_TRUE(Save("x.bmp", texture));
    ASSERT_TRUE(Save("y.bmp", texture));
    EXPECT_EQ(Read("x.bmp").pixels, texture.bytes);
    EXPECT_EQ(ReadAll(folder / "x.bmp"), ReadAll(folder / "y.bmp"));
}

TEST_F(LibrarySaving, AnOldFileOfEveryKindIsReplacedWhole) {
    const Texture texture(40, 40, kR8G8B8A8);
    for (const char* name : {"x.png", "x.tif", "x.exr", "x.bmp", "x.tga", "x.sgi", "x.fits", "x.dpx", "x.jp2", "x.j2c",
                             "x.jxl", "x.ico", "x.rla", "x.iff"}) {
        ASSERT_TRUE(Save(name, texture)) << name;
        const FilePicture first = Read(name);
        folder.Write(name, std::string(100000, 'o'));
        ASSERT_TRUE(Save(name, texture)) << name;
        EXPECT_EQ(Read(name).pixels, first.pixels) << name;
        EXPECT_LT(std::filesystem::file_size(folder / name), 100000U) << name;
        std::filesystem::remove(folder / name);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(LibrarySaving, AnOldFileSurvivesAFullDisk) {
    Texture texture(64, 48, kR8G8B8A8);
    unsigned state = 1;
    for (unsigned char& byte : texture.bytes)
        byte = static_cast<unsigned char>((state = state * 1664525U + 1013904223U) >> 24);
    for (const char* name : {"x.png", "x.tif", "x.jpg", "x.fits", "x.rla"}) {
        const auto old = folder.Write(name, "old");
        const SmallDisk disk(600);
        EXPECT_FALSE(Save(name, texture)) << name;
        EXPECT_THAT(ReadAll(old), ElementsAre('o', 'l', 'd')) << name;
        std::filesystem::remove(old);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(LibrarySaving, ThreadsSaveDifferentFilesIndependently) {
    const Texture texture(32, 32, kB8G8R8A8);
    ASSERT_TRUE(Save("whole.png", texture));
    const std::vector<unsigned char> expected = ReadAll(folder / "whole.png");
    std::vector<int> good(4, 0);
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < good.size(); ++i)
            threads.emplace_back([&, i] {
                const std::string name = std::to_string(i) + ".png";
                for (int round = 0; round < 5; ++round)
                    good[i] += Save(name, texture) && ReadAll(folder / name) == expected;
            });
    }
    EXPECT_THAT(good, testing::Each(5));
}

}  // namespace
