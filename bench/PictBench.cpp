// Loading large PICT pictures, beside a plain write of a block of the result's size.
//
// "ratio" is the best time of a load over that of the write, both into the block kept from the one before. Items are
// pixels, bytes those of the block.

#include "Bench.h"
#include "legacy/PictFile.h"

#include <kavra/devices/LoadPreferences.h>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;

constexpr int kSide = 8192;
constexpr std::size_t kPixels = std::size_t{kSide} * kSide;

/// Large fields of one value.
std::vector<unsigned char> Fields() {
    std::vector<unsigned char> bytes;
    bytes.reserve(kPixels);
    for (unsigned i = 0; i < kPixels; ++i)
        bytes.push_back(static_cast<unsigned char>((i / 300) ^ (i >> 17)));
    return bytes;
}

std::vector<unsigned char> Dots() {
    std::vector<unsigned char> bytes;
    bytes.reserve(kPixels);
    for (unsigned i = 0; i < kPixels; ++i)
        bytes.push_back((i / 37) % 5 == 0);
    return bytes;
}

Legacy::ByteBuilder Indices(const std::vector<unsigned char>& indices) {
    std::vector<Legacy::PictEntry> colours;
    for (unsigned i = 0; i < 256; ++i)
        colours.push_back({static_cast<unsigned char>(i), static_cast<unsigned char>(255 - i), 7});
    return Legacy::PictOfIndices(kSide, kSide, indices, colours);
}

template <class MakePicture>
void LoadPict(benchmark::State& state, Devices::ELegacyReading reading, MakePicture makePicture) {
    Devices::LoadPreferences preferences;
    preferences.legacy = reading;
    const Devices::LoadPreferencesScope scope(preferences);
    const TemporaryFolder folder;
    const auto path = folder.Write("picture.pict", makePicture().Bytes());
    TimeLoad(path);
    const BestTimes best = BesideTimed(
        state, [&] { return TimeLoad(path).seconds; }, [] { return TimeBlockWrite(4 * kPixels, Memory::kKept); });
    CountItems(state, kPixels);
    CountBytes(state, 4 * kPixels);
    state.counters["ratio"] = best.Ratio();
}

#define KAVRA_PICT_BENCH_AS(name, reading, picture)                             \
    BENCHMARK_CAPTURE(LoadPict, name, Devices::reading, [] { return picture; }) \
        ->UseManualTime()                                                       \
        ->Unit(benchmark::kMillisecond)
/// A row for each reading.
#define KAVRA_PICT_BENCH(name, picture)                  \
    KAVRA_PICT_BENCH_AS(name, kLegacyContract, picture); \
    KAVRA_PICT_BENCH_AS(name##_common, kLegacyCommon, picture)

using Legacy::PictMode;

KAVRA_PICT_BENCH(pict_32_as_it_is,
                 Legacy::PictOfColours(kSide, kSide, TexturedPixels(kSide, kSide, 3), 32, PictMode::kTransparent));
KAVRA_PICT_BENCH(pict_32_minimum,
                 Legacy::PictOfColours(kSide, kSide, TexturedPixels(kSide, kSide, 3), 32, PictMode::kMinimum));
KAVRA_PICT_BENCH(pict_32_two_colours,
                 Legacy::PictOfColours(kSide, kSide, TexturedPixels(kSide, kSide, 3), 32, PictMode::kCopy));
KAVRA_PICT_BENCH(pict_16,
                 Legacy::PictOfColours(kSide, kSide, TexturedPixels(kSide, kSide, 3), 16, PictMode::kTransparent));
KAVRA_PICT_BENCH(pict_8, Indices(TexturedPixels(kSide, kSide, 1)));
KAVRA_PICT_BENCH(pict_8_fields, Indices(Fields()));
KAVRA_PICT_BENCH(pict_1, Legacy::PictOfBits(kSide, kSide, Dots()));

// What only the common reading shows: sixteen pixels for each stored one, and a mask of two edges a row.
KAVRA_PICT_BENCH_AS(pict_16_enlarged_masked_common, kLegacyCommon,
                    Legacy::PictThroughCircle(kSide / 4, kSide / 4, TexturedPixels(kSide / 4, kSide / 4, 3), 4));

}  // namespace
