// KTX2 files made by hand, and what is made of them.

#include "frame/host/devices/KtxTestFile.h"

#include <kavra/devices/ImageLimits.h>

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;

ReadTexture Read(const KtxFile& file) {
    return ReadTextureBytes(file.All());
}

/// A frame of one block of bytes as they are (RFC 8878, 3.1.1): less than 256 of them.
Bytes ZstdFrame(const Bytes& bytes) {
    const auto size = static_cast<unsigned char>(bytes.size());
    Bytes frame = {0x28, 0xB5, 0x2F, 0xFD, 0x20, size};  // one segment, whose size has one byte
    Append(frame, 1U | bytes.size() << 3, 3);            // the last block, raw
    frame.insert(frame.end(), bytes.begin(), bytes.end());
    return frame;
}

// --- What is read.

TEST(TextureFileKtx, LevelsComeFromTheIndex) {
    const ReadTexture read = Read(KtxFile(4, 2).Set(kAtLevels, 3).Level(Counting(8)).Level({8, 9}).Level({10}));
    ASSERT_TRUE(read.isWhole) << read.reason;
    EXPECT_EQ(read.shape.format, kR8);
    EXPECT_EQ(read.shape.type, kTexture2D);
    EXPECT_EQ(read.shape.width, 4);
    EXPECT_EQ(read.shape.height, 2);
    EXPECT_EQ(read.shape.levels, 3);
    EXPECT_EQ(read.bytes, Counting(11));
}

TEST(TextureFileKtx, LayersAndFacesOfALevelLieTogether) {
    // Two cubes of 2 x 2 and 1 x 1: in the file all faces of a level, in the texture all levels of a face.
    const ReadTexture read = Read(KtxFile(2, 2)
                                      .Set(kAtLayers, 2)
                                      .Set(kAtFaces, 6)
                                      .Set(kAtLevels, 2)
                                      .Level(Counting(48))
                                      .Level(Counting(12, 100)));
    ASSERT_TRUE(read.isWhole) << read.reason;
    EXPECT_EQ(read.shape.type, kTextureCube);
    EXPECT_EQ(read.shape.elements, 2);
    Bytes expected;
    for (unsigned char face = 0; face < 12; ++face) {
        for (unsigned char pixel = 0; pixel < 4; ++pixel)
            expected.push_back(static_cast<unsigned char>(face * 4 + pixel));
        expected.push_back(static_cast<unsigned char>(100 + face));
    }
    EXPECT_EQ(read.bytes, expected);
}

TEST(TextureFileKtx, SlicesLieBehindEachOther) {
    const ReadTexture read = Read(KtxFile(2, 2).Set(kAtDepth, 2).Set(kAtLevels, 2).Level(Counting(8)).Level({8}));
    ASSERT_TRUE(read.isWhole) << read.reason;
    EXPECT_EQ(read.shape.type, kTextureVolume);
    EXPECT_EQ(read.shape.depth, 2);
    EXPECT_EQ(read.bytes, Counting(9));
}

TEST(TextureFileKtx, NoLevelsAreOneAndNoHeightIsARow) {
    EXPECT_EQ(Read(KtxFile(2, 2).Set(kAtLevels, 0).Level(Counting(4))).shape.levels, 1);
    EXPECT_EQ(Read(KtxFile(4, 0).Level(Counting(4))).shape.height, 1);
}

TEST(TextureFileKtx, LevelsThatArePackedAreUnpacked) {
    const Bytes top = Counting(16), small = Counting(4, 16);
    const ReadTexture read = Read(KtxFile(4, 4)
                                      .Set(kAtScheme, 2)
                                      .Set(kAtLevels, 2)
                                      .Level(ZstdFrame(top), top.size())
                                      .Level(ZstdFrame(small), small.size()));
    ASSERT_TRUE(read.isWhole) << read.reason;
    EXPECT_EQ(read.bytes, Counting(20));
}

TEST(TextureFileKtx, TheCurveIsTheFormatsOrWhereThatHasNoneTheDescriptors) {
    const auto isSrgb = [](std::uint32_t format, std::size_t bytes, unsigned char transfer) {
        const ReadTexture read = Read(KtxFile(1, 1).Set(kAtFormat, format).Transfer(transfer).Level(Counting(bytes)));
        EXPECT_TRUE(read.isWhole) << read.reason;
        return read.shape.isSrgb;
    };
    EXPECT_TRUE(isSrgb(43, 4, 2));
    EXPECT_FALSE(isSrgb(37, 4, 1));
    EXPECT_FALSE(isSrgb(37, 4, 2)) << "there is another number for that";
    EXPECT_TRUE(isSrgb(91, 8, 2)) << "there is none for 16 bits";
    EXPECT_FALSE(isSrgb(91, 8, 1));
}

