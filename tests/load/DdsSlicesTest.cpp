#include "load/DdsFile.h"
#include "load/DdsSlices.h"
#include "load/OpenInput.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Kavra::Tests {
namespace {

using Devices::DdsLevelSpec;
using Devices::DdsSlices;
using Bytes = std::vector<unsigned char>;

OIIO::ImageSpec SpecOf(int width, int height, int depth, int channels) {
    OIIO::ImageSpec spec(width, height, channels, OIIO::TypeUInt8);
    spec.depth = depth;
    return spec;
}

std::unique_ptr<OIIO::ImageInput> OpenDds(const std::filesystem::path& path) {
    return OIIO::ImageInput::open(path.string());
}

class DdsSlicesFile : public ::testing::Test {
protected:
    std::optional<DdsSlices> Open(const DdsFile& file) { return OpenBytes(file.Bytes()); }
    std::optional<DdsSlices> OpenBytes(const Bytes& bytes) {
        return DdsSlices::Open(Devices::OpenFile(Wide(folder.Write("x.dds", bytes))).value());
    }
    TemporaryFolder folder;
};

TEST_F(DdsSlicesFile, EveryFaceOfEveryLevelIsItsOwn) {
    DdsFile file{.width = 4, .height = 4, .mips = 3, .faces = 0x3F};
    for (unsigned char face = 0; face < 6; ++face) {
        for (const unsigned char level : {0, 1, 2}) {
            AppendPixels(file.data, 16U >> 2 * level, {face, level, 7, 255});
        }
    }
    auto slices = Open(file);
    ASSERT_TRUE(slices);
    for (int level = 0; level < 3; ++level) {
        const int size = 4 >> level;
        Bytes out(static_cast<std::size_t>(size * size * 6 * 4), 0xEE);
        ASSERT_TRUE(slices->ReadLevel(level, SpecOf(size, 6 * size, 1, 4), 4, OIIO::TypeUInt8, out.data(), 4));
        Bytes expected;
        for (unsigned char face = 0; face < 6; ++face) {
            AppendPixels(expected, static_cast<std::size_t>(size * size),
                         {face, static_cast<unsigned char>(level), 7, 255});
        }
        EXPECT_EQ(out, expected) << level;
    }
}

TEST_F(DdsSlicesFile, EverySliceOfEveryLevelIsItsOwn) {
    // 8 x 4 x 4, 4 x 2 x 2, 2 x 1 x 1 and 1 x 1 x 1 pixels of one byte.
    DdsFile file = DdsFile{.width = 8, .height = 4, .depth = 4, .mips = 4}.Luminance8();
    Bytes expected[4];
    for (unsigned char level = 0; level < 4; ++level) {
        for (unsigned char slice = 0; slice < std::max(4 >> level, 1); ++slice) {
            const auto pixels = static_cast<std::size_t>(std::max(8 >> level, 1) * std::max(4 >> level, 1));
            AppendPixels(expected[level], pixels, {static_cast<unsigned char>(10 * level + slice)});
        }
        AppendPixels(file.data, 1, expected[level]);
    }
    auto slices = Open(file);
    ASSERT_TRUE(slices);
    EXPECT_EQ(slices->Levels(), 4);
    for (int level = 0; level < 4; ++level) {
        const OIIO::ImageSpec spec =
            SpecOf(std::max(8 >> level, 1), std::max(4 >> level, 1), std::max(4 >> level, 1), 1);
        Bytes out(expected[level].size(), 0xEE);
        ASSERT_TRUE(slices->ReadLevel(level, spec, 1, OIIO::TypeUInt8, out.data(), 1)) << level;
        EXPECT_EQ(out, expected[level]) << level;
    }
}

TEST_F(DdsSlicesFile, TheExtensionIsPassedOverWhateverTheFlagsSay) {
    DdsFile file{.width = 1, .height = 1, .dxgiFormat = 28};
    file.fourCC = DdsFile::Code("DX10");
    file.data = {1, 2, 3, 4};
    auto slices = Open(file);
    ASSERT_TRUE(slices);
    Bytes out(4, 0xEE);
    ASSERT_TRUE(slices->ReadLevel(0, SpecOf(1, 1, 1, 4), 4, OIIO::TypeUInt8, out.data(), 4));
    EXPECT_EQ(out, file.data);
    const Bytes whole = file.Bytes();
    EXPECT_FALSE(OpenBytes(Bytes(whole.begin(), whole.begin() + 147)));
}

TEST_F(DdsSlicesFile, ReadsTheFirstChannelsIntoWiderPixels) {
    DdsFile file{.width = 1, .height = 1, .depth = 2};
    file.data = {10, 20, 30, 40, 50, 60, 70, 80};
    auto slices = Open(file);
    Bytes out(16, 0xEE);
    ASSERT_TRUE(slices->ReadLevel(0, SpecOf(1, 1, 2, 4), 2, OIIO::TypeUInt16, out.data(), 8));
    EXPECT_EQ(out, (Bytes{10, 10, 20, 20, 0xEE, 0xEE, 0xEE, 0xEE, 50, 50, 60, 60, 0xEE, 0xEE, 0xEE, 0xEE}));
}

TEST_F(DdsSlicesFile, FacesThatAreLeftOutBecomeZero) {
    DdsFile file{.width = 1, .height = 1, .faces = 0b100010};
    file.data = {1, 2, 3, 4, 5, 6, 7, 8};
    auto slices = Open(file);
    Bytes out(24, 0xEE);
    ASSERT_TRUE(slices->ReadLevel(0, SpecOf(1, 6, 1, 4), 4, OIIO::TypeUInt8, out.data(), 4));
    EXPECT_EQ(out, (Bytes{0, 0, 0, 0, 1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 6, 7, 8}));
}

TEST_F(DdsSlicesFile, ASpecThatDisagreesWithTheFileReadsNothing) {
    DdsFile file{.width = 2, .height = 2, .depth = 2};
    AppendPixels(file.data, 8, {1, 2, 3, 4});
    auto slices = Open(file);
    Bytes out(1024);
    const auto read = [&](const OIIO::ImageSpec& spec) {
        return slices->ReadLevel(0, spec, 1, OIIO::TypeUInt8, out.data(), 4);
    };
    EXPECT_TRUE(read(SpecOf(2, 2, 2, 4)));
    EXPECT_FALSE(read(SpecOf(1, 2, 2, 4)));
    EXPECT_FALSE(read(SpecOf(2, 2, 1, 4)));
    EXPECT_FALSE(read(SpecOf(2, 2, 2, 3)));
    EXPECT_FALSE(slices->ReadLevel(1, SpecOf(1, 1, 1, 4), 1, OIIO::TypeUInt8, out.data(), 4));
    EXPECT_FALSE(slices->ReadLevel(-1, SpecOf(2, 2, 2, 4), 1, OIIO::TypeUInt8, out.data(), 4));
}

TEST_F(DdsSlicesFile, ALevelIsThereWhenTheFileIsLongEnoughForIt) {
    DdsFile file{.width = 2, .height = 2, .mips = 2, .faces = 0b000011};
    AppendPixels(file.data, 10, {1, 2, 3, 4});
    const Bytes whole = file.Bytes();
    // Level 1 of the last face is the last thing in the file.
    for (const std::size_t missing : {0U, 1U, 4U, 5U, 40U}) {
        const auto slices = OpenBytes(Bytes(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing)));
        ASSERT_TRUE(slices);
        EXPECT_EQ(slices->HasLevel(1), missing == 0) << missing;
        EXPECT_EQ(slices->HasLevel(0), missing <= 4) << missing;
        EXPECT_FALSE(slices->HasLevel(2));
        EXPECT_FALSE(slices->HasLevel(-1));
    }
}

