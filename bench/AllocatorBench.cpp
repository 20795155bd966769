// What the first touch of a block costs: the same copy of 256 MB into memory that has been written before, into fresh
// pages as the system gives them, and into blocks of the host's default allocator, fresh and kept from the one before.
#include "Bench.h"

#include <kavra/objects/ObjModel.h>

#include <sys/mman.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

using Kavra::Bench::CountBytes;
using Kavra::Common::NewBlock;
using Kavra::Common::PixelBlock;
using Kavra::Objects::ObjModel;

constexpr std::size_t kBytes = std::size_t{256} << 20;

const unsigned char* Source() {
    static const std::vector<unsigned char> source(kBytes, 1);
    return source.data();
}

void CopyIntoTouched(benchmark::State& state) {
    Source();
    std::vector<unsigned char> to(kBytes, 2);
    for (auto _ : state) {
        std::memcpy(to.data(), Source(), kBytes);
        benchmark::ClobberMemory();
    }
    CountBytes(state, kBytes);
}

void CopyIntoFreshPages(benchmark::State& state, int advice) {
    Source();
    for (auto _ : state) {
        void* to = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (to == MAP_FAILED) return state.SkipWithError("no memory");
        madvise(to, kBytes, advice);
        std::memcpy(to, Source(), kBytes);
        munmap(to, kBytes);
    }
    CountBytes(state, kBytes);
}

void CopyIntoFreshBlock(benchmark::State& state) {
    Source();
    for (auto _ : state) {
        ObjModel::ReleaseKeptBlock();
        const PixelBlock to = NewBlock(kBytes);
        std::memcpy(to.get(), Source(), kBytes);
    }
    CountBytes(state, kBytes);
}

void CopyIntoKeptBlock(benchmark::State& state) {
    std::memset(NewBlock(kBytes).get(), 2, kBytes);
    for (auto _ : state) {
        const PixelBlock to = NewBlock(kBytes);
        std::memcpy(to.get(), Source(), kBytes);
    }
    CountBytes(state, kBytes);
    ObjModel::ReleaseKeptBlock();
}

constexpr auto kMilliseconds = benchmark::kMillisecond;

BENCHMARK(CopyIntoTouched)->UseRealTime()->Unit(kMilliseconds);
BENCHMARK_CAPTURE(CopyIntoFreshPages, small, MADV_NOHUGEPAGE)->UseRealTime()->Unit(kMilliseconds);
BENCHMARK_CAPTURE(CopyIntoFreshPages, large, MADV_HUGEPAGE)->UseRealTime()->Unit(kMilliseconds);
BENCHMARK(CopyIntoFreshBlock)->UseRealTime()->Unit(kMilliseconds);
BENCHMARK(CopyIntoKeptBlock)->UseRealTime()->Unit(kMilliseconds);

}  // namespace
