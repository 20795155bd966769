// Animations in the common reading, beside what the contract's makes of them.

#include "readers/Decode.h"
#include "readers/FileTypeDetection.h"
#include "readers/flic/FlicBytes.h"
#include "readers/flic/FlicReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using testing::ElementsAre;
using testing::IsEmpty;

using Bytes = std::vector<unsigned char>;

struct Shown : Decoded {
    std::string difference;
};

Shown Show(const ByteBuilder& file, ELegacyReading reading, int frame) {
    const TemporaryFolder folder;
    const MessageRecorder recorder;
    Shown shown;
    FLICReader reader(reading);
    reader.LookForDifferences();
    shown.opened = reader.Open(Wide(folder.Write("file", file.Bytes())));
    if (shown.opened) ReadFrame(reader, frame, shown);
    shown.messages = recorder.Texts();
    if (reader.GetDifference() != nullptr) shown.difference = reader.GetDifference();
    return shown;
}

Shown InCommon(const ByteBuilder& file, int frame = 0) {
    return Show(file, kLegacyCommon, frame);
}
Shown InContract(const ByteBuilder& file, int frame = 0) {
    return Show(file, kLegacyContract, frame);
}

/// The indices of a frame, by the red of the counting palette.
Bytes Indices(const ByteBuilder& file, int frame = 0) {
    const Bytes pixels = InCommon(file, frame).block;
    Bytes indices;
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        indices.push_back(pixels[i]);
    return indices;
}

/// A frame's chunk around these chunks.
void AddFrameOf(ByteBuilder& file, unsigned chunks, const ByteBuilder& inside, unsigned kind = 0xF1FA) {
    file.Little32(static_cast<unsigned>(16 + inside.Size())).Little16(kind).Little16(chunks).Fill(8, 0);
    file.Append(inside.Bytes());
}

/// A first frame with the counting palette and these indices as a copy.
ByteBuilder First(std::initializer_list<unsigned> indices) {
    ByteBuilder inside;
    AddChunk(inside, kFlicColour256, CountingPalette());
    AddChunk(inside, kFlicCopy, BytesOf(indices));
    return inside;
}

ByteBuilder One(unsigned kind, const ByteBuilder& body) {
    ByteBuilder inside;
    AddChunk(inside, kind, body);
    return inside;
}

/// Sets the first index of 2 x 1.
ByteBuilder Change(unsigned index) {
    return One(kFlicDeltaFli, BytesOf({0, 0, 1, 0, 1, 0, 1, index}));
}

/// 2 x 1 pixels: 10 11, then 1, 2, 3 in place of the first.
ByteBuilder FourFrames(unsigned framesInHeader) {
    ByteBuilder file = FlicHeaderBytes(framesInHeader, 2, 1);
    AddFrameOf(file, 2, First({10, 11}));
    for (unsigned index = 1; index <= 3; ++index)
        AddFrameOf(file, 1, Change(index));
    return file;
}

