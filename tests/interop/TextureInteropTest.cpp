// Texture files of ours, against what others find in them: ktx-parse in those of KTX2, ImageMagick and the tools of NVTT
// in DDS arrays. The first test writes the files, ./test then lets the others at them, and the rest compares.

#include "interop/PeerFiles.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/TextureFile.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

/// A texture, and by the descriptions of the formats what a parser must find in its file.
struct Sample {
    std::string name;
    TextureShape shape;
    int zstdLevel;
    std::string header, descriptor, block;
    std::vector<std::string> samples;
    std::string swizzle, orientation = "rd";
};

TextureShape Shape(EFormat format, int width, int height, int levels, int elements = 1) {
    TextureShape shape;
    shape.format = format;
    shape.width = width;
    shape.height = height;
    shape.levels = levels;
    shape.elements = elements;
    return shape;
}

TextureShape OfType(TextureShape shape, ETextureType type, int depth = 1) {
    shape.type = type;
    shape.depth = depth;
    return shape;
}

TextureShape WithColours(TextureShape shape, bool isSrgb, ETextureAlpha alpha) {
    shape.isSrgb = isSrgb;
    shape.alpha = alpha;
    return shape;
}

constexpr const char* kAll = " 0 0 0 0 0 4294967295";
constexpr const char* kFloat = " 0 0 0 0 3212836864 1065353216";

std::vector<Sample> Samples() {
    const std::string all = kAll, floats = kFloat, byte = " 0 0 0 0 0 255";
    return {
        {"rgba8",
         WithColours(Shape(kR8G8B8A8, 5, 3, 3), true, kTextureAlphaPremultiplied),
         0,
         "43 1 5 3 0 0 1 3 0",
         "0 0 2 1 1 2 1",
         "0 0 0 0 4 0 0 0 0 0 0 0",
         {"0 7 0" + byte, "8 7 1" + byte, "16 7 2" + byte, "24 7 31" + byte},
         "",
         "rd"},
        {"bc1",
         OfType(Shape(kBC1, 8, 8, 4, 2), kTextureCube),
         19,
         "133 1 8 8 0 2 6 4 2",
         "0 0 2 128 1 1 0",
         "3 3 0 0 8 0 0 0 0 0 0 0",
         {"0 63 1" + all},
         "",
         "rd"},
        {"bc1-opaque",
         WithColours(Shape(kBC1Srgb, 9, 6, 4), true, kTextureAlphaOpaque),
         0,
         "132 1 9 6 0 0 1 4 0",
         "0 0 2 128 1 2 0",
         "3 3 0 0 8 0 0 0 0 0 0 0",
         {"0 63 0" + all},
         "",
         "rd"},
        {"bc3",
         WithColours(Shape(kBC3, 4, 4, 1), false, kTextureAlphaOpaque),
         0,
         "137 1 4 4 0 0 1 1 0",
         "0 0 2 130 1 1 0",
         "3 3 0 0 16 0 0 0 0 0 0 0",
         {"0 63 15" + all, "64 63 0" + all},
         "rgb1",
         "rd"},
        {"bc5",
         Shape(kBC5Snorm, 4, 4, 1),
         0,
         "142 1 4 4 0 0 1 1 0",
         "0 0 2 132 1 1 0",
         "3 3 0 0 16 0 0 0 0 0 0 0",
         {"0 63 64 0 0 0 0 2147483648 2147483647", "64 63 65 0 0 0 0 2147483648 2147483647"},
         "",
         "rd"},
        {"bc6h",
         Shape(kBC6H, 16, 16, 5),
         3,
         "143 1 16 16 0 0 1 5 2",
         "0 0 2 133 1 1 0",
         "3 3 0 0 16 0 0 0 0 0 0 0",
         {"0 127 128 0 0 0 0 0 1065353216"},
         "",
         "rd"},
        {"bc7",
         Shape(kBC7Srgb, 16, 8, 3, 3),
         1,
         "146 1 16 8 0 3 1 3 2",
         "0 0 2 134 1 2 0",
         "3 3 0 0 16 0 0 0 0 0 0 0",
         {"0 127 0" + all},
         "",
         "rd"},
        {"l8",
         Shape(kL8, 7, 5, 3),
         0,
         "9 1 7 5 0 0 1 3 0",
         "0 0 2 1 1 1 0",
         "0 0 0 0 1 0 0 0 0 0 0 0",
         {"0 7 0" + byte},
         "rrr1",
         "rd"},
        {"r32f",
         OfType(Shape(kR32F, 4, 3, 3), kTextureVolume, 2),
         0,
         "100 4 4 3 2 0 1 3 0",
         "0 0 2 1 1 1 0",
         "0 0 0 0 4 0 0 0 0 0 0 0",
         {"0 31 192" + floats},
         "",
         "rdi"},
        {"rgb32f",
         Shape(kR32G32B32F, 5, 3, 3),
         0,
         "106 4 5 3 0 0 1 3 0",
         "0 0 2 1 1 1 0",
         "0 0 0 0 12 0 0 0 0 0 0 0",
         {"0 31 192" + floats, "32 31 193" + floats, "64 31 194" + floats},
         "",
         "rd"},
    };
}

