#include "readers/Decode.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/flic/FlicBytes.h"
#include "readers/flic/FlicReader.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;

constexpr unsigned kColour256 = 4, kDeltaFlc = 7, kColour64 = 11, kDeltaFli = 12, kBlack = 13, kByteRun = 15,
                   kCopy = 16;

/// The pixel that index `index` has in the counting palette.
void AddPixel(Bytes& pixels, unsigned index) {
    for (unsigned component = 0; component < 3; ++component)
        pixels.push_back(static_cast<unsigned char>(index + component));
    pixels.push_back(255);
}

Bytes Pixels(std::initializer_list<unsigned> indices) {
    Bytes pixels;
    for (const unsigned index : indices)
        AddPixel(pixels, index);
    return pixels;
}

/// A frame's own chunk, the counting palette, and a copy of 2 x 1 indices: three chunks.
void AddFirstFrame(ByteBuilder& file) {
    AddFrame(file);
    AddChunk(file, kColour256, CountingPalette());
    AddChunk(file, kCopy, BytesOf({10, 11}));
}

/// A frame of two chunks that sets the first index.
void AddNextFrame(ByteBuilder& file, unsigned index) {
    AddFrame(file);
    AddChunk(file, kDeltaFli, BytesOf({0, 0, 1, 0, 1, 0, 1, index}));
}

/// 2 x 1 pixels, 11 chunks in 5 frames: indices 10 11, then 1, 2, 3, 4 in place of the first.
ByteBuilder FiveFrames(unsigned framesInHeader) {
    ByteBuilder file = FlicHeaderBytes(framesInHeader, 2, 1);
    AddFirstFrame(file);
    for (unsigned index = 1; index <= 4; ++index)
        AddNextFrame(file, index);
    return file;
}

Bytes Block(const ByteBuilder& file, int frame = 0) {
    const Decoded decoded = Decode<FLICReader>(file, frame);
    EXPECT_TRUE(decoded.read);
    EXPECT_TRUE(decoded.messages.empty());
    return decoded.block;
}

TEST(FlicReader, TheFirstFrameIsItsIndicesInItsColours) {
    ByteBuilder file = FlicHeaderBytes(3, 2, 2);
    AddFrame(file);
    AddChunk(file, kColour256, CountingPalette());
    AddChunk(file, kByteRun, BytesOf({1, 2, 100, 1, 0xFE, 101, 255}));
    const Decoded decoded = Decode<FLICReader>(file);
    ASSERT_TRUE(decoded.read);
    EXPECT_EQ(decoded.width, 2);
    EXPECT_EQ(decoded.height, 2);
    EXPECT_EQ(decoded.rowPitch, 8);
    EXPECT_EQ(decoded.format, kR8G8B8A8);
    EXPECT_EQ(decoded.frameCount, 3);
    EXPECT_EQ(decoded.orientation, kTopLeft);
    EXPECT_EQ(decoded.block, Pixels({100, 100, 101, 255}));
}

TEST(FlicReader, TheFactoryMakesIt) {
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(FLIC));
    EXPECT_NE(dynamic_cast<FLICReader*>(reader.get()), nullptr);
}

