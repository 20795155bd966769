#include "readers/FileSamples.h"
#include "readers/FileTypeDetection.h"
#include "readers/pict/PictReadings.h"

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

int TypeOf(std::span<const unsigned char> bytes, ELegacyReading reading) {
    const TemporaryFolder folder;
    return DetectFile(Wide(folder.Write("file.dat", bytes)), reading).type;
}

bool IsKnownToCommonAlone(std::span<const unsigned char> bytes) {
    return TypeOf(bytes, kLegacyContract) == Other && TypeOf(bytes, kLegacyCommon) == PICT;
}

ByteBuilder Picture(int version) {
    return PictMaker({0, 0, 1, 2}, version).Op(0x01).Word(10).Rect({0, 0, 1, 2}).Bitmap(Drawing({"#."})).End();
}

/// Without its first `count` bytes, and with others instead.
ByteBuilder Moved(const ByteBuilder& file, std::size_t count, const Bytes& instead = {}) {
    return ByteBuilder().Append(instead).Append(file.Bytes().subspan(count));
}

TEST(PictCommonProbe, KnowsFilesOfAnyLength) {
    EXPECT_LT(Picture(2).Size(), 1024U);
    EXPECT_TRUE(IsKnownToCommonAlone(Picture(1).Bytes()));
    EXPECT_TRUE(IsKnownToCommonAlone(Picture(2).Bytes()));
    EXPECT_TRUE(IsKnownToCommonAlone(Picture(1).Fill(2000, 0).Bytes())) << "whatever the size field says";
}

TEST(PictCommonProbe, KnowsPicturesWithoutAPreamble) {
    for (const int version : {1, 2}) {
        const ByteBuilder file = Moved(Picture(version), 512);
        EXPECT_TRUE(IsKnownToCommonAlone(file.Bytes())) << version;
        EXPECT_EQ(DecodeCommon(file).block, Opaque({{0, 0, 0}, {255, 255, 255}})) << version;
    }
}

TEST(PictCommonProbe, KnowsPicturesInMacBinary) {
    const ByteBuilder file = Moved(Picture(2), 0, Bytes(128, 7));
    EXPECT_TRUE(IsKnownToCommonAlone(file.Bytes()));
    EXPECT_EQ(DecodeCommon(file).block, Opaque({{0, 0, 0}, {255, 255, 255}}));
}

TEST(PictCommonProbe, KnowsFramesThatBeginAboveTheOrigin) {
    EXPECT_TRUE(IsKnownToCommonAlone(PictMaker({-4, -4, 3, 3}).Op(0x02).Add(Bytes(8)).End().Fill(1000, 0).Bytes()));
}

TEST(PictCommonProbe, TakesNoFileWithoutAFrameAVersionAndOpcodes) {
    const auto isTaken = [](const ByteBuilder& file) { return TypeOf(file.Bytes(), kLegacyCommon) == PICT; };
    EXPECT_TRUE(isTaken(Picture(2)));
    EXPECT_FALSE(isTaken(Picture(2).At(514).Big16(1)));
    EXPECT_FALSE(isTaken(Picture(2).At(525).Byte(0xFE)));
    EXPECT_FALSE(isTaken(Picture(1).At(523).Byte(2)));
    EXPECT_FALSE(isTaken(ByteBuilder(PictMaker({0, 0, 1, 2}, 1).File()).Fill(100, 0))) << "zeros are no opcodes";
    EXPECT_FALSE(isTaken(PictMaker({0, 0, 1, 2}, 1).Op(0xA2).Word(5000).End()));
    EXPECT_FALSE(isTaken(ByteBuilder()));
    EXPECT_FALSE(isTaken(ByteBuilder(5000)));
}

TEST(PictCommonProbe, TakesNothingAwayFromOthers) {
    EXPECT_EQ(TypeOf(PcxStart().Bytes(), kLegacyCommon), PCX);
    EXPECT_EQ(TypeOf(FlicStart().Bytes(), kLegacyCommon), FLIC);
    EXPECT_EQ(TypeOf(PictVersion2().Bytes(), kLegacyCommon), PICT);
}

}  // namespace
