// Choosing a face, slice, part, layer, some channels or a level.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;

namespace {

using Bytes = std::vector<unsigned char>;

/// Face `face` of the whole block of a cube map with six of them, or the like of slices.
Bytes Piece(const Bytes& whole, std::size_t count, std::size_t index) {
    const std::size_t size = whole.size() / count;
    const auto begin = whole.begin() + static_cast<std::ptrdiff_t>(index * size);
    return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

/// An OpenEXR file of two parts, "beauty" with R, G, B and the layer "glow", and "depth" with Z.
std::filesystem::path WriteParts(const std::filesystem::path& path) {
    std::vector<OIIO::ImageSpec> specs(2, OIIO::ImageSpec(4, 2, 6, OIIO::TypeHalf));
    specs[0].channelnames = {"R", "G", "B", "glow.R", "glow.G", "glow.B"};
    specs[0].attribute("oiio:subimagename", "beauty");
    specs[1].nchannels = 1;
    specs[1].channelnames = {"Z"};
    specs[1].attribute("oiio:subimagename", "depth");
    std::vector<float> colours, depths(8, 0.5F);
    for (int pixel = 0; pixel < 8; ++pixel)
        colours.insert(colours.end(), {0, 0, 0, 1, 0, 0});
    const auto output = OIIO::ImageOutput::create(path.string());
    const bool isWritten = output->open(path.string(), 2, specs.data()) &&
                           output->write_image(OIIO::TypeFloat, colours.data()) &&
                           output->open(path.string(), specs[1], OIIO::ImageOutput::AppendSubimage) &&
                           output->write_image(OIIO::TypeFloat, depths.data()) && output->close();
    if (!isWritten) throw std::runtime_error(output->geterror());
    return path;
}

}  // namespace

TEST(Selection, AFaceBecomesAFlatPicture) {
    const TemporaryFolder folder;
    const Bytes whole = Dumped(Sample("cube.dds"));
    const Words faces = {"+x", "-x", "+y", "-y", "+z", "-z"};
    for (std::size_t face = 0; face < 6; ++face) {
        ExpectDone({"convert", Sample("cube.dds"), folder / "face.png", "--face", faces[face]});
        EXPECT_EQ(PictureFile(folder / "face.png").RgbaBytes(), Piece(whole, 6, face)) << faces[face];
        EXPECT_EQ(Dumped(Sample("cube.dds"), {"--face", faces[face]}), Piece(whole, 6, face)) << faces[face];
    }
}

TEST(Selection, ASliceBecomesAFlatPicture) {
    const TemporaryFolder folder;
    const Bytes whole = Dumped(Sample("volume.dds"));
    ExpectDone({"convert", Sample("volume.dds"), folder / "slice.png", "--slice", "5"});
    EXPECT_EQ(PictureFile(folder / "slice.png").RgbaBytes(), Piece(whole, 8, 5));
    ExpectDone({"resize", Sample("volume.dds"), folder / "small.png", "--slice", "5", "--scale", "50%"});
    EXPECT_EQ(PictureFile(folder / "small.png").Size(), "16x16");
    ExpectDone({"crop", Sample("cube.dds"), folder / "crop.png", "--face", "-y", "--rect", "0,0,8,8"});
    EXPECT_EQ(PictureFile(folder / "crop.png").Size(), "8x8");
}

TEST(Selection, ALevelIsChosenOfAnyFileThatHasThem) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("mips.dds"), folder / "level.png", "--level", "3"});
    EXPECT_EQ(PictureFile(folder / "level.png").Size(), "16x16");
    ExpectDone({"convert", Sample("cube-mips.dds"), folder / "face.png", "--level", "1", "--face", "-z"});
    EXPECT_EQ(PictureFile(folder / "face.png").Size(), "16x16");
    ExpectFailed({"convert", Sample("mips.dds"), folder / "x.png", "--level", "8"},
                 ErrorLine(Sample("mips.dds"), "level 8: the picture has 8, from 0"));
    ExpectFailed({"convert", Sample("photo.jpg"), folder / "x.png", "--level", "1"},
                 ErrorLine(Sample("photo.jpg"), "level 1: the picture has 1, from 0"));
}

