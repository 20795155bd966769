// Choosing what to load and in which format, and what the caller is told: files, frames, formats, sizes.

#include "common/PixelBlock.h"
#include "load/TextureFiles.h"
#include "support/MessageRecorder.h"

#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <thread>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::wstring>;
using OIIO::ImageSpec;

class TextureLoader : public ::testing::Test {
protected:
    std::filesystem::path RgbPng() {
        return WritePicture<unsigned char>(folder / "rgb.png", ImageSpec(2, 1, 3, OIIO::TypeUInt8),
                                           {10, 20, 30, 40, 50, 60});
    }
    std::filesystem::path Pages() {
        const std::string name = (folder / "pages.tif").string();
        const std::vector<ImageSpec> specs = {ImageSpec(2, 1, 3, OIIO::TypeUInt8), ImageSpec(1, 3, 3, OIIO::TypeUInt8)};
        const auto output = OIIO::ImageOutput::create(name);
        if (!output->open(name, 2, specs.data())) throw std::runtime_error(output->geterror());
        const Bytes first = {1, 2, 3, 4, 5, 6};
        const Bytes second = {11, 12, 13, 14, 15, 16, 17, 18, 19};
        output->write_image(OIIO::TypeUInt8, first.data());
        output->open(name, specs[1], OIIO::ImageOutput::AppendSubimage);
        output->write_image(OIIO::TypeUInt8, second.data());
        output->close();
        return name;
    }

    TemporaryFolder folder;
    MessageRecorder messages;
};

class ChoosesFormat final : public IImageFormatHandler {
public:
    explicit ChoosesFormat(EFormat answer) : mAnswer(answer) {}
    EFormat ChooseFormat(EFormat fileFormat, int usage) override {
        questions.emplace_back(fileFormat, usage);
        return mAnswer;
    }
    std::vector<std::pair<EFormat, int>> questions;

private:
    EFormat mAnswer;
};

// --- Which files -----------------------------------------------------------------------------------------------------

TEST_F(TextureLoader, LeavesLegacyAndUndetectedFilesAlone) {
    const auto path = RgbPng();
    for (const int type : std::vector<int>{None, CALS, FLIC, PCX, PICT, RLC, Spot, -1, 10}) {
        EXPECT_FALSE(LoadFile(path, {}, type)) << type;
    }
    EXPECT_TRUE(LoadFile(path, {}, Other));
    EXPECT_EQ(messages.Texts(), Texts{});
}

TEST_F(TextureLoader, SaysNothingOfFilesThatItCannotOpen) {
    EXPECT_FALSE(LoadFile(folder / "missing.png"));
    EXPECT_FALSE(LoadFile(folder / "missing.null")) << "the library describes such names";
    EXPECT_FALSE(LoadFile(folder.Path()));
    EXPECT_FALSE(LoadFile(folder.Write("text.png", "no picture")));
    EXPECT_FALSE(LoadFile(folder.Write("empty.dds", ""), {}, DDS));
    EXPECT_EQ(messages.Texts(), Texts{});
}

TEST_F(TextureLoader, DoesNotWaitForAPipe) {
    const auto path = folder / "pipe.png";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(LoadFile(path));
}

TEST_F(TextureLoader, OpensNamesBeyondAscii) {
    const auto path = folder / "b\xC3\xBCld \xF0\x9F\x8C\x84.png";
    std::filesystem::copy_file(RgbPng(), path);
    EXPECT_TRUE(LoadFile(path));
}

// --- Which frame -----------------------------------------------------------------------------------------------------

TEST_F(TextureLoader, LoadsTheFrameAskedForWithItsOwnSize) {
    const auto path = Pages();
    const LoadedTexture second = LoadFile(path, {.level = 1});
    ASSERT_TRUE(second);
    EXPECT_EQ(second.desc.width, 1);
    EXPECT_EQ(second.desc.height, 3);
    EXPECT_EQ(second.bytes, (Bytes{11, 12, 13, 255, 14, 15, 16, 255, 17, 18, 19, 255}));
}

TEST_F(TextureLoader, TakesANegativeFrameAsTheFirst) {
    const LoadedTexture texture = LoadFile(Pages(), {.level = -3});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
    EXPECT_EQ(messages.Texts(), Texts{});
}

TEST_F(TextureLoader, WarnsOfAFrameBeyondTheFile) {
    const auto path = Pages();
    for (const int level : {2, 5, 0x7FFFFFFF}) {
        messages.Clear();
        EXPECT_FALSE(LoadFile(path, {.level = level}));
        EXPECT_EQ(messages.Texts(), Texts{L"Frame index out of range"}) << level;
    }
    EXPECT_FALSE(messages.Entries().front().hasDetail);
    EXPECT_EQ(messages.Entries().front().kind, Objects::EMessageKind::kWarning);
}

