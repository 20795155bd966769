// Files of several PCX pages, which only the common reading knows.

#include "readers/FileTypeDetection.h"
#include "readers/LegacyLoad.h"
#include "readers/pcx/PcxCommonBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using testing::ElementsAre;

/// The list of these offsets, up to the one that ends it, and then the pages one behind the other.
ByteBuilder Dcx(std::initializer_list<unsigned> offsets, std::initializer_list<ByteBuilder> pages) {
    ByteBuilder file;
    file.Little32(0x3ADE68B1);
    for (const unsigned offset : offsets)
        file.Little32(offset);
    file.Little32(0);
    for (const ByteBuilder& page : pages)
        file.Append(page.Bytes());
    return file;
}

/// Pages of one row: two of four bits, and one of bytes with its palette.
ByteBuilder Wide3() {
    return PcxHead(PcxFields(4, 1, 3, 1, 2), {0x12, 0x30});
}
ByteBuilder Tall2() {
    return PcxHead(PcxFields(4, 1, 1, 2, 1), {0x40, 0x50});
}
ByteBuilder Bytes2() {
    return PcxHead(PcxFields(8, 1, 2, 1, 2), {6, 7}).Append(PcxTail());
}

constexpr unsigned kFirst = 4 + 3 * 4 + 4, kSecond = kFirst + 130, kThird = kSecond + 130 + 769;

ByteBuilder ThreePages() {
    return Dcx({kFirst, kSecond, kThird}, {Wide3(), Bytes2(), Tall2()});
}

TEST(Dcx, EveryPageIsAFrameOfItsOwnSize) {
    const PcxShown first = InCommon(ThreePages(), 0), second = InCommon(ThreePages(), 1),
                   third = InCommon(ThreePages(), 2);
    EXPECT_EQ(first.frameCount, 3);
    EXPECT_EQ(first.width, 3);
    EXPECT_EQ(first.height, 1);
    EXPECT_EQ(first.block, InHeaderColours({1, 2, 3}));
    EXPECT_EQ(second.width, 2);
    EXPECT_EQ(second.block, InTailColours({6, 7})) << "with the palette at the end of the page";
    EXPECT_EQ(third.width, 1);
    EXPECT_EQ(third.height, 2);
    EXPECT_EQ(third.block, InHeaderColours({4, 5}));
}

TEST(Dcx, TheFirstPageIsWhatIsDescribedUntilAnotherIsChosen) {
    const TemporaryFolder folder;
    PCXReader reader(kLegacyCommon);
    ASSERT_TRUE(reader.Open(Wide(folder.Write("a.dcx", ThreePages().Bytes()))));
    EXPECT_EQ(reader.GetWidth(), 3);
    ASSERT_TRUE(reader.SelectFrame(2));
    EXPECT_EQ(reader.GetHeight(), 2);
    ASSERT_TRUE(reader.SelectFrame(-1)) << "before the first is the first";
    EXPECT_EQ(reader.GetWidth(), 3);
    const MessageRecorder messages;
    EXPECT_FALSE(reader.SelectFrame(3));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"Frame index out of range"));
    reader.Close();
    EXPECT_EQ(reader.GetFrameCount(), 1);
}

TEST(Dcx, PagesStandInTheOrderOfTheListNotOfTheFile) {
    const ByteBuilder file = Dcx({kThird, kFirst, kSecond}, {Wide3(), Bytes2(), Tall2()});
    EXPECT_EQ(InCommon(file, 0).block, InHeaderColours({4, 5}));
    EXPECT_EQ(InCommon(file, 2).block, InTailColours({6, 7}));
}

TEST(Dcx, EntriesThatAreNoPagesAreLeftOut) {
    const ByteBuilder file =
        Dcx({kFirst + 12, 0xFFFFFFFF, 2, kFirst + 12, kFirst + 13, kSecond + 12 + 899}, {Wide3(), Bytes2(), Tall2()});
    EXPECT_EQ(InCommon(file, 0).frameCount, 2)
        << "one is behind the file, one in the list, one twice, one is no picture";
    EXPECT_EQ(InCommon(file, 1).block, InHeaderColours({4, 5}));
    EXPECT_FALSE(InCommon(Dcx({2, 5000}, {})).opened);
    EXPECT_FALSE(InCommon(Dcx({}, {Wide3()})).opened);
    EXPECT_FALSE(InCommon(ByteBuilder(ThreePages()).CutTo(3)).opened);
}

TEST(Dcx, TheListHasAtMost1023Pages) {
    ByteBuilder file;
    file.Little32(0x3ADE68B1);
    constexpr unsigned kPages = 1100, kStart = 4 + kPages * 4;
    for (unsigned page = 0; page < kPages; ++page)
        file.Little32(kStart + page * 129);
    for (unsigned page = 0; page < kPages; ++page)
        file.Append(PcxHead(PcxFields(4, 1, 2, 1, 1), {0x12}).Bytes());
    EXPECT_EQ(InCommon(file, 0).frameCount, 1023);
    EXPECT_EQ(InCommon(file, 1022).block, InHeaderColours({1, 2}));
}

TEST(Dcx, OnlyTheCommonReadingKnowsIt) {
    const TemporaryFolder folder;
    const KString path = Wide(folder.Write("a.dcx", ThreePages().Bytes()));
    EXPECT_EQ(DetectFile(path, kLegacyContract).type, Other);
    EXPECT_EQ(DetectFile(path, kLegacyCommon).type, PCX);
    EXPECT_FALSE(InContract(ThreePages()).opened);
}

TEST(Dcx, PicturesThatOnlyTheCommonReadingShowsAreDetectedInIt) {
    const TemporaryFolder folder;
    for (const auto& [bits, planes] : {std::pair{2, 1}, {1, 2}, {1, 3}, {8, 4}}) {
        const KString path = Wide(folder.Write("a.pcx", PcxHead(PcxFields(bits, planes, 2, 1, 2)).Bytes()));
        EXPECT_EQ(DetectFile(path, kLegacyContract).type, Other) << bits;
        EXPECT_EQ(DetectFile(path, kLegacyCommon).type, PCX) << bits;
    }
    EXPECT_EQ(DetectFile(Wide(folder.Write("b.pcx", ByteBuilder(200).At(0).Byte(10).Bytes())), kLegacyCommon).type,
              Other);
}

TEST(Dcx, ALoadGivesTheFrameThatItAsksFor) {
    const TemporaryFolder folder;
    const KString path = Wide(folder.Write("a.dcx", ThreePages().Bytes()));
    LoadRequest request;
    request.preferences.legacy = kLegacyCommon;
    request.level = 2;
    ImageDescription desc;
    const auto block = LoadSpecial(desc, DetectFile(path, kLegacyCommon), request);
    ASSERT_TRUE(block.has_value());
    EXPECT_EQ(desc.width, 1);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(Bytes(block->get(), block->get() + desc.dataSize), InHeaderColours({4, 5}));
    request.level = 3;
    ImageDescription untouched;
    EXPECT_FALSE(LoadSpecial(untouched, DetectFile(path, kLegacyCommon), request).has_value());
    EXPECT_EQ(untouched.width, ImageDescription().width);
}

}  // namespace