TEST(TextureFileKtx, AlphaIsStraightUnlessTheDescriptorSaysOtherwise) {
    const auto alphaOf = [](std::uint32_t format, std::size_t bytes, unsigned char flags) {
        return Read(KtxFile(1, 1).Set(kAtFormat, format).Transfer(1, flags).Level(Counting(bytes))).shape.alpha;
    };
    EXPECT_EQ(alphaOf(37, 4, 0), kTextureAlphaStraight);
    EXPECT_EQ(alphaOf(37, 4, 1), kTextureAlphaPremultiplied);
    EXPECT_EQ(alphaOf(133, 8, 0), kTextureAlphaStraight);
    EXPECT_EQ(alphaOf(131, 8, 0), kTextureAlphaOpaque) << "blocks that are said to have none";
    EXPECT_EQ(alphaOf(9, 1, 0), kTextureAlphaUnknown);
}

TEST(TextureFileKtx, TheChannelOrderMakesGreyAndAlphaOfRed) {
    using namespace std::string_view_literals;
    const auto formatOf = [](std::uint32_t format, std::size_t bytes, std::string_view swizzle) {
        return Read(KtxFile(1, 1).Set(kAtFormat, format).Pair("KTXswizzle", swizzle).Level(Counting(bytes)))
            .shape.format;
    };
    EXPECT_EQ(formatOf(9, 1, "rrr1\0"sv), kL8);
    EXPECT_EQ(formatOf(9, 1, "rrr1"), kL8) << "the NUL may be left out";
    EXPECT_EQ(formatOf(9, 1, "000r\0"sv), kA8);
    EXPECT_EQ(formatOf(9, 1, "r001\0"sv), kR8);
    EXPECT_EQ(formatOf(70, 2, "rrr1\0"sv), kL16);
    EXPECT_EQ(formatOf(37, 4, "rgba\0"sv), kR8G8B8A8);
    EXPECT_EQ(formatOf(37, 4, "bgra\0"sv), kUnknown);
    const ReadTexture opaque = Read(KtxFile(1, 1).Set(kAtFormat, 37).Pair("KTXswizzle", "rgb1\0"sv).Level(Counting(4)));
    EXPECT_EQ(opaque.shape.format, kR8G8B8A8);
    EXPECT_EQ(opaque.shape.alpha, kTextureAlphaOpaque);
    const ReadTexture greyAlpha = Read(KtxFile(1, 1).Set(kAtFormat, 16).Pair("KTXswizzle", "rrrg\0"sv).Level({7, 8}));
    EXPECT_EQ(greyAlpha.bytes, (Bytes{7, 7, 7, 8}));
}

TEST(TextureFileKtx, LayersMayBeTheFacesOfAnIncompleteCube) {
    const ReadTexture read = Read(
        KtxFile(1, 1).Set(kAtLayers, 4).Pair("KTXcubemapIncomplete", std::string_view("\x22")).Level({1, 2, 3, 4}));
    ASSERT_TRUE(read.isWhole) << read.reason;
    EXPECT_EQ(read.shape.type, kTextureCube);
    EXPECT_EQ(read.shape.elements, 2);
    EXPECT_EQ(read.bytes, (Bytes{0, 1, 0, 0, 0, 2, 0, 3, 0, 0, 0, 4}));
    const auto why = [](std::uint32_t layers, std::string_view faces) {
        return Read(KtxFile(1, 1).Set(kAtLayers, layers).Pair("KTXcubemapIncomplete", faces).Level(Counting(layers)))
            .reason;
    };
    EXPECT_EQ(why(3, "\x22"), "its cube contradicts itself") << "three are no pairs";
    EXPECT_EQ(why(3, "\x46"), "its cube contradicts itself") << "there is no seventh face";
}

TEST(TextureFileKtx, TheLowestRowMayComeFirst) {
    using namespace std::string_view_literals;
    EXPECT_TRUE(Read(KtxFile(1, 1).Pair("KTXorientation", "ru\0"sv).Level({1})).isBottomUp);
    EXPECT_FALSE(Read(KtxFile(1, 1).Pair("KTXorientation", "rd\0"sv).Level({1})).isBottomUp);
    EXPECT_FALSE(Read(KtxFile(1, 1).Pair("KTXorientation", "r").Level({1})).isBottomUp);
}

