// How a host prefers files to be written.

#include "output/PreferredSaving.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using testing::ElementsAre;

namespace {

using WriterPreferences = PreferredSaving;

TEST_F(WriterPreferences, DefaultsChangeNoByteOfAnyFile) {
    const Texture texture = Detailed(kR8G8B8A8);
    for (const char* kind : kTimeless)
        EXPECT_TRUE(SavesAlike({}, kind, texture)) << kind;
}

TEST_F(WriterPreferences, AHigherQualityMakesLargerFilesOfLossyKinds) {
    const Texture texture = Detailed(kR8G8B8A8, 128);
    for (const char* kind : {"x.jpg", "x.webp"}) {
        std::vector<std::uintmax_t> sizes;
        for (const int quality : {5, 50, 95}) {
            SavePreferences preferences;
            preferences.quality = quality;
            ASSERT_TRUE(SaveWith(preferences, kind, texture));
            sizes.push_back(Size(kind));
        }
        EXPECT_LT(sizes[0], sizes[1]) << kind;
        EXPECT_LT(sizes[1], sizes[2]) << kind;
    }
}

TEST_F(WriterPreferences, AQualityOutOfRangeIsTheNearestOne) {
    const Texture texture = Detailed(kR8G8B8A8);
    const auto with = [&](int quality) {
        SavePreferences preferences;
        preferences.quality = quality;
        EXPECT_TRUE(SaveWith(preferences, "x.jpg", texture));
        return ReadAll(folder / "x.jpg");
    };
    EXPECT_EQ(with(1000), with(100));
    EXPECT_EQ(with(-5), with(0));
    EXPECT_EQ(with(std::numeric_limits<int>::min()), with(0));
}

TEST_F(WriterPreferences, WebPAndJpegXlCanBeLossless) {
    const Texture texture = Detailed(kR8G8B8A8);
    for (const char* kind : {"x.webp", "x.jxl"}) {
        SavePreferences preferences;
        preferences.compression = "Lossless";
        preferences.quality = 10;
        preferences.dropsAlpha = true;  // colours below an alpha of 0 are nobody's
        ASSERT_TRUE(SaveWith(preferences, kind, texture));
        const FilePicture picture = Read(kind);
        ASSERT_EQ(picture.channels, 3) << kind;
        for (std::size_t i = 0; i < picture.pixels.size(); ++i)
            ASSERT_EQ(picture.pixels[i], texture.bytes[i / 3 * 4 + i % 3]) << kind << i;
    }
}

TEST_F(WriterPreferences, CompressionsAreThoseThatTheWriterKnows) {
    struct Case {
        const char *kind, *asked, *written;
    };
    for (const Case& expected :
         {Case{"x.exr", "piz", "piz"}, Case{"x.exr", "ZIPS", "zips"}, Case{"x.exr", "none", "none"},
          Case{"x.exr", "rle", "rle"}, Case{"x.exr", "b44a", "b44a"}, Case{"x.exr", "pxr24", "pxr24"},
          Case{"x.exr", "lzw", "zip"}, Case{"x.exr", "nonsense", "zip"}, Case{"x.exr", "", "zip"},
          Case{"x.tif", "lzw", "lzw"}, Case{"x.tif", "packbits", "packbits"}, Case{"x.tif", "none", "none"},
          Case{"x.tif", "ccittrle", "zip"}, Case{"x.tif", "jpeg", "zip"}, Case{"x.tga", "rle", "rle"},
          Case{"x.sgi", "rle", "rle"}, Case{"x.iff", "none", ""}}) {
        SavePreferences preferences;
        preferences.compression = expected.asked;
        const Texture texture = Detailed(std::string_view(expected.kind) == "x.exr" ? kR16G16B16A16F : kR8G8B8A8);
        ASSERT_TRUE(SaveWith(preferences, expected.kind, texture));
        EXPECT_EQ(First(expected.kind).Text("compression"), expected.written) << expected.kind << expected.asked;
        EXPECT_EQ(First(expected.kind).pixels.size(), texture.bytes.size());
    }
}

TEST_F(WriterPreferences, NamesOfCompressionsThatAreNoneHarmNoWriter) {
    const std::string long_name(1'000'000, 'z');
    const Texture texture = Detailed(kR8G8B8A8);
    for (const char* name :
         {long_name.c_str(), "zip:9", "dwaa:nan", "jpeg:50", "webp", "%s%n", "\xFF\xFE", " none", "none "}) {
        for (const char* kind : kKinds) {
            SavePreferences preferences;
            preferences.compression = name;
            ASSERT_TRUE(SaveWith(preferences, kind, texture)) << kind;
            EXPECT_EQ(Read(kind).pixels.empty(), false) << kind;
        }
    }
}

TEST_F(WriterPreferences, EveryCompressionOfPngIsWithoutLoss) {
    const Texture texture = Detailed(kR8G8B8A8);
    for (const char* name : {"none", "zip", "filtered", "huffman", "rle", "fixed", "pngfast"}) {
        SavePreferences preferences;
        preferences.compression = name;
        ASSERT_TRUE(SaveWith(preferences, "x.png", texture));
        EXPECT_EQ(Read("x.png").pixels, texture.bytes) << name;
        if (std::string_view(name) == "none") {
            EXPECT_GT(Size("x.png"), texture.bytes.size());
        }
    }
}

TEST_F(WriterPreferences, DwaGoesByTheQuality) {
    const Texture texture = Detailed(kR16G16B16A16F, 128);
    const auto size = [&](int quality) {
        SavePreferences preferences;
        preferences.compression = "dwaa";
        preferences.quality = quality;
        EXPECT_TRUE(SaveWith(preferences, "x.exr", texture));
        EXPECT_EQ(First("x.exr").Text("compression"), "dwaa");
        return Size("x.exr");
    };
    EXPECT_LT(size(1), size(60));
    EXPECT_LT(size(60), size(100));
}

TEST_F(WriterPreferences, TilesAreOfTheWantedSize) {
    struct Case {
        const char* kind;
        int asked, written;
    };
    for (const Case& expected :
         {Case{"x.exr", 32, 32}, Case{"x.exr", 24, 24}, Case{"x.tif", 32, 32}, Case{"x.tif", 24, 32},
          Case{"x.exr", 1, 16}, Case{"x.tif", 1, 16}, Case{"x.exr", 1 << 30, 64}, Case{"x.tif", 1 << 30, 64},
          Case{"x.exr", 0, 0}, Case{"x.tif", -7, 0}, Case{"x.png", 32, 0}, Case{"x.jp2", 32, 0},
          Case{"x.webp", 32, 0}}) {
        SavePreferences preferences;
        preferences.tileSize = expected.asked;
        const bool isExr = std::string_view(expected.kind) == "x.exr";
        const Texture texture = Detailed(isExr ? kR16G16B16A16F : kR8G8B8A8, 50);  // no multiple of any tile
        ASSERT_TRUE(SaveWith(preferences, expected.kind, texture)) << expected.kind;
        const Part part = First(expected.kind);
        EXPECT_EQ(part.spec.tile_width, expected.written) << expected.kind << expected.asked;
        EXPECT_EQ(part.spec.tile_height, expected.written);
        if (expected.written > 0) {
            EXPECT_EQ(part.pixels, texture.bytes);
        }
        EXPECT_EQ(part.pixels.size(), texture.bytes.size());
    }
}

TEST_F(WriterPreferences, TheResolutionIsInDotsPerInch) {
    SavePreferences preferences;
    preferences.resolution = 144;
    for (const char* kind : {"x.png", "x.jpg", "x.tif", "x.exr"}) {
        ASSERT_TRUE(SaveWith(preferences, kind, Detailed(kR8G8B8A8)));
        EXPECT_EQ(First(kind).Number("XResolution"), 144) << kind;
        EXPECT_EQ(First(kind).Number("YResolution"), 144) << kind;
        EXPECT_TRUE(First(kind).Text("ResolutionUnit").starts_with("in")) << kind;
    }
}

TEST_F(WriterPreferences, AResolutionThatIsNoneIsLeftOut) {
    using Limits = std::numeric_limits<double>;
    for (const double resolution : {Limits::quiet_NaN(), Limits::infinity(), -300.0, 1e300, 1e-300}) {
        SavePreferences preferences;
        preferences.resolution = resolution;
        for (const char* kind : kTimeless)
            EXPECT_TRUE(SavesAlike(preferences, kind, Detailed(kR8G8B8A8))) << kind << resolution;
    }
}

TEST_F(WriterPreferences, AlphaCanBeLeftOut) {
    Texture texture(2, 2, kR8G8B8A8);
    texture.desc.rowPitch = 9;
    texture.bytes = {1, 2, 3, 0, 4, 5, 6, 99, 77, 7, 8, 9, 255, 10, 11, 12, 1};
    SavePreferences preferences;
    preferences.dropsAlpha = true;
    for (const char* kind : {"x.png", "x.tif", "x.tga", "x.bmp", "x.ppm", "x.sgi"}) {
        ASSERT_TRUE(SaveWith(preferences, kind, texture)) << kind;
        EXPECT_THAT(Read(kind).pixels, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12)) << kind;
    }
    texture.desc.format = kB8G8R8A8;
    ASSERT_TRUE(SaveWith(preferences, "x.png", texture));
    EXPECT_THAT(Read("x.png").pixels, ElementsAre(3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10));
}