// --- Which format ----------------------------------------------------------------------------------------------------

TEST_F(TextureLoader, KeepsTheFilesFormatUnlessAskedForAnother) {
    const LoadedTexture texture = LoadFile(RgbPng());
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kR8G8B8A8);
    EXPECT_EQ(texture.bytes, (Bytes{10, 20, 30, 255, 40, 50, 60, 255}));
}

TEST_F(TextureLoader, RefusesFormatsThatTheLibraryHasNoTypeFor) {
    for (const EFormat format :
         {kR32G32B32F, kR8G8B8A8Alt, kBC1, static_cast<EFormat>(12345), static_cast<EFormat>(-1)}) {
        messages.Clear();
        EXPECT_FALSE(LoadFile(RgbPng(), {.format = format})) << format;
        EXPECT_EQ(messages.Texts(), Texts{L"format is not supported"}) << format;
    }
}

TEST_F(TextureLoader, AsksTheFormatHandlerOnceWhenNoFormatIsWanted) {
    ChoosesFormat handler(kL8);
    const LoadedTexture texture = LoadFile(RgbPng(), {.formatHandler = &handler});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kL8);
    EXPECT_EQ(handler.questions, (std::vector<std::pair<EFormat, int>>{{kR8G8B8A8, 8}}));
    // 0.587 x 20 + 0.299 x 10 + 0.114 x 30 = 18.15; 0.587 x 50 + 0.299 x 40 + 0.114 x 60 = 48.15
    EXPECT_EQ(texture.bytes, (Bytes{18, 48}));
}

TEST_F(TextureLoader, DoesNotAskTheFormatHandlerWhenAFormatIsWanted) {
    ChoosesFormat handler(kL8);
    EXPECT_TRUE(LoadFile(RgbPng(), {.format = kR8G8B8A8, .formatHandler = &handler}));
    EXPECT_TRUE(handler.questions.empty());
}

TEST_F(TextureLoader, TakesAFormatHandlersUnknownAsTheFilesFormat) {
    ChoosesFormat handler(kUnknown);
    const auto path = WritePicture<float>(folder / "f.tif", ImageSpec(1, 1, 3, OIIO::TypeFloat), {0.25F, 2, -1});
    const LoadedTexture texture = LoadFile(path, {.formatHandler = &handler});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kR32G32B32A32F);
    EXPECT_EQ(texture.As<float>(), (std::vector<float>{0.25F, 2, -1, 1}));
}

TEST_F(TextureLoader, WarnsOfAFormatHandlersImpossibleAnswer) {
    ChoosesFormat handler(kR32G32B32F);
    EXPECT_FALSE(LoadFile(RgbPng(), {.formatHandler = &handler}));
    EXPECT_EQ(messages.Texts(), Texts{L"format is not supported"});
}

TEST_F(TextureLoader, LeavesFilesOfUnknownPixelsWithoutAMessage) {
    const auto path = WritePicture<std::uint32_t>(folder / "ids.exr", ImageSpec(1, 1, 1, OIIO::TypeUInt32), {7});
    EXPECT_FALSE(LoadFile(path, {}, OpenEXR));
    EXPECT_EQ(messages.Texts(), Texts{});
}

// --- What the caller is told -----------------------------------------------------------------------------------------

TEST_F(TextureLoader, DescribesTheBlock) {
    const LoadedTexture texture = LoadFile(RgbPng());
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.width, 2);
    EXPECT_EQ(texture.desc.height, 1);
    EXPECT_EQ(texture.desc.depth, 1);
    EXPECT_EQ(texture.desc.rowPitch, 8);
    EXPECT_EQ(texture.desc.dataSize, 8U);
    EXPECT_EQ(texture.desc.textureType, kTexture2D);
    EXPECT_FALSE(texture.desc.hasAlpha);
    EXPECT_FALSE(texture.desc.hasTransparentPixels);
    EXPECT_FALSE(texture.desc.hasTranslucentPixels);
    EXPECT_TRUE(texture.desc.defaultOrientation);
    EXPECT_EQ(texture.desc.orientation, kTopLeft);
    EXPECT_EQ(texture.desc.gamma, 2.2);
}

