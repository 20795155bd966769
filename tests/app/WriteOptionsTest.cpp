// How the commands write their files: quality, compression, depth, tiles, resolution, channels, several frames.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <format>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

/// The file that `convert` makes of `in` with these words, and the notes about the input.
OIIO::ImageSpec Converted(const std::filesystem::path& in, const std::filesystem::path& out, const Words& words = {},
                          const std::string& note = {}) {
    ExpectDone(Joined({{"convert", in, out}, words}), note.empty() ? "" : NoteLine(in, note));
    return PictureFile(out).Spec();
}

std::filesystem::path Opaque(const TemporaryFolder& folder) {
    return WritePicture(folder / "opaque.png", 40, 32,
                        [](int x, int y) { return Colour{x * 6, y * 7, (x * y) % 256, 255}; });
}

std::filesystem::path Translucent(const TemporaryFolder& folder) {
    return WritePicture(folder / "translucent.png", 40, 32,
                        [](int x, int y) { return Colour{x * 6, y * 7, 7, x == 39 && y == 31 ? 254 : 255}; });
}

TEST(WriteOptions, AnOpaquePictureHasNoAlphaInItsFile) {
    const TemporaryFolder folder;
    for (const char* name : {"a.png", "a.tif", "a.tga", "a.bmp", "a.sgi", "a.webp", "a.jxl", "a.jp2"}) {
        EXPECT_EQ(Converted(Opaque(folder), folder / name).nchannels, 3) << name;
        EXPECT_EQ(Converted(Translucent(folder), folder / name).nchannels, 4) << name;
    }
}

TEST(WriteOptions, TheColoursOfAnOpaquePictureStayTheSame) {
    const TemporaryFolder folder;
    Converted(Opaque(folder), folder / "a.tif");
    const PictureFile before(Opaque(folder)), after(folder / "a.tif");
    for (const auto& [x, y] : {std::pair(0, 0), std::pair(39, 0), std::pair(5, 31), std::pair(20, 20)}) {
        Colour expected = before.At(x, y);
        expected.resize(3);
        EXPECT_EQ(after.At(x, y), expected);
    }
}

TEST(WriteOptions, TypesOfThreeChannelsAreWritten) {
    const TemporaryFolder folder;
    for (const char* name : {"a.ppm", "a.hdr", "a.pfm"})
        EXPECT_EQ(Converted(Opaque(folder), folder / name).nchannels, 3) << name;
}

TEST(WriteOptions, QualityMakesLossyFilesLargerOrSmaller) {
    const TemporaryFolder folder;
    const auto detailed = Opaque(folder);
    for (const char* name : {"a.jpg", "a.webp", "a.jxl"}) {
        const auto sized = [&](const char* quality) {
            Converted(detailed, folder / name, {"--quality", quality});
            return std::filesystem::file_size(folder / name);
        };
        EXPECT_LT(sized("20"), sized("95")) << name;
    }
}

