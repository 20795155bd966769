#include "app/PictureFiles.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <thread>

using namespace Kavra::Tests;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes Pixels(const std::filesystem::path& path) {
    OIIO::ImageBuf image(path.string());
    Bytes bytes(static_cast<std::size_t>(image.spec().image_pixels()) * 4);
    image.get_pixels(OIIO::ROI(0, image.spec().width, 0, image.spec().height, 0, 1, 0, 4), OIIO::TypeDesc::UINT8,
                     bytes.data());
    return bytes;
}

}  // namespace

TEST(ConvertCommand, OneFileToAFileKeepsThePixels) {
    const TemporaryFolder folder;
    EXPECT_EQ(RunKavra({"convert", Sample("cutout.png"), folder / "cutout.tif"}).status, 0);
    OIIO::ImageBuf before(Sample("cutout.png").string(), 0, 0, nullptr, nullptr);
    ASSERT_TRUE(std::filesystem::exists(folder / "cutout.tif"));
    EXPECT_EQ(Pixels(folder / "cutout.tif"), Pixels(Sample("cutout.png")));
}

TEST(ConvertCommand, SeveralFilesGoToAFolderThatIsMade) {
    const TemporaryFolder folder;
    const auto out = folder / "new/folder";
    const ProgramResult result = RunKavra({"convert", Sample("photo.tga"), Sample("grey.png"), out, "--to", "bmp"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_TRUE(std::filesystem::exists(out / "photo.bmp"));
    EXPECT_TRUE(std::filesystem::exists(out / "grey.bmp"));
    EXPECT_EQ(CountFiles(out), 2U);
}

TEST(ConvertCommand, SeveralFilesWithoutToAreWrongUsage) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"convert", Sample("photo.tga"), Sample("grey.png"), folder.Path()});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.error, "kavra: convert: error: --to is required when the output is a folder\n");
}

TEST(ConvertCommand, TwoInputsThatWouldMakeOneOutputAreRefusedBeforeAnyWork) {
    const TemporaryFolder folder;
    const ProgramResult result =
        RunKavra({"convert", Sample("photo.tga"), Sample("photo.jpg"), folder.Path(), "--to", "png"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.error.find("would both become"), std::string::npos);
    EXPECT_EQ(CountFiles(folder.Path()), 0U);
}

TEST(ConvertCommand, AFlatFileOfACubeMapIsItsFirstFaceWithANote) {
    const TemporaryFolder folder;
    const ProgramResult result = RunKavra({"convert", Sample("cube.dds"), folder / "face.png"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error,
              "kavra: " + Sample("cube.dds").string() + ": note: a cube map; only its first face was written\n");
    EXPECT_EQ(OIIO::ImageBuf((folder / "face.png").string()).spec().height, 64);
}

TEST(ConvertCommand, ADdsOfACubeMapKeepsItsFaces) {
    const TemporaryFolder folder;
    EXPECT_EQ(RunKavra({"convert", Sample("cube.dds"), folder / "cube.dds"}).error, "");
    EXPECT_EQ(RunKavra({"dump", folder / "cube.dds", "--out", folder / "copy"}).status, 0);
    EXPECT_EQ(RunKavra({"dump", Sample("cube.dds"), "--out", folder / "original"}).status, 0);
    EXPECT_EQ(ReadAll(folder / "copy"), ReadAll(folder / "original"));
}

TEST(ConvertCommand, OrientedPhotosComeOutUpright) {
    const TemporaryFolder folder;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const auto out = folder / std::to_string(orientation).append(".png");
        ASSERT_EQ(
            RunKavra({"convert", Sample("photo-orientation-" + std::to_string(orientation) + ".jpg"), out}).status, 0);
        const OIIO::ImageBuf image(out.string());
        EXPECT_EQ(image.spec().width, 40) << orientation;
    }
}

TEST(ConvertCommand, AFailedWriteSaysWhyAndLeavesNothing) {
    const TemporaryFolder folder;
    const auto blocker = folder.Write("file", "no folder");
    struct Case {
        std::filesystem::path out;
        std::string text;
    };
    const std::vector<Case> cases = {
        {folder / "x.unknown", "error: cannot be written"},
        {folder / "x", "error: cannot be written: the name has no extension to choose a file type by"},
        {folder / "x.ppm", "error: cannot be written: .ppm files hold one or three channels, and kR8G8B8A8 has 4"},
        {blocker / "sub/x.png", "warning: fail to create specified folder\nkavra: " + (blocker / "sub/x.png").string() +
                                    ": error: cannot be written: Not a directory"},
    };
    for (const Case& row : cases) {
        const ProgramResult result = RunKavra({"convert", Sample("photo.tga"), row.out});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.error, "kavra: " + row.out.string() + ": " + row.text + "\n");
        EXPECT_EQ(CountFiles(folder.Path()), 1U) << row.out;
    }
}

TEST(ConvertCommand, ALinkIsWrittenThrough) {
    const TemporaryFolder folder;
    folder.Write("target.png", "old");
    std::filesystem::create_symlink(folder / "target.png", folder / "link.png");
    EXPECT_EQ(RunKavra({"convert", Sample("photo.tga"), folder / "link.png"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
    EXPECT_GT(std::filesystem::file_size(folder / "target.png"), 100U);
}

TEST(ConvertCommand, AnInterruptedRunLeavesNeitherHalfAFileNorAHiddenOne) {
    const TemporaryFolder folder;
    const auto large = folder / "large.tif";
    {
        OIIO::ImageBuf noise(OIIO::ImageSpec(3000, 3000, 4, OIIO::TypeDesc::UINT16));
        for (OIIO::ImageBuf::Iterator<std::uint16_t> pixel(noise); !pixel.done(); ++pixel) {
            for (int c = 0; c < 4; ++c) {
                pixel[c] = static_cast<float>(
                               ((pixel.x() * 7919 + pixel.y() * 104729 + c * 31) ^ (pixel.x() * pixel.y())) % 65536) /
                           65535;
            }
        }
        ASSERT_TRUE(noise.write(large.string()));
    }
    for (const int milliseconds : {30, 150, 400, 800}) {
        RunningKavra program({"convert", large, folder / "out.png"});
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        program.Signal(SIGTERM);
        const ProgramResult result = program.Wait();
        if (result.status == 0) break;  // it was faster than the signal
        EXPECT_EQ(result.status, 128 + SIGTERM);
        EXPECT_EQ(CountFiles(folder.Path()), 1U) << milliseconds;
    }
}
