// Texture files when memory fails: the no-answer with a reason, and under the name the old file or the whole new one.

#include "memory/ShortMemory.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/TextureFile.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Tests::kSilence;
using Kavra::Tests::ReadAll;
using Kavra::Tests::RunShortOfMemory;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

namespace {

struct TextureFileShortOfMemory : testing::Test {
    TextureFileShortOfMemory() {
        shape.format = kR8G8B8A8;
        shape.type = kTextureCube;
        shape.width = shape.height = 8;
        shape.levels = 4;
        shape.elements = 2;
        texture.assign(TextureBytes(shape), 7);
    }

    TemporaryFolder folder;
    TextureShape shape;
    std::vector<unsigned char> texture;

    bool Writes(const KString& path, int zstdLevel) const {
        TextureWriteOptions options;
        options.zstdLevel = zstdLevel;
        std::string reason;
        const bool isWritten = WriteTextureFile(path, shape, texture.data(), texture.size(), options, &reason);
        EXPECT_EQ(isWritten, reason.empty());
        return isWritten;
    }

    void ExpectOldOrWhole(const char* name, int zstdLevel) const {
        const std::filesystem::path file = folder / name;
        const KString path = Wide(file);
        ASSERT_TRUE(Writes(path, zstdLevel));
        const std::vector<unsigned char> whole = ReadAll(file), old(5000, 'o');
        folder.Write(name, old);
        RunShortOfMemory(
            kSilence, [&] { return Writes(path, zstdLevel); },
            [&] {
                const std::vector<unsigned char> found = ReadAll(file);
                EXPECT_TRUE(found == old || found == whole) << name;
                EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1) << name;
            });
        EXPECT_TRUE(ReadAll(file) == whole);
        std::filesystem::remove(file);
    }

    void ExpectReadOrReason(const char* name, int zstdLevel) const {
        const KString path = Wide(folder / name);
        ASSERT_TRUE(Writes(path, zstdLevel));
        std::vector<unsigned char> read(texture.size());
        RunShortOfMemory(kSilence, [&] {
            TextureFileReader reader;
            const bool isRead = reader.Open(path) && reader.ReadAll(read.data());
            EXPECT_EQ(isRead, *reader.Reason() == '\0');
            return isRead;
        });
        EXPECT_TRUE(read == texture);
        std::filesystem::remove(folder / name);
    }
};

TEST_F(TextureFileShortOfMemory, AFileIsWrittenWholeOrNotAtAll) {
    ExpectOldOrWhole("a.dds", 0);
    ExpectOldOrWhole("a.ktx2", 0);
    ExpectOldOrWhole("a.ktx2", 3);
}

TEST_F(TextureFileShortOfMemory, ATextureIsReadOrAReasonTold) {
    ExpectReadOrReason("a.dds", 0);
    ExpectReadOrReason("a.ktx2", 0);
    ExpectReadOrReason("a.ktx2", 3);
}

}  // namespace
