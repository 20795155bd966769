// What the common reading draws, by "Inside Macintosh: Imaging With QuickDraw", and what the contract's says of it.

#include "readers/LegacyLoad.h"
#include "readers/pict/PictReadings.h"

#include <algorithm>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

constexpr unsigned kNone = 0xEE;  // a byte that no reader needs

PictMap ByteCounted(PictMap map, const Bytes& data) {
    map.data = data;
    return map;
}

PictMap Direct(int width, int height, unsigned bits, const Bytes& data) {
    PictMap map{.bounds = {0, 0, height, width}, .rowBytes = 0x8000 + static_cast<unsigned>(width) * bits / 8};
    map.bits = bits;
    map.components = 3;
    map.data = data;
    return map;
}

/// Sets the packing of the first pixel map of a file, a direct one right behind its start.
ByteBuilder WithPacking(ByteBuilder file, unsigned packing) {
    constexpr std::size_t kOfFirstMap = 512 + 14 + 2 + 4 + 2 + 8 + 2;
    file.At(kOfFirstMap).Big16(packing);
    return file;
}

TEST(PictCommon, CopyCopiesColours) {
    const auto file = PictMaker({0, 0, 2, 1}).Direct(Column(0, 0, {{1, 2, 3}, {250, 251, 252}})).End();
    EXPECT_EQ(DecodeCommon(file).block, Opaque({{1, 2, 3}, {250, 251, 252}}));
    EXPECT_EQ(DecodePictAs(file, kLegacyContract).block, Opaque({{255, 255, 255}, {255, 255, 255}}));
    EXPECT_EQ(NoteOf(file), "copied colours are drawn in two colours by the host's rules");
}

TEST(PictCommon, NothingIsSaidOfAPictureThatBothShowAlike) {
    EXPECT_EQ(NoteOf(PictMaker({0, 0, 2, 1}).Direct(Column(0, 0, {{0, 0, 0}, {255, 255, 255}})).End()), "");
    EXPECT_EQ(NoteOf(PictMaker({0, 0, 2, 1}).Direct(Column(0, 0, {{1, 2, 3}, {4, 5, 6}}, 39)).End()), "");
    EXPECT_EQ(NoteOf(PictMaker({0, 0, 2, 3}).Indexed(SixPixels()).End()), "");
    EXPECT_EQ(NoteOf(PictMaker({0, 0, 1, 4}).Bitmap(Drawing({"#.#."})).End()), "");
    EXPECT_EQ(NoteOf(PictMaker({0, 0, 1, 4}).End()), "");
}

TEST(PictCommon, ColoursAreThoseThatStandAtTheBitmap) {
    PictMap second = Drawing({"#."});
    second.destination = {1, 0, 2, 2};
    const auto file = PictMaker({0, 0, 2, 2})
                          .Colour(0x1A, 0x1111, 0x2222, 0x3333)
                          .Bitmap(Drawing({"#."}))
                          .Colour(0x1A, 0x4444, 0x5555, 0x6666)
                          .Colour(0x1B, 0x7777, 0x8888, 0x9999)
                          .Bitmap(second)
                          .Colour(0x1A, 0, 0, 0)
                          .End();
    EXPECT_EQ(DecodeCommon(file).block,
              Opaque({{0x11, 0x22, 0x33}, {255, 255, 255}, {0x44, 0x55, 0x66}, {0x77, 0x88, 0x99}}));
    EXPECT_NE(NoteOf(file), "");
}

TEST(PictCommon, ClassicColoursAreTheirPureColours) {
    const std::vector<std::pair<unsigned, std::array<unsigned char, 3>>> colours = {
        {33, {0, 0, 0}},    {30, {255, 255, 255}}, {205, {255, 0, 0}},   {341, {0, 255, 0}},
        {409, {0, 0, 255}}, {273, {0, 255, 255}},  {137, {255, 0, 255}}, {69, {255, 255, 0}},
    };
    for (const auto& [number, colour] : colours) {
        const auto file = PictMaker({0, 0, 1, 2}, 1)
                              .Op(0x0E)
                              .Word(0)
                              .Word(number)
                              .Op(0x0F)
                              .Word(0)
                              .Word(205)
                              .Bitmap(Drawing({"#."}))
                              .End();
        EXPECT_EQ(DecodeCommon(file).block, Opaque({colour, {255, 0, 0}})) << number;
    }
}