/// One frame of 4 x 3 with the indices 0 to 11, and a second one that is changed by the body of a chunk.
ByteBuilder Changed(unsigned kind, const ByteBuilder& body) {
    ByteBuilder file = FlicHeaderBytes(2, 4, 3);
    AddFrameOf(file, 2, First({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    AddFrameOf(file, 1, One(kind, body));
    return file;
}

constexpr const char* kBudget = "only as many parts are played as the header counts frames, by the host's rules";

TEST(FlicMovie, AllFramesArePlayedHoweverManyChunksTheyHave) {
    for (int frame = 1; frame < 4; ++frame)
        EXPECT_THAT(Indices(FourFrames(4), frame), ElementsAre(frame, 11)) << frame;
    EXPECT_THAT(Indices(FourFrames(4), 0), ElementsAre(10, 11));
    EXPECT_EQ(InContract(FourFrames(4), 0).difference, "");
    EXPECT_EQ(InContract(FourFrames(4), 3).difference, kBudget);
    EXPECT_EQ(InCommon(FourFrames(4), 3).difference, "");
}

TEST(FlicMovie, AnAnimationOfOneFrameIsShown) {
    ByteBuilder file = FlicHeaderBytes(1, 2, 1);
    AddFrameOf(file, 2, First({10, 11}));
    EXPECT_THAT(Indices(file), ElementsAre(10, 11));
    EXPECT_EQ(InCommon(file).frameCount, 1);
    EXPECT_EQ(InContract(file).difference, kBudget);
}

TEST(FlicMovie, ChunksThatChangeNothingMakeNoDifference) {
    ByteBuilder file = FlicHeaderBytes(3, 2, 1);
    AddFrameOf(file, 2, First({10, 11}));
    AddFrameOf(file, 1, Change(10));  // beyond what the header counts
    EXPECT_EQ(InContract(file, 1).difference, "");
    AddFrameOf(file, 1, Change(12));
    EXPECT_EQ(InContract(file, 2).difference, kBudget);
}

TEST(FlicMovie, FramesAreCountedAndTheOneThatLeadsBackIsNone) {
    EXPECT_EQ(InCommon(FourFrames(4)).frameCount, 4);
    EXPECT_EQ(InCommon(FourFrames(3)).frameCount, 3) << "the fourth leads back to the first";
    EXPECT_EQ(InCommon(FourFrames(0)).frameCount, 4);
    EXPECT_EQ(InCommon(FourFrames(2)).frameCount, 4) << "a wrong number";
    EXPECT_EQ(InCommon(FourFrames(60'000)).frameCount, 4);
    EXPECT_EQ(InContract(FourFrames(60'000)).frameCount, 60'000);
    EXPECT_EQ(InCommon(FlicHeaderBytes(0, 2, 1)).frameCount, 1);
}

TEST(FlicMovie, FramesOutsideAreTheFirstAndTheLast) {
    EXPECT_THAT(Indices(FourFrames(4), -3), ElementsAre(10, 11));
    EXPECT_THAT(Indices(FourFrames(4), 99), ElementsAre(3, 11));
    EXPECT_THAT(Indices(FourFrames(3), 99), ElementsAre(2, 11)) << "never the one that leads back";
}

TEST(FlicMovie, AFrameWithoutChunksIsTheOneBefore) {
    ByteBuilder file = FourFrames(5);
    AddFrameOf(file, 0, ByteBuilder());
    EXPECT_EQ(InCommon(file).frameCount, 5);
    EXPECT_THAT(Indices(file, 4), ElementsAre(3, 11));
}

TEST(FlicMovie, ChunksOfOtherKindsAreSkippedByTheirSize) {
    ByteBuilder file = FlicHeaderBytes(2, 2, 1);
    ByteBuilder prefix;  // with something inside that looks like a frame
    AddFrameOf(prefix, 1, Change(99));
    AddChunk(file, 0xF100, prefix);
    ByteBuilder stamped;
    AddChunk(stamped, 18, BytesOf({1, 2, 3}));
    stamped.Append(First({10, 11}).Bytes());
    AddFrameOf(file, 3, stamped);
    AddChunk(file, 1234, BytesOf({5}));
    AddFrameOf(file, 1, Change(7));
    EXPECT_EQ(InCommon(file).frameCount, 2);
    EXPECT_THAT(Indices(file, 0), ElementsAre(10, 11));
    EXPECT_THAT(Indices(file, 1), ElementsAre(7, 11));
}

TEST(FlicMovie, ChunksEndWhereTheirSizeSays) {
    ByteBuilder inside;  // a byte behind each body, as programs fill them up to an even size
    AddChunk(inside, kFlicColour256, CountingPalette().Byte(0));
    AddChunk(inside, kFlicCopy, BytesOf({10, 11, 0}));
    ByteBuilder file = FlicHeaderBytes(9, 2, 1);
    AddFrameOf(file, 2, inside);
    AddFrameOf(file, 1, Change(7));
    EXPECT_THAT(Indices(file, 0), ElementsAre(10, 11));
    EXPECT_THAT(Indices(file, 1), ElementsAre(7, 11));
    EXPECT_EQ(InContract(file).difference,
              "parts of frames are looked for where others end early, by the host's rules");
}

TEST(FlicMovie, OnlyTheChunksThatAFrameCountsAreItsOwn) {
    ByteBuilder inside = Change(7);
    inside.Append(Change(8).Bytes());
    ByteBuilder file = FourFrames(5);
    AddFrameOf(file, 1, inside);
    EXPECT_THAT(Indices(file, 4), ElementsAre(7, 11));
}

TEST(FlicMovie, SixBitColoursAreWidenedExactly) {
    ByteBuilder inside;
    AddChunk(inside, kFlicColour64, BytesOf({1, 0, 0, 2, 63, 32, 1, 16, 15, 0}));
    AddChunk(inside, kFlicCopy, BytesOf({0, 1}));
    ByteBuilder file = FlicHeaderBytes(9, 2, 1);
    AddFrameOf(file, 2, inside);
    EXPECT_EQ(InCommon(file).block, (Bytes{255, 130, 4, 255, 65, 60, 0, 255}));
    EXPECT_EQ(InContract(file).block, (Bytes{252, 128, 4, 255, 64, 60, 0, 255}));
    EXPECT_EQ(InContract(file).difference, "colours of 6 bits never get fully bright by the host's rules");
}

TEST(FlicMovie, ColoursThatChangeAloneChangeThePicture) {
    ByteBuilder file = FourFrames(6);
    AddFrameOf(file, 1, One(kFlicColour256, BytesOf({2, 0, 3, 1, 50, 60, 70, 7, 1, 80, 90, 99})));
    const Bytes pixels = InCommon(file, 4).block;
    EXPECT_EQ(pixels, (Bytes{50, 60, 70, 255, 80, 90, 99, 255})) << "3, and 7 behind the entry after it";
    AddFrameOf(file, 1, One(kFlicColour256, BytesOf({2, 0, 255, 2, 1, 1, 1, 2, 2, 2, 0, 1, 9, 9, 9})));
    EXPECT_EQ(InCommon(file, 5).block, pixels) << "no entry behind the last";
}

TEST(FlicMovie, RunsBlackAndCopiesFillWholeFrames) {
    EXPECT_THAT(Indices(Changed(kFlicBlack, ByteBuilder()), 1), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_THAT(Indices(Changed(kFlicByteRun, BytesOf({1, 4, 7, 0, 2, 8, 0xFE, 1, 2, 9, 0xFC, 3, 4, 5, 6})), 1),
                ElementsAre(7, 7, 7, 7, 8, 8, 1, 2, 3, 4, 5, 6));
}

TEST(FlicMovie, RowsOfCopiesMayBeFilledUp) {
    for (const unsigned filled : {3, 4}) {
        ByteBuilder body;
        for (unsigned y = 0; y < 2; ++y)
            body.Byte(10 * y).Byte(10 * y + 1).Byte(10 * y + 2).Fill(filled - 3, 99);
        ByteBuilder inside;
        AddChunk(inside, kFlicColour256, CountingPalette());
        AddChunk(inside, kFlicCopy, body);
        ByteBuilder file = FlicHeaderBytes(9, 3, 2);
        AddFrameOf(file, 2, inside);
        EXPECT_THAT(Indices(file), ElementsAre(0, 1, 2, 10, 11, 12)) << filled;
        EXPECT_EQ(InContract(file).difference.empty(), filled == 3);
    }
}

TEST(FlicMovie, ByteDeltasCountColumnsFromPacketToPacket) {
    EXPECT_THAT(Indices(Changed(kFlicDeltaFli, BytesOf({1, 0, 2, 0, 2, 1, 1, 90, 1, 0xFF, 91, 1, 0, 2, 92, 93})), 1),
                ElementsAre(0, 1, 2, 3, 4, 90, 6, 91, 92, 93, 10, 11));
}

TEST(FlicMovie, WordDeltasSkipRowsRepeatPairsAndCountColumnsFromPacketToPacket) {
    // One row down (-1), then packets: 0 columns on, two indices; 0 on, one pair repeated.
    const ByteBuilder body = BytesOf({1, 0, 0xFF, 0xFF, 2, 0, 0, 1, 50, 51, 0, 0xFF, 60, 61});
    EXPECT_THAT(Indices(Changed(kFlicDeltaFlc, body), 1), ElementsAre(0, 1, 2, 3, 50, 51, 60, 61, 8, 9, 10, 11));
    EXPECT_THAT(Indices(Changed(kFlicDeltaFlc, BytesOf({1, 0, 1, 0, 0, 0xFE, 60, 61})), 1),
                ElementsAre(60, 61, 60, 61, 4, 5, 6, 7, 8, 9, 10, 11));
    EXPECT_THAT(Indices(Changed(kFlicDeltaFlc, BytesOf({2, 0, 1, 0, 1, 1, 70, 71, 0xFF, 0xFF, 1, 0, 2, 1, 72, 73})), 1),
                ElementsAre(0, 70, 71, 3, 4, 5, 6, 7, 8, 9, 72, 73));
}

TEST(FlicMovie, TheLastIndexOfAnOddRowHasAWordOfItsOwn) {
    ByteBuilder file = FlicHeaderBytes(2, 3, 2);
    AddFrameOf(file, 2, First({0, 1, 2, 3, 4, 5}));
    AddFrameOf(file, 1, One(kFlicDeltaFlc, BytesOf({2, 0, 77, 0x80, 1, 0, 0, 1, 50, 51, 88, 0x80, 0, 0})));
    EXPECT_THAT(Indices(file, 1), ElementsAre(50, 51, 77, 3, 4, 88));
}

TEST(FlicMovie, WordDeltasSayWhereTheReadingsPart) {
    const auto difference = [](const ByteBuilder& body) {
        return InContract(ByteBuilder(Changed(kFlicDeltaFlc, body)).At(6).Little16(99), 1).difference;
    };
    EXPECT_EQ(difference(BytesOf({1, 0, 1, 0, 0, 1, 50, 51})), "");
    EXPECT_EQ(difference(BytesOf({1, 0, 0xFF, 0xFF, 1, 0, 0, 1, 50, 51})),
              "rows that are skipped lead out of the picture by the host's rules");
    EXPECT_EQ(difference(BytesOf({1, 0, 2, 0, 0, 1, 50, 51, 0, 1, 52, 53})),
              "every change of a row counts its columns from the left by the host's rules");
    EXPECT_EQ(difference(BytesOf({1, 0, 1, 0, 0, 0xFF, 50, 51})),
              "repeated pairs of pixels are drawn by their column by the host's rules");
}

TEST(FlicMovie, DamagedChunksChangeWhatThereIsOfThemAndTheRestIsPlayed) {
    ByteBuilder file = FlicHeaderBytes(3, 4, 3);
    AddFrameOf(file, 2, First({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    ByteBuilder inside;
    AddChunk(inside, kFlicCopy, BytesOf({50, 51, 52}));  // of 12
    AddChunk(inside, kFlicDeltaFli, BytesOf({2, 0, 1, 0, 1, 3, 1, 99}));
    AddFrameOf(file, 2, inside);
    EXPECT_THAT(Indices(file, 1), ElementsAre(50, 51, 52, 3, 4, 5, 6, 7, 8, 9, 10, 99));
    const std::size_t cut = file.Size() - 16;  // in the second chunk
    EXPECT_THAT(Indices(ByteBuilder(file).CutTo(cut + 3), 1), ElementsAre(50, 51, 52, 3, 4, 5, 6, 7, 8, 9, 10, 11));
}

TEST(FlicMovie, SizesThatLeadNowhereEndWhatTheyAreIn) {
    ByteBuilder file = FourFrames(9);
    file.Little32(5).Little16(0xF1FA).Fill(10, 0);
    AddFrameOf(file, 1, Change(99));
    EXPECT_EQ(InCommon(file).frameCount, 4);
    EXPECT_THAT(Indices(file, 8), ElementsAre(3, 11));
    ByteBuilder inside;
    inside.Little32(0).Little16(kFlicBlack);
    ByteBuilder other = FourFrames(5);
    AddFrameOf(other, 1, inside);
    EXPECT_THAT(Indices(other, 4), ElementsAre(3, 11));
}

TEST(FlicMovie, TheHeaderMayTellWhereFramesBegin) {
    ByteBuilder file = FlicHeaderBytes(1, 2, 1);
    file.Fill(10, 0);
    AddFrameOf(file, 2, First({10, 11}));
    file.At(80).Little32(138);
    EXPECT_THAT(Indices(file), ElementsAre(10, 11));
    EXPECT_EQ(InContract(file).difference, "frames that begin elsewhere than usual are not found by the host's rules");
    EXPECT_THAT(Indices(ByteBuilder(file).At(80).Little32(0xFFFFFFFF)), ElementsAre(0, 0));
    ByteBuilder usual = FourFrames(4);
    EXPECT_THAT(Indices(usual.At(80).Little32(200)), ElementsAre(10, 11)) << "128 is looked at first";
}

TEST(FlicMovie, FramesMayFollowAShortHeader) {
    ByteBuilder file(12);
    file.At(4).Little16(0xAF12).Little16(1).Little16(2).Little16(1).At(12);
    ByteBuilder inside;
    AddChunk(inside, kFlicColour256, BytesOf({1, 0, 0, 1, 63, 32, 1}));
    AddFrameOf(file, 1, inside);
    EXPECT_EQ(InCommon(file).block, (Bytes{255, 130, 4, 255, 255, 130, 4, 255})) << "with colours of 6 bits";
}

TEST(FlicMovie, ASizeThatIsNotToldIsThatOfTheScreen) {
    const Shown flc = InCommon(FlicHeaderBytes(1, 0, 0)),
                fli = InCommon(FlicHeaderBytes(1, 0, 7).At(4).Little16(0xAF11));
    EXPECT_EQ(flc.width, 640);
    EXPECT_EQ(flc.height, 480);
    EXPECT_EQ(fli.width, 320);
    EXPECT_EQ(fli.height, 200);
    EXPECT_EQ(InContract(FlicHeaderBytes(1, 0, 0)).difference,
              "a picture whose size is not told is refused by the host's rules");
}

TEST(FlicMovie, RelatedKindsAreRefusedWithAReason) {
    const TemporaryFolder folder;
    for (const unsigned kind : {0xAF30U, 0xAF31U, 0xAF44U}) {
        const ByteBuilder file = FourFrames(4).At(4).Little16(kind);
        EXPECT_EQ(DetectFile(Wide(folder.Write("a.flx", file.Bytes())), kLegacyCommon).type, FLIC) << kind;
        EXPECT_EQ(DetectFile(Wide(folder.Write("a.flx", file.Bytes())), kLegacyContract).type, Other) << kind;
        const Shown shown = InCommon(file);
        EXPECT_FALSE(shown.opened);
        EXPECT_THAT(
            shown.messages,
            ElementsAre(L"FLICReader::Unsupported kind -- an animation of many colours or of another coding (FLX)"));
        EXPECT_THAT(InContract(file).messages, IsEmpty());
        const ByteBuilder chance = FlicHeaderBytes(4, 2, 1).At(4).Little16(kind).At(128).Fill(100, 7);
        EXPECT_EQ(DetectFile(Wide(folder.Write("a.bin", chance.Bytes())), kLegacyCommon).type, Other)
            << "two bytes alone make no animation";
    }
    EXPECT_EQ(DetectFile(Wide(folder.Write("a", FourFrames(4).At(4).Little16(0xAF13).Bytes())), kLegacyCommon).type,
              Other);
}

TEST(FlicMovie, MoreThan8BitsAPixelAreRefusedWithAReason) {
    EXPECT_TRUE(InCommon(FourFrames(4).At(12).Little16(8)).opened);
    const Shown shown = InCommon(FourFrames(4).At(12).Little16(16));
    EXPECT_FALSE(shown.opened);
    EXPECT_THAT(shown.messages,
                ElementsAre(L"FLICReader::Unsupported kind -- an animation of more than 8 bits a pixel"));
}

/// All indices of the last frame; nothing where the file is none.
Bytes Play(const ByteBuilder& file) {
    Kavra::Common::ByteSource source = file.Source();
    const auto movie = ReadFlicMovie(source);
    if (!movie) return {};
    FlicFrame frame(movie->header.width, movie->header.height);
    FlicPalette palette{};
    PlayFlicMovie(source, *movie, 3, frame, palette);
    return {frame.Indices().begin(), frame.Indices().end()};
}

TEST(FlicMovie, EveryLengthAndManyBytesAreSurvived) {
    ByteBuilder file =
        Changed(kFlicDeltaFlc, BytesOf({2, 0, 0xFF, 0xFF, 5, 0x80, 2, 0, 0, 1, 50, 51, 0, 0xFF, 60, 61}));
    AddFrameOf(file, 1, One(kFlicByteRun, BytesOf({1, 4, 7, 0, 2, 8, 0xFE, 1, 2, 9, 0xFC, 3, 4, 5, 6})));
    AddFrameOf(file, 1, One(kFlicDeltaFli, BytesOf({1, 0, 2, 0, 2, 1, 1, 90, 1, 0xFF, 91, 1, 0, 2, 92, 93})));
    for (std::size_t length = 12; length <= file.Size(); ++length)
        EXPECT_EQ(Play(ByteBuilder(file).CutTo(length)).size(), 12U) << length;
    for (std::size_t at = 12; at < file.Size(); ++at) {
        for (const unsigned value : {0x00, 0x01, 0x7F, 0x80, 0xFF})
            EXPECT_EQ(Play(ByteBuilder(file).At(at).Byte(value)).size(),
                      at == 12 && value > 8 && value < 33 ? 0U : 12U);
    }
}

TEST(FlicMovie, AFileOfNothingButChunkHeadersEnds) {
    ByteBuilder file = FlicHeaderBytes(1, 2, 1);
    for (int i = 0; i < 300'000; ++i)
        file.Little32(6).Little16(0xF1FA);
    EXPECT_EQ(InCommon(file).frameCount, 1 << 17);
}

}  // namespace
