// Loading large files, beside a bare OpenImageIO read of the same file into the same layout, turn and turn about.
//
// "ratio" is the best time of a load over that of a bare read. Items are pixels, bytes those of the block.

#include "Bench.h"
#include "Files.h"

#include <filesystem>

namespace {

using namespace Kavra::Bench;

void LoadFile(benchmark::State& state, const PictureFile& file) {
    const std::filesystem::path path = MakeFile(file);
    const std::size_t bytes = TimeLoad(path).desc.dataSize;
    ReadWhole(path, file.type);
    const BestTimes best = BesideTimed(
        state, [&] { return TimeLoad(path).seconds; }, [&] { return Seconds([&] { ReadWhole(path, file.type); }); });
    CountItems(state, static_cast<std::size_t>(file.width) * static_cast<std::size_t>(file.height));
    CountBytes(state, bytes);
    state.counters["ratio"] = best.Ratio();
}

#define KAVRA_LOAD_BENCH(name, ...) \
    BENCHMARK_CAPTURE(LoadFile, name, {__VA_ARGS__})->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2)

KAVRA_LOAD_BENCH(png_rgb, .name = "rgb.png");
KAVRA_LOAD_BENCH(png_rgba, .name = "rgba.png", .channels = 4);
KAVRA_LOAD_BENCH(jpeg, .name = "rgb.jpg");
KAVRA_LOAD_BENCH(tiff_rgba8, .name = "rgba.tif", .channels = 4);
KAVRA_LOAD_BENCH(tiff_rgb_float, .name = "float.tif", .type = OIIO::TypeFloat);
KAVRA_LOAD_BENCH(exr_rgba_half, .name = "half.exr", .channels = 4, .type = OIIO::TypeHalf);
KAVRA_LOAD_BENCH(dds_rgba8, .name = "rgba.dds", .channels = 4);

}  // namespace