TEST(TextureFileKtx, FormatsThatAreNoneHereAreWidened) {
    // 5, 6 and 5 bits, red highest: 0xF81F is magenta; three bytes, red or blue first.
    const ReadTexture magenta = Read(KtxFile(1, 1).Set(kAtFormat, 4).Level({0x1F, 0xF8}));
    EXPECT_EQ(magenta.bytes, (Bytes{255, 0, 255, 255}));
    EXPECT_FALSE(magenta.isAsStored);
    EXPECT_EQ(Read(KtxFile(1, 1).Set(kAtFormat, 23).Level({1, 2, 3})).bytes, (Bytes{1, 2, 3, 255}));
    EXPECT_EQ(Read(KtxFile(1, 1).Set(kAtFormat, 36).Level({1, 2, 3})).bytes, (Bytes{3, 2, 1, 255}));
    // Packed ones the same way.
    const ReadTexture packed =
        Read(KtxFile(2, 1).Set(kAtFormat, 29).Set(kAtScheme, 2).Level(ZstdFrame({1, 2, 3, 4, 5, 6}), 6));
    EXPECT_EQ(packed.bytes, (Bytes{1, 2, 3, 255, 4, 5, 6, 255})) << packed.reason;
    EXPECT_TRUE(packed.shape.isSrgb);
}

// --- What is refused.

std::string WhyNot(const KtxFile& file) {
    const ReadTexture read = Read(file);
    EXPECT_FALSE(read.isWhole);
    return read.reason;
}

TEST(TextureFileKtx, WhatIsNotReadIsNamed) {
    const auto file = [] { return KtxFile(1, 1).Level({1}); };
    EXPECT_EQ(WhyNot(file().Set(kAtScheme, 1)), "supercompression of kind 1 (BasisLZ) is not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtScheme, 3)), "supercompression of kind 3 (ZLIB) is not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtScheme, 0x10000)), "supercompression of kind 65536 is not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtFormat, 157)), "VkFormat 157 is not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtFormat, 0)), "VkFormat 0 is not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtFaces, 5)), "a cube of 5 faces is not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtDepth, 1).Set(kAtLayers, 1)), "arrays of volumes are not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtWidth, 0)), "a size of 0 x 1 x 1 is not supported");
    EXPECT_EQ(WhyNot(file().Set(kAtWidth, 2).Set(kAtFaces, 6)), "its cube is not square");
    EXPECT_EQ(WhyNot(file().Set(kAtLevels, 2)), "2 levels are more than its size has");
    EXPECT_EQ(WhyNot(file().Set(kAtLayers, 65537)), "an array of 65537 elements is not supported");
    EXPECT_EQ(WhyNot(file().Pair("KTXswizzle", "g\nrr")), "the channel order \"g?rr\" is not supported");
    Bytes old = file().All();
    old[5] = old[6] = '1';
    EXPECT_EQ(ReadTextureBytes(old).reason, "KTX of version 1 is not supported");
}

TEST(TextureFileKtx, LengthsMustBeThoseOfTheSize) {
    const char* const wrong = "level 0 has another length than its size asks for";
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Level(Counting(3))), wrong);
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Level(Counting(5))), wrong);
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Level(Counting(4), 5)), wrong);
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Set(kAtScheme, 2).Level(ZstdFrame(Counting(4)), 5)), wrong);
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Set(kAtIndex, 0xFFFFFFFF).Level(Counting(4))), "the file ends within level 0");
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Set(kAtIndex, 0xFFFFFFFF).Set(kAtIndex + 4, 0xFFFFFFFF).Level(Counting(4))),
              "the file ends within level 0");
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Set(kAtDfdBytes, 40).Level(Counting(4))),
              "its data format descriptor contradicts itself");
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Set(kAtDfdOffset, 0xFFFFFFF0).Level(Counting(4))),
              "its data format descriptor contradicts itself");
    EXPECT_EQ(WhyNot(KtxFile(2, 2).Set(kAtKvdBytes, 0x7FFFFFFF).Level(Counting(4))),
              "its keys and values contradict each other");
}