Bytes PixelsOf(const TextureShape& shape) {
    Bytes bytes(TextureBytes(shape));
    std::uint32_t state = 4711;
    for (unsigned char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

/// The bytes of levels as KTX2 files have them: the faces of all elements of a level together.
Bytes LevelsOf(const TextureShape& shape) {
    const Bytes pixels = PixelsOf(shape);
    Bytes levels;
    for (int level = 0; level < shape.levels; ++level) {
        for (int element = 0; element < shape.elements; ++element) {
            for (int face = 0; face < FaceCount(shape.type); ++face) {
                const auto begin =
                    pixels.begin() + static_cast<std::ptrdiff_t>(TextureLevelOffset(shape, element, face, level));
                levels.insert(levels.end(), begin,
                              begin + static_cast<std::ptrdiff_t>(TextureLevelBytes(shape, level)));
            }
        }
    }
    return levels;
}

std::string ParsedAs(const Sample& sample) {
    std::string text =
        "header " + sample.header + "\ndescriptor " + sample.descriptor + "\nblock " + sample.block + "\n";
    for (const std::string& line : sample.samples)
        text += "sample " + line + "\n";
    text += "text KTXorientation " + sample.orientation + "\n";
    if (!sample.swizzle.empty()) text += "text KTXswizzle " + sample.swizzle + "\n";
    text += "text KTXwriter kavra\n";
    for (int level = 0; level < sample.shape.levels; ++level) {
        const std::uint64_t faces = static_cast<unsigned>(sample.shape.elements * FaceCount(sample.shape.type));
        text += "level " + std::to_string(TextureLevelBytes(sample.shape, level) * faces) + "\n";
    }
    return text;
}

/// Beside the folder of files that others write.
std::filesystem::path Ours(const std::string& name) {
    return std::filesystem::path(KAVRA_INTEROP_FOLDER "-textures") / name;
}

const TextureShape kArray = Shape(kR8G8B8A8, 4, 4, 2, 3);
const TextureShape kCubes = OfType(Shape(kR8G8B8A8, 4, 4, 1, 2), kTextureCube);

TEST(TextureInterop, AFilesAreWrittenForOthers) {
    std::filesystem::create_directories(Ours(""));
    const auto write = [](const std::string& name, const TextureShape& shape, int zstdLevel) {
        const Bytes pixels = PixelsOf(shape);
        TextureWriteOptions options;
        options.zstdLevel = zstdLevel;
        std::string reason;
        EXPECT_TRUE(WriteTextureFile(Wide(Ours(name)), shape, pixels.data(), pixels.size(), options, &reason))
            << reason;
    };
    for (const Sample& sample : Samples())
        write(sample.name + ".ktx2", sample.shape, sample.zstdLevel);
    write("array.dds", kArray, 0);
    write("cubes.dds", kCubes, 0);
}

std::string TextOf(const std::filesystem::path& path) {
    const Bytes bytes = ReadAll(path);
    return {bytes.begin(), bytes.end()};
}

TEST(TextureInterop, AParserFindsWhatIsDescribed) {
    for (const Sample& sample : Samples()) {
        EXPECT_EQ(TextOf(Ours(sample.name + ".ktx2.parsed")), ParsedAs(sample)) << sample.name;
        EXPECT_TRUE(ReadAll(Ours(sample.name + ".ktx2.levels")) == LevelsOf(sample.shape)) << sample.name;
    }
}

TEST(TextureInterop, FilesThatAParserWroteAreTheSameTextures) {
    for (const Sample& sample : Samples()) {
        TextureFileReader reader;
        ASSERT_TRUE(reader.Open(Wide(Ours(sample.name + ".rewritten")))) << sample.name << ": " << reader.Reason();
        const TextureShape shape = reader.Shape();
        EXPECT_EQ(shape.format, sample.shape.format) << sample.name;
        EXPECT_EQ(shape.elements, sample.shape.elements) << sample.name;
        Bytes pixels(TextureBytes(shape));
        ASSERT_TRUE(reader.ReadAll(pixels.data())) << reader.Reason();
        EXPECT_TRUE(pixels == PixelsOf(sample.shape)) << sample.name;
    }
}

/// ImageMagick shows the first element alone, of a cube its faces.
TEST(TextureInterop, TheFirstElementOfADdsArrayIsSeenByOthers) {
    const Bytes array = PixelsOf(kArray), cubes = PixelsOf(kCubes);
    EXPECT_EQ(ReadAll(Ours("array.dds.rgba")), Bytes(array.begin(), array.begin() + 64));
    EXPECT_EQ(ReadAll(Ours("cubes.dds.rgba")), Bytes(cubes.begin(), cubes.begin() + 384));
}

TEST(TextureInterop, HowManyElementsADdsArrayHasIsSeenByOthers) {
    EXPECT_NE(TextOf(Ours("array.dds.info")).find("Array size: 3"), std::string::npos);
    EXPECT_NE(TextOf(Ours("cubes.dds.info")).find("Array size: 2"), std::string::npos);
}

}  // namespace