TEST(FlicReader, EveryKindOfChunkIsPlayed) {
    ByteBuilder file = FlicHeaderBytes(20, 2, 1);
    AddFrame(file);
    AddChunk(file, kColour64, BytesOf({1, 0, 9, 3, 63, 1, 2, 64, 4, 5, 6, 7, 8}));
    AddChunk(file, kCopy, BytesOf({9, 10}));
    AddFrame(file);
    AddChunk(file, kDeltaFlc, BytesOf({1, 0, 1, 0, 0, 1, 10, 11}));
    AddFrame(file);
    AddChunk(file, kDeltaFli, BytesOf({0, 0, 1, 0, 1, 1, 1, 9}));
    AddFrame(file);
    AddChunk(file, kBlack, ByteBuilder());
    AddFrame(file);
    AddChunk(file, kByteRun, BytesOf({0, 2, 11}));
    AddFrame(file);
    const Bytes nine = {252, 4, 8, 255}, ten = {0, 16, 20, 255}, eleven = {24, 28, 32, 255}, zero = {0, 0, 0, 255};
    const auto pair = [](Bytes a, const Bytes& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    EXPECT_EQ(Block(file, 0), pair(nine, ten));
    EXPECT_EQ(Block(file, 1), pair(ten, eleven));
    EXPECT_EQ(Block(file, 2), pair(ten, nine));
    EXPECT_EQ(Block(file, 3), pair(zero, zero));
    EXPECT_EQ(Block(file, 4), pair(eleven, eleven));
}

TEST(FlicReader, FramesBeforeTheFirstAreTheFirst) {
    EXPECT_EQ(Block(FiveFrames(100), -3), Pixels({10, 11}));
    EXPECT_EQ(Block(FiveFrames(100), 0), Pixels({10, 11}));
    EXPECT_EQ(Block(FiveFrames(100), 1), Pixels({1, 11}));
}

TEST(FlicReader, FramesBehindTheLastAreTheLast) {
    EXPECT_EQ(Block(FiveFrames(100), 4), Pixels({4, 11}));
    EXPECT_EQ(Block(FiveFrames(100), 99), Pixels({4, 11}));
}

TEST(FlicReader, AsManyChunksArePlayedAsTheHeaderCountsFrames) {
    // The first frame has three chunks and each further one two: (frames - 3) / 2 is the last that is reached.
    EXPECT_EQ(Block(FiveFrames(5), 4), Pixels({1, 11}));
    EXPECT_EQ(Block(FiveFrames(6), 4), Pixels({1, 11})) << "the next frame has begun, but not changed anything";
    EXPECT_EQ(Block(FiveFrames(7), 4), Pixels({2, 11}));
    EXPECT_EQ(Block(FiveFrames(11), 4), Pixels({4, 11}));
    EXPECT_EQ(Decode<FLICReader>(FiveFrames(5)).frameCount, 5);
}

TEST(FlicReader, AnAnimationOfOneFrameIsBlack) {
    EXPECT_EQ(Block(FiveFrames(1)), (Bytes{0, 0, 0, 255, 0, 0, 0, 255}));
    EXPECT_EQ(Block(FiveFrames(2)), Pixels({0, 0})) << "with two the colours are there, the indices not";
    EXPECT_EQ(Block(FiveFrames(0)), (Bytes{0, 0, 0, 255, 0, 0, 0, 255}));
}

TEST(FlicReader, ChunksOfOtherKindsAreSkippedBySizeAndCount) {
    ByteBuilder file = FlicHeaderBytes(4, 2, 1);
    AddChunk(file, 0xF100, BytesOf({1, 2, 3, 4, 5}));
    AddFirstFrame(file);
    EXPECT_EQ(Block(file), Pixels({10, 11}));
    EXPECT_EQ(Block(ByteBuilder(file).At(6).Little16(3)), Pixels({0, 0})) << "it took one of the chunks";
}

TEST(FlicReader, TheSizeOfAKnownChunkIsNotUsed) {
    ByteBuilder file = FlicHeaderBytes(10, 2, 1);
    AddFrame(file);
    file.Little32(0).Little16(kColour256).Append(CountingPalette().Bytes());
    file.Little32(0xFFFFFFFF).Little16(kCopy).Byte(5).Byte(6);
    AddNextFrame(file, 9);
    EXPECT_EQ(Block(file, 1), Pixels({9, 6}));
}

TEST(FlicReader, AByteBetweenChunksShiftsAllThatFollows) {
    ByteBuilder file = FlicHeaderBytes(10, 2, 1);
    AddFirstFrame(file);
    file.Byte(0);
    AddNextFrame(file, 9);
    EXPECT_EQ(Block(file, 1), Pixels({10, 11}));
}

TEST(FlicReader, AnUnknownChunkSmallerThanItsHeaderEndsTheAnimation) {
    for (const unsigned size : {0, 1, 5}) {
        ByteBuilder file = FlicHeaderBytes(10, 2, 1);
        AddFirstFrame(file);
        file.Little32(size).Little16(99);
        AddNextFrame(file, 9);
        EXPECT_EQ(Block(file, 5), Pixels({10, 11})) << size;
    }
    ByteBuilder file = FlicHeaderBytes(10, 2, 1);
    AddFirstFrame(file);
    file.Little32(6).Little16(99);
    AddNextFrame(file, 9);
    EXPECT_EQ(Block(file, 5), Pixels({9, 11})) << "one that is just a header does not";
}

TEST(FlicReader, ASizeBeyondTheFileEndsTheAnimation) {
    ByteBuilder file = FlicHeaderBytes(10, 2, 1);
    AddFirstFrame(file);
    file.Little32(0xFFFFFFFF).Little16(99);
    AddNextFrame(file, 9);
    EXPECT_EQ(Block(file, 5), Pixels({10, 11}));
}

TEST(FlicReader, BlackComesBeforeTheRestOfItsFrame) {
    ByteBuilder file = FlicHeaderBytes(10, 2, 1);
    AddFirstFrame(file);
    AddFrame(file);
    AddChunk(file, kBlack, ByteBuilder());
    AddChunk(file, kDeltaFli, BytesOf({0, 0, 1, 0, 1, 1, 1, 8}));
    EXPECT_EQ(Block(file, 1), Pixels({0, 8}));
}

TEST(FlicReader, ColoursStayUntilTheyAreChanged) {
    ByteBuilder file = FlicHeaderBytes(10, 2, 1);
    AddFirstFrame(file);
    AddFrame(file);
    AddChunk(file, kColour256, BytesOf({1, 0, 11, 1, 50, 60, 70}));
    EXPECT_EQ(Block(file, 0), Pixels({10, 11}));
    EXPECT_EQ(Block(file, 1), (Bytes{10, 11, 12, 255, 50, 60, 70, 255}));
}

TEST(FlicReader, TheKindDecidesWhetherItIsOpened) {
    EXPECT_TRUE(Decode<FLICReader>(FiveFrames(5).At(4).Little16(0xAF11)).opened);
    EXPECT_FALSE(Decode<FLICReader>(FiveFrames(5).At(4).Little16(0xAF13)).opened);
    EXPECT_FALSE(Decode<FLICReader>(FiveFrames(5).CutTo(5)).opened);
}

TEST(FlicReader, AFileThatEndsInItsHeaderIsBlack) {
    const Decoded decoded = Decode<FLICReader>(FiveFrames(5).CutTo(12));
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(decoded.block, (Bytes{0, 0, 0, 255, 0, 0, 0, 255}));
    const Decoded narrow = Decode<FLICReader>(FiveFrames(5).CutTo(6));
    EXPECT_TRUE(narrow.opened);
    EXPECT_EQ(narrow.width, 0);
    EXPECT_EQ(narrow.frameCount, 0);
}

TEST(FlicReader, AReaderThatDoesNotOpenIsClosed) {
    const TemporaryFolder folder;
    const auto path = folder.Write("a.flc", FiveFrames(100).Bytes());
    FLICReader reader;
    Bytes pixels(8);
    EXPECT_FALSE(reader.ReadImage(pixels.data(), 0));
    ASSERT_TRUE(reader.Open(Wide(path)));
    EXPECT_TRUE(reader.ReadImage(pixels.data(), 4));
    EXPECT_EQ(pixels, Pixels({4, 11}));
    EXPECT_TRUE(reader.ReadImage(pixels.data(), 1)) << "backwards";
    EXPECT_EQ(pixels, Pixels({1, 11}));
    EXPECT_FALSE(reader.Open(Wide(folder / "none.flc")));
    EXPECT_FALSE(reader.ReadImage(pixels.data(), 0));
    EXPECT_EQ(reader.GetWidth(), 0);
}

// Damage.

/// All indices of a frame and its palette; nothing where the file is none.
Bytes Play(const ByteBuilder& file) {
    ByteSource source = file.Source();
    const auto header = ReadFlicHeader(source);
    if (!header) return {};
    FlicFrame frame(header->width, header->height);
    FlicPalette palette{};
    PlayFlic(source, *header, 3, frame, palette);
    Bytes played(frame.Indices().begin(), frame.Indices().end());
    played.insert(played.end(), palette.begin(), palette.end());
    return played;
}

void Try(const ByteBuilder& file) {
    ASSERT_EQ(Play(file), Play(file));
}

/// All kinds of chunks in few bytes.
ByteBuilder Mixed() {
    ByteBuilder file = FlicHeaderBytes(40, 4, 3);
    AddChunk(file, 0xF100, ByteBuilder(3));
    AddFrame(file);
    AddChunk(file, kColour256, BytesOf({2, 0, 1, 2, 1, 2, 3, 4, 5, 6, 3, 1, 7, 8, 9}));
    AddChunk(file, kByteRun, BytesOf({9, 4, 1, 99, 0xFC, 2, 3, 4, 5, 0, 1, 6, 0xFF, 8, 2, 9}));
    AddFrame(file);
    AddChunk(file, kColour64, BytesOf({1, 0, 4, 1, 63, 1, 2}));
    AddChunk(file, kDeltaFlc, BytesOf({2, 0, 1, 0x40, 5, 0x80, 1, 0, 0, 2, 1, 2, 3, 4, 1, 0, 0xFE, 0xFF, 5, 6}));
    AddFrame(file);
    AddChunk(file, kDeltaFli, BytesOf({1, 0, 2, 0, 2, 1, 1, 10, 1, 0xFF, 11, 1, 0, 2, 12, 13}));
    AddFrame(file);
    AddChunk(file, kBlack, ByteBuilder());
    AddChunk(file, kCopy, BytesOf({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    return file;
}

TEST(FlicHostile, CutAtEveryLength) {
    for (std::size_t length = 0; length <= Mixed().Size(); ++length)
        Try(Mixed().CutTo(length));
}

TEST(FlicHostile, EveryByteSetToExtremes) {
    for (std::size_t at = 4; at < Mixed().Size(); ++at) {
        if (at >= 12 && at < 128) continue;  // nothing is read there
        for (const unsigned value : {0x00, 0x01, 0x7F, 0x80, 0xFF})
            Try(Mixed().At(at).Byte(value));
    }
}

TEST(FlicHostile, WorkIsBoundedByTheFileNotByTheFrame) {
    // Change the last index, then clear a frame of 64 million, 32,767 times. Clearing all of it each time would take
    // minutes.
    const ByteBuilder lastIndex = BytesOf({1, 0, 0x3F, 0x5F, 5, 0x80, 0, 0});
    ByteBuilder file(128);
    file.At(128);
    for (int i = 0; i < 32'767; ++i) {
        AddChunk(file, kDeltaFlc, lastIndex);
        AddChunk(file, kBlack, ByteBuilder());
    }
    AddChunk(file, kDeltaFlc, lastIndex);
    FlicFrame frame(8000, 8000);
    FlicPalette palette{};
    ByteSource source = file.Source();
    PlayFlic(source, {.frames = 65'535, .width = 8000, .height = 8000}, 0, frame, palette);
    EXPECT_EQ(frame.Indices().back(), 5);
    EXPECT_EQ(frame.Indices().front(), 0);
}

}  // namespace
