// Damaged pictures, in memory: a picture is refused or drawn, and always drawn the same.

#include "readers/pict/PictCanvas.h"
#include "readers/pict/PictMaker.h"
#include "readers/pict/PictStream.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

/// The pixels of a picture over bytes of `filler`; none where the picture is refused, an empty block where it is larger
/// than the test has time for.
std::optional<Bytes> Drawn(const ByteBuilder& file, unsigned char filler = 0xCD) {
    constexpr std::size_t kMaxBytes = 4 << 20;
    ByteSource source = file.Source();
    const auto picture = ReadPictPicture(source);
    if (!picture) return std::nullopt;
    const std::size_t pitch = 4 * static_cast<std::size_t>(picture->frame.Width());
    const std::size_t bytes = pitch * static_cast<std::size_t>(picture->frame.Height());
    if (bytes > kMaxBytes) return Bytes();
    Bytes block(bytes, filler);
    PictCanvas canvas(*picture, file.Bytes());
    for (std::size_t at = 0; at < bytes; at += pitch)
        canvas.DrawRow(std::span(block).subspan(at, pitch));
    return block;
}

ByteBuilder Everything(int version) {
    PictMaker maker({0, 0, 4, 20}, version);
    maker.Op(0x01).Word(10).Rect({0, 0, 4, 20});
    maker.Colour(0x1A, 1, 2, 3).Colour(0x1B, 0xFFFF, 0xFFFF, 0xFFFF).Colour(0x1F, 9, 9, 9);
    maker.Op(0xA1).Word(150).Word(6).Add(Bytes(6, 1));
    PictMap indexed = SixPixels();
    indexed.mode = 36;
    maker.Indexed(indexed);
    PictMap packed = {.bounds = {1, 0, 3, 20}, .mode = 2, .rowBytes = 0x800A, .bits = 4};
    packed.colours = Greys({0, 100, 200});
    packed.data = {5, 0xFB, 0x12, 0x01, 0x21, 0x01, 2, 0xF7, 0x10};
    maker.Indexed(packed, 0x99, {0, 2});
    maker.Bitmap({.bounds = {3, 0, 4, 9}, .mode = 1, .rowBytes = 2, .data = {0xA5, 0x80}});
    PictMap direct = {.bounds = {2, 5, 4, 9}, .mode = 34, .rowBytes = 0x8010, .bits = 32, .components = 3};
    direct.data = {0, 4, 0xF6, 3, 0x00, 7, 0, 2, 0xFE, 200};
    maker.Direct(direct);
    return maker.End();
}

ByteBuilder OneIndexedBitmap() {
    PictMap map = {.bounds = {-1, 1, 2, 12}, .rowBytes = 0x800A, .bits = 4, .colours = Greys({0, 100, 200})};
    map.data = {5, 0xFB, 0x12, 0x01, 0x21, 0x01, 2, 0xF7, 0x10, 0};
    return PictMaker({0, 0, 3, 9}).Indexed(map).End();
}

std::vector<ByteBuilder> Wholes() {
    return {Everything(1), Everything(2), OneIndexedBitmap()};
}

TEST(PictHostile, CutAtEveryLengthAPictureIsRefused) {
    for (const ByteBuilder& whole : Wholes()) {
        ASSERT_TRUE(Drawn(whole));
        for (std::size_t size = 0; size < whole.Size(); ++size)
            EXPECT_FALSE(Drawn(ByteBuilder(whole).CutTo(size))) << size;
    }
}

TEST(PictHostile, AnyByteMayBeAnything) {
    for (const ByteBuilder& whole : Wholes()) {
        for (std::size_t at = 512; at < whole.Size(); ++at) {
            for (const unsigned value : {0x00U, 0x01U, 0x7FU, 0x80U, 0xFFU}) {
                const ByteBuilder changed = ByteBuilder(whole).At(at).Byte(value);
                EXPECT_EQ(Drawn(changed), Drawn(changed)) << at << " " << value;
            }
        }
    }
}

TEST(PictHostile, InDirectColourNoByteOfTheResultIsLeftOver) {
    for (const int version : {1, 2}) {
        const ByteBuilder whole = Everything(version);
        for (std::size_t at = 512; at < whole.Size(); ++at) {
            const ByteBuilder changed = ByteBuilder(whole).At(at).Byte(0x7F);
            EXPECT_EQ(Drawn(changed, 0xCD), Drawn(changed, 0x32)) << at;
        }
    }
}

}  // namespace