TEST(TextureFileKtx, PartsOfAFileMustNotOverlap) {
    const char* const wrong = "parts of the file overlap";
    // Both levels in one place: 4 x 1 pixels at 192, the second in the middle of the first.
    const KtxFile good = KtxFile(4, 1).Set(kAtLevels, 2).Level(Counting(4)).Level({4, 5});
    ASSERT_TRUE(Read(good).isWhole);
    EXPECT_EQ(WhyNot(KtxFile(good).Set(kAtIndex, 192)), wrong);
    EXPECT_EQ(WhyNot(KtxFile(good).Set(kAtIndex, 20)), wrong) << "the header";
    EXPECT_EQ(WhyNot(KtxFile(good).Set(kAtIndex, 140)), wrong) << "the descriptor";
}

TEST(TextureFileKtx, PackedLevelsThatBreakOrHoldMoreOrLessAreRefused) {
    const auto why = [](const Bytes& frame, std::uint64_t bytes) {
        return WhyNot(KtxFile(4, static_cast<std::uint32_t>(bytes / 4)).Set(kAtScheme, 2).Level(frame, bytes));
    };
    EXPECT_EQ(why(ZstdFrame(Counting(15)), 16), "level 0 cannot be read");
    EXPECT_EQ(why(ZstdFrame(Counting(17)), 16), "level 0 cannot be read");
    EXPECT_EQ(why({1, 2, 3, 4}, 16), "level 0 cannot be read");
    Bytes cut = ZstdFrame(Counting(16));
    cut.pop_back();
    EXPECT_EQ(why(cut, 16), "level 0 cannot be read");
}

TEST(TextureFileKtx, PackedLevelsThatClaimMoreThanTheirBytesCanHoldAreRefusedBeforeMemoryIsTaken) {
    const std::uint64_t side = 1 << 20;
    EXPECT_EQ(WhyNot(KtxFile(1 << 20, 1 << 20).Set(kAtScheme, 2).Level(ZstdFrame(Counting(16)), side * side)),
              "level 0 has another length than its size asks for");
}

TEST(TextureFileKtx, PackedLevelsKeepToTheLimitsOfTheHost) {
    const ImageLimits before = GetImageLimits();
    ImageLimits limits;
    limits.maxBytes = 15;
    SetImageLimits(limits);
    const std::string packed = Read(KtxFile(4, 4).Set(kAtScheme, 2).Level(ZstdFrame(Counting(16)), 16)).reason;
    const std::string plain = Read(KtxFile(4, 4).Level(Counting(16))).reason;
    SetImageLimits(before);
    EXPECT_EQ(packed, "its levels are larger than the limits allow");
    EXPECT_EQ(plain, "") << "which is no larger than its file";
}

/// Two cubes with three levels, a descriptor and texts.
Bytes Rich(std::uint32_t scheme) {
    using namespace std::string_view_literals;
    KtxFile file = KtxFile(4, 4).Set(kAtLayers, 2).Set(kAtFaces, 6).Set(kAtLevels, 3).Set(kAtScheme, scheme);
    file.Pair("KTXorientation", "rd\0"sv).Pair("KTXswizzle", "rrr1\0"sv);
    for (const std::size_t bytes : {192, 48, 12})
        file.Level(scheme == 0 ? Counting(bytes) : ZstdFrame(Counting(bytes)), bytes);
    return file.All();
}

TEST(TextureFileKtx, CutAnywhereAFileIsRefused) {
    for (const std::uint32_t scheme : {0U, 2U}) {
        const Bytes whole = Rich(scheme);
        ASSERT_TRUE(ReadTextureBytes(whole).isWhole);
        for (std::size_t size = 0; size < whole.size(); size += size < kAtIndex + 96 ? 1 : 5) {
            const ReadTexture read = ReadTextureBytes(Bytes(whole.begin(), whole.begin() + size));
            ASSERT_TRUE(!read.isWhole && !read.reason.empty()) << size;
        }
    }
}

TEST(TextureFileKtx, NoFieldOfAHeaderIsBelieved) {
    for (const std::uint32_t scheme : {0U, 2U}) {
        const Bytes whole = Rich(scheme);
        for (std::size_t offset = 0; offset + 4 <= 288; offset += 4) {
            for (const std::uint32_t value : {0U, 1U, 6U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, 0x10000U, 0x100000U}) {
                Bytes file = whole;
                KtxFile::Put(file, offset, value);
                const ReadTexture read = ReadTextureBytes(file);
                EXPECT_EQ(read.isWhole, read.reason.empty());
                EXPECT_LE(read.bytes.size(), 8 * file.size()) << offset << " " << value;
            }
        }
    }
}

}  // namespace
}  // namespace Kavra::Tests
