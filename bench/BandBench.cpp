// Loading large band rasters of each layout, beside a plain read of the file and a plain write of the result.
//
// The counters are of the best of all runs; "ratio" is the time of a load over the time of both, "cpu_ms" what all
// cores together spent on a load, which other work on the machine changes least.

#include "common/FileHandle.h"
#include "common/PixelBlock.h"
#include "legacy/BandFile.h"

#include <kavra/objects/OS.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

constexpr int kSide = 8192;
constexpr double kPixels = double{kSide} * kSide;

/// The files of one raster, gone with it.
class RasterFiles {
public:
    explicit RasterFiles(const Legacy::BandRaster& raster) {
        std::string pattern = (std::filesystem::temp_directory_path() / "kavra-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        mFolder = pattern;
        Legacy::WriteBandFiles(mFolder / "raster", raster);
    }
    ~RasterFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(mFolder, ignored);
    }
    RasterFiles(const RasterFiles&) = delete;
    RasterFiles& operator=(const RasterFiles&) = delete;

    std::string Path() const { return (mFolder / "raster.bil").string(); }

private:
    std::filesystem::path mFolder;
};

Legacy::BandRaster Raster(const std::string& layout, int bands, int bits, char type) {
    Legacy::BandRaster raster;
    raster.columns = raster.rows = kSide;
    raster.bands = bands;
    raster.bits = bits;
    raster.pixelType = type;
    raster.layout = layout;
    raster.samples.resize(static_cast<std::size_t>(kSide) * kSide * static_cast<std::size_t>(bands * bits / 8));
    unsigned random = 1;
    for (std::size_t i = 0; i < raster.samples.size(); ++i) {
        random = random * 1664525 + 1013904223;
        raster.samples[i] = static_cast<unsigned char>((i >> 6) + (random >> 29));
    }
    return raster;
}

std::vector<std::array<int, 3>> Ramp(int red, int green, int blue) {
    std::vector<std::array<int, 3>> palette;
    for (int i = 0; i < 256; ++i)
        palette.push_back({i * red / 255, i * green / 255, i * blue / 255});
    return palette;
}

double Seconds(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double TimePlainRead(const std::string& path) {
    const auto start = std::chrono::steady_clock::now();
    const Common::FileHandle file(std::fopen(path.c_str(), "rb"));
    std::vector<char> buffer(std::size_t{1} << 20);
    while (file && std::fread(buffer.data(), 1, buffer.size(), file.get()) > 0)
        benchmark::DoNotOptimize(buffer.data());
    return Seconds(start);
}

double TimePlainWrite(std::size_t bytes) {
    const auto start = std::chrono::steady_clock::now();
    Common::PixelBlock block = Common::NewZeroedBlock(bytes);  // fresh pages, as a load gets them
    std::memset(block.get(), 255, bytes);
    benchmark::DoNotOptimize(block.get());
    block.reset();
    return Seconds(start);
}

double TimeLoad(const std::string& path, std::size_t& bytes) {
    static OIIOImageHandler handler;
    const auto start = std::chrono::steady_clock::now();
    ImageDescription desc;
    IMemoryWrapper<void>* block =
        handler.LoadTexture(desc, OS::FromUtf8(path.c_str()).c_str(), 0, 0, 1, kUnknown, 0, kTopLeft, nullptr);
    if (block == nullptr) throw std::runtime_error("cannot load " + path);
    block->Delete();
    bytes = desc.dataSize;
    return Seconds(start);
}

double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void LoadBands(benchmark::State& state, const Legacy::BandRaster& raster) {
    const RasterFiles files(raster);
    std::size_t bytes = 0;
    TimeLoad(files.Path(), bytes);
    double load = 1e9, read = 1e9, write = 1e9, processor = 1e9;
    for (auto _ : state) {
        read = std::min(read, TimePlainRead(files.Path()));
        write = std::min(write, TimePlainWrite(bytes));
        const double before = ProcessorSeconds();
        const double seconds = TimeLoad(files.Path(), bytes);
        processor = std::min(processor, ProcessorSeconds() - before);
        load = std::min(load, seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["Mpixel/s"] = kPixels / load / 1e6;
    state.counters["load_ms"] = 1000 * load;
    state.counters["cpu_ms"] = 1000 * processor;
    state.counters["read_ms"] = 1000 * read;
    state.counters["write_ms"] = 1000 * write;
    state.counters["ratio"] = load / (read + write);
}

void Bands(benchmark::State& state, const char* layout, int bands, int bits, char type) {
    LoadBands(state, Raster(layout, bands, bits, type));
}

void Palette(benchmark::State& state, int bands, int red, int green, int blue) {
    Legacy::BandRaster raster = Raster("BIL", bands, 8, 'U');
    raster.palette = Ramp(red, green, blue);
    LoadBands(state, raster);
}

#define KAVRA_BAND_BENCH(function, name, ...) \
    BENCHMARK_CAPTURE(function, name, __VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1)

KAVRA_BAND_BENCH(Bands, grey, "BIL", 1, 8, 'U');
KAVRA_BAND_BENCH(Bands, rgb_bil, "BIL", 3, 8, 'U');
KAVRA_BAND_BENCH(Bands, rgb_bip, "BIP", 3, 8, 'U');
KAVRA_BAND_BENCH(Bands, rgb_bsq, "BSQ", 3, 8, 'U');
KAVRA_BAND_BENCH(Bands, grey16, "BIL", 1, 16, 'U');
KAVRA_BAND_BENCH(Bands, first_of_three_16_bil, "BIL", 3, 16, 'U');
KAVRA_BAND_BENCH(Bands, first_of_three_16_bip, "BIP", 3, 16, 'U');
KAVRA_BAND_BENCH(Bands, floats, "BIL", 1, 32, 'F');
KAVRA_BAND_BENCH(Palette, colours, 1, 255, 128, 64);
KAVRA_BAND_BENCH(Palette, grey_table, 1, 128, 128, 128);
KAVRA_BAND_BENCH(Palette, rgb_tables, 3, 128, 64, 32);

}  // namespace
