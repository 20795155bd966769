/// What the benchmarks share: timing beside a limit, the limits themselves, and rates.
#pragma once

#include "common/PixelBlock.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/ImageDescription.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace Kavra::Bench {

using Tests::TemporaryFolder;
using Tests::Wide;

// --- Rates -----------------------------------------------------------------------------------------------------------

/// Reports bytes a second: `bytes` are those of one iteration.
inline void CountBytes(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

/// Reports items a second: pixels, samples, pictures or runs, whatever the benchmark's heading says.
inline void CountItems(benchmark::State& state, std::size_t items) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(items));
}

// --- Time ------------------------------------------------------------------------------------------------------------

/// The seconds that `work` takes.
template <class Work>
double Seconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    benchmark::ClobberMemory();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The shortest of the times given to it, which other work on the machine changes least.
class Best {
public:
    void Add(double seconds) { mSeconds = seconds < mSeconds ? seconds : mSeconds; }
    double Seconds() const { return mSeconds; }
    double Milliseconds() const { return 1000 * mSeconds; }

private:
    double mSeconds = std::numeric_limits<double>::infinity();
};

struct BestTimes {
    double work, limit;  ///< seconds

    double Ratio() const { return work / limit; }
};

/// Takes the time of the work and of its limit in turn, each as a function that returns seconds. An iteration's time is
/// that of the work (register with `UseManualTime`). Reports the best time of the limit as "limit_ms".
template <class TimeWork, class TimeLimit>
BestTimes BesideTimed(benchmark::State& state, const TimeWork& timeWork, const TimeLimit& timeLimit) {
    Best work, limit;
    for (auto _ : state) {
        limit.Add(timeLimit());
        const double seconds = timeWork();
        work.Add(seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["limit_ms"] = limit.Milliseconds();
    return {work.Seconds(), limit.Seconds()};
}

/// The same of two functions that are timed whole.
template <class Work, class Limit>
BestTimes Beside(benchmark::State& state, const Work& work, const Limit& limit) {
    return BesideTimed(state, [&] { return Seconds(work); }, [&] { return Seconds(limit); });
}

/// The seconds that all cores together have spent on this process.
double ProcessorSeconds();

/// Runs a program without its output; the seconds from start to end. Throws `std::runtime_error` where it fails.
double TimeProcess(std::vector<std::string> arguments);

// --- Memory ----------------------------------------------------------------------------------------------------------

/// Gives back what earlier work left, and starts the process's highest level of memory anew.
void StartGrowth();

/// By how many MB the highest level since `StartGrowth` is above what the process held when that was called first.
double GrowthMegabytes();

/// The same of one piece of work.
template <class Work>
double GrowthOf(const Work& work) {
    StartGrowth();
    work();
    return GrowthMegabytes();
}

// --- Limits and loads ------------------------------------------------------------------------------------------------

/// Where a block's memory comes from: fresh pages, or the block that the host's allocator kept from the one before.
enum class Memory { kFresh, kKept };

/// Makes a block of so many bytes, writes all of it once and frees it. Seconds.
double TimeBlockWrite(std::size_t bytes, Memory memory);

/// Reads a file once through a small buffer. Seconds.
double TimePlainRead(const std::filesystem::path& path);

struct Load {
    double seconds;
    Devices::ImageDescription desc;
};

/// What is asked of a load: the file as it is, unless said.
struct LoadWish {
    int frame = 0;
    int width = 0, height = 0;  ///< pixels at most; 0: the file's own
    Memory memory = Memory::kKept;
};

/// Loads a file through the image handler and frees the block. Throws `std::runtime_error`.
Load TimeLoad(const std::filesystem::path& path, const LoadWish& wish = {});

// --- Pictures --------------------------------------------------------------------------------------------------------

/// Pixels between noise and a flat field: smooth ramps with some texture on them. Rows without gaps.
std::vector<unsigned char> TexturedPixels(int width, int height, int channels);

}  // namespace Kavra::Bench