TEST(Selection, APartIsChosenByItsNameOrNumber) {
    const TemporaryFolder folder;
    const auto file = WriteParts(folder / "parts.exr");
    const Bytes byName = Dumped(file, {"--part", "depth", "--channels", "Z"});
    EXPECT_EQ(byName.size(), 4U * 2 * 8);
    EXPECT_EQ(Dumped(file, {"--part", "1", "--channels", "Z"}), byName);
    ExpectFailed({"convert", file, folder / "x.png", "--part", "shadow"},
                 ErrorLine(file, "part shadow: the file has 0 beauty, 1 depth"));
    ExpectDone({"convert", Sample("pages.tif"), folder / "page.png", "--part", "2"});
    EXPECT_EQ(PictureFile(folder / "page.png").Size(), "64x64");
}

TEST(Selection, APartWithoutColoursIsShownAsItIsAndNotAnotherPart) {
    const TemporaryFolder folder;
    const auto file = WriteParts(folder / "parts.exr");
    const std::string note = NoteLine(file, "has no colours; the channel Z is taken as grey");
    ExpectDone({"convert", file, folder / "depth.tif", "--part", "depth"}, note);
    ExpectDone({"crop", file, folder / "crop.tif", "--part", "depth", "--rect", "0,0,4,2"}, note);
    ExpectDone({"frames", file, folder / "%d.tif", "--part", "1"}, note);
    EXPECT_EQ(PictureFile(folder / "crop.tif").RgbaBytes(), PictureFile(folder / "depth.tif").RgbaBytes());
    EXPECT_EQ(PictureFile(folder / "0.tif").RgbaBytes(), PictureFile(folder / "depth.tif").RgbaBytes());
    EXPECT_EQ(PictureFile(folder / "depth.tif").At(0, 0), (Colour{128, 128, 128}));
}

TEST(Selection, ALayerIsItsColours) {
    const TemporaryFolder folder;
    const auto file = WriteParts(folder / "parts.exr");
    EXPECT_EQ(Dumped(file, {"--layer", "glow"}), Dumped(file, {"--channels", "glow.R,glow.G,glow.B"}));
    const Bytes glow = Dumped(file, {"--layer", "glow", "--format", "rgba8"});
    EXPECT_EQ(Bytes(glow.begin(), glow.begin() + 4), (Bytes{255, 0, 0, 255}));
    ExpectFailed({"convert", file, folder / "x.png", "--layer", "fog"},
                 ErrorLine(file, "layer fog: the picture has glow"));
    ExpectFailed({"convert", Sample("photo.jpg"), folder / "x.png", "--layer", "fog"},
                 ErrorLine(Sample("photo.jpg"), "layer fog: the picture has no layers"));
    ExpectFailed({"convert", file, folder / "x.png", "--channels", "R,Q"},
                 ErrorLine(file, "channel Q: the picture has R, G, B, glow.R, glow.G, glow.B"));
}

TEST(Selection, WhatIsNotThereIsAnErrorThatListsWhatIs) {
    const TemporaryFolder folder;
    const auto out = folder / "x.png";
    ExpectFailed({"convert", Sample("photo.jpg"), out, "--face", "+x"},
                 ErrorLine(Sample("photo.jpg"), "face +x: the picture is no cube map, so it has no faces"));
    ExpectFailed({"convert", Sample("cube.dds"), out, "--slice", "0"},
                 ErrorLine(Sample("cube.dds"), "slice 0: the picture is no volume, so it has no slices"));
    ExpectFailed({"convert", Sample("volume.dds"), out, "--slice", "8"},
                 ErrorLine(Sample("volume.dds"), "slice 8: the volume has 8, from 0"));
    ExpectFailed({"dump", Sample("volume.dds"), "--out", out, "--slice", "8"},
                 ErrorLine(Sample("volume.dds"), "slice 8: the volume has 8, from 0"));
    ExpectFailed({"convert", Sample("photo.pcx"), out, "--channels", "R"},
                 ErrorLine(Sample("photo.pcx"), "channels of PCX files cannot be chosen"));
    ExpectWrongUsage({"convert", Sample("cube.dds"), out, "--face", "7"},
                     "convert: error: --face: 7: a cube map has +x -x +y -y +z -z");
}

TEST(Selection, ADepthBecomesGreyByItselfWithANote) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("depth.exr"), folder / "depth.tif"},
               NoteLine(Sample("depth.exr"), "has no colours; the channel Z is taken as grey"));
    ExpectDone({"convert", Sample("depth.exr"), folder / "said.tif", "--channels", "Z"});
    EXPECT_EQ(PictureFile(folder / "depth.tif").RgbaBytes(), PictureFile(folder / "said.tif").RgbaBytes());
}

