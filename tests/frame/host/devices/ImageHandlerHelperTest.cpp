#include "EveryVectorWidth.h"
#include "PixelBytes.h"

#include <kavra/devices/ImageHandlerHelper.h>

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <string>

namespace Kavra::Tests {
namespace {

using Utilities::ImageHandlerHelper;

/// One converter: what it makes of a block, and what the rule makes of one element.
struct Converter {
    std::string name;
    std::size_t inBytes, outBytes;
    std::function<void*(unsigned char*, std::size_t)> convert;
    std::function<void(const unsigned char*, unsigned char*)> rule;
};

template <class T>
T Load(const unsigned char* in) {
    T value;
    std::memcpy(&value, in, sizeof value);
    return value;
}
template <class T>
void Put(unsigned char* out, std::initializer_list<T> values) {
    for (const T& value : values) {
        std::memcpy(out, &value, sizeof value);
        out += sizeof value;
    }
}

template <class In, class Out>
Converter Scaling(std::string name, float factor, std::function<Out(In, float)> rule) {
    return {std::move(name), sizeof(In), sizeof(Out),
            [factor](unsigned char* source, std::size_t bytes) -> void* {
                return ImageHandlerHelper().TypeInToTypeOut<In, Out>(reinterpret_cast<In*>(source), bytes, factor);
            },
            [=](const unsigned char* in, unsigned char* out) { Put<Out>(out, {rule(Load<In>(in), factor)}); }};
}

template <class T>
Converter Expanding(std::string name, T alpha, bool withAlpha) {
    return {std::move(name), sizeof(T), sizeof(T) * (withAlpha ? 4 : 3),
            [=](unsigned char* source, std::size_t bytes) -> void* {
                return ImageHandlerHelper().ExpandGrayToRGBA<T>(reinterpret_cast<T*>(source), bytes, alpha, withAlpha);
            },
            [=](const unsigned char* in, unsigned char* out) {
                for (int i = 0; i < 3; ++i)
                    std::memcpy(out + i * sizeof(T), in, sizeof(T));
                if (withAlpha) std::memcpy(out + 3 * sizeof(T), &alpha, sizeof(T));
            }};
}

unsigned char RoundedToByte(std::uint16_t v, float factor) {
    const float product = static_cast<float>(v) * factor;
    const float sum = product + 0.5F;
    return static_cast<unsigned char>(std::fmin(std::fmax(std::floor(sum), 0.0F), 255.0F));
}

unsigned short* Words(unsigned char* bytes) {
    return reinterpret_cast<unsigned short*>(bytes);
}

std::vector<Converter> Reorderings() {
    return {
        {"BGRAToRGBA", 4, 4,
         [](unsigned char* s, std::size_t n) -> void* { return ImageHandlerHelper().BGRAToRGBA(s, n); },
         [](const unsigned char* in, unsigned char* out) { Put<unsigned char>(out, {in[2], in[1], in[0], in[3]}); }},
        {"GrayToRGB", 1, 4,
         [](unsigned char* s, std::size_t n) -> void* { return ImageHandlerHelper().GrayToRGB(s, n); },
         [](const unsigned char* in, unsigned char* out) { Put<unsigned char>(out, {*in, *in, *in, 255}); }},
        {"GrayToR16", 1, 2,
         [](unsigned char* s, std::size_t n) -> void* { return ImageHandlerHelper().GrayToR16(s, n); },
         [](const unsigned char* in, unsigned char* out) { Put<std::uint16_t>(out, {std::uint16_t(*in * 257)}); }},
        {"GrayToR16G16", 1, 4,
         [](unsigned char* s, std::size_t n) -> void* { return ImageHandlerHelper().GrayToR16G16(s, n); },
         [](const unsigned char* in, unsigned char* out) {
             Put<std::uint16_t>(out, {std::uint16_t(*in * 257), std::uint16_t(*in * 257)});
         }},
        {"Gray16ToRGB", 2, 4,
         [](unsigned char* s, std::size_t n) -> void* { return ImageHandlerHelper().Gray16ToRGB(Words(s), n); },
         [](const unsigned char* in, unsigned char* out) {
             const auto v = static_cast<unsigned char>((Load<std::uint16_t>(in) + 128) / 257);
             Put<unsigned char>(out, {v, v, v, 255});
         }},
        {"R16ToR16G16", 2, 4,
         [](unsigned char* s, std::size_t n) -> void* { return ImageHandlerHelper().R16ToR16G16(Words(s), n); },
         [](const unsigned char* in, unsigned char* out) {
             Put<std::uint16_t>(out, {Load<std::uint16_t>(in), Load<std::uint16_t>(in)});
         }},
    };
}

std::vector<Converter> Converters() {
    std::vector<Converter> all = Reorderings();
    all.push_back(Expanding<unsigned short>("words with alpha", 65535, true));
    all.push_back(Expanding<unsigned short>("words without alpha", 0, false));
    all.push_back(Expanding<half>("halves with alpha", half(1.0F), true));
    all.push_back(Expanding<half>("halves without alpha", half(0.0F), false));
    all.push_back(Expanding<float>("floats with alpha", 1.0F, true));
    all.push_back(Expanding<float>("floats without alpha", 0.0F, false));

    const auto product = [](auto v, float factor) { return static_cast<float>(v) * factor; };
    const auto halfProduct = [](auto v, float factor) { return half(static_cast<float>(v) * factor); };
    all.push_back(Scaling<unsigned char, float>("bytes to floats", 1.0F / 255.0F, product));
    all.push_back(Scaling<unsigned short, float>("words to floats", 1.0F / 65535.0F, product));
    all.push_back(Scaling<half, float>("halves to floats", 1.0F, product));
    all.push_back(Scaling<half, float>("halves to scaled floats", -3.7F, product));
    all.push_back(Scaling<unsigned char, half>("bytes to halves", 1.0F / 255.0F, halfProduct));
    all.push_back(Scaling<unsigned char, half>("bytes to negative halves", -1e-7F, halfProduct));
    all.push_back(Scaling<unsigned short, half>("words to halves", 1.0F / 65535.0F, halfProduct));
    all.push_back(Scaling<unsigned short, half>("words to large halves", 1.0F, halfProduct));
    all.push_back(Scaling<unsigned short, half>("words to tiny halves", 1e-9F, halfProduct));
    for (const float factor : {1.0F / 257.0F, 1.0F, -1.0F, 1e-3F}) {
        const std::function<unsigned char(unsigned short, float)> rule = RoundedToByte;
        all.push_back(
            Scaling<unsigned short, unsigned char>("words to bytes x " + std::to_string(factor), factor, rule));
    }
    return all;
}

ByteVector ByRule(const Converter& converter, std::span<const unsigned char> source) {
    const std::size_t count = source.size() / converter.inBytes;
    ByteVector expected(count * converter.outBytes);
    for (std::size_t i = 0; i < count; ++i) {
        converter.rule(source.data() + i * converter.inBytes, expected.data() + i * converter.outBytes);
    }
    return expected;
}

/// The two byte strings agree, but for the payload of NaNs where floats come out: arithmetic sets the quiet bit.
void ExpectSame(const Converter& converter, ByteVector result, ByteVector expected) {
    ASSERT_EQ(result.size(), expected.size());
    const bool makesFloats = converter.name.find("to floats") != std::string::npos ||
                             converter.name.find("to scaled floats") != std::string::npos;
    for (std::size_t i = 0; makesFloats && i < result.size(); i += 4) {
        if (std::isnan(Load<float>(&expected[i]))) expected[i + 2] |= 0x40;
    }
    const auto difference = std::ranges::mismatch(result, expected).in1 - result.begin();
    EXPECT_EQ(difference, static_cast<std::ptrdiff_t>(result.size())) << converter.name;
}

void CheckConversion(const Converter& converter, std::span<unsigned char> source) {
    const ByteVector expected = ByRule(converter, source);
    ExpectSame(converter, TakeBlock(converter.convert(source.data(), source.size()), expected.size()), expected);
}

/// Every value of 16 bits, of which every byte value is a part.
ByteVector EveryWord() {
    std::vector<std::uint16_t> words(65536);
    std::iota(words.begin(), words.end(), std::uint16_t{0});
    return BytesOf(words);
}

TEST(ImageHandlerHelper, EveryValueOfEightAndSixteenBitsFollowsTheRule) {
    ByteVector words = EveryWord();
    ForEveryVectorWidth([&] {
        for (const Converter& converter : Converters())
            CheckConversion(converter, words);
    });
}

TEST(ImageHandlerHelper, EveryShortLengthAndAnyAlignmentFollowsTheRule) {
    ByteVector bytes = RandomBytes(1024);
    ForEveryVectorWidth([&] {
        for (const Converter& converter : Converters()) {
            for (std::size_t count = 0; count <= 200; ++count) {
                CheckConversion(converter, std::span(bytes).subspan(count % 3, count * converter.inBytes));
            }
        }
    });
}

TEST(ImageHandlerHelper, BlocksThatAreSplitOverAllCoresFollowTheRule) {
    // Large enough to be split and to be written around the caches, and no multiple of a vector.
    ByteVector bytes = RandomBytes((std::size_t{5} << 20) + 12);
    for (const Converter& converter : Converters()) {
        const std::size_t wanted = (std::size_t{5} << 20) / converter.outBytes * converter.inBytes;
        CheckConversion(converter, std::span(bytes).subspan(1, std::min(bytes.size() - 1, wanted)));
    }
}

TEST(ImageHandlerHelper, WordsAreRoundedToTheNearestByteAsTheExactQuotientIs) {
    ByteVector words = EveryWord();
    const ByteVector bytes = TakeBlock(ImageHandlerHelper().TypeInToTypeOut<unsigned short, unsigned char>(
                                           Words(words.data()), words.size(), 1.0F / 257.0F),
                                       65536);
    for (unsigned v = 0; v < 65536; ++v)
        ASSERT_EQ(bytes[v], (v + 128) / 257) << v;
}

TEST(ImageHandlerHelper, ByteToHalfOfFullIntensityIsExactlyOne) {
    unsigned char full = 255;
    const ByteVector bytes =
        TakeBlock(ImageHandlerHelper().TypeInToTypeOut<unsigned char, half>(&full, 1, 1.0F / 255.0F), 2);
    EXPECT_EQ(bytes, (ByteVector{0x00, 0x3C}));
}

TEST(ImageHandlerHelper, AFactorThatIsNoNumberGivesNoByte) {
    std::vector<unsigned short> words = {0, 1, 65535};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    ForEveryVectorWidth([&] {
        const ByteVector bytes =
            TakeBlock(ImageHandlerHelper().TypeInToTypeOut<unsigned short, unsigned char>(words.data(), 6, nan), 3);
        EXPECT_EQ(bytes, (ByteVector{0, 0, 0}));
    });
}

TEST(ImageHandlerHelper, ANullSourceGivesAZeroedBlockOfTheProperSize) {
    for (const Converter& converter : Converters()) {
        const std::size_t size = 100 * converter.outBytes;
        EXPECT_EQ(TakeBlock(converter.convert(nullptr, 100 * converter.inBytes), size), ByteVector(size, 0))
            << converter.name;
    }
}

TEST(ImageHandlerHelper, NoBytesGiveABlockThatCanBeFreed) {
    unsigned char byte = 0;
    for (const Converter& converter : Converters()) {
        for (unsigned char* source : {&byte, static_cast<unsigned char*>(nullptr)}) {
            void* block = converter.convert(source, 0);
            EXPECT_NE(block, nullptr) << converter.name;
            Objects::KavraDelete(block);
        }
    }
}

TEST(ImageHandlerHelper, OddBytesBehindTheLastElementAreIgnoredAndWhatTheyWouldNeedIsZero) {
    ByteVector source(7, 0xEE);
    const ByteVector swapped = TakeBlock(ImageHandlerHelper().BGRAToRGBA(source.data(), 7), 7);
    EXPECT_EQ(swapped, (ByteVector{0xEE, 0xEE, 0xEE, 0xEE, 0, 0, 0}));
    const ByteVector pairs = TakeBlock(ImageHandlerHelper().R16ToR16G16(Words(source.data()), 3), 6);
    EXPECT_EQ(pairs, (ByteVector{0xEE, 0xEE, 0xEE, 0xEE, 0, 0}));
}

TEST(ImageHandlerHelper, SizesWhoseResultCannotBeAddressedAreRefused) {
    EXPECT_THROW(ImageHandlerHelper().GrayToRGB(nullptr, std::numeric_limits<std::size_t>::max()), std::bad_alloc);
}

}  // namespace
}  // namespace Kavra::Tests
