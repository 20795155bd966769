// Loads that may begin with a smaller picture of the file.

#include "load/DdsFile.h"
#include "load/TextureFiles.h"
#include "support/MessageRecorder.h"
#include "support/Program.h"

#include <gtest/gtest.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;

LoadRequest Fast(LoadRequest request) {
    request.preferences.fast = true;
    return request;
}

class FastLoad : public testing::Test {
protected:
    TemporaryFolder folder;
    MessageRecorder messages;
};

// --- JPEG ------------------------------------------------------------------------------------------------------------

/// Squares of 8 x 8 pixels of one colour each, which an eighth of a JPEG keeps apart and a filter does not.
Bytes Squares(int side, int channels) {
    Bytes pixels;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const bool isLight = (x / 8 + y / 8) % 2 == 0;
            for (int c = 0; c < channels; ++c)
                pixels.push_back(isLight ? static_cast<unsigned char>(250 - 60 * c)
                                         : static_cast<unsigned char>(5 + 20 * c));
        }
    }
    return pixels;
}

int GreatestDifference(const Bytes& a, const Bytes& b) {
    EXPECT_EQ(a.size(), b.size());
    int greatest = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        greatest = std::max(greatest, std::abs(a[i] - b[i]));
    return greatest;
}

TEST_F(FastLoad, AnEighthOfAJpegIsTheMeanOfEachBlock) {
    for (const int channels : {1, 3}) {
        ImageSpec spec(64, 64, channels, OIIO::TypeUInt8);
        spec.attribute("compression", "jpeg:100");
        spec.attribute("jpeg:subsampling", "4:4:4");
        const auto path = WritePicture(folder / "a.jpg", spec, Squares(64, channels));
        const LoadRequest request = {.width = 8, .height = 8, .highQuality = true};
        const LoadedTexture texture = LoadFile(path, Fast(request));
        ASSERT_TRUE(texture);
        EXPECT_EQ(texture.desc.width, 8);
        EXPECT_EQ(texture.desc.height, 8);
        EXPECT_EQ(texture.desc.dataSize, channels == 1 ? 64U : 256U);
        Bytes expected;
        for (int i = 0; i < 64; ++i) {
            const bool isLight = (i % 8 + i / 8) % 2 == 0;
            for (int c = 0; c < channels; ++c)
                expected.push_back(isLight ? static_cast<unsigned char>(250 - 60 * c)
                                           : static_cast<unsigned char>(5 + 20 * c));
            if (channels == 3) expected.push_back(255);
        }
        EXPECT_LE(GreatestDifference(texture.bytes, expected), 4) << channels;
        EXPECT_GT(GreatestDifference(LoadFile(path, request).bytes, expected), 20) << "without it they are filtered";
        EXPECT_EQ(LoadFile(path, Fast({})).bytes, LoadFile(path).bytes) << "a picture that keeps its size is itself";
    }
}

TEST_F(FastLoad, IsNeverMadeOfLessThanIsAskedFor) {
    // Stripes a pixel wide vanish in every part of a JPEG but the whole.
    ImageSpec spec(64, 64, 1, OIIO::TypeUInt8);
    spec.attribute("compression", "jpeg:100");
    Bytes pixels;
    for (int i = 0; i < 64 * 64; ++i)
        pixels.push_back(i % 2 == 0 ? 0 : 255);
    const auto path = WritePicture(folder / "a.jpg", spec, pixels);
    for (const auto& [width, height] : {std::pair(33, 8), {8, 33}, {60, 60}}) {
        const LoadRequest request = {.width = width, .height = height};
        EXPECT_EQ(LoadFile(path, Fast(request)).bytes, LoadFile(path, request).bytes) << width << " x " << height;
    }
    const LoadRequest half = {.width = 32, .height = 32};
    const Bytes small = LoadFile(path, Fast(half)).bytes;
    EXPECT_TRUE(std::ranges::all_of(small, [](unsigned char value) { return value > 120 && value < 136; }));
}

