#include "load/AlphaAnalysis.h"
#include "support/HandlerAccess.h"

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <sys/mman.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace Kavra::Devices {
namespace {

using OIIO::ImageSpec;
using OIIO::TypeDesc;

using Flags = std::pair<bool, bool>;  // transparent, translucent
constexpr Flags kNeither{false, false}, kTransparent{true, false}, kTranslucent{false, true}, kBoth{true, true};

/// A spec whose size says nothing: the pixels are counted by bytes.
ImageSpec SpecOf(TypeDesc type, int alphaChannel = 3, int channels = 4) {
    ImageSpec spec(1, 1, channels, type);
    spec.alpha_channel = alphaChannel;
    return spec;
}

Flags Scan(void* data, std::size_t bytes, const ImageSpec& spec) {
    OIIOImageHandlerAccess access;
    Flags flags(true, true);  // what the caller had must not survive
    access.GetAlphaProperty(static_cast<unsigned char*>(data), bytes, spec, flags.first, flags.second);
    return flags;
}

/// Pixels with the given alphas in channel `alphaChannel`; the colours would set both flags if they were looked at.
template <class T>
std::vector<T> PixelsWith(const std::vector<T>& alphas, std::size_t alphaChannel = 3, T other = T(0)) {
    std::vector<T> pixels;
    for (const T alpha : alphas) {
        for (std::size_t c = 0; c < 4; ++c)
            pixels.push_back(c == alphaChannel ? alpha : c % 2 ? T(0) : other);
    }
    return pixels;
}

template <class T>
Flags ScanAlphas(TypeDesc type, const std::vector<T>& alphas, T colour) {
    auto pixels = PixelsWith(alphas, 3, colour);
    return Scan(pixels.data(), pixels.size() * sizeof(T), SpecOf(type));
}
Flags ScanBytes(const std::vector<unsigned char>& alphas) {
    return ScanAlphas<unsigned char>(TypeDesc::UINT8, alphas, 7);
}
Flags ScanShorts(const std::vector<unsigned short>& alphas) {
    return ScanAlphas<unsigned short>(TypeDesc::UINT16, alphas, 7);
}
Flags ScanFloats(const std::vector<float>& alphas) {
    return ScanAlphas<float>(TypeDesc::FLOAT, alphas, 0.5F);
}
Flags ScanHalves(const std::vector<half>& alphas) {
    return ScanAlphas<half>(TypeDesc::HALF, alphas, half(0.5F));
}

TEST(AlphaProperty, OpaqueBytesSetNeitherFlag) {
    EXPECT_EQ(ScanBytes(std::vector<unsigned char>(1000, 255)), kNeither);
}

TEST(AlphaProperty, ZeroBytesAreTransparent) {
    EXPECT_EQ(ScanBytes(std::vector<unsigned char>(1000, 0)), kTransparent);
}

TEST(AlphaProperty, ACutOutMaskIsTransparentOnly) {
    EXPECT_EQ(ScanBytes({0, 255, 255, 0, 255}), kTransparent);
}

TEST(AlphaProperty, EveryByteBetweenIsTranslucent) {
    for (unsigned a = 1; a <= 254; ++a) {
        EXPECT_EQ(ScanBytes({255, static_cast<unsigned char>(a), 255}), kTranslucent) << a;
    }
}

TEST(AlphaProperty, BothKindsOfAlphaSetBothFlags) {
    EXPECT_EQ(ScanBytes({0, 128}), kBoth);
    EXPECT_EQ(ScanBytes({128, 0}), kBoth);
}

TEST(AlphaProperty, ShortsAreComparedAsSixteenBits) {
    EXPECT_EQ(ScanShorts({65535, 65535, 65535}), kNeither);
    EXPECT_EQ(ScanShorts({65535, 65534, 65535}), kTranslucent);
    EXPECT_EQ(ScanShorts({65535, 0x8000}), kTranslucent);
    EXPECT_EQ(ScanShorts({65535, 0x7FFF}), kTranslucent);
    EXPECT_EQ(ScanShorts({65535, 0x00FF, 0xFF00}), kTranslucent);
    EXPECT_EQ(ScanShorts({1, 65535}), kTranslucent);
    EXPECT_EQ(ScanShorts({65535, 0}), kTransparent);
}

TEST(AlphaProperty, FloatAboveOneIsOpaque) {
    EXPECT_EQ(ScanFloats({1.5F, 1.0F, INFINITY}), kNeither);
}

TEST(AlphaProperty, NegativeFloatIsTranslucent) {
    EXPECT_EQ(ScanFloats({1.0F, -0.25F}), kTranslucent);
    EXPECT_EQ(ScanFloats({-INFINITY}), kTranslucent);
}

TEST(AlphaProperty, NaNSetsNeitherFlag) {
    EXPECT_EQ(ScanFloats({NAN, -NAN, NAN}), kNeither);
    EXPECT_EQ(ScanFloats({NAN, 0.5F}), kTranslucent);
}

TEST(AlphaProperty, BothFloatZerosAreTransparent) {
    EXPECT_EQ(ScanFloats({-0.0F}), kTransparent);
    EXPECT_EQ(ScanFloats({0.0F}), kTransparent);
    EXPECT_EQ(ScanFloats({std::numeric_limits<float>::denorm_min()}), kTranslucent);
    EXPECT_EQ(ScanFloats({std::nextafter(1.0F, 0.0F)}), kTranslucent);
}

TEST(AlphaProperty, NegativeHalfZeroIsTransparent) {
    EXPECT_EQ(ScanHalves(std::vector<half>(9, half(-0.0F))), kTransparent);
}

TEST(AlphaProperty, EveryHalfIsJudgedByItsValueAsFloat) {
    for (unsigned bits = 0; bits < 65536; ++bits) {
        half alpha;
        alpha.setBits(static_cast<std::uint16_t>(bits));
        const float value = alpha;
        EXPECT_EQ(ScanHalves({alpha, half(1.0F)}), Flags(value == 0, value != 0 && value < 1.0F)) << bits;
    }
}

TEST(AlphaProperty, TheBoundOfHalvesMayBeAnyHalf) {
    for (const float bound : {2.0F, 0.25F, 0.0F, -0.0F, -3.0F, INFINITY, -INFINITY, NAN}) {
        for (unsigned bits = 0; bits < 65536; bits += 37) {
            std::vector<half> pixel(4, half(0.5F));
            pixel[3].setBits(static_cast<std::uint16_t>(bits));
            const float value = pixel[3];
            Flags flags;
            GetAlphaPropertyforRGBA<half>(reinterpret_cast<unsigned char*>(pixel.data()), 1, 3, half(bound),
                                          flags.first, flags.second);
            EXPECT_EQ(flags, Flags(value == 0, value != 0 && value < bound)) << bits << " below " << bound;
        }
    }
}

TEST(AlphaProperty, OnlyTheNamedChannelIsLookedAt) {
    for (int channel = 0; channel < 4; ++channel) {
        // 21 pixels: more than one vector, and a rest.
        auto pixels = PixelsWith(std::vector<unsigned char>(21, 255), static_cast<std::size_t>(channel), {7});
        EXPECT_EQ(Scan(pixels.data(), pixels.size(), SpecOf(TypeDesc::UINT8, channel)), kNeither) << channel;
        pixels[20 * 4 + static_cast<std::size_t>(channel)] = 0;
        EXPECT_EQ(Scan(pixels.data(), pixels.size(), SpecOf(TypeDesc::UINT8, channel)), kTransparent) << channel;
    }
}

TEST(AlphaProperty, ImagesWithoutAFourthChannelOfAlphaSetNeitherFlag) {
    std::vector<unsigned char> zeros(48);
    for (const ImageSpec& spec :
         {SpecOf(TypeDesc::UINT8, 2, 3), SpecOf(TypeDesc::UINT8, -1), SpecOf(TypeDesc::UINT8, 4),
          SpecOf(TypeDesc::UINT8, 3, 5), SpecOf(TypeDesc::UINT8, 1, 2)}) {
        EXPECT_EQ(Scan(zeros.data(), zeros.size(), spec), kNeither);
    }
}

TEST(AlphaProperty, OtherElementTypesSetNeitherFlag) {
    std::vector<unsigned char> zeros(64);
    for (const TypeDesc type : {TypeDesc::INT8, TypeDesc::INT16, TypeDesc::UINT32, TypeDesc::INT32, TypeDesc::DOUBLE,
                                TypeDesc::UINT64, TypeDesc::UNKNOWN}) {
        EXPECT_EQ(Scan(zeros.data(), zeros.size(), SpecOf(type)), kNeither) << type;
    }
}

TEST(AlphaProperty, BytesBehindTheLastWholePixelAreIgnored) {
    std::vector<unsigned char> pixels = {9, 9, 9, 255, 0, 0, 0};
    EXPECT_EQ(Scan(pixels.data(), 7, SpecOf(TypeDesc::UINT8, 0)), kTranslucent);
    EXPECT_EQ(Scan(pixels.data(), 7, SpecOf(TypeDesc::UINT8)), kNeither);
    EXPECT_EQ(Scan(pixels.data(), 3, SpecOf(TypeDesc::UINT8)), kNeither);
    std::vector<float> halfAPixel(7, 1.0F);
    halfAPixel[6] = 0.0F;
    EXPECT_EQ(Scan(halfAPixel.data(), 28, SpecOf(TypeDesc::FLOAT, 2)), kNeither);
}

TEST(AlphaProperty, NothingToScanSetsNeitherFlag) {
    unsigned char pixel[4] = {};
    EXPECT_EQ(Scan(pixel, 0, SpecOf(TypeDesc::UINT8)), kNeither);
    EXPECT_EQ(Scan(nullptr, 400, SpecOf(TypeDesc::UINT8)), kNeither);
}

TEST(AlphaProperty, DataNeedNotBeAligned) {
    std::vector<unsigned char> memory(16 * 11 + 1);
    const std::vector<float> alphas = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0.5F};
    const auto pixels = PixelsWith(alphas, 3, 0.5F);
    std::memcpy(memory.data() + 1, pixels.data(), 16 * 11);
    EXPECT_EQ(Scan(memory.data() + 1, 16 * 11, SpecOf(TypeDesc::FLOAT)), kTranslucent);
}

TEST(AlphaProperty, OnePixelAnywhereInALargeImageIsFound) {
    const std::size_t count = 300'001;  // enough for several threads
    auto pixels = PixelsWith(std::vector<unsigned char>(count, 255));
    EXPECT_EQ(Scan(pixels.data(), pixels.size(), SpecOf(TypeDesc::UINT8)), kNeither);
    for (const std::size_t at :
         {std::size_t{0}, std::size_t{2047}, std::size_t{2048}, count / 2, count - 2, count - 1}) {
        pixels[4 * at + 3] = 0;
        EXPECT_EQ(Scan(pixels.data(), pixels.size(), SpecOf(TypeDesc::UINT8)), kTransparent) << at;
        pixels[4 * at + 3] = 254;
        EXPECT_EQ(Scan(pixels.data(), pixels.size(), SpecOf(TypeDesc::UINT8)), kTranslucent) << at;
        pixels[4 * at + 3] = 255;
    }
}

TEST(AlphaProperty, FlagsFromDifferentPartsOfALargeImageComeTogether) {
    const std::size_t count = 300'001;
    auto pixels = PixelsWith(std::vector<unsigned short>(count, 65535));
    for (const auto& [zero, between] : {std::pair<std::size_t, std::size_t>{0, count - 1}, {count - 1, 0}}) {
        auto changed = pixels;
        changed[4 * zero + 3] = 0;
        changed[4 * between + 3] = 1;
        EXPECT_EQ(Scan(changed.data(), changed.size() * 2, SpecOf(TypeDesc::UINT16)), kBoth);
    }
}

TEST(AlphaProperty, RandomAlphasOfAnyCountAgreeWithAPlainLoop) {
    std::mt19937 random(1);
    for (std::size_t count = 0; count < 200; ++count) {
        std::vector<unsigned char> alphas(count, 255);
        if (count > 0 && random() % 2) alphas[random() % count] = 0;
        if (count > 0 && random() % 2) alphas[random() % count] = static_cast<unsigned char>(1 + random() % 254);
        Flags expected;
        for (const unsigned char a : alphas) {
            expected.first |= a == 0;
            expected.second |= a > 0 && a < 255;
        }
        EXPECT_EQ(ScanBytes(alphas), expected) << count;
        EXPECT_EQ(ScanFloats(std::vector<float>(alphas.begin(), alphas.end())).first, expected.first) << count;
    }
}

TEST(AlphaProperty, AScanThatHasFoundBothReadsNoFurther) {
    const std::size_t bytes = 64 * 1024, readable = 16 * 1024;
    auto* memory =
        static_cast<unsigned char*>(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(memory, MAP_FAILED);
    memory[3] = 0;
    memory[7] = 1;
    ASSERT_EQ(mprotect(memory + readable, bytes - readable, PROT_NONE), 0);  // reading here ends the program
    EXPECT_EQ(Scan(memory, bytes, SpecOf(TypeDesc::UINT8)), kBoth);
    munmap(memory, bytes);
}

/// Fills random pixels of `T` and expects that nothing but their alphas has changed, and those to the bits of `opaque`.
template <class T>
void ExpectFilled(TypeDesc type, T opaque, std::size_t count, int alphaChannel) {
    std::mt19937 random(static_cast<unsigned>(count));
    std::vector<unsigned char> before(count * 4 * sizeof(T) + 3);  // and a part of a pixel
    for (auto& byte : before)
        byte = static_cast<unsigned char>(random());
    std::vector<unsigned char> expected = before, filled = before;
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(&expected[(4 * i + static_cast<std::size_t>(alphaChannel)) * sizeof(T)], &opaque, sizeof(T));
    }
    OIIOImageHandlerAccess access;
    access.SetToOpaque(filled.data(), filled.size(), SpecOf(type, alphaChannel));
    EXPECT_EQ(filled, expected) << type << ", " << count << " pixels, channel " << alphaChannel;
}

TEST(AlphaFill, OnlyTheAlphaOfWholePixelsBecomesOpaque) {
    constexpr std::uint16_t one = 0x3C00;  // as half
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, std::size_t{33}, std::size_t{70'001}}) {
        for (int channel = 0; channel < 4; ++channel) {
            ExpectFilled<std::uint8_t>(TypeDesc::UINT8, 255, count, channel);
            ExpectFilled<std::uint16_t>(TypeDesc::UINT16, 65535, count, channel);
            ExpectFilled<std::uint16_t>(TypeDesc::HALF, one, count, channel);
            ExpectFilled<float>(TypeDesc::FLOAT, 1.0F, count, channel);
        }
    }
}

TEST(AlphaFill, OtherImagesStayAsTheyAre) {
    OIIOImageHandlerAccess access;
    for (const ImageSpec& spec :
         {SpecOf(TypeDesc::UINT8, 2, 3), SpecOf(TypeDesc::UINT8, -1), SpecOf(TypeDesc::UINT8, 4),
          SpecOf(TypeDesc::INT8), SpecOf(TypeDesc::UINT32), SpecOf(TypeDesc::DOUBLE), SpecOf(TypeDesc::UNKNOWN)}) {
        std::vector<unsigned char> bytes(64, 5);
        access.SetToOpaque(bytes.data(), bytes.size(), spec);
        EXPECT_EQ(bytes, std::vector<unsigned char>(64, 5));
    }
    access.SetToOpaque(nullptr, 64, SpecOf(TypeDesc::UINT8));
}

}  // namespace
}  // namespace Kavra::Devices
