// Damaged pictures in the common reading: refused or drawn, and always drawn the same.

#include "readers/pict/PictCommonCanvas.h"
#include "readers/pict/PictReadings.h"

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

/// The pixels of a picture over bytes of `filler`; none where the picture is refused, an empty block where it is larger
/// than the test has time for.
std::optional<Bytes> Drawn(const ByteBuilder& file, unsigned char filler) {
    constexpr std::size_t kMaxBytes = 4 << 20;
    ByteSource source = file.Source();
    const auto picture = ReadPictCommonPicture(source);
    if (!picture) return std::nullopt;
    const std::size_t pitch = 4 * static_cast<std::size_t>(picture->frame.Width());
    const std::size_t bytes = pitch * static_cast<std::size_t>(picture->frame.Height());
    if (bytes > kMaxBytes) return Bytes();
    Bytes block(bytes, filler);
    PictCommonCanvas canvas(*picture, file.Bytes());
    for (std::size_t at = 0; at < bytes; at += pitch)
        canvas.DrawRow(std::span(block).subspan(at, pitch));
    return block;
}

ByteBuilder Everything(int version) {
    PictMaker maker({0, 0, 4, 20}, version);
    maker.Op(0x01).Word(32).Rect({0, 0, 4, 20});
    maker.Word(0).Word(0).Word(20).Word(0x7FFF).Word(2).Word(4).Word(8).Word(0x7FFF).Word(4).Word(0x7FFF).Word(0x7FFF);
    maker.Colour(0x1A, 1, 2, 3).Colour(0x1F, 9, 9, 9);
    PictMap indexed = GreyMap(0, 0, {{1, 2, 3, 4}, {5, 6, 7, 8}}, 36);
    indexed.destination = {0, 2, 3, 19};
    maker.Indexed(indexed, 0x90);
    maker.Bitmap({.bounds = {3, 0, 4, 9}, .mode = 1, .rowBytes = 2, .data = {0xA5, 0x80}}, 0x91,
                 {0, 10, 0, 3, 0, 1, 0, 4, 0, 7});
    PictMap direct = {.bounds = {2, 5, 4, 9}, .mode = 34, .rowBytes = 0x8010, .bits = 32, .components = 4};
    direct.data = {2, 0xF1, 3, 8, 0xFD, 1, 0xFD, 2, 0xFD, 3, 0xFD, 4};
    maker.Direct(direct);
    return maker.End();
}

void ExpectDrawnTheSame(const ByteBuilder& file, std::size_t which) {
    ASSERT_EQ(Drawn(file, 0xCD), Drawn(file, 0x12)) << which;
}

TEST(PictCommonHostile, APictureCutAnywhereIsRefusedOrDrawnWhole) {
    for (const int version : {1, 2}) {
        const ByteBuilder whole = Everything(version);
        ASSERT_TRUE(Drawn(whole, 0));
        for (std::size_t size = 0; size < whole.Size(); ++size) {
            ByteBuilder cut = whole;
            ExpectDrawnTheSame(cut.CutTo(size), size);
        }
    }
}

TEST(PictCommonHostile, APictureWithAnyByteChangedIsRefusedOrDrawnWhole) {
    for (const int version : {1, 2}) {
        const ByteBuilder whole = Everything(version);
        for (std::size_t at = 512; at < whole.Size(); ++at) {
            for (const unsigned value : {0U, 1U, 0x7FU, 0x80U, 0xFFU}) {
                ByteBuilder changed = whole;
                ExpectDrawnTheSame(changed.At(at).Byte(value), at);
            }
        }
    }
}

}  // namespace