TEST_F(DdsSlicesFile, AFileThatIsNoneDoesNotOpen) {
    EXPECT_FALSE(OpenBytes({}));
    EXPECT_FALSE(OpenBytes({'D', 'D', 'S', ' '}));
    EXPECT_TRUE(Open(DdsFile{}));
    EXPECT_FALSE(Open(DdsFile{}.FourCC("YUY2"))) << "pixels that the library does not decode";
    EXPECT_FALSE(Open(DdsFile{.width = 32769})) << "a shape that it does not take";
}

TEST_F(DdsSlicesFile, TheSpecOfACubeLevelIsSixFacesOfItsSize) {
    DdsFile file{.width = 8, .height = 8, .mips = 4, .faces = 0x3F};
    AppendPixels(file.data, 6 * 85, {1, 2, 3, 4});
    const auto input = OpenDds(folder.Write("cube.dds", file.Bytes()));
    ASSERT_TRUE(input);
    for (int level = 0; level < 4; ++level) {
        ASSERT_TRUE(input->seek_subimage(0, level));
        const OIIO::ImageSpec spec = DdsLevelSpec(*input);
        const int size = 8 >> level;
        EXPECT_EQ(spec.width, size);
        EXPECT_EQ(spec.height, 6 * size);
        EXPECT_EQ(spec.depth, 1);
        EXPECT_EQ(spec.full_width, size);
        EXPECT_EQ(spec.full_height, size);
        EXPECT_EQ(spec.tile_width, size);
        EXPECT_EQ(spec.tile_height, size);
        EXPECT_EQ(spec.nchannels, 4);
        EXPECT_EQ(spec.get_string_attribute("textureformat"), "CubeFace Environment");
        EXPECT_EQ(input->current_miplevel(), level) << "the file stands where it stood";
    }
}

TEST_F(DdsSlicesFile, TheSpecOfAVolumeLevelIsHalvedInEveryDirection) {
    DdsFile file{.width = 8, .height = 2, .depth = 4, .mips = 4};
    AppendPixels(file.data, 64 + 8 + 2 + 1, {1, 2, 3, 4});
    const auto input = OpenDds(folder.Write("volume.dds", file.Bytes()));
    ASSERT_TRUE(input);
    ASSERT_TRUE(input->seek_subimage(0, 1));
    const OIIO::ImageSpec spec = DdsLevelSpec(*input);
    EXPECT_EQ(spec.width, 4);
    EXPECT_EQ(spec.height, 1);
    EXPECT_EQ(spec.depth, 2);
    EXPECT_EQ(spec.full_depth, 2);
}

TEST_F(DdsSlicesFile, TheSpecOfAFlatLevelIsTheLibrarysOwn) {
    DdsFile file{.width = 8, .height = 2, .mips = 4};
    AppendPixels(file.data, 16 + 4 + 2 + 1, {1, 2, 3, 4});
    const auto input = OpenDds(folder.Write("flat.dds", file.Bytes()));
    ASSERT_TRUE(input);
    ASSERT_TRUE(input->seek_subimage(0, 2));
    EXPECT_EQ(DdsLevelSpec(*input).width, 2);
    EXPECT_EQ(DdsLevelSpec(*input).height, 1);
}

}  // namespace
}  // namespace Kavra::Tests
