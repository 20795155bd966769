// Loading large PCX files, beside a plain write of the result.
//
// "ratio" is the best time of a load over that of the write, both into the block kept from the one before. Items are
// pixels, bytes those of the block.

#include "Bench.h"
#include "legacy/PcxFile.h"

#include <kavra/devices/LoadPreferences.h>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;

constexpr int kSize = 8192;
constexpr std::size_t kPixels = static_cast<std::size_t>(kSize) * kSize;

/// What a row of samples looks like.
enum class Scene {
    kPhoto,    ///< ramps with noise on them: hardly a run
    kDrawing,  ///< flat areas with borders every few pixels
};

unsigned char SampleAt(Scene scene, int x, int y, int channel, unsigned random) {
    if (scene == Scene::kPhoto) return static_cast<unsigned char>((x >> 4) + (y >> (3 + channel)) + (random >> 30));
    return static_cast<unsigned char>(((x / 23) * 7 + (y / 31) * 5 + channel * 40) & 0xFF);
}

std::vector<unsigned char> Samples(Scene scene, int channels, unsigned mask) {
    std::vector<unsigned char> samples;
    samples.reserve(kPixels * static_cast<std::size_t>(channels));
    unsigned random = 1;
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            random = random * 1664525 + 1013904223;
            for (int c = 0; c < channels; ++c)
                samples.push_back(static_cast<unsigned char>(SampleAt(scene, x, y, c, random << (2 * c)) & mask));
        }
    }
    return samples;
}

struct Layout {
    int bitsPerPlane;
    int planes;
    Scene scene;
    bool isCoded = true;
    Devices::ELegacyReading reading = Devices::kLegacyContract;
};

std::vector<unsigned char> File(const Layout& layout) {
    Legacy::PcxPicture picture{kSize, kSize, layout.bitsPerPlane, layout.planes, layout.isCoded, {}, {}};
    const bool isIndexed = layout.bitsPerPlane * layout.planes <= 8;
    const unsigned mask = (1U << (layout.bitsPerPlane * (isIndexed ? layout.planes : 1))) - 1;
    picture.samples = Samples(layout.scene, isIndexed ? 1 : layout.planes, mask);
    if (isIndexed) picture.palette.resize(3 * (mask + 1), 99);
    return Legacy::PcxFile(picture);
}

void LoadPcx(benchmark::State& state, const Layout& layout) {
    const TemporaryFolder folder;
    const auto path = folder.Write("picture.pcx", File(layout));
    Devices::LoadPreferences preferences;
    preferences.legacy = layout.reading;
    const Devices::LoadPreferencesScope scope(preferences);
    if (TimeLoad(path).desc.dataSize != 4 * kPixels) return state.SkipWithError("loaded wrongly");
    const BestTimes best = BesideTimed(
        state, [&] { return TimeLoad(path).seconds; }, [] { return TimeBlockWrite(4 * kPixels, Memory::kKept); });
    CountItems(state, kPixels);
    CountBytes(state, 4 * kPixels);
    state.counters["ratio"] = best.Ratio();
}

#define KAVRA_PCX_BENCH(name, ...) \
    BENCHMARK_CAPTURE(LoadPcx, name, Layout{__VA_ARGS__})->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1)

KAVRA_PCX_BENCH(bytes_photo, 8, 1, Scene::kPhoto);
KAVRA_PCX_BENCH(bytes_drawing, 8, 1, Scene::kDrawing);
KAVRA_PCX_BENCH(bytes_raw, 8, 1, Scene::kPhoto, false);
KAVRA_PCX_BENCH(colours_photo, 8, 3, Scene::kPhoto);
KAVRA_PCX_BENCH(colours_drawing, 8, 3, Scene::kDrawing);
KAVRA_PCX_BENCH(nibbles, 4, 1, Scene::kDrawing);
KAVRA_PCX_BENCH(four_planes, 1, 4, Scene::kDrawing);
KAVRA_PCX_BENCH(bits, 1, 1, Scene::kDrawing);

// The same in the common reading, which has more to undo in none of them.
KAVRA_PCX_BENCH(common_bytes_photo, 8, 1, Scene::kPhoto, true, Devices::kLegacyCommon);
KAVRA_PCX_BENCH(common_bytes_drawing, 8, 1, Scene::kDrawing, true, Devices::kLegacyCommon);
KAVRA_PCX_BENCH(common_bytes_raw, 8, 1, Scene::kPhoto, false, Devices::kLegacyCommon);
KAVRA_PCX_BENCH(common_colours_photo, 8, 3, Scene::kPhoto, true, Devices::kLegacyCommon);
KAVRA_PCX_BENCH(common_colours_drawing, 8, 3, Scene::kDrawing, true, Devices::kLegacyCommon);
KAVRA_PCX_BENCH(common_nibbles, 4, 1, Scene::kDrawing, true, Devices::kLegacyCommon);
KAVRA_PCX_BENCH(common_four_planes, 1, 4, Scene::kDrawing, true, Devices::kLegacyCommon);
KAVRA_PCX_BENCH(common_bits, 1, 1, Scene::kDrawing, true, Devices::kLegacyCommon);

}  // namespace
