// A picture beside and below itself, written line by line.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <thread>

using namespace Kavra::Tests;

namespace {

/// Repeats a 5 x 3 picture with this many channels.
PictureFile Tiled(const TemporaryFolder& folder, const std::string& extension, std::size_t channels) {
    const auto in = WritePicture(folder / "in.png", 5, 3, [&](int x, int y) {
        Colour colour = {x * 40, y * 80, 200, 100 + x};
        colour.resize(channels);
        return colour;
    });
    const auto out = folder / ("out." + extension);
    ExpectDone({"tile", in, out, "--repeat", "4x3"});
    return PictureFile(out);
}

void ExpectTiles(const PictureFile& out, std::size_t channels, const std::string& what) {
    ASSERT_EQ(out.Size(), "20x9") << what;
    for (int y = 0; y < out.Height(); ++y) {
        for (int x = 0; x < out.Width(); ++x) {
            Colour expected = {x % 5 * 40, y % 3 * 80, 200, 100 + x % 5};
            expected.resize(channels);
            EXPECT_EQ(out.At(x, y), expected) << what << " " << x << "," << y;
        }
    }
}

}  // namespace

TEST(TileCommand, ThePictureStandsBesideAndBelowItself) {
    const TemporaryFolder folder;
    for (const std::string extension : {"tif", "png", "bmp", "tga", "sgi"})
        ExpectTiles(Tiled(folder, extension, 4), 4, extension);
    for (const std::string extension : {"TIFF", "png"})
        ExpectTiles(Tiled(folder, extension, 3), 3, extension);
}

TEST(TileCommand, OpenExrAndJpegAreWrittenTooWithWhatTheyCanHold) {
    const TemporaryFolder folder;
    const PictureFile exr = Tiled(folder, "exr", 4);
    EXPECT_EQ(exr.Spec().nchannels, 4);
    EXPECT_EQ(exr.At(19, 8), (Colour{160, 160, 200, 104}));
    const PictureFile jpeg = Tiled(folder, "jpg", 4);
    EXPECT_EQ(jpeg.Size(), "20x9");
    EXPECT_EQ(jpeg.Spec().nchannels, 3);
}

TEST(TileCommand, GreyAndFloatPicturesBecomeColours) {
    const TemporaryFolder folder;
    const auto grey = WritePicture(folder / "grey.png", 2, 1, [](int x, int) { return Colour{x * 99 + 1}; });
    ExpectDone({"tile", grey, folder / "out.png", "--repeat", "1x2"});
    EXPECT_EQ(PictureFile(folder / "out.png").Bytes(),
              (std::vector<unsigned char>{1, 1, 1, 100, 100, 100, 1, 1, 1, 100, 100, 100}));
    const auto floats = WriteFloats(folder / "floats.tif", 2, 1, 3, {0, 0.5F, 1, -1, 2, 0.25F});
    ExpectDone({"tile", floats, folder / "out.png", "--repeat", "1x1"});
    EXPECT_EQ(PictureFile(folder / "out.png").Bytes(), (std::vector<unsigned char>{0, 128, 255, 0, 255, 64}));
}

TEST(TileCommand, TheResolutionIsRecorded) {
    const TemporaryFolder folder;
    const auto resolution = [&](const Words& more) {
        ExpectDone(Joined({{"tile", Sample("photo.tga"), folder / "out.tif", "--repeat", "2x2"}, more}));
        const PictureFile out(folder / "out.tif");
        EXPECT_EQ(out.Spec().get_string_attribute("ResolutionUnit"), "in");
        EXPECT_EQ(out.Spec().get_float_attribute("XResolution"), out.Spec().get_float_attribute("YResolution"));
        return out.Spec().get_float_attribute("XResolution");
    };
    EXPECT_EQ(resolution({}), 72);
    EXPECT_EQ(resolution({"--dpi", "300"}), 300);
}

TEST(TileCommand, SizesThatTheFileTypeCannotHoldAreRefusedBeforeAnyWork) {
    const TemporaryFolder folder;
    struct Case {
        std::string name, repeat, text;
    };
    const std::vector<Case> cases = {
        {"x.jpg", "1x1000", "120 x 80000 pixels, and .jpg files hold 65500 a side"},
        {"x.tga", "1000x1", "120000 x 80 pixels, and .tga files hold 65535 a side"},
        {"x.png", "10000x1", "1200000 x 80 pixels, and .png files hold 1000000 a side"},
        {"x.bmp", "500x500", "60000 x 40000 pixels, and .bmp files hold 4 GB"},
        {"x.tif", "2147483647x2147483647", "257698037640 x 171798691760 pixels, and .tif files hold 536870911 a side"},
    };
    for (const Case& row : cases) {
        const auto out = folder / row.name;
        ExpectFailed({"tile", Sample("photo.tga"), out, "--repeat", row.repeat},
                     ErrorLine(out, "cannot be written: " + row.text));
    }
    EXPECT_EQ(NamesIn(folder.Path()), Words());
}

TEST(TileCommand, AnOutputThatCannotBeWrittenIsSaidBeforeAnyWork) {
    const TemporaryFolder folder;
    const auto out = folder / "folder.png";
    std::filesystem::create_directory(out);
    ExpectFailed({"tile", "/nonexistent/in.png", out, "--repeat", "2x2"},
                 ErrorLine(out, "cannot be written: Is a directory"));
}

TEST(TileCommand, AnInterruptedRunLeavesTheOldFileAndNothingElse) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 100, 100, PlaceColour);
    const auto out = folder / "out.tif";
    folder.Write("out.tif", "old");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        RunningKavra program({"tile", in, out, "--repeat", "300x3000"});
        while (NamesIn(folder.Path()).size() < 3)  // until the hidden file is there
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        program.Signal(signal);
        EXPECT_EQ(program.Wait().status, 128 + signal);
        EXPECT_EQ(NamesIn(folder.Path()), (Words{"in.png", "out.tif"}));
        EXPECT_EQ(TextOf(out), "old");
    }
}