TEST(PictCommon, ColoursDoNotTintCopiesOfPixelMaps) {
    PictMaker maker({0, 0, 1, 2});
    maker.Colour(0x1A, 0xFFFF, 0, 0).Colour(0x1B, 0, 0, 0xFFFF).Indexed(GreyMap(0, 0, {{0, 200}}));
    EXPECT_EQ(DecodeCommon(maker.End()).block, Opaque({{0, 0, 0}, {200, 200, 200}}));
}

TEST(PictCommon, ASourceIsScaledToItsDestination) {
    PictMap map = GreyMap(0, 0, {{10, 20}, {30, 40}});
    map.destination = {0, 0, 4, 6};
    const auto file = PictMaker({0, 0, 4, 6}).Indexed(map).End();
    EXPECT_EQ(Reds(DecodeCommon(file)), (Bytes{10, 10, 10, 20, 20, 20, 10, 10, 10, 20, 20, 20,  //
                                               30, 30, 30, 40, 40, 40, 30, 30, 30, 40, 40, 40}));
    EXPECT_EQ(Reds(DecodePictAs(file, kLegacyContract)), Bytes(24, 255));
    EXPECT_EQ(NoteOf(file),
              "bitmaps that are stretched, moved or of masked direct colour are left out by the host's rules");
}

TEST(PictCommon, ShrinkingTakesTheNearestPixels) {
    PictMap map = GreyMap(0, 0, {{1, 2, 3, 4, 5, 6}, {7, 8, 9, 10, 11, 12}, {13, 14, 15, 16, 17, 18}});
    map.destination = {0, 0, 1, 2};
    EXPECT_EQ(Reds(DecodeCommon(PictMaker({0, 0, 1, 2}).Indexed(map).End())), (Bytes{8, 11}));
}

TEST(PictCommon, APartOfASourceIsDrawnWhereItIsTo) {
    PictMap map = GreyMap(0, 0, {{1, 2, 3}, {4, 5, 6}});
    map.source = {1, 1, 2, 3};
    map.destination = {0, 2, 1, 4};
    EXPECT_EQ(Reds(DecodeCommon(PictMaker({0, 0, 2, 4}).Indexed(map).End())),
              (Bytes{255, 255, 5, 6, 255, 255, 255, 255}));
}

TEST(PictCommon, RectanglesWithoutPixelsMeanAllOfTheBitmap) {
    PictMap map = GreyMap(0, 0, {{1, 2}});
    map.source = {0, 0, 0, 0};
    map.destination = {1, 1, 1, 1};
    EXPECT_EQ(Reds(DecodeCommon(PictMaker({0, 0, 2, 3}).Indexed(map).End())), (Bytes{255, 255, 255, 255, 1, 2}));
}

TEST(PictCommon, PicturesOfVeryManyBitmapsAreNotCompared) {
    PictMaker maker({0, 0, 1, 1});
    for (int i = 0; i < 4096; ++i)
        maker.Direct(Column(0, 0, {{1, 2, 3}}));
    PictMaker more = maker;
    EXPECT_NE(NoteOf(maker.End()), "");
    EXPECT_EQ(NoteOf(more.Direct(Column(0, 0, {{1, 2, 3}})).End()), "");
}

TEST(PictCommon, WhatIsOutsideTheStoredPixelsIsNotDrawn) {
    PictMap map = GreyMap(0, 0, {{1, 2}});
    map.source = {0, -1, 1, 3};
    map.destination = {0, 0, 1, 4};
    EXPECT_EQ(Reds(DecodeCommon(PictMaker({0, 0, 1, 4}).Indexed(map).End())), (Bytes{255, 1, 2, 255}));
    map.destination = {0, 0, 1, 8};
    EXPECT_EQ(Reds(DecodeCommon(PictMaker({0, 0, 1, 8}).Indexed(map).End())), (Bytes{255, 255, 1, 1, 2, 2, 255, 255}));
}