TEST_F(WriterPreferences, WithoutAlphaFourFloatsBecomeRadianceAndPfm) {
    Texture texture(2, 1, kR32G32B32A32F);
    texture.SetElements<float>({0.5F, 2.0F, 8.0F, 0.25F, 1.0F, 0.0F, 4.0F, 1.0F});
    EXPECT_FALSE(Save("x.hdr", texture));
    EXPECT_FALSE(Save("x.pfm", texture));
    SavePreferences preferences;
    preferences.dropsAlpha = true;
    for (const char* kind : {"x.hdr", "x.pfm", "x.exr"}) {
        ASSERT_TRUE(SaveWith(preferences, kind, texture));
        EXPECT_THAT(Read(kind).As<float>(), ElementsAre(0.5F, 2.0F, 8.0F, 1.0F, 0.0F, 4.0F)) << kind;
    }
}

TEST_F(WriterPreferences, HalvesWithoutAlphaAreFloatsForWritersThatKnowNoHalves) {
    Texture texture(1, 2, kR16G16B16A16F);
    texture.SetElements<std::uint16_t>({0x3C00, 0x4000, 0x3800, 0x3C00, 0x0000, 0x4400, 0x3400, 0x3C00});
    SavePreferences preferences;
    preferences.dropsAlpha = true;
    ASSERT_TRUE(SaveWith(preferences, "x.pfm", texture));
    EXPECT_THAT(Read("x.pfm").As<float>(), ElementsAre(1.0F, 2.0F, 0.5F, 0.0F, 4.0F, 0.25F));
}