TEST_F(TextureLoader, TellsTheOrientationItWasAskedFor) {
    const LoadedTexture texture = LoadFile(RgbPng(), {.orientation = kTopRight});
    ASSERT_TRUE(texture);
    EXPECT_FALSE(texture.desc.defaultOrientation);
    EXPECT_EQ(texture.desc.orientation, kTopRight);
    EXPECT_EQ(texture.bytes, (Bytes{40, 50, 60, 255, 10, 20, 30, 255}));
}

TEST_F(TextureLoader, PassesTheFilesGammaOn) {
    PngFile png{.gamma = 50000};  // encoded with an exponent of 1 / 2
    png.rows = {0, 1, 2, 3};
    const auto path = folder.Write("g.png", png.Bytes());
    const LoadedTexture texture = LoadFile(path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.gamma, 0.5);
}

// --- Memory ----------------------------------------------------------------------------------------------------------

TEST_F(TextureLoader, TakesOneBlockWhereNothingIsConverted) {
    const ImageSpec rgba(64, 64, 4, OIIO::TypeUInt8);
    const auto path = WritePicture(folder / "rgba.png", rgba, Bytes(64 * 64 * 4, 200));
    for (const auto& file : {path, RgbPng()}) {
        for (const EFormat format : {kUnknown, kR8G8B8X8, kR32G32B32A32F}) {
            const std::size_t before = Objects::ObjModel::BlockCounters().totalBlocks;
            ASSERT_TRUE(LoadFile(file, {.format = format}));
            EXPECT_EQ(Objects::ObjModel::BlockCounters().totalBlocks - before, 1U) << file << format;
        }
    }
}

TEST_F(TextureLoader, FreesEveryBlock) {
    const std::size_t before = Objects::ObjModel::BlockCounters().liveBlocks;
    const auto path = RgbPng();
    EXPECT_TRUE(LoadFile(path, {.width = 1, .format = kB8G8R8A8, .orientation = kTopRight}));
    EXPECT_TRUE(LoadFile(path, {.format = kL8}));
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    EXPECT_FALSE(LoadFile(path));
    EXPECT_EQ(Objects::ObjModel::BlockCounters().liveBlocks, before);
}

TEST_F(TextureLoader, GivesNothingForPicturesThatEndEarly) {
    for (const char* name : {"a.png", "a.tif", "a.exr", "a.bmp", "a.sgi", "a.ppm"}) {
        Bytes pixels(48 * 48 * 3);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<unsigned char>(i * i * 31 >> 3);
        const auto path = WritePicture(folder / name, ImageSpec(48, 48, 3, OIIO::TypeUInt8), pixels);
        const int type = std::string_view(name) == "a.exr" ? OpenEXR : Other;
        ASSERT_TRUE(LoadFile(path, {}, type)) << name;
        std::filesystem::resize_file(path, std::filesystem::file_size(path) * 3 / 4);
        EXPECT_FALSE(LoadFile(path, {}, type)) << name;
    }
}

TEST_F(TextureLoader, KeepsTheTopOfAJpegThatEndsEarly) {
    const auto path = WritePicture(folder / "a.jpg", ImageSpec(64, 64, 3, OIIO::TypeUInt8), Bytes(64 * 64 * 3, 255));
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 20);
    const LoadedTexture texture = LoadFile(path);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes[0], 255);
}

TEST_F(TextureLoader, AHeaderThatClaimsAGigabyteCostsNone) {
    const PngFile bomb{.width = 16000, .height = 16000};
    const auto path = folder.Write("bomb.png", bomb.Bytes());
    EXPECT_FALSE(LoadFile(path));
    EXPECT_EQ(messages.Texts(), Texts{});
}

TEST_F(TextureLoader, AsksForNoBlockAboveTheCeiling) {
    const auto path = WritePicture(folder / "big.png", ImageSpec(256, 256, 3, OIIO::TypeUInt8), Bytes(256 * 256 * 3));
    Objects::ObjModel::SetBlockCeiling(256 * 256 * 4 - 1);
    const std::size_t before = Objects::ObjModel::BlockCounters().totalBlocks;
    EXPECT_FALSE(LoadFile(path));
    EXPECT_EQ(Objects::ObjModel::BlockCounters().totalBlocks, before);
    Objects::ObjModel::SetBlockCeiling(256 * 256 * 4);
    EXPECT_TRUE(LoadFile(path));
    Objects::ObjModel::SetBlockCeiling(0);
}

TEST_F(TextureLoader, LoadsOnManyThreadsAtOnce) {
    const auto path = RgbPng();
    const Bytes expected = LoadFile(path).bytes;
    std::atomic<int> wrong = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round)
                wrong += LoadFile(path).bytes != expected;
        });
    }
    threads.clear();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace Kavra::Tests
