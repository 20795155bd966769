#include "output/SavingFixture.h"

#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/Sys.h>
#include <kavra/objects/ObjModel.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>
#include <string>

using namespace Kavra::Devices;
using Kavra::Tests::MessageRecorder;
using Kavra::Tests::Texture;
using Kavra::Tests::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TextureSaving = Kavra::Tests::Saving;

TEST_F(TextureSaving, WithoutPixelsNothingIsSaved) {
    EXPECT_FALSE(handler.SaveTexture(Wide(folder / "sub/x.png")));
    EXPECT_FALSE(handler.SaveTexture(L""));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(TextureSaving, BlockCompressedFormatsGoToDdsOnlyAndMakeNoFolder) {
    Texture texture(4, 4, kR32G32B32A32F);
    for (int format = 6; format <= 17; ++format) {
        texture.desc.format = static_cast<EFormat>(format);
        messages.Clear();
        EXPECT_FALSE(Save("sub/x.png", texture)) << format;
        EXPECT_THAT(messages.Entries(), ElementsAre(MessageRecorder::Entry{Kavra::Objects::EMessageKind::kWarning,
                                                                           L"format is not supported", false}))
            << format;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(TextureSaving, TheFormatIsLookedAtBeforeThePath) {
    Texture texture(4, 4, kBC3);
    texture.Fill(16);
    EXPECT_FALSE(handler.SaveTexture(L"", texture.desc, texture.bytes.data()));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"format is not supported"));
}

TEST_F(TextureSaving, ItsNeighboursAndTheNewerCompressedFormatsAreNotWarnedAbout) {
    Texture texture(4, 4, kR32G32B32A32F);
    for (const int format : {5, 18, 73, 74, 75, 76, 77, 78}) {
        texture.desc.format = static_cast<EFormat>(format);
        EXPECT_FALSE(Save("sub/x.png", texture)) << format;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_TRUE(std::filesystem::is_directory(folder / "sub"));
}

TEST_F(TextureSaving, ADdsPathIsOneInAnyCase) {
    Texture texture(4, 4, kBC3);
    texture.Fill(16);
    EXPECT_TRUE(Save("x.DDS", texture));
    EXPECT_TRUE(Save(".dds", texture));
    EXPECT_FALSE(Save("xdds", texture));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"format is not supported"));
}

TEST_F(TextureSaving, MissingFoldersAreMade) {
    const Texture texture(2, 2, kR8G8B8A8);
    EXPECT_TRUE(Save("a/b/x.png", texture));
    EXPECT_TRUE(Save("c/d/x.dds", texture));
    EXPECT_TRUE(Exists("a/b/x.png"));
    EXPECT_TRUE(Exists("c/d/x.dds"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(TextureSaving, AFolderThatCannotBeMadeIsWarnedAboutForEveryKindOfFile) {
    folder.Write("file", "text");
    const Texture texture(2, 2, kR8G8B8A8);
    EXPECT_FALSE(Save("file/x.png", texture));
    EXPECT_FALSE(Save("file/x.dds", texture));
    EXPECT_FALSE(handler.SaveTexture(L"/proc/kavra/x.png", texture.desc, texture.bytes.data()));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"fail to create specified folder", L"fail to create specified folder",
                                              L"fail to create specified folder"));
}

TEST_F(TextureSaving, APathWithoutEndIsWrong) {
    const Texture texture(2, 2, kR8G8B8A8);
    const std::wstring path = std::wstring(5000, L'a') + L"/x.png";
    EXPECT_FALSE(handler.SaveTexture(path.c_str(), texture.desc, texture.bytes.data()));
    EXPECT_FALSE(handler.SaveTexture(L"", texture.desc, texture.bytes.data()));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"wrong file path", L"wrong file path"));
}

TEST_F(TextureSaving, NoPixelsAndNoSizeAreRefusedAfterThePathWasPrepared) {
    Texture texture(2, 2, kR8G8B8A8);
    EXPECT_FALSE(handler.SaveTexture(Wide(folder / "a/x.png"), texture.desc, nullptr));
    EXPECT_FALSE(handler.SaveTexture(Wide(folder / "a/x.dds"), texture.desc, nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "a"));
    for (const int size : {0, -2}) {
        texture.desc.width = size;
        texture.desc.height = 2;
        EXPECT_FALSE(Save("x.png", texture));
        EXPECT_FALSE(Save("x.dds", texture));
        texture.desc.width = 2;
        texture.desc.height = size;
        EXPECT_FALSE(Save("x.png", texture));
        EXPECT_FALSE(Save("x.dds", texture));
    }
    EXPECT_FALSE(Exists("x.png"));
    EXPECT_FALSE(Exists("x.dds"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

/// Throws where a host's handler goes wrong.
class ThrowingFiles final : public IFileHandler {
public:
    ThrowingFiles() { Sys::SetFileHandler(this); }
    ~ThrowingFiles() override { Sys::SetFileHandler(nullptr); }
    bool PreparePath(const wchar_t*) override { throw std::runtime_error("no"); }
    bool DirectoryExists(const wchar_t*) override { return true; }
    bool CreateDirectory(const wchar_t*) override { return true; }
};

TEST_F(TextureSaving, NoExceptionLeaves) {
    const ThrowingFiles files;
    EXPECT_FALSE(Save("x.png", Texture(2, 2, kR8G8B8A8)));
    EXPECT_FALSE(Exists("x.png"));
}

TEST_F(TextureSaving, WithoutMemoryForTheRepackedRowsTheAnswerIsFalse) {
    Texture texture(16, 16, kR8G8B8A8);
    texture.desc.rowPitch = 63;
    Kavra::Objects::ObjModel::SetBlockCeiling(1023);
    EXPECT_FALSE(Save("x.png", texture));
    EXPECT_FALSE(Save("x.dds", texture));
    Kavra::Objects::ObjModel::SetBlockCeiling(0);
    EXPECT_TRUE(Save("x.png", texture));
    EXPECT_TRUE(Save("x.dds", texture));
}

}  // namespace