TEST_F(FastLoad, LooksLikeAPhotographLoadedWithoutIt) {
    const auto path = Sample("photo.jpg");
    for (const EFormat format : {kUnknown, kB8G8R8A8, kR32G32B32A32F}) {
        const LoadRequest request = {.width = 60, .height = 50, .format = format, .highQuality = true};
        const LoadedTexture fast = LoadFile(path, Fast(request)), plain = LoadFile(path, request);
        ASSERT_TRUE(fast && plain);
        EXPECT_EQ(fast.desc.width, plain.desc.width);
        EXPECT_EQ(fast.desc.height, plain.desc.height);
        EXPECT_EQ(fast.desc.format, plain.desc.format);
        EXPECT_EQ(fast.desc.rowPitch, plain.desc.rowPitch);
        EXPECT_EQ(fast.desc.dataSize, plain.desc.dataSize);
        EXPECT_EQ(fast.desc.hasAlpha, plain.desc.hasAlpha);
        EXPECT_NE(fast.bytes, plain.bytes);
        if (format == kR32G32B32A32F) continue;
        double sum = 0;
        for (std::size_t i = 0; i < fast.bytes.size(); ++i)
            sum += std::abs(fast.bytes[i] - plain.bytes[i]);
        EXPECT_LT(sum / static_cast<double>(fast.bytes.size()), 3);
    }
}

TEST_F(FastLoad, ADamagedJpegIsWhatItIsWithoutIt) {
    const auto photo = Sample("photo.jpg");
    std::ifstream stream(photo, std::ios::binary);
    const Bytes whole((std::istreambuf_iterator<char>(stream)), {});
    const LoadRequest request = {.width = 50, .height = 40};
    for (const std::size_t size : {whole.size() - 3, whole.size() / 2, std::size_t{700}, std::size_t{20}}) {
        const auto path =
            folder.Write("cut.jpg", Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        const LoadedTexture fast = LoadFile(path, Fast(request)), plain = LoadFile(path, request);
        EXPECT_EQ(fast.loaded, plain.loaded) << size;
        if (size < whole.size() - 3) {
            EXPECT_EQ(fast.bytes, plain.bytes) << size;
        }
    }
    Bytes damaged = whole;
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2), 40, static_cast<unsigned char>(0xFF));
    const auto path = folder.Write("damaged.jpg", damaged);
    EXPECT_EQ(LoadFile(path, Fast(request)).bytes, LoadFile(path, request).bytes);
    EXPECT_TRUE(messages.Texts().empty());
}

