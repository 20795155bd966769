// A picture as a render target, with 8 bits a channel.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;

TEST(TargetCommand, AFloatPictureIsWrittenFromZeroToOne) {
    const TemporaryFolder folder;
    const auto in = WriteFloats(folder / "in.tif", 3, 1, 1, {0.25F, 0.5F, 0.75F});
    ExpectDone({"target", in, folder / "out.png"});
    // 63.75, 127.5 and 191.25 without their fractions.
    EXPECT_EQ(PictureFile(folder / "out.png").Bytes(), (std::vector<unsigned char>{63, 127, 191}));
}

TEST(TargetCommand, StretchMapsTheWholeRangeOfEachChannel) {
    const TemporaryFolder folder;
    const auto in = WriteFloats(folder / "in.tif", 2, 1, 4, {0.25F, -2, 100, 1, 0.75F, 2, 101, 1});
    ExpectDone({"target", in, folder / "out.png", "--stretch"});
    const PictureFile out(folder / "out.png");
    EXPECT_EQ(out.At(0, 0), (Colour{0, 0, 0, 255}));
    EXPECT_EQ(out.At(1, 0), (Colour{255, 255, 255, 255}));
}

TEST(TargetCommand, ValuesOutsideZeroToOneWidenTheRange) {
    const TemporaryFolder folder;
    const auto in = WriteFloats(folder / "in.tif", 3, 1, 1, {-1, 0, 3});
    ExpectDone({"target", in, folder / "out.png"});
    EXPECT_EQ(PictureFile(folder / "out.png").Bytes(), (std::vector<unsigned char>{0, 63, 255}));
}

TEST(TargetCommand, EightBitColoursAreWrittenAsTheyAre) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 5, 4, [](int x, int y) { return Colour{x * 50, y * 60, 9, 77}; });
    for (const Words& options : {Words{}, {"--stretch"}}) {
        ExpectDone(Joined({{"target", in, folder / "out.png"}, options}));
        EXPECT_EQ(PictureFile(folder / "out.png").Bytes(), PictureFile(in).Bytes());
    }
}

TEST(TargetCommand, EveryGreyOfAFormatThatIsNoTargetComesThroughTheFloats) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 256, 1, [](int x, int) { return Colour{x}; });
    ExpectDone({"target", in, folder / "out.png"});
    const PictureFile out(folder / "out.png");
    for (int v = 0; v < 256; ++v)
        EXPECT_EQ(out.At(v, 0), (Colour{v, v, v, 255}));
}

TEST(TargetCommand, ASixteenBitPictureIsStretchedToo) {
    const TemporaryFolder folder;
    OIIO::ImageSpec spec(3, 1, 1, OIIO::TypeDesc::UINT16);
    OIIO::ImageBuf image(spec);
    for (int x = 0; x < 3; ++x)
        image.setpixel(x, 0, OIIO::cspan<float>({static_cast<float>(1000 + 500 * x) / 65535}));
    const auto in = folder / "in.png";
    ASSERT_TRUE(image.write(in.string()));
    ExpectDone({"target", in, folder / "out.png", "--stretch"});
    const PictureFile out(folder / "out.png");
    EXPECT_EQ(out.At(0, 0), (Colour{0, 0, 0, 255}));
    EXPECT_NEAR(out.At(1, 0)[0], 127, 1);
    EXPECT_EQ(out.At(2, 0), (Colour{255, 255, 255, 255}));
}

TEST(TargetCommand, TheHostsOwnThreeFloatsAreTaken) {
    const TemporaryFolder folder;
    ExpectDone({"target", Sample("depth.exr"), folder / "out.png", "--stretch"});
    const PictureFile out(folder / "out.png");
    EXPECT_EQ(out.Size(), "96x64");
    EXPECT_EQ(*std::ranges::max_element(out.Bytes()), 255);
}

TEST(TargetCommand, OpenExrRowsStayAsDisplayedWhateverTheirLineOrder) {
    const TemporaryFolder folder;
    for (const std::string order : {"increasingY", "decreasingY"}) {
        OIIO::ImageSpec spec(1, 2, 3, OIIO::TypeDesc::FLOAT);
        spec.attribute("openexr:lineOrder", order);
        OIIO::ImageBuf image(spec);
        image.setpixel(0, 0, OIIO::cspan<float>({1, 1, 1}));
        image.setpixel(0, 1, OIIO::cspan<float>({0, 0, 0}));
        const auto in = folder / (order + ".exr");
        ASSERT_TRUE(image.write(in.string()));
        ExpectDone({"target", in, folder / "out.png"});
        EXPECT_EQ(PictureFile(folder / "out.png").At(0, 0)[0], 255) << order;
    }
}

TEST(TargetCommand, WhatCannotBeWrittenIsSaidAndLeavesNothing) {
    const TemporaryFolder folder;
    const auto photo = Sample("photo.tga");
    const auto ppm = folder / "x.ppm", bare = folder / "x", unknown = folder / "x.unknown";
    ExpectFailed({"target", photo, ppm},
                 ErrorLine(ppm, "cannot be written: .ppm files hold one or three channels, and kR8G8B8A8 has 4"));
    ExpectFailed({"target", photo, bare},
                 ErrorLine(bare, "cannot be written: the name has no extension to choose a file type by"));
    const ProgramResult result = RunKavra({"target", photo, unknown});
    EXPECT_EQ(result.status, 1);
    const std::string start = ErrorLine(unknown, "cannot be written: no .unknown files are written; these are: ");
    EXPECT_TRUE(result.error.starts_with(start.substr(0, start.size() - 1))) << result.error;
    EXPECT_EQ(NamesIn(folder.Path()), Words());
}
