#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "readers/spot/SpotKernels.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "readers/spot/SpotKernels.h"

#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Devices::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using TagU8 = hn::ScalableTag<std::uint8_t>;

/// As many pixels as fill whole vectors; the result is how many that were.
std::size_t RowsToRgba(unsigned char* out, const ColourRows& in) {
    const TagU8 d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; x + lanes <= in.red.size(); x += lanes) {
        hn::StoreInterleaved4(hn::LoadU(d, in.red.data() + x), hn::LoadU(d, in.green.data() + x),
                              hn::LoadU(d, in.blue.data() + x), hn::Set(d, 255), d, out + 4 * x);
    }
    return x;
}

std::size_t PixelsToRgba(unsigned char* out, std::span<const unsigned char> in, bool blueFirst) {
    const TagU8 d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; 3 * (x + lanes) <= in.size(); x += lanes) {
        hn::VFromD<TagU8> first, green, last;
        hn::LoadInterleaved3(d, in.data() + 3 * x, first, green, last);
        hn::StoreInterleaved4(blueFirst ? last : first, green, blueFirst ? first : last, hn::Set(d, 255), d,
                              out + 4 * x);
    }
    return x;
}

/// Bytes through a table, by way of the sixteen tables of sixteen entries that it consists of.
std::size_t BytesThroughTable(unsigned char* out, std::span<const unsigned char> in, const SampleTable& table) {
    const TagU8 d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; x + lanes <= in.size(); x += lanes) {
        const auto samples = hn::LoadU(d, in.data() + x);
        const auto entry = hn::And(samples, hn::Set(d, 15));
        const auto part = hn::And(samples, hn::Set(d, 240));
        auto found = hn::Zero(d);
        for (std::size_t first = 0; first < table.size(); first += 16) {
            const auto entries = hn::TableLookupBytes(hn::LoadDup128(d, table.data() + first), entry);
            const auto isHere = hn::Eq(part, hn::Set(d, static_cast<std::uint8_t>(first)));
            found = hn::Or(found, hn::IfThenElseZero(isHere, entries));
        }
        hn::StoreU(found, d, out + x);
    }
    return x;
}

/// One sample of each pixel of three.
template <class Sample>
std::size_t SamplesOfPixels(unsigned char* out, std::span<const unsigned char> in, int band) {
    const hn::ScalableTag<Sample> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; 3 * (x + lanes) * sizeof(Sample) <= in.size(); x += lanes) {
        hn::VFromD<hn::ScalableTag<Sample>> first, second, third;
        hn::LoadInterleaved3(d, reinterpret_cast<const Sample*>(in.data()) + 3 * x, first, second, third);
        hn::StoreU(band == 0 ? first : band == 1 ? second : third, d, reinterpret_cast<Sample*>(out) + x);
    }
    return x;
}

std::size_t WordsOfPixels(unsigned char* out, std::span<const unsigned char> in, int band) {
    return SamplesOfPixels<std::uint16_t>(out, in, band);
}

std::size_t FloatsOfPixels(unsigned char* out, std::span<const unsigned char> in, int band) {
    return SamplesOfPixels<std::uint32_t>(out, in, band);
}

/// As many numbers as fill whole vectors; the result is how many bytes that were.
template <class Number>
std::size_t SwapBytes(std::span<unsigned char> numbers) {
    const hn::ScalableTag<Number> d;
    const std::size_t bytes = hn::Lanes(d) * sizeof(Number);
    std::size_t at = 0;
    for (; at + bytes <= numbers.size(); at += bytes) {
        auto* const lanes = reinterpret_cast<Number*>(numbers.data() + at);
        hn::StoreU(hn::ReverseLaneBytes(hn::LoadU(d, lanes)), d, lanes);
    }
    return at;
}

std::size_t SwapWords(std::span<unsigned char> numbers) {
    return SwapBytes<std::uint16_t>(numbers);
}

std::size_t SwapLongs(std::span<unsigned char> numbers) {
    return SwapBytes<std::uint32_t>(numbers);
}

}  // namespace Kavra::Devices::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Devices {