TEST(PictCommon, BitmapsLieInTheCoordinatesOfTheFrame) {
    const auto file = PictMaker({-5, -7, -4, -4}).Indexed(GreyMap(-7, -5, {{1, 2}})).End();
    EXPECT_EQ(Reds(DecodeCommon(file)), (Bytes{1, 2, 255}));
}

TEST(PictCommon, AClippingRegionHoldsUntilTheNext) {
    PictMaker maker({0, 0, 2, 3});
    maker.Op(0x01).Word(10).Rect({0, 1, 2, 3}).Indexed(GreyMap(0, 0, {{1, 2, 3}, {4, 5, 6}}));
    maker.Op(0x01).Word(10).Rect({1, 0, 2, 1}).Indexed(GreyMap(0, 0, {{7, 8, 9}, {10, 11, 12}}));
    EXPECT_EQ(Reds(DecodeCommon(maker.End())), (Bytes{255, 2, 3, 10, 5, 6}));
    EXPECT_NE(NoteOf(maker.End()), "");
}

TEST(PictCommon, ARegionWithoutPixelsDoesNotClip) {
    PictMaker maker({0, 0, 1, 1});
    maker.Op(0x01).Word(10).Rect({0, 0, 0, 0}).Indexed(GreyMap(0, 0, {{9}}));
    EXPECT_EQ(Reds(DecodeCommon(maker.End())), (Bytes{9}));
}

TEST(PictCommon, AMaskOfAnyShapeIsFollowed) {
    // Two pixels of the first row, and from the second on the two behind these.
    const Bytes mask = {0, 32, 0, 0, 0, 0, 0,    3,    0, 4, 0, 0, 0, 0, 0, 2, 0x7F, 0xFF,  //
                        0, 1,  0, 0, 0, 4, 0x7F, 0xFF, 0, 3, 0, 2, 0, 4};
    Bytes whole = mask;
    whole.insert(whole.end(), {0x7F, 0xFF, 0x7F, 0xFF});
    whole[1] = static_cast<unsigned char>(whole.size());
    const PictMap map = GreyMap(0, 0, {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}});
    const auto file = PictMaker({0, 0, 3, 4}).Indexed(map, 0x91, whole).End();
    EXPECT_EQ(Reds(DecodeCommon(file)), (Bytes{1, 2, 255, 255, 255, 255, 7, 8, 255, 255, 11, 12}));
    EXPECT_EQ(NoteOf(file), "clipping and mask regions are ignored by the host's rules");
}

TEST(PictCommon, DirectColourOf16BitsIsWidenedExactly) {
    const auto file = PictMaker({0, 0, 1, 3}).Direct(Direct(3, 1, 16, {0x7C, 0x01, 0x42, 0x10, 0x83, 0xE0})).End();
    EXPECT_EQ(DecodeCommon(file).block, Opaque({{255, 0, 8}, {132, 132, 132}, {0, 255, 0}}));
}

