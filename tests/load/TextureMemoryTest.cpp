// How much memory a load at a smaller size takes.

#include "load/TextureFiles.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;

class TextureMemory : public testing::Test {
protected:
    /// Grows slowly to the right and down, in every channel at another pace.
    std::filesystem::path Write(const std::string& name, int side,
                                const std::function<void(ImageSpec&)>& details = {}) {
        ImageSpec spec(side, side, 3, OIIO::TypeUInt8);
        if (details) details(spec);
        Bytes pixels(spec.image_pixels() * 3);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const std::size_t x = i / 3 % static_cast<std::size_t>(side), y = i / 3 / static_cast<std::size_t>(side);
            pixels[i] = static_cast<unsigned char>((x * (i % 3 + 1) + y) / 16);
        }
        return WritePicture(folder / name, spec, pixels);
    }
    TemporaryFolder folder;
};

// --- Blocks ----------------------------------------------------------------------------------------------------------

/// Whether a file loads at an eighth of its size where no block may have so many bytes as the picture.
bool LoadsInPart(const std::filesystem::path& path, int side, int type = Other) {
    Objects::ObjModel::SetBlockCeiling(static_cast<std::size_t>(side * side * 4 - 1));
    const bool loads = LoadFile(path, {.width = side / 8, .height = side / 8}, type).loaded;
    EXPECT_FALSE(LoadFile(path, {}, type)) << path << " whole";
    Objects::ObjModel::SetBlockCeiling(0);
    return loads;
}

TEST_F(TextureMemory, APictureThatNoBlockHoldsIsLoadedAtASmallerSize) {
    constexpr int kSide = 2048;
    for (const char* name : {"a.png", "a.jpg", "a.tif", "a.bmp", "a.sgi"})
        EXPECT_TRUE(LoadsInPart(Write(name, kSide), kSide)) << name;
    EXPECT_TRUE(LoadsInPart(Write("a.exr", kSide), kSide, OpenEXR));
    const auto tiles = [](ImageSpec& spec) { spec.tile_width = spec.tile_height = 64; };
    EXPECT_TRUE(LoadsInPart(Write("tiles.tif", kSide, tiles), kSide));
}

TEST_F(TextureMemory, WhatTheLibraryHoldsWholeByItselfIsBoundAsAWhole) {
    constexpr int kSide = 2048;
    for (const char* name : {"a.tga", "a.webp", "a.ppm"})
        EXPECT_FALSE(LoadsInPart(Write(name, kSide), kSide)) << name;
    const auto progressive = [](ImageSpec& spec) { spec.attribute("jpeg:progressive", 1); };
    EXPECT_FALSE(LoadsInPart(Write("progressive.jpg", kSide, progressive), kSide));
}

// --- The process -----------------------------------------------------------------------------------------------------

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // which keep memory that was freed
/// A figure of the process in kilobytes, as the system keeps it.
long Kilobytes(const std::string& figure) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(figure + ":")) return std::stol(line.substr(figure.size() + 1));
    }
    return -1;
}

/// What a load takes at a time at most, beyond what the process has.
long PeakKilobytes(const std::filesystem::path& path, const LoadRequest& request) {
    Objects::ObjModel::ReleaseKeptBlock();
    std::ofstream("/proc/self/clear_refs") << "5" << std::flush;  // makes the peak what is there now
    const long before = Kilobytes("VmRSS");
    EXPECT_TRUE(LoadFile(path, request));
    return Kilobytes("VmHWM") - before;
}

TEST_F(TextureMemory, AnEighthOfALargePictureTakesAFewRows) {
    constexpr int kSide = 4096;
    const LoadRequest small = {.width = kSide / 8, .height = kSide / 8};
    const auto compression = [](const char* name) {
        return [=](ImageSpec& spec) { spec.attribute("compression", name); };
    };
    const auto tiles = [](ImageSpec& spec) { spec.tile_width = spec.tile_height = 256; };
    const std::filesystem::path files[] = {Write("a.jpg", kSide), Write("a.png", kSide),
                                           Write("plain.tif", kSide, compression("none")),
                                           Write("a.tif", kSide, compression("zip")), Write("tiles.tif", kSide, tiles)};
    for (const auto& path : files) {
        (void)LoadFile(path, small);  // what is set up once
        // A row of tiles has 3 MiB, and the library and the load each hold it more than once.
        EXPECT_LT(PeakKilobytes(path, small), 24 * 1024) << path;
    }
    EXPECT_GT(PeakKilobytes(files[0], {}), 60 * 1024) << "the whole picture: 64 MiB";
}
#endif

}  // namespace
}  // namespace Kavra::Tests