TEST(Selection, AFileOfLayersAloneShowsTheFirst) {
    const TemporaryFolder folder;
    OIIO::ImageSpec spec(1, 1, 2, OIIO::TypeFloat);
    spec.channelnames = {"fog\x1B[2J.Z", "id.Y"};
    const auto path = (folder / "layers.exr").string();
    auto output = OIIO::ImageOutput::create(path);
    const float pixel[] = {0.25F, 0.5F};
    ASSERT_TRUE(output->open(path, spec) && output->write_image(OIIO::TypeFloat, pixel));
    output.reset();
    const auto result = RunKavra({"convert", path, (folder / "out.tif").string()});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.error.contains("is taken")) << result.error;
    EXPECT_FALSE(result.error.contains('\x1B')) << "names of strangers are escaped";
}

TEST(Selection, TheFirstOfSeveralIsTakenWithOneNote) {
    const TemporaryFolder folder;
    ExpectDone(
        {"convert", Sample("spinner.gif"), folder / "first.png"},
        NoteLine(Sample("spinner.gif"), "holds 8 frames; the first is taken, --part takes another, kavra frames all"));
    ExpectDone(
        {"convert", Sample("pages.tif"), folder / "first.png"},
        NoteLine(Sample("pages.tif"), "holds 3 pages; the first is taken, --part takes another, kavra frames all"));
    ExpectDone({"convert", Sample("pages.tif"), folder / "second.png", "--frame", "1"});
    ExpectDone({"convert", Sample("pages.tif"), folder / "second.png", "--part", "0"});
}

// --- frames ----------------------------------------------------------------------------------------------------------

TEST(Selection, FramesWritesEveryFaceOfACubeMap) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("cube.dds"), folder / "%d.png"});
    EXPECT_EQ(NamesIn(folder.Path()), (Words{"0.png", "1.png", "2.png", "3.png", "4.png", "5.png"}));
    const Bytes whole = Dumped(Sample("cube.dds"));
    for (std::size_t face = 0; face < 6; ++face)
        EXPECT_EQ(PictureFile(folder / (std::to_string(face) + ".png")).RgbaBytes(), Piece(whole, 6, face));
}

TEST(Selection, FramesWritesTheFacesLevelByLevel) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("cube-mips.dds"), folder / "%02d.png"});
    EXPECT_EQ(NamesIn(folder.Path()).size(), 36U);
    EXPECT_EQ(PictureFile(folder / "05.png").Size(), "32x32");
    EXPECT_EQ(PictureFile(folder / "06.png").Size(), "16x16");
    EXPECT_EQ(PictureFile(folder / "35.png").Size(), "1x1");
}

TEST(Selection, FramesOfOneFaceAreItsLevels) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("cube-mips.dds"), folder / "%d.png", "--face", "+y"});
    EXPECT_EQ(NamesIn(folder.Path()).size(), 6U);
    EXPECT_EQ(PictureFile(folder / "1.png").Size(), "16x16");
}

TEST(Selection, FramesOfAPartAreThatPart) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("pages.tif"), folder / "%d.png", "--part", "1"});
    EXPECT_EQ(NamesIn(folder.Path()), Words{"0.png"});
    EXPECT_EQ(PictureFile(folder / "0.png").Size(), "60x40");
}

TEST(Selection, FramesOfALevelAreItsFaces) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("cube-mips.dds"), folder / "%d.png", "--level", "0"});
    EXPECT_EQ(NamesIn(folder.Path()).size(), 6U);
}

TEST(Selection, FramesWritesEverySliceOfAVolume) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("volume.dds"), folder / "%d.png"});
    EXPECT_EQ(NamesIn(folder.Path()).size(), 8U);
    EXPECT_EQ(PictureFile(folder / "7.png").RgbaBytes(), Piece(Dumped(Sample("volume.dds")), 8, 7));
}

TEST(Selection, FramesIntoDdsKeepsCubesAndVolumesWholeUnlessEachIsWanted) {
    const TemporaryFolder folder;
    ExpectDone({"frames", Sample("cube.dds"), folder / "%d.dds"});
    EXPECT_EQ(NamesIn(folder.Path()), Words{"0.dds"});
    EXPECT_EQ(Dumped(folder / "0.dds"), Dumped(Sample("cube.dds")));
    ExpectDone({"frames", Sample("cube.dds"), folder / "face-%d.dds", "--face", "all"});
    EXPECT_EQ(NamesIn(folder.Path()).size(), 7U);
}