TEST(PictCommon, DirectColourIsStoredInEveryPacking) {
    const auto expected = Opaque({{1, 2, 3}, {4, 5, 6}});
    const auto as = [](const PictMap& map, unsigned packing) {
        return DecodeCommon(WithPacking(PictMaker({0, 0, 1, 2}).Direct(map).End(), packing)).block;
    };
    EXPECT_EQ(as(Direct(2, 1, 32, {kNone, 1, 2, 3, kNone, 4, 5, 6}), 1), expected);
    EXPECT_EQ(as(Direct(2, 1, 32, {1, 2, 3, 4, 5, 6}), 2), expected);
    EXPECT_EQ(as(Direct(2, 1, 32, {7, 5, 1, 4, 2, 5, 3, 6}), 4), expected) << "a count of one byte";
    EXPECT_EQ(as(Direct(2, 1, 32, {0, 7, 5, 1, 4, 2, 5, 3, 6}), 0), expected) << "of two";
    const auto pixels = [&](const PictMap& map, unsigned packing) {
        return DecodeCommon(WithPacking(PictMaker({0, 0, 1, 4}).Direct(map).End(), packing)).block;
    };
    const auto four = Opaque({{0, 0, 8}, {0, 0, 8}, {0, 0, 8}, {0, 0, 16}});
    EXPECT_EQ(pixels(Direct(4, 1, 16, {0, 1, 0, 1, 0, 1, 0, 2}), 1), four);
    EXPECT_EQ(pixels(Direct(4, 1, 16, {6, 0xFE, 0, 1, 0, 0, 2}), 3), four);
}

TEST(PictCommon, RowsOfDirectColourMayBeLongerThanTheirFieldTells) {
    for (const int width : {8192, 8193}) {
        PictMap map = Direct(width, 1, 32, {});
        map.rowBytes = 0x8000 | (static_cast<unsigned>(width) * 4 & 0xFFFF);
        Bytes packets;
        for (int left = 3 * width; left > 0; left -= 128) {
            const int count = std::min(left, 128);
            packets.push_back(static_cast<unsigned char>(count == 1 ? 0 : 257 - count));
            packets.push_back(7);
        }
        map.data = {static_cast<unsigned char>(packets.size() >> 8), static_cast<unsigned char>(packets.size() & 0xFF)};
        map.data.insert(map.data.end(), packets.begin(), packets.end());
        EXPECT_EQ(Reds(DecodeCommon(PictMaker({0, 0, 1, width}).Direct(map).End())),
                  Bytes(static_cast<std::size_t>(width), 7));
    }
}

TEST(PictCommon, RowsMayHaveAnotherNumberOfComponentsThanIsSaid) {
    PictMap map = Direct(2, 1, 32, {7, 5, 1, 4, 2, 5, 3, 6});
    map.components = 4;
    EXPECT_EQ(DecodeCommon(PictMaker({0, 0, 1, 2}).Direct(map).End()).block, Opaque({{1, 2, 3}, {4, 5, 6}}));
    map.components = 3;
    map.data = {9, 7, 0, 0, 1, 4, 2, 5, 3, 6};
    EXPECT_EQ(DecodeCommon(PictMaker({0, 0, 1, 2}).Direct(map).End()).block, Opaque({{1, 2, 3}, {4, 5, 6}}));
}

TEST(PictCommon, TheFlag128DoesNothing) {
    const auto file = PictMaker({0, 0, 1, 2}).Direct(Direct(2, 1, 32, {8, 0x80, 5, 1, 4, 2, 5, 3, 6})).End();
    EXPECT_EQ(DecodeCommon(file).block, Opaque({{1, 2, 3}, {4, 5, 6}}));
}

TEST(PictCommon, BitmapsOfTheUnpackedOpcodesMayBePacked) {
    PictMap map{.bounds = {0, 0, 2, 64}, .rowBytes = 8};
    const auto block = [&](const Bytes& data) {
        return DecodeCommon(PictMaker({0, 0, 2, 64}, 1).Bitmap(ByteCounted(map, data), 0x90).End()).block;
    };
    const Bytes plain = {0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF};
    const Bytes packed = {4, 0, 0xFF, 0xFA, 0, 4, 0xFA, 0, 0, 0xFF};
    EXPECT_EQ(block(plain), block(packed));
    EXPECT_EQ(block(plain)[0], 0);
    EXPECT_EQ(block(plain)[4 * 8], 255);
    EXPECT_EQ(block(plain)[4 * 127], 0);
}

