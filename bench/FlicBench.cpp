// Playing animations to their last frame, beside a plain write of the result.
//
// Items are the indices of all frames played; the pixels of the last frame are made of them in the same time.

#include "Bench.h"
#include "legacy/FlicFile.h"
#include "readers/flic/FlicReader.h"

#include <algorithm>
#include <stdexcept>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;
using namespace Kavra::Devices;
using Legacy::FlicCoding;
using Legacy::FlicMovie;

/// Flat fields with some texture, and a square of noise that moves over them.
FlicMovie Movie(int width, int height, int frames) {
    FlicMovie movie{.width = width, .height = height};
    std::vector<unsigned char> ground;
    unsigned random = 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            random = random * 1664525 + 1013904223;
            ground.push_back(static_cast<unsigned char>(x / 50 + y / 50 + ((random >> 26) == 0 ? 1 : 0)));
        }
    }
    for (int number = 0; number < frames; ++number) {
        movie.frames.push_back(ground);
        for (int y = 0; y < std::min(height, 200); ++y) {
            for (int x = number * 2; x < std::min(width, number * 2 + 200); ++x) {
                random = random * 1664525 + 1013904223;
                movie.frames.back()[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                    static_cast<std::size_t>(x)] = static_cast<unsigned char>(random >> 24);
            }
        }
    }
    return movie;
}

void Play(const std::filesystem::path& path, int frame, ELegacyReading reading) {
    FLICReader reader(reading);
    if (!reader.Open(Wide(path))) throw std::runtime_error("cannot open " + path.string());
    const auto bytes = static_cast<std::size_t>(reader.GetRowPitch()) * static_cast<std::size_t>(reader.GetHeight());
    const Common::PixelBlock block = Common::NewZeroedBlock(bytes);
    reader.ReadImage(block.get(), frame);
    benchmark::DoNotOptimize(block.get());
}

void Flic(benchmark::State& state, int width, int height, int frames, FlicCoding coding,
          ELegacyReading reading = kLegacyContract) {
    Legacy::ByteBuilder bytes = MakeFlic(Movie(width, height, frames), coding);
    bytes.At(6).Little16(65535);  // or the reader would stop half way
    const TemporaryFolder folder;
    const auto path = folder.Write("movie.flc", bytes.Bytes());
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    Play(path, frames - 1, reading);
    const BestTimes best = BesideTimed(
        state, [&] { return Seconds([&] { Play(path, frames - 1, reading); }); },
        [&] { return TimeBlockWrite(4 * pixels, Memory::kFresh); });
    CountItems(state, pixels * static_cast<std::size_t>(frames));
    state.counters["play_ms"] = 1000 * best.work;
}

#define KAVRA_FLIC_BENCH(name, ...) \
    BENCHMARK_CAPTURE(Flic, name, __VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1)

KAVRA_FLIC_BENCH(changes, 640, 480, 100, FlicCoding::kChanges);
KAVRA_FLIC_BENCH(runs, 640, 480, 100, FlicCoding::kWhole);
KAVRA_FLIC_BENCH(copies, 640, 480, 100, FlicCoding::kCopies);
KAVRA_FLIC_BENCH(large_runs, 8192, 8192, 1, FlicCoding::kWhole);
KAVRA_FLIC_BENCH(large_copy, 8192, 8192, 1, FlicCoding::kCopies);

KAVRA_FLIC_BENCH(common_changes, 640, 480, 100, FlicCoding::kChanges, kLegacyCommon);
KAVRA_FLIC_BENCH(common_runs, 640, 480, 100, FlicCoding::kWhole, kLegacyCommon);
KAVRA_FLIC_BENCH(common_copies, 640, 480, 100, FlicCoding::kCopies, kLegacyCommon);
KAVRA_FLIC_BENCH(common_large_runs, 8192, 8192, 1, FlicCoding::kWhole, kLegacyCommon);
KAVRA_FLIC_BENCH(common_large_copy, 8192, 8192, 1, FlicCoding::kCopies, kLegacyCommon);

}  // namespace