TEST(WriteOptions, EachCompressionOfEachTypeKeepsWhatIsLossless) {
    const TemporaryFolder folder;
    const std::vector<std::pair<std::string, Words>> types = {
        {"png", {"none", "zip", "filtered", "huffman", "rle", "fixed", "pngfast"}},
        {"tif", {"none", "lzw", "zip", "packbits"}},
        {"tga", {"none", "rle"}},
        {"sgi", {"none", "rle"}},
        {"webp", {"lossless"}},
        {"jxl", {"lossless"}},
    };
    const auto in = Opaque(folder);
    Converted(in, folder / "plain.tif");
    for (const auto& [type, names] : types) {
        for (const std::string& name : names) {
            const auto out = folder / ("a." + type);
            Converted(in, out, {"--compression", name});
            EXPECT_EQ(PictureFile(out).Bytes(), PictureFile(folder / "plain.tif").Bytes()) << type << name;
        }
    }
    for (const std::string name : {"none", "rle", "zip", "zips", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"}) {
        const auto spec = Converted(in, folder / "a.exr", {"--compression", name});
        EXPECT_EQ(spec.get_string_attribute("compression"), name);
    }
}

TEST(WriteOptions, WhatATypeDoesNotKnowIsNoted) {
    const TemporaryFolder folder;
    const auto in = Opaque(folder);
    Converted(in, folder / "a.bmp", {"--quality", "50"},
              "--quality is left out: .bmp files lose nothing by their compression");
    Converted(in, folder / "a.bmp", {"--compression", "zip"},
              "--compression zip is left out: .bmp files have one of their own");
    Converted(in, folder / "a.tif", {"--compression", "piz"},
              "--compression piz is left out: .tif files have none, lzw, zip, packbits");
    Converted(in, folder / "a.png", {"--tile", "32"}, "--tile is left out: .png files have no tiles");
    Converted(in, folder / "a.bmp", {"--dpi", "300"}, "--dpi is left out: .bmp files hold no resolution");
    Converted(in, folder / "a.png", {"--depth", "half"}, "--depth half is left out: .png files hold 8, 16");
}

TEST(WriteOptions, WrongValuesAreRefusedBeforeAnyWork) {
    const TemporaryFolder folder;
    const auto in = Opaque(folder), out = folder / "a.jpg";
    const auto refused = [&](const Words& words, const std::string& text) {
        ExpectWrongUsage(Joined({{"convert", in, out}, words}), "convert: error: " + text);
        EXPECT_FALSE(std::filesystem::exists(out));
    };
    refused({"--quality", "0"}, "--quality: 0 is no whole number from 1 to 100");
    refused({"--quality", "101"}, "--quality: 101 is no whole number from 1 to 100");
    refused({"--depth", "12"}, "--depth: 12 is none of 16|8|float|half; did you mean 16?");
    refused({"--tile", "8"}, "--tile: 8 is no whole number from 16 to 4096");
    refused({"--dpi", "nan"}, "--dpi: nan is no number above 0 and up to 65535");
    refused({"--fps", "5"}, "--fps goes with --frames all");
}

TEST(WriteOptions, DepthChoosesTheBitsOfAChannel) {
    const TemporaryFolder folder;
    struct Case {
        const char *name, *depth;
        OIIO::TypeDesc type;
    };
    for (const Case& expected : {Case{"a.png", "16", OIIO::TypeUInt16}, Case{"a.png", "8", OIIO::TypeUInt8},
                                 Case{"a.tif", "16", OIIO::TypeUInt16}, Case{"a.tif", "float", OIIO::TypeFloat},
                                 Case{"a.exr", "float", OIIO::TypeFloat}, Case{"a.exr", "half", OIIO::TypeHalf},
                                 Case{"a.ppm", "16", OIIO::TypeUInt16}, Case{"a.jxl", "16", OIIO::TypeUInt16}}) {
        EXPECT_EQ(Converted(Opaque(folder), folder / expected.name, {"--depth", expected.depth}).format, expected.type)
            << expected.name << expected.depth;
    }
}

TEST(WriteOptions, TilesAndResolutionAreInTheFile) {
    const TemporaryFolder folder;
    for (const char* name : {"a.tif", "a.exr"}) {
        const auto spec = Converted(Opaque(folder), folder / name, {"--tile", "32", "--dpi", "150"});
        EXPECT_EQ(spec.tile_width, 32) << name;
        EXPECT_EQ(spec.get_float_attribute("XResolution"), 150) << name;
    }
    for (const char* name : {"a.png", "a.jpg"})
        EXPECT_EQ(Converted(Opaque(folder), folder / name, {"--dpi", "150"}).get_float_attribute("YResolution"), 150);
}

TEST(WriteOptions, GreyIsOneChannelOfTheBrightness) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 2, 1,
                                 [](int x, int) { return x == 0 ? Colour{255, 0, 0, 255} : Colour{10, 10, 10, 255}; });
    for (const char* name : {"a.png", "a.tif", "a.tga", "a.pgm"}) {
        EXPECT_EQ(Converted(in, folder / name, {"--grey"}).nchannels, 1) << name;
        EXPECT_EQ(PictureFile(folder / name).At(0, 0), Colour{76}) << name;  // 0.299 of 255
        EXPECT_EQ(PictureFile(folder / name).At(1, 0), Colour{10}) << name;
    }
}

TEST(WriteOptions, EveryOptionWorksInEveryCommandThatWritesPictures) {
    const TemporaryFolder folder;
    const auto in = Opaque(folder);
    const Words options = {"--compression", "lzw", "--depth", "16",     "--tile", "16",
                           "--dpi",         "200", "--grey",  "--strip"};
    ExpectDone(Joined({{"resize", in, folder / "0.tif", "--scale", "50%"}, options}));
    ExpectDone(Joined({{"crop", in, folder / "1.tif", "--rect", "1,1,20,20"}, options}));
    ExpectDone(Joined({{"frames", in, folder / "%d-.tif"}, options}));
    for (const char* name : {"0.tif", "1.tif", "0-.tif"}) {
        const auto spec = PictureFile(folder / name).Spec();
        EXPECT_EQ(spec.format, OIIO::TypeUInt16) << name;
        EXPECT_EQ(spec.nchannels, 1) << name;
        EXPECT_EQ(spec.tile_width, 16) << name;
        EXPECT_EQ(spec.get_string_attribute("compression"), "lzw") << name;
    }
}