HWY_EXPORT(RowsToRgba);
HWY_EXPORT(PixelsToRgba);
HWY_EXPORT(BytesThroughTable);
HWY_EXPORT(WordsOfPixels);
HWY_EXPORT(FloatsOfPixels);
HWY_EXPORT(SwapWords);
HWY_EXPORT(SwapLongs);

namespace {

void Store(std::span<unsigned char> bytes, std::size_t index, std::uint32_t pixel) {
    std::memcpy(bytes.subspan(index * sizeof pixel, sizeof pixel).data(), &pixel, sizeof pixel);
}

}  // namespace

SampleTable RedTable(const SpotPalette& palette) {
    SampleTable table;
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = palette[i].red;
    return table;
}

PixelTable ColourTable(const SpotPalette& palette) {
    PixelTable table;
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = PackedPixel(palette[i].red, palette[i].green, palette[i].blue, 255);
    return table;
}

PixelTables ComponentTables(const SpotPalette& palette) {
    PixelTables tables;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        tables.red[i] = PackedPixel(palette[i].red, 0, 0, 255);
        tables.green[i] = PackedPixel(0, palette[i].green, 0, 0);
        tables.blue[i] = PackedPixel(0, 0, palette[i].blue, 0);
    }
    return tables;
}

void GreyFromSamples(std::span<unsigned char> out, std::span<const unsigned char> in, const SampleTable& table) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(BytesThroughTable)(out.data(), in, table);
    LookUp(out.subspan(done), in.subspan(done), table);
}

void RgbaFromRows(std::span<unsigned char> out, const ColourRows& in) {
    for (std::size_t x = HWY_DYNAMIC_DISPATCH(RowsToRgba)(out.data(), in); x < in.red.size(); ++x)
        Store(out, x, PackedPixel(in.red[x], in.green[x], in.blue[x], 255));
}

void RgbaFromRows(std::span<unsigned char> out, const ColourRows& in, const PixelTables& tables) {
    StoreAll(out, [&](std::size_t x) {
        return tables.red[in.red[x]] | tables.green[in.green[x]] | tables.blue[in.blue[x]];
    });
}

void RgbaFromPixels(std::span<unsigned char> out, std::span<const unsigned char> in, bool blueFirst) {
    const std::size_t red = blueFirst ? 2 : 0;
    const std::size_t blue = 2 - red;
    for (std::size_t x = HWY_DYNAMIC_DISPATCH(PixelsToRgba)(out.data(), in, blueFirst); x < in.size() / 3; ++x)
        Store(out, x, PackedPixel(in[3 * x + red], in[3 * x + 1], in[3 * x + blue], 255));
}

void RgbaFromPixels(std::span<unsigned char> out, std::span<const unsigned char> in, bool blueFirst,
                    const PixelTables& tables) {
    const std::size_t red = blueFirst ? 2 : 0;
    const std::size_t blue = 2 - red;
    StoreAll(out, [&](std::size_t x) {
        return tables.red[in[3 * x + red]] | tables.green[in[3 * x + 1]] | tables.blue[in[3 * x + blue]];
    });
}

void SampleFromPixels(std::span<unsigned char> out, std::span<const unsigned char> in, std::size_t sampleBytes,
                      int band) {
    const auto first = static_cast<std::size_t>(band) * sampleBytes;
    std::size_t x = sampleBytes == 2 ? HWY_DYNAMIC_DISPATCH(WordsOfPixels)(out.data(), in, band)
                                     : HWY_DYNAMIC_DISPATCH(FloatsOfPixels)(out.data(), in, band);
    for (; x < out.size() / sampleBytes; ++x) {
        std::memcpy(out.subspan(x * sampleBytes, sampleBytes).data(),
                    in.subspan(3 * x * sampleBytes + first, sampleBytes).data(), sampleBytes);
    }
}

void SwapNumbers(std::span<unsigned char> numbers, std::size_t numberBytes) {
    std::size_t at =
        numberBytes == 2 ? HWY_DYNAMIC_DISPATCH(SwapWords)(numbers) : HWY_DYNAMIC_DISPATCH(SwapLongs)(numbers);
    for (; at < numbers.size(); at += numberBytes)
        std::ranges::reverse(numbers.subspan(at, numberBytes));
}

}  // namespace Kavra::Devices
#endif
