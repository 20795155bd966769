// Playing animations to their last frame, beside a plain write of the result.
//
// The counters are of the best of all runs; "Mindex/s" counts the indices of all frames played, with the pixels of the
// last one made of them in the same time.

#include "common/PixelBlock.h"
#include "legacy/FlicFile.h"
#include "readers/flic/FlicReader.h"

#include <kavra/objects/OS.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;
using Legacy::FlicCoding;
using Legacy::FlicMovie;

/// A file that goes with this object.
class MovieFile {
public:
    explicit MovieFile(const Legacy::ByteBuilder& bytes) {
        std::string pattern = (std::filesystem::temp_directory_path() / "kavra-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        mFolder = pattern;
        std::ofstream stream(Path(), std::ios::binary);
        stream.write(reinterpret_cast<const char*>(bytes.Bytes().data()), static_cast<std::streamsize>(bytes.Size()));
        if (!stream.flush()) throw std::runtime_error("cannot write " + Path());
    }
    ~MovieFile() {
        std::error_code ignored;
        std::filesystem::remove_all(mFolder, ignored);
    }
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    std::string Path() const { return (mFolder / "movie.flc").string(); }

private:
    std::filesystem::path mFolder;
};

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

double Seconds(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double TimePlainWrite(std::size_t bytes) {
    const auto start = std::chrono::steady_clock::now();
    const Common::PixelBlock block = Common::NewZeroedBlock(bytes);
    std::memset(block.get(), 255, bytes);
    benchmark::DoNotOptimize(block.get());
    return Seconds(start);
}

double TimePlay(const std::string& path, int frame) {
    const auto start = std::chrono::steady_clock::now();
    FLICReader reader;
    if (!reader.Open(OS::FromUtf8(path.c_str()).c_str())) throw std::runtime_error("cannot open " + path);
    const auto bytes = static_cast<std::size_t>(reader.GetRowPitch()) * static_cast<std::size_t>(reader.GetHeight());
    const Common::PixelBlock block = Common::NewZeroedBlock(bytes);
    reader.ReadImage(block.get(), frame);
    benchmark::DoNotOptimize(block.get());
    return Seconds(start);
}

void Flic(benchmark::State& state, int width, int height, int frames, FlicCoding coding) {
    Legacy::ByteBuilder bytes = MakeFlic(Movie(width, height, frames), coding);
    bytes.At(6).Little16(65535);  // or the reader would stop half way
    const MovieFile file(bytes);
    const double pixels = double{1} * width * height;
    TimePlay(file.Path(), frames - 1);
    double play = 1e9, write = 1e9;
    for (auto _ : state) {
        write = std::min(write, TimePlainWrite(static_cast<std::size_t>(4 * pixels)));
        const double seconds = TimePlay(file.Path(), frames - 1);
        play = std::min(play, seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["Mindex/s"] = pixels * frames / play / 1e6;
    state.counters["play_ms"] = 1000 * play;
    state.counters["write_ms"] = 1000 * write;
}

#define KAVRA_FLIC_BENCH(name, ...) \
    BENCHMARK_CAPTURE(Flic, name, __VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1)

KAVRA_FLIC_BENCH(changes, 640, 480, 100, FlicCoding::kChanges);
KAVRA_FLIC_BENCH(runs, 640, 480, 100, FlicCoding::kWhole);
KAVRA_FLIC_BENCH(copies, 640, 480, 100, FlicCoding::kCopies);
KAVRA_FLIC_BENCH(large_runs, 8192, 8192, 1, FlicCoding::kWhole);
KAVRA_FLIC_BENCH(large_copy, 8192, 8192, 1, FlicCoding::kCopies);

}  // namespace
