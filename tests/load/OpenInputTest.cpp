#include "load/OpenInput.h"
#include "support/Loading.h"
#include "support/TemporaryFolder.h"

#include <kavra/objects/OS.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

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

/// One file of each format that the library writes here, and the project's samples.
std::vector<std::filesystem::path> FilesOfManyFormats(const TemporaryFolder& folder) {
    std::vector<std::filesystem::path> files = AllSamples();
    for (const char* extension :
         {"png",  "tif", "exr",  "jpg", "bmp", "tga", "sgi", "hdr", "ppm", "pgm",   "pfm", "gif",
          "webp", "iff", "fits", "dpx", "jp2", "j2c", "jxl", "ico", "rla", "zfile", "psd", "cin"}) {
        const auto path = folder / (std::string("file.") + extension);
        const auto output = OIIO::ImageOutput::create(path.string());
        const int channels = std::string_view(extension) == "zfile" || std::string_view(extension) == "pgm" ? 1 : 3;
        OIIO::ImageSpec spec(64, 64, channels, OIIO::TypeUInt8);
        const std::vector<unsigned char> pixels(64 * 64 * 3, 77);
        if (output && output->open(path.string(), spec) && output->write_image(OIIO::TypeUInt8, pixels.data()) &&
            output->close()) {
            files.push_back(path);
        }
    }
    return files;
}

TEST(OpenInput, FindsTheReaderThatTheLibraryFindsUnderAnyName) {
    const TemporaryFolder folder;
    const auto files = FilesOfManyFormats(folder);
    EXPECT_GT(files.size(), 25U);
    for (const auto& file : files) {
        for (const std::string extension :
             {file.extension().string().c_str(), ".unknown", "", ".png", ".tga", ".dcm", ".CR2"}) {
            const auto path = folder / ("renamed" + extension);
            std::filesystem::copy_file(file, path, std::filesystem::copy_options::overwrite_existing);
            const OIIO::ImageSpec config;
            const auto expected = OIIO::ImageInput::open(path.string(), &config);
            (void)OIIO::geterror();
            const auto found = OpenInput(Wide(path));
            ASSERT_EQ(found != nullptr, expected != nullptr) << file << extension;
            if (!found) continue;
            EXPECT_STREQ(found->format_name(), expected->format_name()) << file << extension;
        }
    }
}

TEST(OpenInput, GivesTheHighThroughputDecoderNothingElse) {
    // The library would: it runs past the end of what is no JPEG 2000, and with it goes the process.
    const TemporaryFolder folder;
    for (const auto& file : FilesOfManyFormats(folder)) {
        const auto path = folder / "renamed.jp2";
        std::filesystem::copy_file(file, path, std::filesystem::copy_options::overwrite_existing);
        const auto found = OpenInput(Wide(path));
        const auto original = OpenInput(Wide(file));
        EXPECT_EQ(found != nullptr, original != nullptr) << file;
    }
}

/// What this process has read so far, from whatever there is.
std::uint64_t BytesRead() {
    std::ifstream io("/proc/self/io");
    std::string name;
    std::uint64_t bytes = 0;
    EXPECT_TRUE(io >> name >> bytes && name == "rchar:");
    return bytes;
}

TEST(OpenInput, RefusesGigabytesOfNothingWithoutReadingThem) {
    const TemporaryFolder folder;
    for (const char* name : {"zeros.unknown", "zeros.tga", "zeros.png", "zeros.jp2", "zeros.dcm", "zeros.iff"}) {
        const auto path = folder.Write(name, "");
        std::filesystem::resize_file(path, std::uintmax_t{3} << 30);
        const std::uint64_t before = BytesRead();
        EXPECT_EQ(OpenInput(Wide(path)), nullptr) << name;
        EXPECT_LT(BytesRead() - before, 64U << 20) << name;
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
