#include "readers/spot/SpotKernels.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

/// A byte for each place and channel, without a period that a vector could hide.
unsigned char Sample(std::size_t x, std::size_t channel) {
    return static_cast<unsigned char>(x * 7 + x / 251 + channel * 85);
}

Bytes Row(std::size_t count, std::size_t channel) {
    Bytes row;
    for (std::size_t x = 0; x < count; ++x)
        row.push_back(Sample(x, channel));
    return row;
}

/// A palette in which no component is like its index or another component.
SpotPalette Palette() {
    SpotPalette palette;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        palette[i] = {static_cast<std::uint8_t>(i + 1), static_cast<std::uint8_t>(i * 3 + 2),
                      static_cast<std::uint8_t>(255 - i)};
    }
    return palette;
}

/// Of every length up to several vectors: whole ones and what is left over.
constexpr std::size_t kLengths = 300;

TEST(SpotKernels, RowsOfColoursBecomeOpaquePixels) {
    for (std::size_t count = 0; count < kLengths; ++count) {
        const Bytes red = Row(count, 0), green = Row(count, 1), blue = Row(count, 2);
        Bytes out(4 * count + 1, 77);
        RgbaFromRows(std::span(out).first(4 * count), {red, green, blue});
        for (std::size_t x = 0; x < count; ++x) {
            const Bytes pixel(out.begin() + static_cast<std::ptrdiff_t>(4 * x),
                              out.begin() + static_cast<std::ptrdiff_t>(4 * x + 4));
            ASSERT_EQ(pixel, (Bytes{Sample(x, 0), Sample(x, 1), Sample(x, 2), 255})) << count << " " << x;
        }
        ASSERT_EQ(out.back(), 77) << "nothing is written behind the row";
    }
}

TEST(SpotKernels, PixelsOfThreeBytesBecomeOpaqueOnesInEitherOrder) {
    for (std::size_t count = 0; count < kLengths; ++count) {
        Bytes in;
        for (std::size_t x = 0; x < count; ++x)
            in.insert(in.end(), {Sample(x, 0), Sample(x, 1), Sample(x, 2)});
        in.shrink_to_fit();
        for (const bool blueFirst : {false, true}) {
            Bytes out(4 * count + 1, 77);
            RgbaFromPixels(std::span(out).first(4 * count), in, blueFirst);
            for (std::size_t x = 0; x < count; ++x) {
                ASSERT_EQ(out[4 * x], Sample(x, blueFirst ? 2 : 0)) << count;
                ASSERT_EQ(out[4 * x + 1], Sample(x, 1)) << count;
                ASSERT_EQ(out[4 * x + 2], Sample(x, blueFirst ? 0 : 2)) << count;
                ASSERT_EQ(out[4 * x + 3], 255) << count;
            }
            ASSERT_EQ(out.back(), 77);
        }
    }
}

TEST(SpotKernels, AColourTableGivesTheEntryOfEachSample) {
    const PixelTable table = ColourTable(Palette());
    for (const std::size_t count : {1, 15, 16, 17, 300}) {
        const Bytes in = Row(count, 0);
        Bytes out(4 * count);
        LookUp(out, in, table);
        for (std::size_t x = 0; x < count; ++x) {
            const unsigned i = in[x];
            ASSERT_EQ(out[4 * x], (i + 1) % 256);
            ASSERT_EQ(out[4 * x + 1], (i * 3 + 2) % 256);
            ASSERT_EQ(out[4 * x + 2], 255 - i);
            ASSERT_EQ(out[4 * x + 3], 255);
        }
    }
}

TEST(SpotKernels, AGreyTableGivesTheRedOfEachEntry) {
    const SampleTable table = RedTable(Palette());
    for (const std::size_t count : {1, 15, 16, 17, 300}) {
        const Bytes in = Row(count, 0);
        Bytes out(count);
        GreyFromSamples(out, in, table);
        for (std::size_t x = 0; x < count; ++x)
            ASSERT_EQ(out[x], (in[x] + 1) % 256);
    }
}

TEST(SpotKernels, EachColourGoesThroughItsOwnComponents) {
    const PixelTables tables = ComponentTables(Palette());
    Bytes out(8);
    RgbaFromRows(out, {Bytes{10, 20}, Bytes{30, 40}, Bytes{50, 60}}, tables);
    EXPECT_EQ(out, (Bytes{11, 92, 205, 255, 21, 122, 195, 255}));
    RgbaFromPixels(out, Bytes{10, 30, 50, 20, 40, 60}, false, tables);
    EXPECT_EQ(out, (Bytes{11, 92, 205, 255, 21, 122, 195, 255}));
    RgbaFromPixels(out, Bytes{50, 30, 10, 60, 40, 20}, true, tables);
    EXPECT_EQ(out, (Bytes{11, 92, 205, 255, 21, 122, 195, 255}));
}

TEST(SpotKernels, OneSampleOfEachPixelIsTakenWhole) {
    for (const std::size_t sampleBytes : {2, 4}) {
        for (std::size_t count = 0; count < kLengths; ++count) {
            const Bytes in = Row(3 * sampleBytes * count, 0);
            for (int band = 0; band < 3; ++band) {
                Bytes out(sampleBytes * count);
                SampleFromPixels(out, in, sampleBytes, band);
                for (std::size_t i = 0; i < out.size(); ++i) {
                    const std::size_t pixel = i / sampleBytes;
                    const std::size_t from = (3 * pixel + static_cast<std::size_t>(band)) * sampleBytes;
                    ASSERT_EQ(out[i], in[from + i % sampleBytes]) << sampleBytes << " " << count << " " << band;
                }
            }
        }
    }
}

}  // namespace