TEST_F(WriterPreferences, GreyWithAlphaBecomesGrey) {
    Texture texture(2, 1, kR16G16);
    texture.SetElements<std::uint16_t>({100, 65535, 200, 0});
    SavePreferences preferences;
    preferences.dropsAlpha = true;
    ASSERT_TRUE(SaveWith(preferences, "x.png", texture));
    EXPECT_EQ(Read("x.png").channels, 1);
    EXPECT_THAT(Read("x.png").As<std::uint16_t>(), ElementsAre(100, 200));
}

TEST_F(WriterPreferences, TiffSaysWhatItsAlphaIsAndNoValueChanges) {
    Texture texture(1, 1, kR8G8B8A8);
    texture.bytes = {100, 50, 25, 128};
    SavePreferences preferences;
    preferences.alpha = kAlphaPremultiplied;
    ASSERT_TRUE(SaveWith(preferences, "x.tif", texture));
    EXPECT_EQ(First("x.tif").spec.get_int_attribute("tiff:UnassociatedAlpha"), 0);
    EXPECT_THAT(First("x.tif").pixels, ElementsAre(100, 50, 25, 128));
    preferences.alpha = kAlphaStraight;
    ASSERT_TRUE(SaveWith(preferences, "x.tif", texture));
    EXPECT_EQ(First("x.tif").spec.get_int_attribute("tiff:UnassociatedAlpha"), 1);
    EXPECT_THAT(First("x.tif").pixels, ElementsAre(100, 50, 25, 128));
    for (const char* kind : {"x.png", "x.tga", "x.bmp", "x.exr"}) {
        ASSERT_TRUE(Save(kind, texture));
        const auto plain = First(kind).pixels;
        preferences.alpha = kAlphaPremultiplied;
        ASSERT_TRUE(SaveWith(preferences, kind, texture));
        EXPECT_EQ(First(kind).pixels, plain) << kind;
    }
}

