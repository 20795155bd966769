#include "frame/host/devices/ExrFiles.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/EXRHandler.h>
#include <kavra/objects/ObjModel.h>

#include <ImfRgbaFile.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <thread>
#include <vector>

using Kavra::Devices::EXRHandler;
using Kavra::Objects::ObjModel;
using Kavra::Tests::ExrChannel;
using Kavra::Tests::ExrPart;
using Kavra::Tests::ReadAll;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;
using Kavra::Tests::Window;
using Kavra::Tests::WriteExr;
using Kavra::Tests::WriteMultiPartExr;
using Kavra::Tests::WriteTiledExr;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FloatNear;

namespace {

/// A folder and a handler that reads from it.
struct ExrHandlerTest : testing::Test {
    bool Read(std::string_view name) { return handler.ReadFromFile(Wide(folder / name)); }

    std::vector<float> Pixels() const {
        const std::size_t count = static_cast<std::size_t>(handler.width()) *
                                  static_cast<std::size_t>(handler.height()) * (handler.supportsAlpha() ? 4 : 3);
        return {handler.internalBuffer(), handler.internalBuffer() + count};
    }
    void ExpectEmpty() const {
        EXPECT_EQ(handler.internalBuffer(), nullptr);
        EXPECT_EQ(handler.width(), 0);
        EXPECT_EQ(handler.height(), 0);
        EXPECT_FALSE(handler.supportsAlpha());
    }

    TemporaryFolder folder;
    EXRHandler handler{true};
};

std::vector<float> Ramp(std::size_t count, float first) {
    std::vector<float> values(count);
    std::iota(values.begin(), values.end(), first);
    return values;
}

/// Four channels of a 5 x 4 picture; red counts from 0, green from 100, blue from 200, alpha from 300.
ExrPart RampPart(Imf::PixelType type) {
    return {
        Window(5, 4),
        {{"R", type, Ramp(20, 0)}, {"G", type, Ramp(20, 100)}, {"B", type, Ramp(20, 200)}, {"A", type, Ramp(20, 300)}}};
}

std::vector<float> RampPixels() {
    std::vector<float> pixels;
    for (int i = 0; i < 20; ++i)
        for (int channel = 0; channel < 4; ++channel)
            pixels.push_back(static_cast<float>(i + 100 * channel));
    return pixels;
}

TEST_F(ExrHandlerTest, TheFirstFourBytesAloneMakeAFilePreferred) {
    folder.Write("magic.png", std::string_view("\x76\x2F\x31\x01", 4));
    folder.Write("short.exr", std::string_view("\x76\x2F\x31", 3));
    folder.Write("other.exr", std::string_view("\x76\x2F\x31\x02", 4));
    EXPECT_TRUE(EXRHandler::IsPreferedHandler(Wide(folder / "magic.png")));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(Wide(folder / "short.exr")));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(Wide(folder / "other.exr")));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(Wide(folder / "missing.exr")));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(Wide(folder.Path())));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(L""));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(nullptr));
}

TEST_F(ExrHandlerTest, BytesThatAreKnownAreJudgedAlike) {
    constexpr std::array<unsigned char, 5> kStart = {0x76, 0x2F, 0x31, 0x01, 0x02};
    EXPECT_TRUE(EXRHandler::IsPreferedHandler(kStart.data(), 5));
    EXPECT_TRUE(EXRHandler::IsPreferedHandler(kStart.data(), 4));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(kStart.data(), 3)) << "too few";
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(kStart.data() + 1, 4));
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(nullptr, 0));
}

TEST_F(ExrHandlerTest, ANewHandlerIsEmpty) {
    ExpectEmpty();
}

TEST_F(ExrHandlerTest, HalfColoursArriveAsTheirExactFloats) {
    WriteExr(folder / "x.exr", RampPart(Imf::HALF));
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(handler.width(), 5);
    EXPECT_EQ(handler.height(), 4);
    EXPECT_TRUE(handler.supportsAlpha());
    EXPECT_EQ(Pixels(), RampPixels());
}

TEST_F(ExrHandlerTest, IntegerColoursArriveAsTheirValues) {
    WriteExr(folder / "x.exr", RampPart(Imf::UINT));
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(Pixels(), RampPixels());
}

