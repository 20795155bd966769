#include "readers/Decode.h"
#include "readers/LegacyLoad.h"
#include "readers/pict/PictMaker.h"
#include "readers/pict/PictReader.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

const std::vector<std::wstring> kDamaged = {L"The data is corrupted."};
const Bytes kWhite = {255, 255, 255, 255};
const Bytes kBlackPixel = {0, 0, 0, 255};

Decoded DecodePict(const ByteBuilder& file) {
    return Decode<PictReader>(file);
}

void ExpectDamaged(const ByteBuilder& file) {
    const Decoded decoded = DecodePict(file);
    EXPECT_FALSE(decoded.opened);
    EXPECT_EQ(decoded.messages, kDamaged);
}

TEST(PictReader, DescribesOneUprightFrameOfEightBitColour) {
    const Decoded decoded = DecodePict(PictMaker({-1, -2, 4, 6}).End());
    EXPECT_TRUE(decoded.opened);
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(decoded.width, 8);
    EXPECT_EQ(decoded.height, 5);
    EXPECT_EQ(decoded.rowPitch, 32);
    EXPECT_EQ(decoded.frameCount, 1);
    EXPECT_EQ(decoded.format, kR8G8B8A8);
    EXPECT_EQ(decoded.orientation, kTopLeft);
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(PictReader, APictureWithoutBitmapsIsWhite) {
    EXPECT_EQ(DecodePict(PictMaker({0, 0, 2, 3}).Op(0x30).Rect({0, 0, 1, 1}).End()).block, Bytes(24, 255));
}

TEST(PictReader, APictureWithAScaledBitmapIsWhiteAtTheSizeOfItsFrame) {
    PictMap map = SixPixels();
    map.destination = {0, 0, 4, 6};
    const Decoded decoded = DecodePict(PictMaker({0, 0, 4, 6}).Indexed(map).End());
    EXPECT_EQ(decoded.width, 6);
    EXPECT_EQ(decoded.height, 4);
    EXPECT_EQ(decoded.block, Bytes(96, 255));
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(PictReader, APixelMapWithoutATableShowsGreys) {
    PictMap map = SixPixels();
    map.colours.clear();  // the last entry is -1
    map.mode = 36;
    map.data = {0, 1, 255, 9, 128, 7, 254, 9};
    const std::vector<unsigned> greys = {0, 1, 255, 128, 7, 254};
    Bytes expected;
    for (const unsigned grey : greys) {
        const auto level = static_cast<unsigned char>(grey);
        expected.insert(expected.end(), {level, level, level, 255});
    }
    EXPECT_EQ(DecodePict(PictMaker({0, 0, 2, 3}).Indexed(map).End()).block, expected);
    EXPECT_EQ(DecodePict(PictMaker({0, 0, 2, 3}).Indexed(map).Indexed(map).End()).block, expected) << "drawn in colour";
}

TEST(PictReader, AVersion1PictureOfOneBitPixelsInPackBits) {
    PictMap map = {.bounds = {0, 0, 2, 64}, .rowBytes = 8};
    map.data = {2, 0xF9, 0x0F, 2, 0x00, 0x80};
    const Decoded decoded = DecodePict(PictMaker({0, 0, 2, 64}, 1).Bitmap(map, 0x98).End());
    ASSERT_TRUE(decoded.read);
    for (int x = 0; x < 64; ++x)
        EXPECT_EQ(PixelAt(decoded, x, 0), x % 8 < 4 ? kWhite : kBlackPixel) << x;
    EXPECT_EQ(PixelAt(decoded, 0, 1), kBlackPixel) << "the first bit is set";
    for (int x = 1; x < 64; ++x)
        EXPECT_EQ(PixelAt(decoded, x, 1), kWhite) << x;
}

TEST(PictReader, ThroughALoadAnIndexWithoutAColourIsZero) {
    PictMap map = SixPixels();
    map.colours = Greys({10, 20});
    const TemporaryFolder folder;
    const auto path = folder.Write("file", PictMaker({0, 0, 2, 3}).Indexed(map).End().Bytes());
    PictReader reader;
    ImageDescription desc;
    const auto block = LoadThroughReader(reader, desc, Wide(path), {});
    ASSERT_TRUE(block);
    EXPECT_EQ(Bytes(block->get(), block->get() + 12), (Bytes{10, 10, 10, 255, 20, 20, 20, 255, 0, 0, 0, 0}));
}

TEST(PictReader, ReadsTheSameTwice) {
    const TemporaryFolder folder;
    PictMaker maker({0, 0, 2, 3});
    maker.Indexed(SixPixels()).Direct(Column(1, 0, {{1, 2, 3}, {4, 5, 6}}, 39));
    const auto path = folder.Write("file", maker.End().Bytes());
    PictReader reader;
    ASSERT_TRUE(reader.Open(Wide(path)));
    Bytes first(24, 1), second(24, 2);
    ASSERT_TRUE(reader.ReadImage(first.data(), 0));
    ASSERT_TRUE(reader.ReadImage(second.data(), 7)) << "whatever frame is asked for";
    EXPECT_EQ(first, second);
}

TEST(PictReader, WithoutAPictureThereIsNothingToRead) {
    PictReader reader;
    EXPECT_FALSE(reader.ReadImage(nullptr, 0));
    EXPECT_EQ(reader.GetWidth(), 0);
    EXPECT_EQ(reader.GetHeight(), 0);
    const TemporaryFolder folder;
    const MessageRecorder recorder;
    EXPECT_TRUE(reader.Open(Wide(folder.Write("good", PictMaker({0, 0, 1, 1}).End().Bytes()))));
    EXPECT_FALSE(reader.Open(Wide(folder.Write("bad", PictMaker({0, 0, 1, 1}).File().Bytes()))));
    EXPECT_FALSE(reader.ReadImage(nullptr, 0)) << "the picture before is gone";
}

TEST(PictReader, FilesBelow512BytesAndThoseThatDoNotOpenAreRefusedSilently) {
    for (const std::size_t size : {0U, 1U, 511U}) {
        const Decoded decoded = DecodePict(ByteBuilder(size));
        EXPECT_FALSE(decoded.opened);
        EXPECT_TRUE(decoded.messages.empty()) << size;
    }
    ExpectDamaged(ByteBuilder(512));
    const TemporaryFolder folder;
    EXPECT_FALSE(DecodeFile<PictReader>(folder / "none").opened);
    EXPECT_FALSE(DecodeFile<PictReader>(folder.Path()).opened);
}

TEST(PictReader, FilesOf2GiBAreRefusedSilently) {
    const TemporaryFolder folder;
    const auto path = folder.Write("large", PictMaker({0, 0, 1, 1}).End().Bytes());
    std::filesystem::resize_file(path, std::uintmax_t{1} << 31);
    const Decoded decoded = DecodeFile<PictReader>(path);
    EXPECT_FALSE(decoded.opened);
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(PictReader, EveryDamageIsReportedOnce) {
    ExpectDamaged(PictMaker({0, 0, 2, 2}).File());
    ExpectDamaged(PictMaker({0, 0, 0, 2}).End());
    ExpectDamaged(PictMaker({0, 0, 2, 2}).End().At(512).Big16(0xFFFF));
    ExpectDamaged(PictMaker({0, 0, 2, 2}).End().At(523).Byte(0x12));
    PictMap map = SixPixels();
    map.bits = 3;
    ExpectDamaged(PictMaker({0, 0, 2, 2}).Indexed(map).End());
}

TEST(PictReader, ALargeFrameAsksForNothingUntilItIsRead) {
    const TemporaryFolder folder;
    const auto path = folder.Write("file", PictMaker({0, 0, 32767, 32767}).End().Fill(1000, 0).Bytes());
    PictReader reader;
    ASSERT_TRUE(reader.Open(Wide(path)));
    EXPECT_EQ(reader.GetWidth(), 32767);
    PictReader another;
    ImageDescription desc;
    EXPECT_FALSE(LoadThroughReader(another, desc, Wide(path), {})) << "a file of 1.5 KB cannot justify 4 GB";
    EXPECT_EQ(desc.height, 32767);
}

}  // namespace