TEST(PictCommon, AFourthComponentIsAlphaUnlessItIsZeroEverywhere) {
    PictMap map = Direct(2, 1, 32, {10, 7, 0, 0, 1, 4, 2, 5, 3, 6});
    map.components = 4;
    const auto file = [&](unsigned alpha) {
        map.data = {9, 7, 0, static_cast<unsigned char>(alpha), 1, 4, 2, 5, 3, 6};
        return PictMaker({0, 0, 1, 2}).Direct(map).End();
    };
    EXPECT_EQ(DecodeCommon(file(0)).block, Opaque({{1, 2, 3}, {4, 5, 6}}));
    EXPECT_EQ(DecodeCommon(file(77)).block, (Bytes{1, 2, 3, 0, 4, 5, 6, 77}));
}

TEST(PictCommon, AnIndexWithoutAColourIsBlack) {
    PictMap map = SixPixels();
    map.colours = Greys({10, 20});
    const auto file = PictMaker({0, 0, 2, 3}).Indexed(map).End();
    EXPECT_EQ(Reds(DecodeCommon(file)), (Bytes{10, 20, 0, 0, 20, 10}));
    EXPECT_EQ(NoteOf(file), "palette indices without a colour are left out by the host's rules");
}

TEST(PictCommon, APixelMapWithoutATableHasGreysForItsDepth) {
    PictMap map{.bounds = {0, 0, 1, 4}, .rowBytes = 0x8001, .bits = 2};
    map.data = {0x1B};
    EXPECT_EQ(Reds(DecodeCommon(PictMaker({0, 0, 1, 4}).Indexed(map, 0x90).End())), (Bytes{0, 85, 170, 255}));
}

