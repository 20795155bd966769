#include "load/OpenInput.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <kavra/objects/OS.h>
#include <sys/stat.h>

#include <array>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

/// One half-transparent pixel: (100, 50, 25, 128).
std::filesystem::path TranslucentPng(const TemporaryFolder& folder, std::string_view name) {
    const auto path = folder / name;
    OIIO::ImageSpec spec(1, 1, 4, OIIO::TypeUInt8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    const auto output = OIIO::ImageOutput::create("png");
    const std::array<unsigned char, 4> pixel{100, 50, 25, 128};
    EXPECT_TRUE(output->open(path.string(), spec) && output->write_image(OIIO::TypeUInt8, pixel.data()) &&
                output->close());
    return path;
}

TEST(OpenInput, DeliversColoursAsTheyAreStored) {
    const TemporaryFolder folder;
    const auto input = OpenInput(Wide(TranslucentPng(folder, "p.png")));
    ASSERT_NE(input, nullptr);
    std::array<unsigned char, 4> pixel{};
    ASSERT_TRUE(input->read_image(0, 0, 0, 4, OIIO::TypeUInt8, pixel.data()));
    EXPECT_EQ(pixel, (std::array<unsigned char, 4>{100, 50, 25, 128}));
}

TEST(OpenInput, FindsFilesByAnyUnicodeName) {
    const TemporaryFolder folder;
    EXPECT_NE(OpenInput(Wide(TranslucentPng(folder, "\xC3\xA9\xE7\x94\xBB\xF0\x9F\x8E\xA8.png"))), nullptr);
}

TEST(OpenInput, OpensRegularFilesOnly) {
    const TemporaryFolder folder;
    const auto pipe = folder / "pipe.png";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_directory(folder / "folder.png");
    for (const auto& path : {pipe, folder / "folder.png", folder / "missing.png", folder / "x.null",
                             std::filesystem::path("/dev/null"), std::filesystem::path()}) {
        EXPECT_EQ(OpenInput(Wide(path)), nullptr) << path;
    }
}

TEST(OpenInput, LeavesNoErrorsBehind) {
    // Unread errors pile up in the library until it gives up the process.
    const TemporaryFolder folder;
    const auto path = folder.Write("text.png", "no picture");
    EXPECT_EQ(OpenInput(Wide(path)), nullptr);
    EXPECT_FALSE(OIIO::has_error());
}

}  // namespace

TEST(OpenInput, RefusesHighThroughputJpeg2000ThatWasCutShort) {
    // The library's decoder runs past the end of such a file and takes the process with it.
    const TemporaryFolder folder;
    OIIO::ImageSpec spec(64, 64, 3, OIIO::TypeDesc::UINT8);
    OIIO::ImageBuf image(spec);
    for (OIIO::ImageBuf::Iterator<unsigned char> pixel(image); !pixel.done(); ++pixel) {
        for (int c = 0; c < 3; ++c)
            pixel[c] = static_cast<float>((pixel.x() * 37 + pixel.y() * 101 + c * 53) % 256) / 255;
    }
    const auto whole = folder / "whole.j2c";
    ASSERT_TRUE(image.write(whole.string()));
    EXPECT_NE(OpenInput(Wide(whole)), nullptr);
    const std::vector<unsigned char> bytes = ReadAll(whole);
    ASSERT_GT(bytes.size(), 1000U);
    for (const std::size_t length : {std::size_t{600}, bytes.size() / 2, bytes.size() - 1}) {
        EXPECT_EQ(OpenInput(Wide(folder.Write("cut.j2c", std::span(bytes).first(length)))), nullptr) << length;
    }
}