TEST_F(WriterPreferences, TheSecondOfTwoChannelsIsAlphaWhereTheHostSaysSo) {
    Texture texture(1, 1, kR16G16F);
    SavePreferences preferences;
    preferences.alpha = kAlphaStraight;
    texture.SetElements<std::uint16_t>({0x3C00, 0x3800});
    ASSERT_TRUE(SaveWith(preferences, "x.exr", texture));
    EXPECT_THAT(Read("x.exr").channelNames, ElementsAre("Y", "A"));
    ASSERT_TRUE(Save("x.exr", texture));
    EXPECT_THAT(Read("x.exr").channelNames, ElementsAre("R", "G"));
}

TEST_F(WriterPreferences, PngSaysWhatItsValuesAreAndNoneOfThemChanges) {
    struct Case {
        ETransferKind kind;
        double gamma;
        const char* space;
    };
    const Texture texture = Detailed(kR8G8B8A8);
    for (const Case& expected :
         {Case{kTransferLinear, 1, "lin_rec709_scene"}, Case{kTransferSrgb, 2.2, "srgb_rec709_scene"},
          Case{kTransferGamma, 1.8, "g18_rec709_scene"}, Case{kTransferGamma, 2.2, "g22_rec709_scene"}}) {
        SavePreferences preferences;
        preferences.transfer = expected.kind;
        preferences.gamma = expected.gamma;
        ASSERT_TRUE(SaveWith(preferences, "x.png", texture));
        EXPECT_EQ(First("x.png").Text("oiio:ColorSpace"), expected.space);
        EXPECT_EQ(First("x.png").pixels, texture.bytes);
    }
}

TEST_F(WriterPreferences, NoTransferChangesValuesOfAnyKindOfFile) {
    using Limits = std::numeric_limits<double>;
    const Texture texture = Detailed(kR8G8B8A8);
    for (const char* kind : kKinds) {
        ASSERT_TRUE(Save(kind, texture));
        const auto plain = First(kind).pixels;
        for (const ETransferKind transfer : {kTransferLinear, kTransferSrgb, kTransferGamma}) {
            for (const double gamma : {0.0, 1.8, 2.05, -3.0, 1e9, Limits::quiet_NaN(), Limits::infinity()}) {
                SavePreferences preferences;
                preferences.transfer = transfer;
                preferences.gamma = gamma;
                ASSERT_TRUE(SaveWith(preferences, kind, texture)) << kind;
                EXPECT_EQ(First(kind).pixels, plain) << kind << transfer << gamma;
            }
        }
    }
}

TEST_F(WriterPreferences, GreyPicturesCanSayWhatTheirValuesAreToo) {
    const Texture texture = Detailed(kL8);
    for (const char* kind :
         {"x.png", "x.jpg", "x.tif", "x.exr", "x.jxl", "x.tga", "x.bmp", "x.sgi", "x.dpx", "x.jp2"}) {
        ASSERT_TRUE(Save(kind, texture)) << kind;
        const auto plain = First(kind).pixels;
        for (const ETransferKind transfer : {kTransferLinear, kTransferSrgb, kTransferGamma}) {
            SavePreferences preferences;
            preferences.transfer = transfer;
            preferences.gamma = 1.8;
            ASSERT_TRUE(SaveWith(preferences, kind, texture)) << kind << transfer;
            EXPECT_EQ(First(kind).pixels, plain) << kind << transfer;
        }
    }
}

}  // namespace
