// The alpha scan and fill beside a plain copy of the same bytes: CopyOnce is the limit of all of them.

#include "Bench.h"
#include "load/AlphaAnalysis.h"

#include <Imath/half.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Bench::CountBytes;
using Kavra::Bench::CountItems;

constexpr std::size_t kLargeBytes = std::size_t{256} << 20;

template <class T>
T Opaque() {
    return T(1.0F);
}
template <>
unsigned char Opaque() {
    return 255;
}
template <>
unsigned short Opaque() {
    return 65535;
}

void CopyOnce(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0));
    std::vector<unsigned char> from(bytes, 255), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    CountBytes(state, bytes);
}

template <class T>
void ScanOpaque(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0));
    std::vector<T> pixels(bytes / sizeof(T), Opaque<T>());
    auto* data = reinterpret_cast<unsigned char*>(pixels.data());
    bool transparent = false, translucent = false;
    for (auto _ : state) {
        GetAlphaPropertyforRGBA(data, pixels.size() / 4, 3, Opaque<T>(), transparent, translucent);
        benchmark::DoNotOptimize(transparent || translucent);
    }
    CountBytes(state, bytes);
}

/// Both kinds of alpha lie in the first two pixels, so the time must not grow with the picture: items are scans.
template <class T>
void ScanEarlyExit(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0));
    std::vector<T> pixels(bytes / sizeof(T), Opaque<T>());
    pixels[3] = T(0);
    pixels[7] = T(Opaque<T>() / 2);
    auto* data = reinterpret_cast<unsigned char*>(pixels.data());
    bool transparent = false, translucent = false;
    for (auto _ : state) {
        GetAlphaPropertyforRGBA(data, pixels.size() / 4, 3, Opaque<T>(), transparent, translucent);
        benchmark::DoNotOptimize(transparent && translucent);
    }
    CountItems(state, 1);
}

template <class T>
void Fill(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0));
    std::vector<T> pixels(bytes / sizeof(T));
    auto* data = reinterpret_cast<unsigned char*>(pixels.data());
    for (auto _ : state) {
        FillAlphaforRGBA(data, pixels.size() / 4, 3, Opaque<T>());
        benchmark::ClobberMemory();
    }
    CountBytes(state, bytes);
}

/// A loop as one would write it, on one thread: what small images must not be slower than.
void ScanOpaquePlainly(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0));
    std::vector<unsigned char> pixels(bytes, 255);
    for (auto _ : state) {
        bool transparent = false, translucent = false;
        for (std::size_t i = 3; i < bytes && !(transparent && translucent); i += 4) {
            transparent |= pixels[i] == 0;
            translucent |= pixels[i] != 0 && pixels[i] < 255;
        }
        benchmark::DoNotOptimize(transparent || translucent);
    }
    CountBytes(state, bytes);
}

void Large(benchmark::internal::Benchmark* bench) {
    bench->Arg(kLargeBytes)->UseRealTime()->Unit(benchmark::kMillisecond);
}
void Icon(benchmark::internal::Benchmark* bench) {
    bench->Arg(64 * 64 * 4)->UseRealTime();
}

BENCHMARK(CopyOnce)->Apply(Large);
BENCHMARK(ScanOpaque<unsigned char>)->Apply(Large);
BENCHMARK(ScanOpaque<unsigned short>)->Apply(Large);
BENCHMARK(ScanOpaque<half>)->Apply(Large);
BENCHMARK(ScanOpaque<float>)->Apply(Large);
BENCHMARK(ScanEarlyExit<unsigned char>)->Apply(Large);
BENCHMARK(ScanEarlyExit<float>)->Apply(Large);
BENCHMARK(Fill<unsigned char>)->Apply(Large);
BENCHMARK(Fill<unsigned short>)->Apply(Large);
BENCHMARK(Fill<half>)->Apply(Large);
BENCHMARK(Fill<float>)->Apply(Large);
BENCHMARK(ScanOpaquePlainly)->Apply(Icon);
BENCHMARK(ScanOpaque<unsigned char>)->Apply(Icon);

}  // namespace
