// Loading large band rasters of each layout, beside a plain read of the file and a plain write of the result.
//
// The counters are of the best of all runs; "ratio" is the time of a load over the time of both, "cpu_ms" what all
// cores together spent on a load, which other work on the machine changes least. Items are pixels, bytes those of the
// block.

#include "Bench.h"
#include "legacy/BandFile.h"

#include <kavra/devices/LoadPreferences.h>

#include <array>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;

constexpr int kSide = 8192;
constexpr std::size_t kPixels = std::size_t{kSide} * kSide;

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

void LoadBands(benchmark::State& state, const Legacy::BandRaster& raster,
               Devices::ELegacyReading reading = Devices::kLegacyContract) {
    Devices::LoadPreferences preferences;
    preferences.legacy = reading;
    const Devices::LoadPreferencesScope scope(preferences);
    const TemporaryFolder folder;
    Legacy::WriteBandFiles(folder / "raster", raster);
    const std::filesystem::path path = folder / "raster.bil";
    const std::size_t bytes = TimeLoad(path).desc.dataSize;
    Best load, read, write, processor;
    for (auto _ : state) {
        read.Add(TimePlainRead(path));
        write.Add(TimeBlockWrite(bytes, Memory::kFresh));
        const double before = ProcessorSeconds();
        const double seconds = TimeLoad(path).seconds;
        processor.Add(ProcessorSeconds() - before);
        load.Add(seconds);
        state.SetIterationTime(seconds);
    }
    CountItems(state, kPixels);
    CountBytes(state, bytes);
    state.counters["load_ms"] = load.Milliseconds();
    state.counters["cpu_ms"] = processor.Milliseconds();
    state.counters["read_ms"] = read.Milliseconds();
    state.counters["write_ms"] = write.Milliseconds();
    state.counters["ratio"] = load.Seconds() / (read.Seconds() + write.Seconds());
}

void Bands(benchmark::State& state, const char* layout, int bands, int bits, char type) {
    LoadBands(state, Raster(layout, bands, bits, type));
}

void CommonBands(benchmark::State& state, const char* layout, int bands, int bits, char type, bool bigEndian = false) {
    Legacy::BandRaster raster = Raster(layout, bands, bits, type);
    raster.bigEndian = bigEndian;
    LoadBands(state, raster, Devices::kLegacyCommon);
}

void Palette(benchmark::State& state, int bands, int red, int green, int blue) {
    Legacy::BandRaster raster = Raster("BIL", bands, 8, 'U');
    raster.palette = Ramp(red, green, blue);
    LoadBands(state, raster);
}

void CommonPalette(benchmark::State& state, int red, int green, int blue) {
    Legacy::BandRaster raster = Raster("BIL", 1, 8, 'U');
    raster.palette = Ramp(red, green, blue);
    LoadBands(state, raster, Devices::kLegacyCommon);
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
// The same in the common reading, and what it alone reads.
KAVRA_BAND_BENCH(CommonBands, grey, "BIL", 1, 8, 'U');
KAVRA_BAND_BENCH(CommonBands, rgb_bil, "BIL", 3, 8, 'U');
KAVRA_BAND_BENCH(CommonBands, rgb_bip, "BIP", 3, 8, 'U');
KAVRA_BAND_BENCH(CommonBands, rgb_bsq, "BSQ", 3, 8, 'U');
KAVRA_BAND_BENCH(CommonBands, grey16, "BIL", 1, 16, 'U');
KAVRA_BAND_BENCH(CommonBands, grey16_big, "BIL", 1, 16, 'U', true);
KAVRA_BAND_BENCH(CommonBands, signed16, "BIL", 1, 16, 'S');
KAVRA_BAND_BENCH(CommonBands, rgb16_bil, "BIL", 3, 16, 'U');
KAVRA_BAND_BENCH(CommonBands, rgb16_bip, "BIP", 3, 16, 'U');
KAVRA_BAND_BENCH(CommonBands, floats, "BIL", 1, 32, 'F');
KAVRA_BAND_BENCH(CommonPalette, colours, 255, 128, 64);
KAVRA_BAND_BENCH(CommonPalette, grey_table, 128, 128, 128);

}  // namespace