TEST_F(FastLoad, AJpegOfFourInksIsWhatItIsWithoutIt) {
    const auto path = folder / "cmyk.jpg";
    jpeg_error_mgr errors{};
    jpeg_compress_struct info{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    jpeg_stdio_dest(&info, file);
    info.image_width = info.image_height = 64;
    info.input_components = 4;
    info.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&info);
    jpeg_start_compress(&info, TRUE);
    for (int y = 0; y < 64; ++y) {
        Bytes row(64 * 4);
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<unsigned char>(i * 7 + static_cast<std::size_t>(y) * 3);
        JSAMPLE* rows[] = {row.data()};
        jpeg_write_scanlines(&info, rows, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::fclose(file);
    const LoadRequest request = {.width = 8, .height = 8};
    const LoadedTexture plain = LoadFile(path, request);
    ASSERT_TRUE(plain);
    EXPECT_EQ(LoadFile(path, Fast(request)).bytes, plain.bytes);
}

// --- Levels ----------------------------------------------------------------------------------------------------------

/// A tiled picture of 64 x 64 with all its levels, each of one value that says which it is: 0.1, 0.2, ...
std::filesystem::path WriteLevels(const std::filesystem::path& path, OIIO::TypeDesc type) {
    const auto output = OIIO::ImageOutput::create(path.string());
    const auto next =
        output->supports("mipmap") ? OIIO::ImageOutput::AppendMIPLevel : OIIO::ImageOutput::AppendSubimage;
    for (int level = 0, side = 64; side > 0; ++level, side /= 2) {
        ImageSpec spec(side, side, 3, type);
        spec.tile_width = spec.tile_height = 16;
        spec.attribute("textureformat", "Plain Texture");
        const std::vector<float> pixels(spec.image_pixels() * 3, 0.1F * static_cast<float>(level + 1));
        AppendPicture(*output, path.string(), spec, pixels, level == 0 ? OIIO::ImageOutput::Create : next);
    }
    output->close();
    return path;
}

TEST_F(FastLoad, TheSmallestLevelThatIsLargeEnoughIsRead) {
    const std::array files = {std::pair(WriteLevels(folder / "a.exr", OIIO::TypeFloat), OpenEXR),
                              std::pair(WriteLevels(folder / "a.tif", OIIO::TypeFloat), Other)};
    for (const auto& [path, type] : files) {
        for (const auto& [width, height, level] :
             {std::array{32, 32, 1}, {33, 8, 0}, {17, 17, 1}, {16, 3, 2}, {1, 1, 6}}) {
            const LoadRequest request = {.width = width, .height = height};
            const LoadedTexture fast = LoadFile(path, Fast(request), type), plain = LoadFile(path, request, type);
            ASSERT_TRUE(fast && plain) << path;
            EXPECT_EQ(fast.desc.width, width);
            EXPECT_EQ(fast.desc.height, height);
            EXPECT_EQ(fast.desc.dataSize, plain.desc.dataSize);
            EXPECT_NEAR(fast.As<float>()[0], 0.1F * static_cast<float>(level + 1), 1e-5) << path << width;
            EXPECT_NEAR(plain.As<float>()[0], 0.1F, 1e-5) << path << width;
        }
    }
}

TEST_F(FastLoad, TheNextPageOfATiffIsNoLevel) {
    const std::string name = (folder / "pages.tif").string();
    const std::vector<ImageSpec> specs = {ImageSpec(16, 16, 3, OIIO::TypeUInt8), ImageSpec(8, 8, 3, OIIO::TypeUInt8)};
    const auto output = OIIO::ImageOutput::create(name);
    ASSERT_TRUE(output->open(name, 2, specs.data()));
    output->write_image(OIIO::TypeUInt8, Bytes(16 * 16 * 3, 10).data());
    output->open(name, specs[1], OIIO::ImageOutput::AppendSubimage);
    output->write_image(OIIO::TypeUInt8, Bytes(8 * 8 * 3, 20).data());
    output->close();
    const LoadedTexture texture = LoadFile(name, Fast({.width = 8, .height = 8}));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes[0], 10);
}

TEST_F(FastLoad, TheFittingLevelOfADdsIsRead) {
    DdsFile flat{.width = 16, .height = 8, .mips = 5};
    for (unsigned char level = 0; level < 5; ++level)
        AppendPixels(flat.data, std::max(16U >> level, 1U) * std::max(8U >> level, 1U), {level, 7, 7, 255});
    const auto path = folder.Write("flat.dds", flat.Bytes());
    const auto redOf = [&](const LoadRequest& request) {
        const LoadedTexture texture = LoadFile(path, request, DDS);
        EXPECT_TRUE(texture);
        return texture ? texture.bytes[0] : 99;
    };
    EXPECT_EQ(redOf(Fast({.width = 8, .height = 4})), 1);
    EXPECT_EQ(redOf(Fast({.width = 4, .height = 4})), 1) << "the next is too low";
    EXPECT_EQ(redOf(Fast({.width = 3, .height = 2})), 2);
    EXPECT_EQ(redOf(Fast({.width = 3, .height = 1, .level = 1})), 2);
    EXPECT_EQ(redOf(Fast({.width = 1, .height = 1})), 4);
    EXPECT_EQ(redOf({.width = 1, .height = 1}), 0);
    EXPECT_EQ(redOf(Fast({})), 0);
}

TEST_F(FastLoad, ALevelThatCannotBeReadIsNotMissed) {
    DdsFile cube{.width = 8, .height = 8, .mips = 4, .faces = 0x3F};
    for (unsigned char face = 0; face < 6; ++face) {
        for (unsigned char level = 0; level < 4; ++level)
            AppendPixels(cube.data, 64U >> 2 * level, {face, level, 7, 255});
    }
    const auto path = folder.Write("cube.dds", cube.Bytes());
    const LoadedTexture fast = LoadFile(path, Fast({.width = 4, .height = 4}), DDS);
    ASSERT_TRUE(fast);
    EXPECT_EQ(fast.desc.textureType, kTextureCube);
    EXPECT_EQ(fast.desc.dataSize, 64U);
    EXPECT_EQ(fast.bytes.size(), 6U * 64);
    EXPECT_EQ((Bytes{fast.bytes[0], fast.bytes[1], fast.bytes[5 * 64], fast.bytes[5 * 64 + 1]}), (Bytes{0, 1, 5, 1}));

    const auto tiff = WriteLevels(folder / "a.tif", OIIO::TypeFloat);
    std::filesystem::resize_file(tiff, std::filesystem::file_size(tiff) - 1);
    const LoadRequest request = {.width = 4, .height = 4};
    EXPECT_EQ(LoadFile(tiff, Fast(request)).loaded, LoadFile(tiff, request).loaded);
}

}  // namespace
}  // namespace Kavra::Tests
