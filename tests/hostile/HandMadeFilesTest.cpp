// The small files of make_files.py, each with one lie in it, under every way of asking for them.

#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Objects::ObjModel;

std::vector<std::filesystem::path> HandMadeFiles() {
    const std::filesystem::directory_iterator entries(KAVRA_SOURCE_DIR "/tests/hostile/files");
    std::vector<std::filesystem::path> files(begin(entries), end(entries));
    // Those of make_legacy_files.py ask for gigabytes; they have tests of their own.
    std::erase_if(files, [](const auto& file) { return file.filename().string().starts_with("legacy-"); });
    std::ranges::sort(files);
    return files;
}

class HandMadeFile : public testing::TestWithParam<std::filesystem::path> {
protected:
    /// Loads, and looks at every byte that the description speaks of: never more than the block has.
    void LoadAndLook(int width, int height, EFormat format, int level, EDataOrientation orientation) {
        const std::size_t before = ObjModel::BlockCounters().liveBytes;
        ImageDescription desc;
        IMemoryWrapper<void>* const block =
            handler.LoadTexture(desc, Wide(GetParam()), width, height, 1, format, level, orientation, nullptr);
        if (block == nullptr) return;
        const std::size_t bytes = ObjModel::BlockCounters().liveBytes - before;
        const std::size_t faces = desc.textureType == kTextureCube ? 6 : 1;
        EXPECT_LE(desc.dataSize * faces, bytes);
        EXPECT_GE(desc.width, 1);
        EXPECT_GE(desc.height, 1);
        EXPECT_GE(desc.depth, 1);
        const auto rows = static_cast<std::uint64_t>(desc.height) * static_cast<std::uint64_t>(desc.depth);
        EXPECT_LE(static_cast<std::uint64_t>(desc.rowPitch) * rows * faces, bytes);
        EXPECT_EQ(static_cast<std::uint64_t>(desc.rowPitch) * rows, desc.dataSize);
        std::vector<unsigned char> copy(desc.dataSize * faces);
        std::memcpy(copy.data(), block->mData, copy.size());
        block->Delete();
    }

    OIIOImageHandler handler;
    MessageRecorder messages;
};

TEST_P(HandMadeFile, NeverClaimsMoreThanItsBlockHolds) {
    const auto before = ObjModel::BlockCounters().liveBlocks;
    for (int orientation = 0; orientation < 8; ++orientation) {
        for (const auto& [width, height] : {std::pair(0, 0), {3, 2}, {1, 0}}) {
            LoadAndLook(width, height, kUnknown, 0, static_cast<EDataOrientation>(orientation));
        }
    }
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8, kL8, kR16G16B16A16F, kR32G32B32A32F, kR16})
        LoadAndLook(3, 3, format, 0, kTopLeft);
    LoadAndLook(0, 0, kUnknown, 1, kTopLeft);
    LoadAndLook(0, 0, kUnknown, 0x7FFFFFFF, kTopLeft);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
}

TEST_P(HandMadeFile, IsDescribedAsItIsLoaded) {
    ImageDesc* const described = handler.GetImageDesc(Wide(GetParam()));
    ImageDescription loaded;
    const auto orientation = described == nullptr ? kTopLeft : described->orientation;
    IMemoryWrapper<void>* const block =
        handler.LoadTexture(loaded, Wide(GetParam()), 0, 0, 1, kUnknown, 0, orientation, nullptr);
    EXPECT_TRUE(block == nullptr || described != nullptr);
    if (block != nullptr && described != nullptr) {
        EXPECT_EQ(described->width, loaded.width);
        EXPECT_EQ(described->height, loaded.height);
        EXPECT_EQ(described->depth, loaded.depth);
        EXPECT_EQ(described->textureType, loaded.textureType);
        EXPECT_EQ(described->format, loaded.format);
        EXPECT_GE(described->frameCount, 1);
    }
    if (described != nullptr) described->Delete();
    if (block != nullptr) block->Delete();
}

