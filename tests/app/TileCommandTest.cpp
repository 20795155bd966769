#include "app/PictureFiles.h"
#include "support/Program.h"
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
    const ProgramResult result = RunKavra({"tile", in, out, "--repeat", "4x3"});
    EXPECT_EQ(result.status, 0) << extension << result.error;
    return PictureFile(out);
}

void ExpectTiles(const PictureFile& out, std::size_t channels, const std::string& what) {
    EXPECT_EQ(out.Width(), 20) << what;
    EXPECT_EQ(out.Height(), 9) << what;
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
    EXPECT_EQ(jpeg.Width(), 20);
    EXPECT_EQ(jpeg.Height(), 9);
    EXPECT_EQ(jpeg.Spec().nchannels, 3);
}

TEST(TileCommand, GreyAndFloatPicturesBecomeColours) {
    const TemporaryFolder folder;
    const auto grey = WritePicture(folder / "grey.png", 2, 1, [](int x, int) { return Colour{x * 99 + 1}; });
    ASSERT_EQ(RunKavra({"tile", grey, folder / "out.png", "--repeat", "1x2"}).status, 0);
    EXPECT_EQ(PictureFile(folder / "out.png").Bytes(),
              (std::vector<unsigned char>{1, 1, 1, 100, 100, 100, 1, 1, 1, 100, 100, 100}));
    const auto floats = WriteFloats(folder / "floats.tif", 2, 1, 3, {0, 0.5F, 1, -1, 2, 0.25F});
    ASSERT_EQ(RunKavra({"tile", floats, folder / "out.png", "--repeat", "1x1"}).status, 0);
    EXPECT_EQ(PictureFile(folder / "out.png").Bytes(), (std::vector<unsigned char>{0, 128, 255, 0, 255, 64}));
}

TEST(TileCommand, TheResolutionIsRecorded) {
    const TemporaryFolder folder;
    const auto resolution = [&](const std::vector<std::string>& more) {
        std::vector<std::string> arguments = {"tile", Sample("photo.tga"), folder / "out.tif", "--repeat", "2x2"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(RunKavra(arguments).status, 0);
        const PictureFile out(folder / "out.tif");
        EXPECT_EQ(out.Spec().get_string_attribute("ResolutionUnit"), "in");
        EXPECT_EQ(out.Spec().get_float_attribute("XResolution"), out.Spec().get_float_attribute("YResolution"));
        return out.Spec().get_float_attribute("XResolution");
    };
    EXPECT_EQ(resolution({}), 72);
    EXPECT_EQ(resolution({"--dpi", "300"}), 300);
}

TEST(TileCommand, ThePictureIsUpright) {
    const TemporaryFolder folder;
    ASSERT_EQ(RunKavra({"tile", Sample("photo-orientation-8.jpg"), folder / "out.png", "--repeat", "2x1"}).status, 0);
    EXPECT_EQ(PictureFile(folder / "out.png").Width(), 80);
    EXPECT_EQ(PictureFile(folder / "out.png").Height(), 60);
}

TEST(TileCommand, FileTypesThatAreNotWrittenLineByLineAreRefusedBeforeAnyWork) {
    const TemporaryFolder folder;
    for (const std::string name : {"out.gif", "out.jp2", "out.webp", "out.dds", "out.hdr", "out"}) {
        const ProgramResult result = RunKavra({"tile", "/nonexistent/in.png", folder / name, "--repeat", "2x2"});
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_EQ(result.error, "kavra: tile: error: " + (folder / name).string() +
                                    " cannot be written line by line; tif, png, jpg, bmp, tga, sgi and exr can\n");
    }
    EXPECT_EQ(CountFiles(folder.Path()), 0U);
}

TEST(TileCommand, SizesThatTheFileTypeCannotHoldAreRefusedBeforeAnyWork) {
    const TemporaryFolder folder;
    struct Case {
        std::string name;
        std::string repeat;
        std::string text;
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
        const ProgramResult result = RunKavra({"tile", Sample("photo.tga"), out, "--repeat", row.repeat});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.error, "kavra: " + out.string() + ": error: cannot be written: " + row.text + "\n");
    }
    EXPECT_EQ(CountFiles(folder.Path()), 0U);
}

TEST(TileCommand, AnOutputThatCannotBeWrittenIsSaidBeforeAnyWork) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder.png");
    const ProgramResult result = RunKavra({"tile", "/nonexistent/in.png", folder / "folder.png", "--repeat", "2x2"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error,
              "kavra: " + (folder / "folder.png").string() + ": error: cannot be written: Is a directory\n");
}

TEST(TileCommand, TheSameFileMayBeInputAndOutput) {
    const TemporaryFolder folder;
    const auto file = WritePicture(folder / "file.png", 6, 4, PlaceColour);
    EXPECT_EQ(RunKavra({"tile", file, file, "--repeat", "3x2"}).status, 0);
    EXPECT_EQ(PictureFile(file).At(17, 7), PlaceColour(5, 3));
    EXPECT_EQ(CountFiles(folder.Path()), 1U);
}

TEST(TileCommand, AnInterruptedRunLeavesTheOldFileAndNothingElse) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 100, 100, PlaceColour);
    const auto out = folder / "out.tif";
    folder.Write("out.tif", "old");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        RunningKavra program({"tile", in, out, "--repeat", "300x3000"});
        while (CountFiles(folder.Path()) < 3)  // until the hidden file is there
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        program.Signal(signal);
        EXPECT_EQ(program.Wait().status, 128 + signal);
        EXPECT_EQ(CountFiles(folder.Path()), 2U);
        EXPECT_EQ(ReadAll(out), (std::vector<unsigned char>{'o', 'l', 'd'}));
    }
}
