#include "common/PixelFormats.h"

#include <kavra/devices/AFormatConvertor.h>

#include <gtest/gtest.h>

#include <climits>
#include <set>

using namespace Kavra::Devices;
using Kavra::Common::ElementType;
using Kavra::Common::FactsOf;
using Kavra::Common::PixelFormat;
namespace FormatTable = Kavra::Common::FormatTable;

namespace {

TEST(PixelFormats, EachHasItsElementChannelsAndBytes) {
    struct Row {
        EFormat format;
        ElementType element;
        int channels, bytes;
    };
    using enum ElementType;
    for (const Row& row :
         {Row{kA8, kUInt8, 1, 1}, Row{kR8, kUInt8, 1, 1}, Row{kL8, kUInt8, 1, 1}, Row{kR16F, kHalf, 1, 2},
          Row{kR16, kUInt16, 1, 2}, Row{kL16, kUInt16, 1, 2}, Row{kR32F, kFloat, 1, 4}, Row{kR16G16F, kHalf, 2, 4},
          Row{kR16G16, kUInt16, 2, 4}, Row{kR8G8B8A8, kUInt8, 4, 4}, Row{kR8G8B8A8Alt, kUInt8, 4, 4},
          Row{kB8G8R8A8, kUInt8, 4, 4}, Row{kB8G8R8X8, kUInt8, 4, 4}, Row{kR8G8B8X8, kUInt8, 4, 4},
          Row{kR32G32F, kFloat, 2, 8}, Row{kR16G16B16A16F, kHalf, 4, 8}, Row{kR16G16B16A16, kUInt16, 4, 8},
          Row{kR32G32B32F, kFloat, 3, 12}, Row{kR32G32B32A32F, kFloat, 4, 16}}) {
        const PixelFormat& facts = FactsOf(row.format);
        EXPECT_EQ(facts.value, row.format);
        EXPECT_EQ(facts.element, row.element) << facts.name;
        EXPECT_EQ(facts.channels, row.channels) << facts.name;
        EXPECT_EQ(facts.BytesPerPixel(), row.bytes) << facts.name;
        EXPECT_EQ(facts.bytesPerBlock, 0) << facts.name;
    }
}

TEST(PixelFormats, AreWhatTheHostSaysTheyWeigh) {
    for (int value = -2; value < 200; ++value) {
        const auto format = static_cast<EFormat>(value);
        EXPECT_EQ(FactsOf(format).BytesPerPixel(), Kavra::Utilities::AFormatConvertor::BytesPerPixel(format)) << value;
        EXPECT_EQ(FactsOf(format).bytesPerBlock, Kavra::Utilities::AFormatConvertor::BytesPerBlock(format)) << value;
    }
}

TEST(PixelFormats, BlockCompressedOnesHaveBlocksAndNoPixels) {
    for (const EFormat format : {kBC1, kBC1Srgb, kBC4, kBC4Snorm})
        EXPECT_EQ(FactsOf(format).bytesPerBlock, 8) << format;
    for (const EFormat format : {kBC2, kBC2Srgb, kBC3, kBC3Srgb, kBC5, kBC5Snorm, kBC6H, kBC6HSigned, kBC7, kBC7Srgb}) {
        EXPECT_EQ(FactsOf(format).bytesPerBlock, 16) << format;
        EXPECT_FALSE(FactsOf(format).HasPixels()) << format;
    }
}

TEST(PixelFormats, TwoAreBlueFirstAndTwoRedFirstAndOneIsNeitherThoughItsBytesAre) {
    std::set<EFormat> blueFirst, redFirst, byteColours;
    for (const PixelFormat& format : FormatTable::kFormats) {
        if (format.blueFirst) blueFirst.insert(format.value);
        if (format.IsRedFirst()) redFirst.insert(format.value);
        if (format.IsByteColour()) byteColours.insert(format.value);
    }
    EXPECT_EQ(blueFirst, (std::set{kB8G8R8A8, kB8G8R8X8}));
    EXPECT_EQ(redFirst, (std::set{kR8G8B8A8, kR8G8B8X8}));
    EXPECT_EQ(byteColours, (std::set{kB8G8R8A8, kB8G8R8X8, kR8G8B8A8, kR8G8B8X8, kR8G8B8A8Alt}));
}

TEST(PixelFormats, AnAlphaIsTheLastChannelOfThoseThatNameIt) {
    std::set<EFormat> pixels, blocks;
    for (const PixelFormat& format : FormatTable::kFormats)
        if (format.hasAlpha) (format.HasPixels() ? pixels : blocks).insert(format.value);
    EXPECT_EQ(pixels,
              (std::set{kA8, kR8G8B8A8, kR8G8B8A8Alt, kB8G8R8A8, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F}));
    EXPECT_EQ(blocks, (std::set{kBC1, kBC1Srgb, kBC2, kBC2Srgb, kBC3, kBC3Srgb, kBC7, kBC7Srgb}));
    EXPECT_TRUE(FactsOf(kA8).IsAlphaOnly());
    EXPECT_FALSE(FactsOf(kL8).IsAlphaOnly());
}

TEST(PixelFormats, NumbersAreBlocksFrom6To17AndFrom73To78AndAlphaVariants50And51) {
    using Kavra::Common::FormatKind;
    for (int value = -2; value < 200; ++value) {
        const FormatKind kind = FactsOf(static_cast<EFormat>(value)).kind;
        EXPECT_EQ(kind == FormatKind::kBlocks, value >= 6 && value <= 17) << value;
        EXPECT_EQ(kind == FormatKind::kLaterBlocks, value >= 73 && value <= 78) << value;
        EXPECT_EQ(kind == FormatKind::kAlphaVariant, value == 50 || value == 51) << value;
    }
}

TEST(PixelFormats, TheLibraryIsShownAllPixelsButThoseOfTwoFormats) {
    for (const PixelFormat& format : FormatTable::kFormats) {
        const bool isLeftOut = format.value == kR8G8B8A8Alt || format.value == kR32G32B32F;
        EXPECT_EQ(format.inLibrary, format.HasPixels() && !isLeftOut) << format.name;
    }
}

TEST(PixelFormats, ValuesThatAreNoFormatAreUnknown) {
    for (const int value : {-1, 1, 5, 18, 19, 22, 24, 47, 49, 65, 67, 72, 79, 12345, INT_MIN, INT_MAX}) {
        const PixelFormat& facts = FactsOf(static_cast<EFormat>(value));
        EXPECT_EQ(facts.value, kUnknown) << value;
        EXPECT_EQ(facts.BytesPerPixel(), 0) << value;
        EXPECT_EQ(facts.bytesPerBlock, 0) << value;
    }
}

}  // namespace