std::string NameOf(const testing::TestParamInfo<std::filesystem::path>& info) {
    std::string name = info.param.filename().string();
    std::ranges::replace_if(name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

// --- What some of them hold all the same
// ----------------------------------------------------------------------------------------------------------------------

class HandMade : public testing::Test {
protected:
    static std::filesystem::path File(const std::string& name) {
        return std::filesystem::path(KAVRA_SOURCE_DIR "/tests/hostile/files") / name;
    }
    /// Sample `i` of every file: they count up in steps of 7.
    static unsigned char Sample(std::size_t i) { return static_cast<unsigned char>(i * 7 % 251); }

    OIIOImageHandler handler;
    MessageRecorder messages;
};

TEST_F(HandMade, AnyNumberOfRowsAStripGivesTheSamePixels) {
    for (const std::string rows : {"100000", "7fffffc0", "7fffffff", "80000000", "ffffffff"}) {
        for (const std::string compression : {"none", "lzw", "deflate", "packbits"}) {
            const auto file = File("rows-per-strip-" + rows + "-" + compression + ".tif");
            const auto loaded = LoadFile(handler, file);
            ASSERT_TRUE(loaded) << file;
            ASSERT_EQ(loaded->bytes.size(), 5U * 70 * 4) << file;
            for (std::size_t i = 0; i < 5 * 70; ++i) {
                ASSERT_EQ(loaded->bytes[4 * i], Sample(3 * i)) << file << i;
                ASSERT_EQ(loaded->bytes[4 * i + 2], Sample(3 * i + 2)) << file << i;
            }
        }
        const auto grey = LoadFile(handler, File("rows-per-strip-" + rows + "-grey.tif"));
        ASSERT_TRUE(grey) << rows;
        ASSERT_EQ(grey->bytes.size(), 5U * 70) << rows;
        for (std::size_t i = 0; i < 5 * 70; ++i)
            ASSERT_EQ(grey->bytes[i], Sample(i)) << rows << i;
        const auto flat = LoadFile(handler, File("rows-per-strip-" + rows + "-two-rows.tif"));
        ASSERT_TRUE(flat) << rows;
        EXPECT_EQ(flat->bytes[36], Sample(27)) << rows;
    }
    const auto runsOn = LoadFile(handler, File("rows-per-strip-64-runs-on.tif"));
    ASSERT_TRUE(runsOn);
    for (std::size_t i = 0; i < 5 * 70; ++i)
        ASSERT_EQ(runsOn->bytes[4 * i], Sample(3 * i)) << i;
    const auto wide = LoadFile(handler, File("rows-per-strip-100000-wide.tif"));
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->bytes[4 * 3999], Sample(3 * 3999));
}

TEST_F(HandMade, AnAttributeOfAnotherFormatLeavesPicturesAlone) {
    for (const std::string rows : {"0", "-1", "-64", "2147483647", "2147483584", "99999999999"}) {
        const auto loaded = LoadFile(handler, File("text-rows-per-strip-" + rows + ".png"));
        ASSERT_TRUE(loaded) << rows;
        EXPECT_EQ(loaded->bytes[8 * 559 + 1], Sample(6 * 559)) << "the upper half of the last red, first in the file";
    }
    for (const std::string rows : {"0", "ffffffff", "7fffffff", "7fffffc0"})
        EXPECT_TRUE(LoadFile(handler, File("rows-per-strip-" + rows + ".exr"))) << rows;
}

TEST_F(HandMade, TextThatSaysGreyDoesNotMakeAColourPictureGrey) {
    for (const auto& [name, format] : {std::pair("text-grey.png", kR8G8B8A8), {"grey-by-name.exr", kR16G16B16A16F}}) {
        const auto loaded = LoadFile(handler, File(name));
        ASSERT_TRUE(loaded) << name;
        EXPECT_EQ(loaded->desc.format, format) << name;
    }
}

TEST_F(HandMade, ACubeIsOneOnlyWithSixFaces) {
    for (const char* name : {"text-cube.png", "text-cube-strip.png", "text-cube-turned.png", "cube-tag.tif",
                             "cube-tag-strip.tif", "cube-tag-small-faces.tif", "cube-tag-large-faces.tif", "cube.exr",
                             "cube-decreasing.exr", "cube-square.exr", "cube-by-name.exr"}) {
        const auto loaded = LoadFile(handler, File(name));
        ASSERT_TRUE(loaded) << name;
        EXPECT_EQ(loaded->desc.textureType, kTexture2D) << name;
    }
    for (const char* name : {"cube-faces.exr", "cube-tag-faces.tif"}) {
        const auto loaded = LoadFile(handler, File(name));
        ASSERT_TRUE(loaded) << name;
        EXPECT_EQ(loaded->desc.textureType, kTextureCube) << name;
        EXPECT_EQ(loaded->desc.width, 4) << name;
        EXPECT_EQ(loaded->desc.height, 4) << name;
    }
}

TEST_F(HandMade, AFlatPictureThatSaysItIsAVolumeIsResized) {
    for (const char* name : {"text-volume.png", "volume-tag.tif", "volume-by-name.exr"}) {
        const auto loaded = LoadFile(handler, File(name), {.width = 4, .height = 4});
        ASSERT_TRUE(loaded) << name;
        EXPECT_EQ(loaded->desc.textureType, kTextureVolume) << name;
        EXPECT_EQ(loaded->desc.depth, 1) << name;
        EXPECT_EQ(loaded->desc.width, 4) << name;
    }
}

TEST_F(HandMade, DirectoriesThatGoRoundAreCountedOnce) {
    const std::pair<const char*, int> cases[] = {{"directory-follows-itself.tif", 1},
                                                 {"directories-in-a-circle.tif", 3},
                                                 {"directories-back-to-the-second.tif", 5},
                                                 {"directories-400.tif", 400}};
    for (const auto& [name, count] : cases) {
        ImageDesc* const desc = handler.GetImageDesc(Wide(File(name)));
        ASSERT_NE(desc, nullptr) << name;
        EXPECT_EQ(desc->frameCount, count) << name;
        desc->Delete();
        EXPECT_TRUE(LoadFile(handler, File(name), {.level = count - 1})) << name;
        EXPECT_FALSE(LoadFile(handler, File(name), {.level = count})) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(All, HandMadeFile, testing::ValuesIn(HandMadeFiles()), NameOf);

}  // namespace
}  // namespace Kavra::Tests
