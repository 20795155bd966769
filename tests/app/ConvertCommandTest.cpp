// A file to a file, or many files into a folder.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <thread>

using namespace Kavra::Tests;

TEST(ConvertCommand, OneFileToAFileKeepsThePixels) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("cutout.png"), folder / "cutout.tif"});
    EXPECT_EQ(PictureFile(folder / "cutout.tif").Bytes(), PictureFile(Sample("cutout.png")).Bytes());
}

TEST(ConvertCommand, SeveralFilesGoToAFolderThatIsMade) {
    const TemporaryFolder folder;
    const auto out = folder / "new/folder";
    ExpectDone({"convert", Sample("photo.tga"), Sample("grey.png"), out, "--to", "bmp"}, "kavra: 2 written\n");
    EXPECT_EQ(NamesIn(out), (Words{"grey.bmp", "photo.bmp"}));
}

TEST(ConvertCommand, AFlatFileOfACubeMapIsItsFirstFaceWithANote) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("cube.dds"), folder / "face.png"},
               NoteLine(Sample("cube.dds"), "a cube map; only its first face was written"));
    const auto faces = Dumped(Sample("cube.dds"));
    std::vector<unsigned char> colours;  // all is opaque
    for (std::size_t i = 0; i < std::size_t{64} * 64 * 4; ++i) {
        if (i % 4 != 3) colours.push_back(faces[i]);
    }
    EXPECT_EQ(PictureFile(folder / "face.png").Bytes(), colours);
}

TEST(ConvertCommand, ADdsOfACubeMapOrVolumeKeepsAllOfIt) {
    const TemporaryFolder folder;
    for (const std::string name : {"cube.dds", "volume.dds"}) {
        ExpectDone({"convert", Sample(name), folder / name});
        EXPECT_EQ(Dumped(folder / name), Dumped(Sample(name))) << name;
    }
}

TEST(ConvertCommand, OrientedPhotosComeOutUpright) {
    const TemporaryFolder folder;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const auto photo = Sample("photo-orientation-" + std::to_string(orientation) + ".jpg");
        ExpectDone({"convert", photo, folder / "out.png"});
        EXPECT_EQ(PictureFile(folder / "out.png").Size(), "40x60") << orientation;
    }
}

TEST(ConvertCommand, AFailedWriteSaysWhyAndLeavesNothing) {
    const TemporaryFolder folder;
    const auto blocker = folder.Write("file", "no folder");
    const auto inFile = blocker / "sub/x.png";
    const auto failed = [](const std::filesystem::path& out, const std::string& reason) {
        return std::pair(out, ErrorLine(out, "cannot be written" + reason));
    };
    const std::vector<std::pair<std::filesystem::path, std::string>> cases = {
        failed(folder / "x", ": the name has no extension to choose a file type by"),
        failed(folder / "x.zfile", ": .zfile files cannot be read back"),
        {inFile, WarningLine(inFile, "fail to create specified folder") +
                     ErrorLine(inFile, "cannot be written: Not a directory")},
    };
    for (const auto& [out, said] : cases) {
        ExpectFailed({"convert", Sample("photo.tga"), out}, said);
        EXPECT_EQ(NamesIn(folder.Path()), Words{"file"}) << out;
    }
}

TEST(ConvertCommand, ALinkIsWrittenThrough) {
    const TemporaryFolder folder;
    folder.Write("target.png", "old");
    std::filesystem::create_symlink(folder / "target.png", folder / "link.png");
    ExpectDone({"convert", Sample("photo.tga"), folder / "link.png"});
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
    EXPECT_EQ(PictureFile(folder / "target.png").Bytes(), PictureFile(Sample("photo.tga")).Bytes());
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
        EXPECT_EQ(NamesIn(folder.Path()), Words{"large.tif"}) << milliseconds;
    }
}
