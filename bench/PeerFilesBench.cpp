// Loading the files that bench/peers times other programs with; registered only where KAVRA_BENCH_FILES names their
// folder.
//
// "over_plain" is the time of a load over that of reading the file's bytes and writing fresh memory of the block's
// size.

#include "Bench.h"

#include <cstdlib>

namespace {

using namespace Kavra::Bench;
using Kavra::Devices::ImageDescription;

namespace fs = std::filesystem;

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

void PeerFile(benchmark::State& state, const fs::path& path, const Case& which) {
    const ImageDescription desc = TimeLoad(path, {.frame = which.frame}).desc;
    const std::size_t pixels = static_cast<std::size_t>(desc.width) * static_cast<std::size_t>(desc.height) *
                               static_cast<std::size_t>(which.framesDecoded);
    const BestTimes best = BesideTimed(
        state, [&] { return TimeLoad(path, {.frame = which.frame}).seconds; },
        [&] { return TimePlainRead(path) + TimeBlockWrite(desc.dataSize, Memory::kKept); });
    CountItems(state, pixels);
    CountBytes(state, desc.dataSize);
    state.counters["pixels"] = static_cast<double>(pixels);
    state.counters["Mpixel/s"] = static_cast<double>(pixels) / best.work / 1e6;
    state.counters["over_plain"] = best.Ratio();
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
