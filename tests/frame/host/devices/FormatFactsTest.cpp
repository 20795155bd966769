#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/FormatFacts.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace Kavra::Devices;

FormatFacts Facts(EFormat format) {
    FormatFacts facts;
    EXPECT_TRUE(GetFormatFacts(format, facts)) << format;
    return facts;
}

TEST(FormatFacts, APixelIsDescribed) {
    const FormatFacts facts = Facts(kB8G8R8X8);
    EXPECT_EQ(std::string(facts.name), "kB8G8R8X8");
    EXPECT_EQ(std::string(facts.shortName), "bgrx8");
    EXPECT_EQ(facts.channels, 4);
    EXPECT_EQ(facts.bytesPerPixel, 4);
    EXPECT_EQ(facts.bytesPerBlock, 0);
    EXPECT_EQ(facts.element, ElementType::kUInt8);
    EXPECT_TRUE(facts.blueFirst);
    EXPECT_FALSE(facts.hasAlpha);
    EXPECT_TRUE(facts.isInLibrary);
    EXPECT_FALSE(Facts(kR8G8B8A8Alt).isInLibrary);
    EXPECT_TRUE(Facts(kA8).hasAlpha);
}

TEST(FormatFacts, ABlockIsDescribedByItsBytesAndChannels) {
    const FormatFacts facts = Facts(kBC6H);
    EXPECT_EQ(facts.channels, 3);
    EXPECT_EQ(facts.bytesPerPixel, 0);
    EXPECT_EQ(facts.bytesPerBlock, 16);
    EXPECT_EQ(facts.element, ElementType::kNone);
    EXPECT_EQ(Facts(kBC4).channels, 1);
    EXPECT_EQ(Facts(kBC5).channels, 2);
    EXPECT_TRUE(Facts(kBC1).hasAlpha);
}

TEST(FormatFacts, UnknownIsAFormatWithoutAnything) {
    const FormatFacts facts = Facts(kUnknown);
    EXPECT_EQ(std::string(facts.name), "kUnknown");
    EXPECT_STREQ(facts.shortName, "");
    EXPECT_EQ(facts.channels, 0);
    EXPECT_EQ(facts.bytesPerPixel, 0);
}

TEST(FormatFacts, ReservedNumbersAndValuesThatAreNoFormatFillNothing) {
    for (const int value : {-1, 1, 16, 17, 18, 50, 51, 77, 78, 79, 12345}) {
        FormatFacts facts;
        facts.channels = 77;
        EXPECT_FALSE(GetFormatFacts(static_cast<EFormat>(value), facts)) << value;
        EXPECT_EQ(facts.channels, 77) << value;
    }
}

TEST(FormatFacts, NoMoreIsFilledThanTheUserKnows) {
    FormatFacts facts;
    facts.size = offsetof(FormatFacts, channels);
    facts.channels = 77;
    EXPECT_TRUE(GetFormatFacts(kL8, facts));
    EXPECT_EQ(std::string(facts.name), "kL8");
    EXPECT_EQ(facts.size, offsetof(FormatFacts, channels));
    EXPECT_EQ(facts.channels, 77);
}

TEST(FormatFacts, TheFormatsFollowOneAnotherWithoutReservedNumbers) {
    std::vector<int> values;
    for (EFormat format = NextFormat(kUnknown); format != kUnknown; format = NextFormat(format)) {
        values.push_back(format);
        const FormatFacts facts = Facts(format);
        EXPECT_EQ(facts.bytesPerPixel, Kavra::Utilities::AFormatConvertor::BytesPerPixel(format)) << facts.name;
        EXPECT_EQ(facts.bytesPerBlock, Kavra::Utilities::AFormatConvertor::BytesPerBlock(format)) << facts.name;
    }
    EXPECT_EQ(values, (std::vector{6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 20, 21, 25, 26, 27, 31, 38,
                                   41, 42, 46, 48, 52, 53, 54, 55, 58, 59, 63, 66, 73, 74, 75, 76}));
    EXPECT_EQ(NextFormat(static_cast<EFormat>(-5)), kBC1);
    EXPECT_EQ(NextFormat(static_cast<EFormat>(16)), kA8);
    EXPECT_EQ(NextFormat(static_cast<EFormat>(1000)), kUnknown);
}

TEST(FormatFacts, BlocksOfColoursHaveAnSrgbVariantAndAllElseIsItsOwn) {
    EXPECT_EQ(SrgbVariant(kBC7, true), kBC7Srgb);
    EXPECT_EQ(SrgbVariant(kBC7Srgb, true), kBC7Srgb);
    EXPECT_EQ(SrgbVariant(kBC1Srgb, false), kBC1);
    EXPECT_EQ(SrgbVariant(kBC1, false), kBC1);
    for (const EFormat format : {kBC4, kBC5Snorm, kBC6H, kR8G8B8A8, kUnknown}) {
        EXPECT_EQ(SrgbVariant(format, true), format);
        EXPECT_EQ(SrgbVariant(format, false), format);
    }
}

}  // namespace
