// The resampler: 8192 x 8192 pixels of four channels to 2048 x 2048 with the cubic, on one core and on all, beside the
// image library's resize (once, as it takes seconds) and stb_image_resize2, which knows no halves and works on one core.
//
// Items are pixels of the source, bytes those of the source. "times_stb" is the best time over that of stb on one core;
// "times_read" over that of reading the source once, which is the limit.

#include "Bench.h"

#include <kavra/devices/Resampler.h>

#include <Imath/half.h>
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <tbb/global_control.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <thread>
#include <vector>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wall"
#pragma GCC diagnostic ignored "-Wextra"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wuseless-cast"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wdouble-promotion"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wcast-align"
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_STATIC
#include <stb/stb_image_resize2.h>
#pragma GCC diagnostic pop

namespace {

using namespace Kavra::Bench;
using namespace Kavra::Devices;

constexpr int kFrom = 8192, kTo = 2048, kChannels = 4;
constexpr std::size_t kValues = std::size_t{kFrom} * kFrom * kChannels;

std::size_t BytesOf(ElementType element) {
    return element == ElementType::kUInt8 ? 1 : element == ElementType::kFloat ? 4 : 2;
}

/// Hills with a little grain, as a photograph has them.
std::vector<unsigned char> Photograph(ElementType element) {
    std::vector<unsigned char> pixels(kValues * BytesOf(element));
    std::uint32_t random = 1;
    for (std::size_t i = 0; i < kValues; ++i) {
        random = random * 1664525U + 1013904223U;
        const std::size_t pixel = i / kChannels;
        const auto x = static_cast<float>(pixel % kFrom), y = static_cast<float>(pixel / kFrom);
        const float value = 0.5F + 0.4F * std::sin(x * 0.003F) * std::cos(y * 0.002F) +
                            static_cast<float>(random >> 24) * (0.03F / 255.0F);
        unsigned char* const at = pixels.data() + i * BytesOf(element);
        if (element == ElementType::kUInt8) {
            *at = static_cast<unsigned char>(value * 255.0F);
        } else if (element == ElementType::kFloat) {
            std::memcpy(at, &value, sizeof(value));
        } else {
            const std::uint16_t bits = element == ElementType::kUInt16 ? static_cast<std::uint16_t>(value * 65535.0F)
                                                                       : Imath::half(value).bits();
            std::memcpy(at, &bits, sizeof(bits));
        }
    }
    return pixels;
}

struct Pictures {
    explicit Pictures(ElementType type)
        : element(type), from(Photograph(type)), to(std::size_t{kTo} * kTo * kChannels * BytesOf(type)) {}

    std::size_t Pitch(int width) const { return static_cast<std::size_t>(width) * kChannels * BytesOf(element); }
    void Resample() {
        ResamplePicture({element, kChannels}, from.data(), Pitch(kFrom), kFrom, kFrom, to.data(), Pitch(kTo), kTo, kTo);
    }
    void ByLibrary() {
        const OIIO::TypeDesc type = element == ElementType::kUInt8    ? OIIO::TypeUInt8
                                    : element == ElementType::kUInt16 ? OIIO::TypeUInt16
                                    : element == ElementType::kHalf   ? OIIO::TypeHalf
                                                                      : OIIO::TypeFloat;
        const OIIO::ImageBuf src(OIIO::ImageSpec(kFrom, kFrom, kChannels, type), from.data());
        OIIO::ImageBuf dst(OIIO::ImageSpec(kTo, kTo, kChannels, type), to.data());
        OIIO::ImageBufAlgo::resize(dst, src, {{"filtername", "mitchell"}});
    }
    void ByStb() {
        const stbir_datatype type = element == ElementType::kUInt8    ? STBIR_TYPE_UINT8
                                    : element == ElementType::kUInt16 ? STBIR_TYPE_UINT16
                                    : element == ElementType::kHalf   ? STBIR_TYPE_HALF_FLOAT
                                                                      : STBIR_TYPE_FLOAT;
        stbir_resize(from.data(), kFrom, kFrom, 0, to.data(), kTo, kTo, 0, STBIR_4CHANNEL, type, STBIR_EDGE_CLAMP,
                     STBIR_FILTER_MITCHELL);
    }
    void ReadOnce() const {
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < from.size(); i += sizeof(sum)) {
            std::uint64_t word;
            std::memcpy(&word, from.data() + i, sizeof(word));
            sum += word;
        }
        benchmark::DoNotOptimize(sum);
    }

    ElementType element;
    std::vector<unsigned char> from, to;
};

void ResampleMitchell(benchmark::State& state, ElementType element) {
    const auto threads = static_cast<std::size_t>(state.range(0));
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
    Pictures pictures(element);
    Best stb, read;
    const BestTimes best = Beside(
        state, [&] { pictures.Resample(); },
        [&] {
            stb.Add(Seconds([&] { pictures.ByStb(); }));
            read.Add(Seconds([&] { pictures.ReadOnce(); }));
        });
    CountItems(state, kValues / kChannels);
    CountBytes(state, pictures.from.size());
    state.counters["times_stb"] = best.work / stb.Seconds();
    state.counters["times_read"] = best.work / read.Seconds();
    if (threads > 1) state.counters["library_ms"] = 1000 * Seconds([&] { pictures.ByLibrary(); });
}

BENCHMARK_CAPTURE(ResampleMitchell, rgba8, ElementType::kUInt8)
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResampleMitchell, rgba16, ElementType::kUInt16)
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResampleMitchell, half, ElementType::kHalf)
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ResampleMitchell, float, ElementType::kFloat)
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
