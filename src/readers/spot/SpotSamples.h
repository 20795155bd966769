/// Samples of band rasters, whatever their depth and order of bytes.
#pragma once

#include "readers/spot/SpotConvert.h"
#include "readers/spot/SpotHeader.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Kavra::Devices {

/// Where the samples of a band stand in a line, in samples.
struct Samples {
    Line line;
    std::size_t first = 0;
    std::size_t step = 1;
};

template <class Number>
using BitsOf =
    std::conditional_t<sizeof(Number) == 1, std::uint8_t,
                       std::conditional_t<sizeof(Number) == 2, std::uint16_t,
                                          std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>>>;

template <class Number, bool IsBig, class Take>
void TakeNumbers(const Samples& samples, std::size_t count, const Take& take) {
    constexpr bool kIsSwapped = IsBig == (std::endian::native == std::endian::little);
    const auto takeEach = [&](auto step) {
        const unsigned char* at = samples.line.data() + samples.first * sizeof(Number);
        for (std::size_t x = 0; x < count; ++x, at += step * sizeof(Number)) {
            BitsOf<Number> bits;
            std::memcpy(&bits, at, sizeof bits);
            if constexpr (kIsSwapped && sizeof bits > 1) bits = std::byteswap(bits);
            take(x, std::bit_cast<Number>(bits));
        }
    };
    // A step that the compiler knows makes whole vectors of them.
    samples.step == 1 ? takeEach(std::integral_constant<std::size_t, 1>{}) : takeEach(samples.step);
}

/// Samples of less than a byte, the first highest. They may cross from one byte into the next.
template <class Take>
void TakePacked(const Samples& samples, std::size_t bits, std::size_t count, const Take& take) {
    const unsigned white = (1U << bits) - 1;
    std::size_t at = samples.first * bits;
    for (std::size_t x = 0; x < count; ++x, at += samples.step * bits) {
        const std::size_t byte = at / 8;
        const unsigned next = byte + 1 < samples.line.size() ? samples.line[byte + 1] : 0;
        const unsigned word = samples.line[byte] * 256U + next;
        take(x, static_cast<std::uint8_t>(word >> (16 - at % 8 - bits) & white));
    }
}

/// Calls `take(x, sample)` for each of the first `count` samples, which are of the kinds that an `Out` is made of.
template <class Out, class Take>
void TakeSamples(const SpotHeader& header, const Samples& samples, std::size_t count, const Take& take) {
    const auto numbers = [&]<class Number>(Number) {
        header.bigEndian ? TakeNumbers<Number, true>(samples, count, take)
                         : TakeNumbers<Number, false>(samples, count, take);
    };
    constexpr bool kIsFloat = std::is_same_v<Out, float>;
    if constexpr (std::is_same_v<Out, unsigned char>) {
        if (header.sampleKind == SampleKind::kSigned8) return numbers(std::int8_t{});
        if (header.sampleKind == SampleKind::k8Bit || header.inBytes) return numbers(std::uint8_t{});
        return TakePacked(samples, static_cast<std::size_t>(header.bits), count, take);
    } else {
        switch (header.sampleKind) {
            case SampleKind::kUnsigned16:
                return numbers(std::uint16_t{});
            case SampleKind::kSigned16:
                return numbers(std::int16_t{});
            case SampleKind::kUnsigned32:
                return numbers(std::uint32_t{});
            case SampleKind::kSigned32:
                return numbers(std::int32_t{});
            default:
                break;
        }
    }
    if constexpr (kIsFloat) {
        if (header.sampleKind == SampleKind::kSigned8) return numbers(std::int8_t{});
        header.sampleKind == SampleKind::kFloat ? numbers(float{}) : numbers(double{});
    }
}

}  // namespace Kavra::Devices