TEST(PictCommon, AnExtendedHeaderTellsTheRectangleOfAllPixels) {
    PictMaker maker({0, 0, 1, 2});
    maker.Op(0x0C00).Word(0xFFFE).Word(0).Word(144).Word(0).Word(144).Word(0).Rect({0, 0, 2, 4}).Word(0).Word(0);
    maker.Indexed(GreyMap(0, 0, {{1, 2, 3, 4}, {5, 6, 7, 8}}));
    const Decoded common = DecodeCommon(maker.End());
    EXPECT_EQ(common.width, 4);
    EXPECT_EQ(Reds(common), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(DecodePictAs(maker.End(), kLegacyContract).width, 2);
    EXPECT_EQ(NoteOf(maker.End()), "a picture of more than 72 dpi is cut to its frame by the host's rules");
}

TEST(PictCommon, OtherHeadersLeaveTheFrame) {
    PictMaker maker({0, 0, 1, 2});
    maker.Op(0x0C00).Word(0xFFFF).Word(0xFFFF).Add(Bytes(16, 1)).Word(0).Word(0).Indexed(GreyMap(0, 0, {{1, 2}}));
    EXPECT_EQ(Reds(DecodeCommon(maker.End())), (Bytes{1, 2}));
}

TEST(PictCommon, APictureThatBreaksOffShowsTheRowsThatAreThere) {
    const auto whole = PictMaker({0, 0, 3, 3}).Indexed(GreyMap(0, 0, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}));
    ByteBuilder cut = whole.File();
    cut.CutTo(cut.Size() - 2);
    const Decoded decoded = DecodeCommon(cut);
    EXPECT_EQ(Reds(decoded), (Bytes{1, 2, 3, 4, 5, 6, 255, 255, 255}));
    EXPECT_EQ(decoded.messages, std::vector<std::wstring>{L"The data is corrupted."});
    EXPECT_EQ(NoteOf(cut), "the picture counts as damaged by the host's rules");
    const Decoded withoutEnd = DecodeCommon(whole.File());
    EXPECT_EQ(Reds(withoutEnd), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_TRUE(withoutEnd.messages.empty()) << "nothing is missing but the word that it ends";
}

TEST(PictCommon, APictureThatBreaksOffBeforeAnyPixelIsRefused) {
    const Decoded decoded = DecodeCommon(PictMaker({0, 0, 3, 3}).Op(0x24).Word(500).File());
    EXPECT_FALSE(decoded.opened);
    EXPECT_EQ(decoded.messages, std::vector<std::wstring>{L"The data is corrupted."});
    EXPECT_EQ(NoteOf(PictMaker({0, 0, 3, 3}).Op(0x24).Word(500).File()), "");
    EXPECT_FALSE(DecodeCommon(ByteBuilder()).opened);
    EXPECT_FALSE(DecodeCommon(ByteBuilder(600)).opened);
}

TEST(PictCommon, ReservedOpcodesHaveTwiceTheirHighByteOfData) {
    PictMaker maker({0, 0, 1, 1});
    maker.Op(0x02FF).Word(0x1111).Word(0x1111).Indexed(GreyMap(0, 0, {{9}}));
    EXPECT_EQ(Reds(DecodeCommon(maker.End())), (Bytes{9}));
}

/// One pixel, drawn over all of the largest frame again and again.
ByteBuilder Stretched(int times) {
    PictMap map = GreyMap(0, 0, {{1}});
    map.colours.resize(2);
    map.destination = {0, 0, 32767, 32767};
    PictMaker maker({0, 0, 32767, 32767});
    for (int i = 0; i < times; ++i)
        maker.Indexed(map);
    return maker.End();
}

TEST(PictCommon, DrawnPixelsAreCountedWhereTheyAreStretched) {
    EXPECT_TRUE(DecodeCommon(Stretched(1)).opened);
    EXPECT_FALSE(DecodeCommon(Stretched(4)).opened);
}

TEST(PictCommon, StepsThroughRegionsAreCounted) {
    // A mask of 30,000 bytes whose every row has thousands of edges, over and over.
    ByteBuilder mask;
    mask.Big16(30'000 + 10).Big16(0).Big16(0).Big16(32767).Big16(32767);
    mask.Big16(0);
    for (unsigned x = 0; x < 14'996; ++x)
        mask.Big16(2 * x);
    mask.Big16(0x7FFF).Big16(0x7FFF).Big16(0x7FFF);
    PictMap map = GreyMap(0, 0, {{1}});
    map.colours.resize(2);
    map.destination = {0, 0, 32767, 1};
    PictMaker maker({0, 0, 32767, 1});
    for (int i = 0; i < 10; ++i)
        maker.Indexed(map, 0x91, Bytes(mask.Bytes().begin(), mask.Bytes().end()));
    EXPECT_FALSE(DecodeCommon(maker.End()).opened);
}

TEST(PictCommon, TheRowsThatAlphaIsLookedForInAreCounted) {
    PictMap map = Direct(32767, 32767, 32, Bytes(2 * 32767, 0));
    map.components = 4;
    map.rowBytes = 0x8000 | 1000;
    PictMaker maker({0, 0, 1, 1});
    const auto isTaken = [](const ByteBuilder& file) {
        auto source = file.Source();
        return ReadPictCommonPicture(source).has_value();
    };
    for (int i = 0; i < 4; ++i)
        maker.Direct(map);
    EXPECT_TRUE(isTaken(PictMaker(maker).End()));
    EXPECT_FALSE(isTaken(maker.Direct(map).End()));
}

TEST(PictCommon, TheObserverOfALoadHearsOfTheDifference) {
    class Observer final : public ILegacyObserver {
    public:
        void ReadingsDiffer(const char* how) noexcept override { mHow = how; }
        std::string mHow;
    };
    const TemporaryFolder folder;
    const auto path = folder.Write("file", PictMaker({0, 0, 1, 1}).Direct(Column(0, 0, {{1, 2, 3}})).End().Bytes());
    Observer observer;
    LoadRequest request;
    request.preferences.legacyObserver = &observer;
    ImageDescription desc;
    EXPECT_TRUE(LoadSpecial(desc, Wide(path), request, PICT));
    EXPECT_EQ(observer.mHow, "copied colours are drawn in two colours by the host's rules");
    observer.mHow.clear();
    request.preferences.legacy = kLegacyCommon;
    EXPECT_TRUE(LoadSpecial(desc, Wide(path), request, PICT));
    EXPECT_EQ(observer.mHow, "");
}

}  // namespace
