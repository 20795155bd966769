// The light of environment maps beside a plain read of the same bytes: ReadOnce is the limit of the intensity. The
// search for lights looks at 20,000 pixels at most, so its time must not grow with the map: its items are these samples.

#include "Bench.h"
#include "analysis/RowColours.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <Imath/half.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Analysis::PixelKind;
using Kavra::Bench::CountBytes;
using Kavra::Bench::CountItems;

struct BenchMap {
    ImageDescription desc;
    std::vector<std::uint64_t> words;

    const unsigned char* Data() const { return reinterpret_cast<const unsigned char*>(words.data()); }
    std::size_t Bytes() const { return words.size() * sizeof(std::uint64_t); }
};

enum class Look : bool { kUniform, kManyLights };

/// 0 in most pixels and up to 1 in a few, so that many samples are lights, or 1 in all.
BenchMap MakeMap(int width, EFormat format, Look look = Look::kManyLights) {
    const int pixelBytes = format == kR32G32B32A32F ? 16 : format == kR16G16B16A16F ? 8 : 4;
    BenchMap map;
    map.desc.width = width;
    map.desc.height = width / 2;
    map.desc.format = format;
    map.desc.textureType = kTexture2D;
    map.desc.rowPitch = width * pixelBytes;
    map.words.resize(static_cast<std::size_t>(map.desc.rowPitch) * static_cast<std::size_t>(map.desc.height) / 8);
    const float ones[2] = {1, 1};
    const half halves[4] = {half(1.0F), half(1.0F), half(1.0F), half(1.0F)};
    std::uint64_t one = ~std::uint64_t{0};
    if (format == kR32G32B32A32F) std::memcpy(&one, ones, sizeof one);
    if (format == kR16G16B16A16F) std::memcpy(&one, halves, sizeof one);
    for (std::size_t i = 0; i < map.words.size(); ++i)
        map.words[i] = look == Look::kUniform || i % 1021 < 100 ? one : 0;
    return map;
}

/// One core adds the words up, as fast as memory gives them.
void ReadOnce(benchmark::State& state) {
    const BenchMap map = MakeMap(static_cast<int>(state.range(0)), kR32G32B32A32F);
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (const std::uint64_t word : map.words)
            sum += word;
        benchmark::DoNotOptimize(sum);
    }
    CountBytes(state, map.Bytes());
}

template <EFormat kFormat, PixelKind kKind>
void SumRowsOnOneCore(benchmark::State& state) {
    const BenchMap map = MakeMap(static_cast<int>(state.range(0)), kFormat);
    const auto width = static_cast<std::size_t>(map.desc.width);
    const auto pitch = static_cast<std::size_t>(map.desc.rowPitch);
    for (auto _ : state) {
        double sum = 0;
        for (std::size_t at = 0; at < map.Bytes(); at += pitch)
            sum += Kavra::Analysis::SumRow(map.Data() + at, width, kKind).red;
        benchmark::DoNotOptimize(sum);
    }
    CountBytes(state, map.Bytes());
}

template <EFormat kFormat>
void Intensity(benchmark::State& state) {
    const BenchMap map = MakeMap(static_cast<int>(state.range(0)), kFormat);
    OIIOImageHandler handler;
    for (auto _ : state)
        benchmark::DoNotOptimize(handler.GetIBLIntensity(map.desc, map.Data(), false, nullptr));
    CountBytes(state, map.Bytes());
}

/// The definition as one would write it, pixel by pixel on one core.
void IntensityPlainly(benchmark::State& state) {
    const BenchMap map = MakeMap(static_cast<int>(state.range(0)), kR32G32B32A32F);
    const auto* pixels = reinterpret_cast<const float*>(map.Data());
    for (auto _ : state) {
        double sums[5] = {};
        for (std::size_t i = 0; i < map.Bytes() / 4; i += 4) {
            const double weight = 0.5;
            const float brightest = std::max(std::max(pixels[i], pixels[i + 1]), pixels[i + 2]);
            sums[0] += weight;
            sums[1] += pixels[i] * weight;
            sums[2] += pixels[i + 1] * weight;
            sums[3] += pixels[i + 2] * weight;
            sums[4] += brightest * weight;
        }
        benchmark::DoNotOptimize(sums);
    }
    CountBytes(state, map.Bytes());
}

template <EFormat kFormat, Look kLook>
void FindLights(benchmark::State& state) {
    const BenchMap map = MakeMap(static_cast<int>(state.range(0)), kFormat, kLook);
    OIIOImageHandler handler;
    constexpr std::size_t kSamples = 20000;
    std::vector<Kavra::vec3<float>> directions(kSamples), colours(kSamples);
    unsigned found = 0;
    for (auto _ : state)
        found = handler.FindIBLLightDirections(map.desc, map.Data(), directions.data(), colours.data(), kSamples);
    CountItems(state, kSamples);
    state.counters["lights"] = found;
}

void Large(benchmark::internal::Benchmark* bench) {
    bench->Arg(4096)->UseRealTime()->Unit(benchmark::kMillisecond);
}
void EverySize(benchmark::internal::Benchmark* bench) {
    bench->Arg(256)->Arg(2048)->Arg(16384)->UseRealTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(ReadOnce)->Apply(Large);
BENCHMARK(IntensityPlainly)->Apply(Large);
BENCHMARK(SumRowsOnOneCore<kR32G32B32A32F, PixelKind::kFloats>)->Apply(Large);
BENCHMARK(SumRowsOnOneCore<kR16G16B16A16F, PixelKind::kHalves>)->Apply(Large);
BENCHMARK(SumRowsOnOneCore<kR8G8B8A8, PixelKind::kRedFirstBytes>)->Apply(Large);
BENCHMARK(SumRowsOnOneCore<kB8G8R8A8, PixelKind::kBlueFirstBytes>)->Apply(Large);
BENCHMARK(Intensity<kR32G32B32A32F>)->Apply(Large);
BENCHMARK(Intensity<kR16G16B16A16F>)->Apply(Large);
BENCHMARK(Intensity<kR8G8B8A8>)->Apply(Large);
BENCHMARK(FindLights<kR8G8B8A8, Look::kManyLights>)->Apply(EverySize);
BENCHMARK(FindLights<kR8G8B8A8, Look::kUniform>)->Apply(EverySize);
BENCHMARK(FindLights<kR32G32B32A32F, Look::kManyLights>)->Arg(8192)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
