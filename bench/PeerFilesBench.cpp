// Loading the files that bench/peers times other programs with; registered only where KAVRA_BENCH_FILES names their
// folder.
//
// "over_plain" is the time of a load over that of reading the file's bytes and writing fresh memory of the block's
// size.

#include "common/PixelBlock.h"

#include <kavra/objects/OS.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// Which frame of a file is loaded, and how many frames of pixels that decodes.
struct Case {
    const char* name;
    int frame = 0;
    int framesDecoded = 1;
};

// A FLIC counts every chunk against its frames, so the last frame that can be reached is half-way.
constexpr Case kCases[] = {{"large-8.pcx"}, {"large-24.pcx"}, {"large-32.pct"}, {"large-8.pct"},
                           {"drawing.cal"}, {"rgb.bil"},      {"grey.bil"},     {"animation.flc", 18, 19},
                           {"short.bil"},   {"float.bil"}};

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

struct LoadTime {
    double seconds = 0;
    double pixels = 0;
    std::size_t blockBytes = 0;
};

LoadTime TimeLoad(const fs::path& path, int frame) {
    static OIIOImageHandler handler;
    const Objects::KString name(OS::FromUtf8(path.c_str()).c_str());
    const auto start = Clock::now();
    ImageDescription desc;
    IMemoryWrapper<void>* block = handler.LoadTexture(desc, name, 0, 0, 1, kUnknown, frame, kTopLeft, nullptr);
    if (block == nullptr) throw std::runtime_error("cannot load " + path.string());
    block->Delete();
    return {Seconds(Clock::now() - start), static_cast<double>(desc.width) * desc.height, desc.dataSize};
}

double TimePlain(const fs::path& path, std::size_t blockBytes) {
    const auto start = Clock::now();
    std::ifstream file(path, std::ios::binary);
    std::vector<char> chunk(1 << 20);
    while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || file.gcount() > 0)
        benchmark::DoNotOptimize(chunk.data());
    const Common::PixelBlock block = Common::NewBlock(blockBytes);
    std::memset(block.get(), 0xAB, blockBytes);
    benchmark::DoNotOptimize(block.get());
    return Seconds(Clock::now() - start);
}

void PeerFile(benchmark::State& state, const fs::path& path, const Case& which) {
    double load = std::numeric_limits<double>::infinity(), plain = load, pixels = 0;
    for (auto _ : state) {
        const LoadTime time = TimeLoad(path, which.frame);
        plain = std::min(plain, TimePlain(path, time.blockBytes));
        load = std::min(load, time.seconds);
        pixels = time.pixels * which.framesDecoded;
        state.SetIterationTime(time.seconds);
    }
    state.counters["pixels"] = pixels;
    state.counters["Mpixel/s"] = pixels / load / 1e6;
    state.counters["over_plain"] = load / plain;
}

[[maybe_unused]] const bool kRegistered = [] {
    const char* folder = std::getenv("KAVRA_BENCH_FILES");
    if (folder == nullptr) return false;
    for (const Case& which : kCases) {
        const fs::path path = fs::path(folder) / which.name;
        benchmark::RegisterBenchmark(std::string("PeerFile/") + which.name,
                                     [path, which](benchmark::State& state) { PeerFile(state, path, which); })
            ->UseManualTime()
            ->Iterations(4)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
