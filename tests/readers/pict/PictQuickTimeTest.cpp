// Pictures of QuickTime in the common reading.

#include "readers/pict/PictReadings.h"

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

const Bytes kRedAndBlue = Opaque({{255, 0, 0}, {0, 0, 255}});

/// A BMP file of a red pixel and a blue one beside it.
ByteBuilder BmpOfTwoPixels() {
    ByteBuilder file;
    file.Text("BM").Little32(62).Little32(0).Little32(54);
    file.Little32(40).Little32(2).Little32(1).Little16(1).Little16(24).Fill(24, 0);
    return file.Append(Bytes{0, 0, 255, 255, 0, 0, 0, 0});
}

struct Wish {
    const char* codec = "WRLE";
    unsigned scale = 1, left = 0, top = 0;
};

/// What follows the length of a compressed picture of two pixels.
ByteBuilder Compressed(const ByteBuilder& data, const Wish& wish = {}) {
    ByteBuilder out;
    out.Big16(0);
    for (const unsigned number : {wish.scale, 0U, 0U, 0U, wish.scale, 0U, wish.left, wish.top, 0x4000U})
        out.Big16(number).Big16(0);
    out.Fill(4 + 8 + 2, 0).Big16(0).Big16(0).Big16(1).Big16(2).Fill(4 + 4, 0);
    out.Big16(0).Big16(86).Text(wish.codec).Fill(36, 0);
    out.Big16(0).Big16(static_cast<unsigned>(data.Size())).Fill(38, 0);
    return out.Append(data.Bytes());
}

PictMaker& Add(PictMaker& maker, unsigned opcode, const ByteBuilder& data) {
    maker.Op(opcode).Word(0).Word(static_cast<unsigned>(data.Size()));
    return maker.Add(Bytes(data.Bytes().begin(), data.Bytes().end()));
}

TEST(PictQuickTime, ACompressedPictureIsDecoded) {
    PictMaker maker({0, 0, 1, 2});
    const auto file = Add(maker, 0x8200, Compressed(BmpOfTwoPixels())).End();
    EXPECT_EQ(DecodeCommon(file).block, kRedAndBlue);
    EXPECT_EQ(DecodePictAs(file, kLegacyContract).block, Bytes(8, 255));
    EXPECT_EQ(NoteOf(file), "pictures compressed by QuickTime are left out by the host's rules");
}

TEST(PictQuickTime, ItsMatrixScalesAndMovesIt) {
    PictMaker maker({0, 0, 3, 5});
    const auto file = Add(maker, 0x8200, Compressed(BmpOfTwoPixels(), {.scale = 2, .left = 1, .top = 1})).End();
    EXPECT_EQ(Reds(DecodeCommon(file)), (Bytes{255, 255, 255, 255, 255, 255, 255, 255, 0, 0, 255, 255, 255, 0, 0}));
}

TEST(PictQuickTime, TheBitmapForProgramsWithoutItIsLeftOut) {
    PictMaker maker({0, 0, 1, 2});
    Add(maker, 0x8200, Compressed(BmpOfTwoPixels())).Bitmap(Drawing({"##"}));
    EXPECT_EQ(DecodeCommon(maker.End()).block, kRedAndBlue);
    PictMaker coloured({0, 0, 1, 2});
    Add(coloured, 0x8200, Compressed(BmpOfTwoPixels())).Indexed(GreyMap(0, 0, {{1, 2}}));
    EXPECT_EQ(DecodeCommon(coloured.End()).block, kRedAndBlue);
    PictMaker over({0, 0, 1, 2});
    Add(over, 0x8200, Compressed(BmpOfTwoPixels()));
    over.Indexed(GreyMap(0, 0, {{1, 2}})).Indexed(GreyMap(0, 0, {{3, 4}}));
    EXPECT_EQ(Reds(DecodeCommon(over.End())), (Bytes{3, 4})) << "what is drawn over both";
    PictMaker part({0, 0, 1, 2});
    Add(part, 0x8200, Compressed(BmpOfTwoPixels())).Indexed(GreyMap(1, 0, {{9}}));
    EXPECT_EQ(Reds(DecodeCommon(part.End())), (Bytes{255, 9})) << "a picture of its own";
    PictMaker beside({0, 0, 1, 3});
    PictMap wide = Drawing({"###"});
    Add(beside, 0x8200, Compressed(BmpOfTwoPixels())).Bitmap(wide);
    EXPECT_EQ(Reds(DecodeCommon(beside.End())), Bytes(3, 0)) << "a bitmap that is not all in its place";
}

TEST(PictQuickTime, ItShowsWhereTheCompressionIsNotKnown) {
    for (const ByteBuilder& data : {Compressed(BmpOfTwoPixels(), {.codec = "SVQ3"}), Compressed(ByteBuilder(62)),
                                    Compressed(BmpOfTwoPixels().CutTo(20)), ByteBuilder(5), ByteBuilder()}) {
        PictMaker maker({0, 0, 1, 2});
        const auto file = Add(maker, 0x8200, data).Bitmap(Drawing({"#."})).End();
        EXPECT_EQ(DecodeCommon(file).block, Opaque({{0, 0, 0}, {255, 255, 255}})) << data.Size();
        EXPECT_EQ(NoteOf(file), "");
    }
}

TEST(PictQuickTime, APictureThatIsNotCompressedIsABitmapInside) {
    PictMaker inner({0, 0, 1, 2});
    const std::size_t before = inner.Size();
    inner.Bitmap(Drawing({".#"}));
    ByteBuilder data;
    data.Big16(0);
    for (const unsigned number : {1U, 0U, 0U, 0U, 1U, 0U, 0U, 0U, 0x4000U})
        data.Big16(number).Big16(0);
    data.Fill(4 + 8, 0).Append(inner.File().Bytes().subspan(before));
    PictMaker maker({0, 0, 1, 2});
    EXPECT_EQ(Reds(DecodeCommon(Add(maker, 0x8201, data).End())), (Bytes{255, 0}));
}

}  // namespace
