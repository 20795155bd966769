// Textures that change their size are read band by band: the pixels are those of the whole picture, resized.

#include "load/DdsFile.h"
#include "load/TextureFiles.h"
#include "load/geometry/Reshape.h"
#include "support/MessageRecorder.h"

#include <kavra/devices/ImageLimits.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

constexpr int kWidth = 1030, kHeight = 821;  // more rows than a band has, and no round number of bands, strips, tiles

Bytes Noise(std::size_t count) {
    std::minstd_rand random(7);
    Bytes bytes(count);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random() >> 8);
    return bytes;
}

/// A kind of file: what it is called, what its pixels are, and what else the writer is told.
struct FileKind {
    std::string name;
    int channels = 3;
    TypeDesc type = OIIO::TypeUInt8;
    std::function<void(ImageSpec&)> details = [](ImageSpec&) {};
};

std::ostream& operator<<(std::ostream& out, const FileKind& kind) {
    return out << kind.name;
}

std::function<void(ImageSpec&)> Strips(int rows, const char* compression, const char* planes = "contig") {
    return [=](ImageSpec& spec) {
        spec.attribute("tiff:RowsPerStrip", rows);
        spec.attribute("compression", compression);
        spec.attribute("planarconfig", planes);
    };
}

std::function<void(ImageSpec&)> Tiles(int width, int height, const char* planes = "contig") {
    return [=](ImageSpec& spec) {
        spec.tile_width = width, spec.tile_height = height;
        spec.attribute("planarconfig", planes);
    };
}

std::function<void(ImageSpec&)> Channels(std::vector<std::string> names, int alpha = -1) {
    return [=](ImageSpec& spec) {
        spec.channelnames = names;
        spec.alpha_channel = alpha;
    };
}