TEST_F(ExrHandlerTest, FloatColoursKeepEveryBit) {
    const std::vector<float> values = {0.1F,
                                       -0.0F,
                                       std::numeric_limits<float>::infinity(),
                                       std::numeric_limits<float>::denorm_min(),
                                       std::numeric_limits<float>::quiet_NaN(),
                                       -3.4e38F};
    WriteExr(folder / "x.exr",
             {Window(3, 2), {{"R", Imf::FLOAT, values}, {"G", Imf::FLOAT, values}, {"B", Imf::FLOAT, values}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_FALSE(handler.supportsAlpha());
    const std::vector<float> pixels = Pixels();
    ASSERT_EQ(pixels.size(), 18U);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        EXPECT_EQ(std::bit_cast<std::uint32_t>(pixels[i]), std::bit_cast<std::uint32_t>(values[i / 3])) << i;
}

TEST_F(ExrHandlerTest, EveryLosslessCompressionGivesTheSamePixels) {
    for (const Imf::Compression compression : {Imf::NO_COMPRESSION, Imf::RLE_COMPRESSION, Imf::ZIPS_COMPRESSION,
                                               Imf::ZIP_COMPRESSION, Imf::PIZ_COMPRESSION}) {
        ExrPart part = RampPart(Imf::HALF);
        part.compression = compression;
        WriteExr(folder / "x.exr", part);
        ASSERT_TRUE(Read("x.exr")) << compression;
        EXPECT_EQ(Pixels(), RampPixels()) << compression;
    }
}

TEST_F(ExrHandlerTest, LossyCompressionsAreReadToo) {
    for (const Imf::Compression compression : {Imf::PXR24_COMPRESSION, Imf::B44_COMPRESSION, Imf::B44A_COMPRESSION,
                                               Imf::DWAA_COMPRESSION, Imf::DWAB_COMPRESSION}) {
        const std::vector<float> flat(20, 0.5F);
        ExrPart part{Window(5, 4), {{"R", Imf::HALF, flat}, {"G", Imf::HALF, flat}, {"B", Imf::HALF, flat}}};
        part.compression = compression;
        WriteExr(folder / "x.exr", part);
        ASSERT_TRUE(Read("x.exr")) << compression;
        EXPECT_THAT(Pixels(), Each(FloatNear(0.5F, 0.01F))) << compression;
    }
}

TEST_F(ExrHandlerTest, MissingColoursAreZero) {
    WriteExr(folder / "x.exr", {Window(1, 1), {{"G", Imf::FLOAT, {7}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(0, 7, 0));
}

TEST_F(ExrHandlerTest, OtherChannelsBesideTheColoursAreIgnored) {
    ExrPart part = RampPart(Imf::FLOAT);
    for (const char* name : {"Z", "Y", "normal.R", "AA", "id"})
        part.channels.push_back({name, Imf::FLOAT, Ramp(20, 900)});
    WriteExr(folder / "x.exr", part);
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(Pixels(), RampPixels());
}

TEST_F(ExrHandlerTest, LuminanceAloneIsGrey) {
    WriteExr(folder / "x.exr", {Window(2, 1), {{"Y", Imf::FLOAT, {1, 2}}, {"Z", Imf::FLOAT, {8, 9}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(1, 1, 1, 2, 2, 2));
}

TEST_F(ExrHandlerTest, LuminanceKeepsItsAlpha) {
    WriteExr(folder / "x.exr", {Window(2, 1), {{"A", Imf::HALF, {0.25F, 0.5F}}, {"Y", Imf::FLOAT, {1, 2}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(1, 1, 1, 0.25F, 2, 2, 2, 0.5F));
}

TEST_F(ExrHandlerTest, ASingleChannelOfAnyMeaningIsGrey) {
    WriteExr(folder / "x.exr", {Window(2, 1), {{"Z", Imf::FLOAT, {3, 4}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(3, 3, 3, 4, 4, 4));
}

TEST_F(ExrHandlerTest, OfSeveralUnknownChannelsTheFirstByNameIsGrey) {
    WriteExr(folder / "x.exr",
             {Window(1, 1), {{"A", Imf::FLOAT, {0.5F}}, {"depth", Imf::FLOAT, {3}}, {"u", Imf::FLOAT, {4}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(3, 3, 3, 0.5F));
}

TEST_F(ExrHandlerTest, AnAlphaAloneIsBlackWithThatAlpha) {
    WriteExr(folder / "x.exr", {Window(1, 1), {{"A", Imf::FLOAT, {0.5F}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(0, 0, 0, 0.5F));
}

TEST_F(ExrHandlerTest, WithoutColoursOfItsOwnAPictureIsItsFirstColouredLayer) {
    WriteExr(folder / "x.exr", {Window(1, 1),
                                {{"a.depth", Imf::FLOAT, {9}},
                                 {"b.A", Imf::FLOAT, {0.5F}},
                                 {"b.B", Imf::FLOAT, {3}},
                                 {"b.G", Imf::FLOAT, {2}},
                                 {"b.R", Imf::FLOAT, {1}},
                                 {"c.R", Imf::FLOAT, {7}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(1, 2, 3, 0.5F));
}

/// A luminance-chroma file of colours that vary from pixel to pixel; some of the edges are hard.
void WriteLuminanceChroma(const std::filesystem::path& path, const Imath::Box2i& window, Imf::RgbaChannels channels) {
    const int width = window.max.x - window.min.x + 1;
    const int height = window.max.y - window.min.y + 1;
    std::vector<Imf::Rgba> pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            pixels.emplace_back(x < width / 2 ? 0.75F : 0.0F, 0.1F * static_cast<float>(y),
                                0.05F * static_cast<float>(x), 0.5F);
    Imf::RgbaOutputFile file(path.c_str(), window, window, channels);
    file.setFrameBuffer(pixels.data() - window.min.x - window.min.y * width, 1, static_cast<std::size_t>(width));
    file.writePixels(height);
}

/// The file as the library's own reader of such files shows it.
std::vector<float> ReferenceColours(const std::filesystem::path& path, bool alpha) {
    Imf::RgbaInputFile file(path.c_str());
    const Imath::Box2i window = file.dataWindow();
    const int width = window.max.x - window.min.x + 1;
    const int height = window.max.y - window.min.y + 1;
    std::vector<Imf::Rgba> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    file.setFrameBuffer(pixels.data() - window.min.x - window.min.y * width, 1, static_cast<std::size_t>(width));
    file.readPixels(window.min.y, window.max.y);
    std::vector<float> colours;
    for (const Imf::Rgba& pixel : pixels) {
        colours.insert(colours.end(), {pixel.r, pixel.g, pixel.b});
        if (alpha) colours.push_back(pixel.a);
    }
    return colours;
}

TEST_F(ExrHandlerTest, LuminanceAndChromaBecomeTheColoursThatTheLibrarysOwnReaderShows) {
    for (const Imath::Box2i& window :
         {Window(2, 2), Window(16, 12), Window(64, 40), Imath::Box2i(Imath::V2i(-4, 6), Imath::V2i(15, 45))}) {
        for (const Imf::RgbaChannels channels : {Imf::WRITE_YC, Imf::WRITE_YCA}) {
            WriteLuminanceChroma(folder / "x.exr", window, channels);
            ASSERT_TRUE(Read("x.exr"));
            ASSERT_EQ(handler.width(), window.max.x - window.min.x + 1);
            ASSERT_EQ(handler.supportsAlpha(), channels == Imf::WRITE_YCA);
            EXPECT_EQ(Pixels(), ReferenceColours(folder / "x.exr", handler.supportsAlpha())) << handler.width();
        }
    }
}

TEST_F(ExrHandlerTest, AFlatColourSurvivesLuminanceAndChroma) {
    const std::vector<Imf::Rgba> pixels(64, Imf::Rgba(0.75F, 0.5F, 0.25F));
    {
        Imf::RgbaOutputFile file((folder / "x.exr").c_str(), 8, 8, Imf::WRITE_YC);
        file.setFrameBuffer(pixels.data(), 1, 8);
        file.writePixels(8);
    }
    ASSERT_TRUE(Read("x.exr"));
    const std::vector<float> read = Pixels();
    ASSERT_EQ(read.size(), 192U);
    for (std::size_t i = 0; i < read.size(); i += 3) {
        EXPECT_NEAR(read[i], 0.75F, 0.02F);
        EXPECT_NEAR(read[i + 1], 0.5F, 0.02F);
        EXPECT_NEAR(read[i + 2], 0.25F, 0.02F);
    }
}

TEST_F(ExrHandlerTest, SubsampledColoursAreRefused) {
    WriteExr(folder / "x.exr",
             {Window(4, 4),
              {{"R", Imf::FLOAT, Ramp(4, 0), 2}, {"G", Imf::FLOAT, Ramp(16, 0)}, {"B", Imf::FLOAT, Ramp(16, 0)}}});
    EXPECT_FALSE(Read("x.exr"));
    ExpectEmpty();
}

TEST_F(ExrHandlerTest, ThePictureIsTheDataWindow) {
    const Imath::Box2i window(Imath::V2i(-3, 1000), Imath::V2i(-2, 1001));
    WriteExr(folder / "x.exr", {window, {{"R", Imf::FLOAT, {1, 2, 3, 4}}}});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(handler.width(), 2);
    EXPECT_EQ(handler.height(), 2);
    EXPECT_THAT(Pixels(), ElementsAre(1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0));
}

TEST_F(ExrHandlerTest, TheTopRowComesFirstWhateverTheFilesLineOrder) {
    ExrPart part = RampPart(Imf::HALF);
    part.lineOrder = Imf::DECREASING_Y;
    WriteExr(folder / "x.exr", part);
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(Pixels(), RampPixels());
}

TEST_F(ExrHandlerTest, TilesThatOverhangTheEdgeAreReadWhole) {
    ExrPart part = RampPart(Imf::HALF);
    part.tiles = Imf::TileDescription(3, 3, Imf::ONE_LEVEL);
    WriteTiledExr(folder / "x.exr", part, 0);
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(Pixels(), RampPixels());
}

TEST_F(ExrHandlerTest, OfAMipMappedFileTheLargestLevelIsRead) {
    ExrPart part = RampPart(Imf::FLOAT);
    part.tiles = Imf::TileDescription(2, 2, Imf::MIPMAP_LEVELS);
    WriteTiledExr(folder / "x.exr", part, -1);
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(Pixels(), RampPixels());
}

TEST_F(ExrHandlerTest, OfSeveralPartsTheFirstIsRead) {
    const ExrPart other{Window(2, 2), {{"R", Imf::FLOAT, Ramp(4, 50)}}};
    WriteMultiPartExr(folder / "x.exr", {RampPart(Imf::HALF), other});
    ASSERT_TRUE(Read("x.exr"));
    EXPECT_EQ(Pixels(), RampPixels());
    WriteMultiPartExr(folder / "y.exr", {other, RampPart(Imf::HALF)});
    ASSERT_TRUE(Read("y.exr"));
    EXPECT_THAT(Pixels(), ElementsAre(50, 0, 0, 51, 0, 0, 52, 0, 0, 53, 0, 0));
}

TEST_F(ExrHandlerTest, DeepDataIsRefused) {
    Kavra::Tests::WriteDeepExr(folder / "x.exr", 4, 4);
    EXPECT_TRUE(EXRHandler::IsPreferedHandler(Wide(folder / "x.exr")));
    EXPECT_FALSE(Read("x.exr"));
    ExpectEmpty();
}

TEST_F(ExrHandlerTest, APictureWithRowsMissingIsRefused) {
    ExrPart part = RampPart(Imf::HALF);
    part.compression = Imf::ZIPS_COMPRESSION;
    part.rowsWritten = 3;
    WriteExr(folder / "x.exr", part);
    EXPECT_FALSE(Read("x.exr"));
    ExpectEmpty();
}

TEST_F(ExrHandlerTest, APictureWithTilesMissingIsRefused) {
    ExrPart part = RampPart(Imf::HALF);
    part.tiles = Imf::TileDescription(2, 2, Imf::ONE_LEVEL);
    part.rowsWritten = 1;
    WriteTiledExr(folder / "x.exr", part, 0);
    EXPECT_FALSE(Read("x.exr"));
    ExpectEmpty();
}

TEST_F(ExrHandlerTest, NoTruncationIsTakenForAPictureNorPrinted) {
    ExrPart tiled = RampPart(Imf::HALF);
    tiled.tiles = Imf::TileDescription(2, 2, Imf::ONE_LEVEL);
    WriteExr(folder / "scanline.exr", RampPart(Imf::HALF));
    WriteTiledExr(folder / "tiled.exr", tiled, 0);
    WriteLuminanceChroma(folder / "chroma.exr", Window(16, 16), Imf::WRITE_YCA);
    testing::internal::CaptureStderr();
    for (const char* name : {"scanline.exr", "tiled.exr", "chroma.exr"}) {
        const std::vector<unsigned char> whole = ReadAll(folder / name);
        for (std::size_t length = 0; length < whole.size(); length += 7) {
            folder.Write("x.exr", std::span(whole).first(length));
            EXPECT_FALSE(Read("x.exr")) << name << " " << length;
            ExpectEmpty();
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, 200), "");
}

/// Overwrites the data window that a file declares: min x, min y, max x, max y.
void DeclareWindow(std::vector<unsigned char>& bytes, std::array<std::int32_t, 4> window) {
    constexpr std::string_view kKey("dataWindow\0box2i\0\x10\0\0\0", 21);
    const auto at = std::search(bytes.begin(), bytes.end(), kKey.begin(), kKey.end());
    ASSERT_NE(at, bytes.end());
    std::memcpy(&*at + kKey.size(), window.data(), sizeof window);
}

TEST_F(ExrHandlerTest, SizesThatTheFileCannotHoldAllocateNothing) {
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
    WriteExr(folder / "whole.exr", RampPart(Imf::HALF));
    const std::vector<unsigned char> whole = ReadAll(folder / "whole.exr");
    const std::size_t blocks = ObjModel::BlockCounters().totalBlocks;
    for (const std::array<std::int32_t, 4> window :
         {std::array{0, 0, (1 << 30) - 1, (1 << 30) - 1}, std::array{0, 0, kMax, kMax},
          std::array{kMin, kMin, kMax, kMax}, std::array{0, 0, 65535, 65535}, std::array{5, 5, 0, 0},
          std::array{kMax, kMax, kMin, kMin}}) {
        std::vector<unsigned char> bytes = whole;
        DeclareWindow(bytes, window);
        folder.Write("x.exr", bytes);
        EXPECT_FALSE(Read("x.exr")) << window[0] << " " << window[2];
        ExpectEmpty();
    }
    EXPECT_EQ(ObjModel::BlockCounters().totalBlocks, blocks);
}

TEST_F(ExrHandlerTest, TheBlockCeilingIsKept) {
    WriteExr(folder / "x.exr", RampPart(Imf::HALF));
    ObjModel::SetBlockCeiling(5 * 4 * 16 - 1);
    EXPECT_FALSE(Read("x.exr"));
    ExpectEmpty();
    ObjModel::SetBlockCeiling(5 * 4 * 16);
    EXPECT_TRUE(Read("x.exr"));
    ObjModel::SetBlockCeiling(0);
}

TEST_F(ExrHandlerTest, EachReadReplacesTheOneBefore) {
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    {
        EXRHandler own(true);
        WriteExr(folder / "x.exr", RampPart(Imf::HALF));
        WriteExr(folder / "y.exr", {Window(1, 1), {{"Y", Imf::FLOAT, {1}}}});
        EXPECT_TRUE(own.ReadFromFile(Wide(folder / "x.exr")));
        EXPECT_TRUE(own.ReadFromFile(Wide(folder / "y.exr")));
        EXPECT_EQ(own.width(), 1);
        EXPECT_FALSE(own.supportsAlpha());
        EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks + 1);
        EXPECT_FALSE(own.ReadFromFile(Wide(folder / "missing.exr")));
        EXPECT_EQ(own.internalBuffer(), nullptr);
        EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
        EXPECT_TRUE(own.ReadFromFile(Wide(folder / "x.exr")));
    }
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
}

TEST_F(ExrHandlerTest, NamesBeyondAsciiAreOpened) {
    const char* const name = "\xc3\xbc\xe4\xb8\xad\xf0\x9f\x98\x80.exr";
    WriteExr(folder / name, RampPart(Imf::HALF));
    EXPECT_TRUE(Read(name));
    EXPECT_EQ(Pixels(), RampPixels());
}

TEST_F(ExrHandlerTest, WhatIsNoRegularFileIsRefusedAtOnce) {
    ASSERT_EQ(mkfifo((folder / "pipe.exr").c_str(), 0600), 0);
    EXPECT_FALSE(EXRHandler::IsPreferedHandler(Wide(folder / "pipe.exr")));
    EXPECT_FALSE(Read("pipe.exr"));
    EXPECT_FALSE(handler.ReadFromFile(Wide(folder.Path())));
    EXPECT_FALSE(handler.ReadFromFile(L"/dev/zero"));
    EXPECT_FALSE(handler.ReadFromFile(L""));
    EXPECT_FALSE(handler.ReadFromFile(nullptr));
    folder.Write("text.exr", "no picture at all");
    EXPECT_FALSE(Read("text.exr"));
}

TEST_F(ExrHandlerTest, ThreadsReadIndependently) {
    WriteExr(folder / "x.exr", RampPart(Imf::HALF));
    const Kavra::Objects::KString path = Wide(folder / "x.exr");
    const std::vector<float> expected = RampPixels();
    std::vector<int> good(4, 0);
    {
        std::vector<std::jthread> threads;
        for (int& count : good)
            threads.emplace_back([&] {
                for (int i = 0; i < 20; ++i) {
                    EXRHandler own(true);
                    count +=
                        own.ReadFromFile(path) && std::equal(expected.begin(), expected.end(), own.internalBuffer());
                }
            });
    }
    EXPECT_THAT(good, Each(20));
}

}  // namespace