std::size_t FrameCount(const std::filesystem::path& file) {
    const auto input = OIIO::ImageInput::open(file.string());
    std::size_t count = 0;
    while (input && input->seek_subimage(static_cast<int>(count), 0))
        ++count;
    return count;
}

TEST(WriteOptions, PicturesBecomeOneAnimation) {
    const TemporaryFolder folder;
    const auto red = WritePicture(folder / "0.png", 8, 8, [](int, int) { return Colour{255, 0, 0, 255}; });
    const auto blue = WritePicture(folder / "1.png", 8, 8, [](int, int) { return Colour{0, 0, 255, 255}; });
    for (const char* name : {"a.gif", "a.tif", "a.exr"}) {
        ExpectDone({"convert", red, blue, folder / name, "--frames", "all", "--fps", "5"});
        EXPECT_EQ(FrameCount(folder / name), 2U) << name;
    }
    const auto input = OIIO::ImageInput::open((folder / "a.gif").string());
    EXPECT_FLOAT_EQ(input->spec().get_float_attribute("FramesPerSecond"), 5);

    ExpectDone({"convert", folder / "a.gif", folder / "b.tif", "--frames", "all"});
    EXPECT_EQ(FrameCount(folder / "b.tif"), 2U);
    ExpectDone({"frames", folder / "b.tif", folder / "out%d.png"});
    EXPECT_EQ(PictureFile(folder / "out0.png").At(3, 3), (Colour{255, 0, 0}));
    EXPECT_EQ(PictureFile(folder / "out1.png").At(3, 3), (Colour{0, 0, 255}));
}

TEST(WriteOptions, FramesOfAGifAreWholePictures) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("spinner.gif"), folder / "a.tif", "--frames", "all"});
    EXPECT_EQ(FrameCount(folder / "a.tif"), 8U);
    const auto input = OIIO::ImageInput::open((folder / "a.tif").string());
    for (int i = 0; i < 8; ++i) {
        ASSERT_TRUE(input->seek_subimage(i, 0));
        EXPECT_EQ(input->spec().nchannels, 3) << "every frame is opaque as it is shown, " << i;
    }
}

TEST(WriteOptions, FramesThatDoNotFitTogetherAreRefused) {
    const TemporaryFolder folder;
    const auto small = WritePicture(folder / "0.png", 8, 8, PlaceColour),
               large = WritePicture(folder / "1.png", 9, 8, PlaceColour);
    for (const std::string type : {".gif", ".exr"}) {
        const auto out = folder / ("a" + type);
        ExpectFailed({"convert", small, large, out, "--frames", "all"},
                     ErrorLine(out, "cannot be written: pictures of 8 x 8 and of 9 x 8 pixels, and " + type +
                                        " files hold those of one size"));
    }
    ExpectDone({"convert", small, large, folder / "a.tif", "--frames", "all"});
    const auto out = folder / "a.webp";
    ExpectFailed({"convert", small, small, out, "--frames", "all"},
                 ErrorLine(out, "cannot be written: .webp files hold one picture; gif, tif and exr hold several"));
    const auto missing = folder / "none.png";
    ExpectFailed({"convert", small, missing, folder / "b.gif", "--frames", "all"},
                 WarningLine(missing, "format is not supported") + ErrorLine(missing, "there is no such file"));
    EXPECT_FALSE(std::filesystem::exists(folder / "b.gif"));
}

TEST(WriteOptions, FormatsListsWhatIsReadAndWritten) {
    const Json formats = Json::parse(ExpectDone({"formats", "--json"}));
    for (const char* key : {"pixelFormats", "fileTypes", "readable", "writable"})
        EXPECT_TRUE(formats.contains(key)) << key;
    for (const char* extension : {".png", ".tif", ".dds", ".exr"}) {
        if (formats["writable"].empty()) GTEST_SKIP() << "the module describes no files";
        EXPECT_TRUE(std::ranges::contains(formats["writable"], Json(extension))) << extension;
        EXPECT_TRUE(std::ranges::contains(formats["readable"], Json(extension))) << extension;
    }
    EXPECT_TRUE(std::ranges::contains(formats["readable"], Json(".pcx")));
    EXPECT_FALSE(std::ranges::contains(formats["writable"], Json(".pcx")));
}

}  // namespace