std::vector<FileKind> FileKinds() {
    const auto u16 = OIIO::TypeUInt16, half = OIIO::TypeHalf, real = OIIO::TypeFloat, u8 = OIIO::TypeUInt8;
    return {
        {"rgb.png"},
        {"rgba.png", 4},
        {"grey.png", 1},
        {"deep.png", 4, u16},
        {"grey_alpha.png", 2},
        {"rgb.jpg"},
        {"grey.jpg", 1},
        {"rgb.bmp"},
        {"rgba.sgi", 4},
        {"rgb.dpx", 3, u16},
        {"rgb.ppm"},
        {"rgb.hdr", 3, real},
        {"rgba.tga", 4},
        {"rgb.webp"},
        {"row_strips.tif", 3, u8, Strips(1, "zip")},
        {"odd_strips.tif", 3, u8, Strips(7, "zip")},
        {"one_strip_zip.tif", 3, u8, Strips(kHeight, "zip")},
        {"one_strip_plain.tif", 3, u8, Strips(kHeight, "none")},
        {"one_strip_lzw.tif", 3, u8, Strips(kHeight, "lzw")},
        {"one_strip_packbits.tif", 4, u8, Strips(kHeight, "packbits")},
        {"strip_beyond_the_picture.tif", 3, u8, Strips(100'000, "lzw")},
        {"planes.tif", 4, u8, Strips(50, "lzw", "separate")},
        {"planes_of_one_strip.tif", 3, u8, Strips(kHeight, "none", "separate")},
        {"deep.tif", 4, u16, Strips(13, "zip")},
        {"deep_grey.tif", 1, u16, Strips(kHeight, "zip")},
        {"float.tif", 3, real, Strips(9, "lzw")},
        {"two_channels.tif", 2, u8, Channels({"Y", "A"}, 1)},
        {"five_channels.tif", 5},
        {"tiles.tif", 3, u8, Tiles(64, 48)},
        {"tiles_of_floats.tif", 4, real, Tiles(256, 256)},
        {"tiles_of_planes.tif", 3, u8, Tiles(64, 64, "separate")},
        {"tiles_as_high_as_the_picture.tif", 3, u8, Tiles(16, 832)},
        {"half.exr", 3, half},
        {"float.exr", 4, real},
        {"high_blocks.exr", 3, half, [](ImageSpec& spec) { spec.attribute("compression", "dwab"); }},
        {"tiles.exr", 4, half, Tiles(100, 90)},
        {"red.exr", 1, half, Channels({"R"})},
        {"blue.exr", 1, half, Channels({"B"})},
        {"luminance.exr", 1, half, Channels({"Y"})},
        {"cropped.exr", 4, half,
         [](ImageSpec& spec) {
             spec.x = 37, spec.y = -55;
             spec.full_width = 4000, spec.full_height = 3000;
         }},
    };
}

int TypeOf(const std::filesystem::path& path) {
    return path.extension() == ".exr" ? OpenEXR : path.extension() == ".dds" ? DDS : Other;
}

/// What a load at another size should give: the picture loaded whole, and then resized.
Bytes Resized(const LoadedTexture& whole, const LoadRequest& request) {
    const int faces = whole.desc.textureType == kTextureCube ? 6 : 1;
    Raster raster =
        PackedRaster(whole.desc.format, whole.desc.width, whole.desc.height, whole.bytes.data(), whole.bytes.size());
    raster.faces = faces;
    raster = Reshape(std::move(raster), ReshapingFor(request, request.width, request.height, kTopLeft));
    return Bytes(raster.first, raster.first + raster.PackedBytes());
}

void ExpectResized(const std::filesystem::path& path, const LoadRequest& request) {
    const LoadedTexture whole = LoadFile(path, {.format = request.format}, TypeOf(path));
    const LoadedTexture texture = LoadFile(path, request, TypeOf(path));
    ASSERT_EQ(texture.loaded, whole.loaded);
    if (!whole) return;
    EXPECT_TRUE(texture.bytes == Resized(whole, request));
    EXPECT_EQ(texture.desc.hasAlpha, whole.desc.hasAlpha);
    EXPECT_EQ(texture.desc.width, request.width);
    EXPECT_EQ(texture.desc.height, request.height);
    EXPECT_EQ(texture.desc.gamma, whole.desc.gamma);
}

class TextureBands : public testing::Test {
protected:
    std::filesystem::path Write(const FileKind& kind, int width = kWidth, int height = kHeight) {
        ImageSpec spec(width, height, kind.channels, kind.type);
        kind.details(spec);
        return WritePicture(folder / kind.name, spec,
                            Noise(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels)));
    }
    TemporaryFolder folder;
    MessageRecorder messages;
};

class BandsOf : public TextureBands, public testing::WithParamInterface<FileKind> {};

// Nine tenths of the size are sampled, so that nearly every pixel is seen as it is.

TEST_P(BandsOf, AreTheRowsOfTheWholePicture) {
    ExpectResized(Write(GetParam()), {.width = kWidth - 40, .height = kHeight - 40});
}

TEST_P(BandsOf, AreConvertedLikeTheWholePicture) {
    const auto path = Write(GetParam());
    for (const EFormat format : {kB8G8R8A8, kR32G32B32A32F})
        ExpectResized(path, {.width = kWidth - 40, .height = kHeight - 40, .format = format});
    EXPECT_TRUE(messages.Texts().empty());
}

TEST_P(BandsOf, GiveOfADamagedFileWhatTheWholePictureGives) {
    const auto path = Write(GetParam());
    const auto bytes = std::filesystem::file_size(path);
    for (const auto size : {bytes - 3, bytes * 3 / 4}) {
        std::filesystem::resize_file(path, size);
        ExpectResized(path, {.width = kWidth - 40, .height = kHeight - 40});
    }
}

INSTANTIATE_TEST_SUITE_P(EveryKind, BandsOf, testing::ValuesIn(FileKinds()), [](const auto& info) {
    std::string name = info.param.name;
    std::ranges::replace(name, '.', '_');
    return name;
});

// --- Luminance that is its alpha -------------------------------------------------------------------------------------

TEST_F(TextureBands, AMaskIsOneOnlyIfItsLastRowsAreToo) {
    const ImageSpec spec(kWidth, 2 * kHeight, 2, OIIO::TypeUInt8);
    Bytes pixels = Noise(spec.image_pixels() * 2);
    for (std::size_t i = 0; i < pixels.size(); i += 2)
        pixels[i + 1] = pixels[i];
    const LoadRequest request = {.width = kWidth - 40, .height = 2 * kHeight - 80};
    const auto mask = WritePicture(folder / "mask.png", spec, pixels);
    ExpectResized(mask, request);
    EXPECT_FALSE(LoadFile(mask, request).desc.hasAlpha);
    pixels.back() ^= 1;
    const auto other = WritePicture(folder / "other.png", spec, pixels);
    ExpectResized(other, request);
    EXPECT_TRUE(LoadFile(other, request).desc.hasAlpha);
}

// --- Faces -----------------------------------------------------------------------------------------------------------

TEST_F(TextureBands, OfACubeMapAreItsFaces) {
    for (const std::uint32_t faces : {0x3FU, 0x2DU}) {
        DdsFile cube{.width = 96, .height = 96, .faces = faces};
        cube.data = Noise(static_cast<std::size_t>(96 * 96 * 4 * std::popcount(faces)));
        const auto path = folder.Write("cube.dds", cube.Bytes());
        for (const EFormat format : {kUnknown, kB8G8R8A8, kR32G32B32A32F, kL8})
            ExpectResized(path, {.width = 92, .height = 91, .format = format});
        ExpectResized(path, {.width = 20, .height = 30});
        std::filesystem::resize_file(path, 96 * 96 * 4 * 3);
        EXPECT_FALSE(LoadFile(path, {.width = 92, .height = 91}, DDS));
    }
}

// --- Memory ----------------------------------------------------------------------------------------------------------

TEST_F(TextureBands, AllowNoPictureThatTheHostsLimitsRefuse) {
    const auto path = Write({"rgb.png"});
    const std::uint64_t bytes = std::uint64_t{kWidth} * kHeight * 4;
    const LoadRequest request = {.width = 16, .height = 16};
    const auto loadsWithin = [&](ImageLimits limits) {
        SetImageLimits(limits);
        const bool loaded = LoadFile(path, request).loaded;
        SetImageLimits({});
        return loaded;
    };
    EXPECT_FALSE(loadsWithin({.maxBytes = bytes - 1}));
    EXPECT_TRUE(loadsWithin({.maxBytes = bytes}));
    EXPECT_FALSE(loadsWithin({.maxPixels = std::uint64_t{kWidth} * kHeight - 1}));
}

}  // namespace
}  // namespace Kavra::Tests
