#include "output/CountingAllocator.h"
#include "output/ImageFixture.h"
#include "output/SavingFixture.h"
#include "output/SmallDisk.h"

#include <kavra/devices/Sys.h>
#include <kavra/objects/ObjModel.h>

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <clocale>
#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;
using Kavra::Tests::Calls;
using Kavra::Tests::CountingAllocator;
using Kavra::Tests::FilePicture;
using Kavra::Tests::Hold;
using Kavra::Tests::Image;
using Kavra::Tests::ReadPicture;
using Kavra::Tests::RecordingHandler;
using Kavra::Tests::RecordingTexture;
using Kavra::Tests::SmallDisk;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Bytes = std::vector<unsigned char>;

/// The host's handler is one that writes down what it is asked to save.
struct ImageSaving : Kavra::Tests::Images {
    ImageSaving() { Sys::SetImageHandler(&host); }
    ~ImageSaving() override { Sys::SetImageHandler(nullptr); }

    bool Save(const Image& image, std::string_view name) { return image->Save(Wide(folder / name)); }
    FilePicture Read(std::string_view name) const { return ReadPicture(folder / name); }

    TemporaryFolder folder;
    Calls calls;
    RecordingHandler host{calls};
};

TEST_F(ImageSaving, GoesThroughTheLibrary) {
    const Image image = Filled<unsigned char>(2, 1, kB8G8R8A8, {10, 20, 30, 40, 50, 60, 70, 80});
    for (const char* name : {"x.png", "a/b/x.tif", "x.tga"}) {
        ASSERT_TRUE(Save(image, name)) << name;
        EXPECT_THAT(Read(name).pixels, ElementsAre(30, 20, 10, 40, 70, 60, 50, 80)) << name;
    }
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageSaving, KeepsTypeAndChannels) {
    ASSERT_TRUE(Save(Filled<float>(1, 1, kR32G32B32A32F, {-1.5F, 2.0F, 70000.0F, 0.25F}), "x.exr"));
    EXPECT_THAT(Read("x.exr").As<float>(), ElementsAre(-1.5F, 2.0F, 70000.0F, 0.25F));
    ASSERT_TRUE(Save(Counting(3, 1), "x.tif"));
    EXPECT_EQ(Read("x.tif").channels, 1);
    EXPECT_THAT(Read("x.tif").pixels, ElementsAre(1, 2, 3));
}

TEST_F(ImageSaving, AlphaIsNotMultipliedIntoTheColoursOfAnyKindOfImage) {
    RecordingTexture texture(1, 1, kR8G8B8A8);
    texture.bytes = {100, 50, 25, 128};
    const Image fromTarget = Filled<unsigned char>(1, 1, kR8G8B8A8, {100, 50, 25, 128});
    const Image blank = Blank(1, 1, kR8G8B8A8), fromTexture = Hold(Host().CreateImage(&texture));
    for (const Image* image : {&blank, &fromTexture, &fromTarget}) {
        ASSERT_TRUE((*image)->Paste(fromTarget.get(), 0, 0, 1, 1, 0, 0));
        ASSERT_TRUE(Save(*image, "x.png"));
        EXPECT_THAT(Read("x.png").pixels, ElementsAre(100, 50, 25, 128));
    }
    EXPECT_EQ(texture.calls.back(), "Release");
}

TEST_F(ImageSaving, ADdsGoesToTheHostsHandler) {
    const Image image = Filled<unsigned char>(1, 2, kB8G8R8X8, {10, 20, 30, 40, 50, 60, 70, 80});
    ASSERT_TRUE(Save(image, "sub/x.DDS"));
    EXPECT_EQ(calls, Calls{"SaveTexture"});
    EXPECT_EQ(host.saved.path, (folder / "sub/x.DDS").wstring());
    EXPECT_THAT(host.saved.bytes, ElementsAre(30, 20, 10, 40, 70, 60, 50, 80));
    const ImageDescription& desc = host.saved.desc;
    EXPECT_EQ(desc.width, 1);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(desc.format, kR8G8B8A8);
    EXPECT_EQ(desc.rowPitch, 4);
    EXPECT_FALSE(std::filesystem::exists(folder / "sub"));  // the handler's own affair
    host.saves = false;
    EXPECT_FALSE(Save(image, "x.dds"));
}

TEST_F(ImageSaving, ThroughTheRealHandlerADdsIsWritten) {
    Sys::SetImageHandler(&handler);
    ASSERT_TRUE(Save(Filled<unsigned char>(1, 1, kR8G8B8A8, {10, 20, 30, 40}), "sub/x.dds"));
    EXPECT_THAT(Read("sub/x.dds").pixels, ElementsAre(10, 20, 30, 40));
}

