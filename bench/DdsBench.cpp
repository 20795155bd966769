// Loading DDS textures of 16 megapixels in the common reading, beside the same in the contract's, turn and turn about.
//
// "ratio" is the best time of a load in the common reading over that in the contract's. Items are pixels, bytes those of
// the block.

#include "Bench.h"
#include "load/DdsFile.h"

#include <kavra/devices/LoadPreferences.h>

namespace {

using namespace Kavra::Bench;
using namespace Kavra::Devices;
using Kavra::Tests::DdsFile;

constexpr std::uint32_t kSize = 4096;
constexpr std::size_t kPixels = std::size_t{kSize} * kSize;

Load LoadIn(ELegacyReading reading, const std::filesystem::path& path) {
    LoadPreferences preferences;
    preferences.legacy = reading;
    const LoadPreferencesScope scope(preferences);
    return TimeLoad(path);
}

void LoadDds(benchmark::State& state, DdsFile file, std::size_t bitsPerPixel) {
    file.width = file.height = kSize;
    file.data = TexturedPixels(static_cast<int>(kSize), static_cast<int>(kSize), 1);
    const std::vector<unsigned char> texture = file.data;
    while (file.data.size() < kPixels / 8 * bitsPerPixel)
        file.data.insert(file.data.end(), texture.begin(), texture.end());
    file.data.resize(kPixels / 8 * bitsPerPixel);
    const TemporaryFolder folder;
    const auto path = folder.Write("texture.dds", file.Bytes());
    const std::size_t bytes = LoadIn(kLegacyCommon, path).desc.dataSize;
    const BestTimes best = BesideTimed(
        state, [&] { return LoadIn(kLegacyCommon, path).seconds; },
        [&] { return LoadIn(kLegacyContract, path).seconds; });
    CountItems(state, kPixels);
    CountBytes(state, bytes);
    state.counters["ratio"] = best.Ratio();
}

#define KAVRA_DDS_BENCH(name, ...) \
    BENCHMARK_CAPTURE(LoadDds, name, __VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1)

KAVRA_DDS_BENCH(rgba8, DdsFile{}, 32);
KAVRA_DDS_BENCH(bits_565, DdsFile{}.Masks(0x40, 16, 0xF800, 0x7E0, 0x1F), 16);
KAVRA_DDS_BENCH(bits_1010102, DdsFile{}.Masks(0x41, 32, 0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000), 32);
KAVRA_DDS_BENCH(bits_8888_swapped, DdsFile{}.Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF), 24);
KAVRA_DDS_BENCH(signed_8, DdsFile{}.Masks(0x80000, 16, 0xFF, 0xFF00), 16);
KAVRA_DDS_BENCH(halves, DdsFile{}.Dxgi(10), 64);
KAVRA_DDS_BENCH(bc1, DdsFile{}.FourCC("DXT1"), 4);
KAVRA_DDS_BENCH(bc2_premultiplied, DdsFile{}.FourCC("DXT2"), 8);
KAVRA_DDS_BENCH(bc3_rxgb, DdsFile{}.FourCC("RXGB"), 8);
KAVRA_DDS_BENCH(bc5, DdsFile{}.FourCC("BC5U"), 8);
KAVRA_DDS_BENCH(bc5_signed_beside_its_blocks, DdsFile{}.FourCC("BC5S"), 8);

}  // namespace
