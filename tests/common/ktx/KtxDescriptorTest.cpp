// Expected bytes are derived by hand from the tables of the Khronos Data Format Specification 1.3.

#include "common/ktx/KtxDescriptor.h"
#include "common/ktx/KtxHeader.h"

#include <gtest/gtest.h>

#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using namespace Devices::Ktx;
using Bytes = std::vector<unsigned char>;

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// Total size, the basic block of Khronos in version 2, and its size.
Bytes Start(unsigned char samples) {
    const auto block = static_cast<unsigned char>(24 + 16 * samples);
    return {static_cast<unsigned char>(block + 4), 0, 0, 0, 0, 0, 0, 0, 2, 0, block, 0};
}

/// BT.709 primaries; pixels or blocks of 4 x 4 in one plane.
Bytes Colours(unsigned char model, unsigned char transfer, unsigned char bytes, unsigned char flags = 0) {
    const unsigned char side = model == 1 ? 0 : 3;
    return {model, 1, transfer, flags, side, side, 0, 0, bytes, 0, 0, 0, 0, 0, 0, 0};
}

/// Channel and qualifiers in one byte, no position.
Bytes Sample(unsigned char offset, unsigned char bits, unsigned char channel, const Bytes& range) {
    return Bytes{offset, 0, static_cast<unsigned char>(bits - 1), channel, 0, 0, 0, 0} + range;
}

const Bytes kByte = {0, 0, 0, 0, 0xFF, 0, 0, 0};
const Bytes kAll = {0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};
const Bytes kSignedAll = {0, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 0x7F};
const Bytes kZeroToOne = {0, 0, 0, 0, 0, 0, 0x80, 0x3F};
const Bytes kMinusOneToOne = {0, 0, 0x80, 0xBF, 0, 0, 0x80, 0x3F};

TEST(KtxDescriptor, AnAlphaBesideSrgbColoursIsLinear) {
    const Bytes expected = Start(4) + Colours(1, 2, 4) + Sample(0, 8, 0, kByte) + Sample(8, 8, 1, kByte) +
                           Sample(16, 8, 2, kByte) + Sample(24, 8, 0x1F, kByte);
    EXPECT_EQ(ComposeDescriptor(kR8G8B8A8, {.isSrgb = true}), expected);
    EXPECT_EQ(expected.size(), 92U);
    const Bytes blocks = Start(2) + Colours(130, 2, 16) + Sample(0, 64, 0x1F, kAll) + Sample(64, 64, 0, kAll);
    EXPECT_EQ(ComposeDescriptor(kBC3Srgb, {.isSrgb = true}), blocks);
}

TEST(KtxDescriptor, ChannelsComeInTheOrderOfTheirBits) {
    const Bytes expected = Start(4) + Colours(1, 1, 4, 1) + Sample(0, 8, 2, kByte) + Sample(8, 8, 1, kByte) +
                           Sample(16, 8, 0, kByte) + Sample(24, 8, 15, kByte);
    EXPECT_EQ(ComposeDescriptor(kB8G8R8A8, {.isPremultiplied = true}), expected);
}

TEST(KtxDescriptor, TheFirstBlocksSayWhetherTheyHaveAlpha) {
    EXPECT_EQ(ComposeDescriptor(kBC1, {}), Start(1) + Colours(128, 1, 8) + Sample(0, 64, 1, kAll));
    EXPECT_EQ(ComposeDescriptor(kBC1, {.isOpaque = true}), Start(1) + Colours(128, 1, 8) + Sample(0, 64, 0, kAll));
}

TEST(KtxDescriptor, OtherBlocksHaveAsManySamplesAsParts) {
    EXPECT_EQ(ComposeDescriptor(kBC2, {}),
              Start(2) + Colours(129, 1, 16) + Sample(0, 64, 15, kAll) + Sample(64, 64, 0, kAll));
    EXPECT_EQ(ComposeDescriptor(kBC4, {}), Start(1) + Colours(131, 1, 8) + Sample(0, 64, 0, kAll));
    EXPECT_EQ(ComposeDescriptor(kBC5Snorm, {}),
              Start(2) + Colours(132, 1, 16) + Sample(0, 64, 0x40, kSignedAll) + Sample(64, 64, 0x41, kSignedAll));
    EXPECT_EQ(ComposeDescriptor(kBC7Srgb, {.isSrgb = true}), Start(1) + Colours(134, 2, 16) + Sample(0, 128, 0, kAll));
}