TEST_F(ImageSaving, WhatTheLibraryFailsToWriteGoesToTheHostsHandler) {
    const Image image = Counting(2, 2);
    for (const char* name : {"x.xyz", "x.hdr", "x"}) {
        calls.clear();
        EXPECT_TRUE(Save(image, name)) << name;
        EXPECT_EQ(calls, Calls{"SaveTexture"});
        EXPECT_EQ(host.saved.desc.rowPitch, 2);
        EXPECT_THAT(host.saved.bytes, ElementsAre(1, 2, 3, 4));
    }
    const Image pair = Blank(40, 40, kR16G16);
    EXPECT_TRUE(Save(pair, "x.dpx"));
    EXPECT_TRUE(Save(pair, "x.jxl"));
    EXPECT_EQ(calls.size(), 3U);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageSaving, ThenThatHandlersMessagesAreRaisedAsWell) {
    Sys::SetImageHandler(&handler);
    folder.Write("plain", "text");
    ASSERT_EQ(mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    EXPECT_FALSE(Save(Counting(2, 2), "pipe.png"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageSaving, AFolderThatCannotBePreparedEndsIt) {
    folder.Write("file", "text");
    EXPECT_FALSE(Save(Counting(1, 1), "file/x.png"));
    EXPECT_FALSE(Counting(1, 1)->Save(L""));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"fail to create specified folder", L"wrong file path"));
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ImageSaving, WithoutAHostsHandlerTheAnswerIsFalse) {
    Sys::SetImageHandler(nullptr);
    EXPECT_FALSE(Save(Counting(1, 1), "x.dds"));
    EXPECT_FALSE(Save(Counting(1, 1), "x.xyz"));
    EXPECT_TRUE(Save(Counting(1, 1), "x.png"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageSaving, NoExceptionOfTheHostsHandlerLeaves) {
    host.throws = true;
    EXPECT_FALSE(Save(Counting(1, 1), "x.dds"));
}

TEST_F(ImageSaving, NamesBeyondAsciiAreWrittenInEveryLocale) {
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    ASSERT_TRUE(Save(Counting(1, 1), "\xc3\xbc\xe4\xb8\xad\xf0\x9f\x98\x80.png"));
    EXPECT_THAT(Read("\xc3\xbc\xe4\xb8\xad\xf0\x9f\x98\x80.png").pixels, ElementsAre(1));
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ImageSaving, AFullDiskIsAFailure) {
    Sys::SetImageHandler(&handler);
    Bytes noise(64 * 64 * 4);
    unsigned state = 1;
    for (unsigned char& byte : noise)
        byte = static_cast<unsigned char>((state = state * 1664525U + 1013904223U) >> 24);
    const Image image = Filled(64, 64, kR8G8B8A8, noise);
    const SmallDisk disk(600);
    for (const char* name : {"x.png", "x.tif", "x.jpg", "x.webp", "x.dds"})
        EXPECT_FALSE(Save(image, name)) << name;
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- textures --------------------------------------------------------------------------------------------------------

TEST_F(ImageSaving, ATextureSavesItselfUntilSomethingWasPasted) {
    RecordingTexture texture(2, 1, kL8);
    texture.bytes = {1, 2};
    const Image image = Hold(Host().CreateImage(&texture));
    texture.calls.clear();
    EXPECT_TRUE(Save(image, "x.png"));
    EXPECT_TRUE(Save(image, "x.xyz"));
    EXPECT_TRUE(Save(image, "x.dds"));
    EXPECT_EQ(texture.calls, (Calls{"Save", "Save", "Save"}));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));

    texture.calls.clear();
    EXPECT_FALSE(image->Paste(image.get(), 0, 0, 5, 1, 0, 0));  // a failed one changes nothing
    EXPECT_FALSE(image->Paste(nullptr, 0, 0, 1, 1, 0, 0));
    EXPECT_TRUE(Save(image, "x.png"));
    EXPECT_EQ(texture.calls, Calls{"Save"});

    texture.calls.clear();
    EXPECT_TRUE(image->Paste(image.get(), 0, 0, 1, 1, 1, 0));
    EXPECT_TRUE(Save(image, "x.png"));
    EXPECT_THAT(texture.calls, IsEmpty());
    EXPECT_THAT(Read("x.png").pixels, ElementsAre(1, 1));
}

TEST_F(ImageSaving, WhatTheTextureAnswersIsTheAnswer) {
    RecordingTexture texture(2, 1, kL8);
    texture.saves = false;
    const Image image = Hold(Host().CreateImage(&texture));
    EXPECT_FALSE(Save(image, "x.png"));
    texture.throwsIn = "Save";
    EXPECT_FALSE(Save(image, "x.png"));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ImageSaving, ATextureWithoutPixelsSavesItselfToo) {
    RecordingTexture texture(4, 4, kR32G32B32A32F);
    texture.format = kBC1;
    const Image image = Hold(Host().CreateImage(&texture));
    EXPECT_TRUE(Save(image, "x.dds"));
    EXPECT_EQ(texture.calls, (Calls{"AddRef", "Save"}));
}

TEST_F(ImageSaving, NothingIsLeftBehind) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator);
    {
        const Image image = Blank(8, 8, kR8G8B8A8);
        EXPECT_TRUE(Save(image, "x.png"));
        EXPECT_TRUE(Save(image, "x.dds"));
        EXPECT_TRUE(Save(image, "x.xyz"));
        EXPECT_EQ(blocks.LiveBlocks(), 1U);
    }
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
}

}  // namespace
