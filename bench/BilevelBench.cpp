// Loading large drawings, CALS and RLC, beside a plain write of memory of the result's size; and the fax decoder alone.
//
// "ratio" is the best time of a load over that of a plain write, both into fresh memory. Items are pixels; bytes are
// those of the block, or of the fax data where the decoder runs alone.

#include "Bench.h"
#include "Files.h"
#include "legacy/CalsFile.h"
#include "legacy/CcittEncoder.h"
#include "legacy/RlcFile.h"
#include "readers/ccitt/CcittRows.h"

#include <kavra/devices/LoadPreferences.h>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;
using Kavra::Common::ByteSource;
using namespace Kavra::Devices;
using Legacy::Bitmap;

/// Neither side may work in memory that the other has touched.
void LoadDrawing(benchmark::State& state, const Bitmap& image, const Legacy::ByteBuilder& bytes) {
    const TemporaryFolder folder;
    const auto path = folder.Write("drawing", bytes.Bytes());
    const std::size_t pixels = static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
    const BestTimes best = BesideTimed(
        state, [&] { return TimeLoad(path, {.memory = Memory::kFresh}).seconds; },
        [&] { return TimeBlockWrite(4 * pixels, Memory::kFresh); });
    CountItems(state, pixels);
    CountBytes(state, 4 * pixels);
    state.counters["ratio"] = best.Ratio();
}

void LoadCals(benchmark::State& state, ELegacyReading reading) {
    LoadPreferences preferences;
    preferences.legacy = reading;
    const LoadPreferencesScope scope(preferences);
    const Bitmap image = Drawing(20'000, 14'000);
    LoadDrawing(state, image, Legacy::CalsFile(image));
}

void LoadRlc(benchmark::State& state, ELegacyReading reading) {
    LoadPreferences preferences;
    preferences.legacy = reading;
    const LoadPreferencesScope scope(preferences);
    const Bitmap image = Drawing(8192, 8192);
    LoadDrawing(state, image, Legacy::RlcFile(image));
}

/// The rows alone, without their expansion.
void DecodeFax(benchmark::State& state, Ccitt::Mode mode, std::vector<unsigned char> (*encode)(const Bitmap&)) {
    const Bitmap image = Drawing(19'866, 28'087);
    const std::vector<unsigned char> data = encode(image);
    std::vector<unsigned char> rows(image.bytes.size());
    for (auto _ : state) {
        ByteSource source{std::span<const unsigned char>(data)};
        Ccitt::Decoder decoder(source, image.width, mode, Ccitt::BitOrder::kMostSignificantFirst);
        if (decoder.DecodeRows(rows) != Ccitt::Outcome::kDecoded) return state.SkipWithError("cannot decode");
    }
    if (rows != image.bytes) state.SkipWithError("decoded wrongly");
    CountItems(state, static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
    CountBytes(state, data.size());
}

BENCHMARK_CAPTURE(LoadCals, contract, kLegacyContract)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK_CAPTURE(LoadCals, common, kLegacyCommon)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK_CAPTURE(LoadRlc, contract, kLegacyContract)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK_CAPTURE(LoadRlc, common, kLegacyCommon)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK_CAPTURE(DecodeFax, group4, Ccitt::Mode::kGroup4, Legacy::EncodeGroup4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DecodeFax, group3, Ccitt::Mode::kGroup3, Legacy::EncodeGroup3)->Unit(benchmark::kMillisecond);

}  // namespace