TEST(KtxDescriptor, FloatsRangeFromMinusOneOrZeroToOne) {
    EXPECT_EQ(ComposeDescriptor(kBC6H, {}), Start(1) + Colours(133, 1, 16) + Sample(0, 128, 0x80, kZeroToOne));
    EXPECT_EQ(ComposeDescriptor(kBC6HSigned, {}),
              Start(1) + Colours(133, 1, 16) + Sample(0, 128, 0xC0, kMinusOneToOne));
    EXPECT_EQ(ComposeDescriptor(kR32F, {}), Start(1) + Colours(1, 1, 4) + Sample(0, 32, 0xC0, kMinusOneToOne));
    EXPECT_EQ(ComposeDescriptor(kR16G16F, {}),
              Start(2) + Colours(1, 1, 4) + Sample(0, 16, 0xC0, kMinusOneToOne) + Sample(16, 16, 0xC1, kMinusOneToOne));
}

TEST(KtxDescriptor, GreyAndALoneAlphaAreRed) {
    const Bytes red = Start(1) + Colours(1, 1, 1) + Sample(0, 8, 0, kByte);
    EXPECT_EQ(ComposeDescriptor(kR8, {}), red);
    EXPECT_EQ(ComposeDescriptor(kL8, {}), red);
    EXPECT_EQ(ComposeDescriptor(kA8, {}), red);
    EXPECT_TRUE(ComposeDescriptor(kUnknown, {}).empty());
}

TEST(KtxDescriptor, WhatIsComposedIsParsed) {
    const auto parsed = ParseDescriptor(ComposeDescriptor(kBC7Srgb, {.isSrgb = true, .isPremultiplied = true}));
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(parsed->isSrgb);
    EXPECT_TRUE(parsed->isPremultiplied);
}

TEST(KtxDescriptor, SizesThatContradictEachOtherAreNone) {
    const Bytes whole = ComposeDescriptor(kR8G8B8A8, {});
    ASSERT_TRUE(ParseDescriptor(whole));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(ParseDescriptor(std::span(whole).first(size))) << size;
    for (const std::size_t offset : {0U, 3U, 4U, 7U, 11U}) {
        Bytes wrong = whole;
        wrong[offset] = 0x77;
        EXPECT_FALSE(ParseDescriptor(wrong)) << offset;
    }
}

// --- Keys and values.

Bytes Text(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(KtxTexts, KeysAreSortedAndPaddedToFourBytes) {
    using namespace std::string_view_literals;
    EXPECT_EQ(ComposeTexts({.orientation = "rd", .swizzle = "rrr1"}),
              Text("\x12\0\0\0KTXorientation\0rd\0\0\0\x10\0\0\0KTXswizzle\0rrr1\0\x10\0\0\0KTXwriter\0kavra\0"sv));
    EXPECT_EQ(ComposeTexts({.orientation = "rdi", .swizzle = {}}),
              Text("\x13\0\0\0KTXorientation\0rdi\0\0\x10\0\0\0KTXwriter\0kavra\0"sv));
}

TEST(KtxTexts, KnownKeysAreFoundAmongOthers) {
    using namespace std::string_view_literals;
    const Bytes pairs = Text(
        "\x04\0\0\0abc\0\x02\0\0\0k\0\0\0\x11\0\0\0KTXorientation\0ru\0\0\0"
        "\x16\0\0\0KTXcubemapIncomplete\0\x05\0\0"sv);
    const auto texts = ParseTexts(pairs);
    ASSERT_TRUE(texts);
    EXPECT_EQ(texts->orientation, "ru");
    EXPECT_EQ(texts->facesInFile, 5U);
    EXPECT_EQ(texts->swizzle, "");
}

TEST(KtxTexts, LengthsThatContradictEachOtherAreNone) {
    using namespace std::string_view_literals;
    EXPECT_TRUE(ParseTexts({}));
    EXPECT_FALSE(ParseTexts(Text("\x04\0\0"sv))) << "no whole length";
    EXPECT_FALSE(ParseTexts(Text("\x05\0\0\0abc\0"sv))) << "beyond the end";
    EXPECT_FALSE(
        ParseTexts(Text("\xFF\xFF\xFF\xFF"
                        "abc\0"sv)));
    EXPECT_FALSE(ParseTexts(Text("\x04\0\0\0abcd"sv))) << "no key";
    EXPECT_FALSE(ParseTexts(Text("\0\0\0\0"sv))) << "nothing at all";
}

}  // namespace
}  // namespace Kavra::Tests
