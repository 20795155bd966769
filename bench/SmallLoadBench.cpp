// Loading large files at a smaller size, beside decoding them, turn and turn about.
//
// "ratio" is the best time of a load over that of decoding rows that nobody keeps: by the image library as the file has
// them, of the legacy formats by their readers as pixels of four channels. "of_whole" is that over all of the picture in
// four channels: read by the image library, or loaded. "cpu_ratio" is "ratio" in seconds of all cores together, which
// other work on the machine changes least. "growth_MB" is by how much a load raises the process's memory at
// most over its start, "decoding_MB" decoding. Items are the file's pixels, bytes those of the block.

#include "Bench.h"
#include "Files.h"
#include "legacy/BandFile.h"
#include "legacy/CalsFile.h"
#include "legacy/FlicFile.h"
#include "legacy/PcxFile.h"
#include "legacy/PictFile.h"
#include "legacy/RlcFile.h"
#include "readers/FileTypeDetection.h"

#include <kavra/devices/ImageLimits.h>
#include <kavra/devices/LoadPreferences.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

namespace {

namespace fs = std::filesystem;
namespace Legacy = Kavra::Legacy;

using namespace Kavra::Bench;
using namespace Kavra::Devices;

/// The wish for a picture of this width in its proportions.
LoadWish AtWidth(const ImageDescription& file, int width) {
    const double height = static_cast<double>(width) * file.height / file.width;
    return {.width = width, .height = static_cast<int>(std::lround(height))};
}

/// Does work that gives back its seconds, and adds those of the processor to `processor`.
template <class Work>
double Time(Best& processor, const Work& work) {
    const double before = ProcessorSeconds();
    const double seconds = work();
    processor.Add(ProcessorSeconds() - before);
    return seconds;
}

/// `decode` and `whole` give back the seconds that they take.
template <class Decode, class Whole>
void LoadBeside(benchmark::State& state, const fs::path& path, const Decode& decode, const Whole& whole) {
    const double decodingGrowth = GrowthOf(decode);
    const Load file = TimeLoad(path);
    const LoadWish wish = AtWidth(file.desc, static_cast<int>(state.range(0)));
    const double growth = GrowthOf([&] { TimeLoad(path, wish); });
    Best processor, decodeProcessor, bestWhole;
    const BestTimes best = BesideTimed(
        state, [&] { return Time(processor, [&] { return TimeLoad(path, wish).seconds; }); },
        [&] {
            bestWhole.Add(whole());
            return Time(decodeProcessor, decode);
        });
    CountItems(state, static_cast<std::size_t>(file.desc.width) * static_cast<std::size_t>(file.desc.height));
    CountBytes(state, TimeLoad(path, wish).desc.dataSize);
    state.counters["ratio"] = best.Ratio();
    state.counters["of_whole"] = best.work / bestWhole.Seconds();
    state.counters["cpu_ratio"] = processor.Seconds() / decodeProcessor.Seconds();
    state.counters["growth_MB"] = growth;
    state.counters["decoding_MB"] = decodingGrowth;
}

void LoadSmall(benchmark::State& state, const PictureFile& file) {
    const fs::path path = MakeFile(file);
    LoadBeside(
        state, path, [&] { return Seconds([&] { ReadRows(path); }); },
        [&] { return Seconds([&] { ReadWhole(path, file.type); }); });
}

/// The same where the file may be decoded in part; beside decoding all of it, still.
void LoadSmallFast(benchmark::State& state, const PictureFile& file) {
    LoadPreferences preferences;
    preferences.fast = true;
    const LoadPreferencesScope scope(preferences);
    LoadSmall(state, file);
}

// --- The legacy formats ----------------------------------------------------------------------------------------------

constexpr int kSide = 4096;

void Write(const fs::path& path, std::span<const unsigned char> bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void WriteCals(const fs::path& path) {
    Write(path, Legacy::CalsFile(Drawing(19'866, 28'087)).Bytes());  // A0 at 600 dots per inch
}

void WriteRlc(const fs::path& path) {
    Write(path, Legacy::RlcFile(Drawing(8192, 8192)).Bytes());
}

void WritePcx(const fs::path& path) {
    Write(
        path,
        Legacy::PcxFile(
            {.width = kSide, .height = kSide, .planes = 3, .palette = {}, .samples = TexturedPixels(kSide, kSide, 3)}));
}

void WritePict(const fs::path& path) {
    const auto pixels = TexturedPixels(kSide, kSide, 3);
    Write(path, Legacy::PictOfColours(kSide, kSide, pixels, 32, Legacy::PictMode::kTransparent).Bytes());
}

void WriteFlic(const fs::path& path) {
    const Legacy::FlicMovie movie{.width = kSide, .height = kSide, .frames = {TexturedPixels(kSide, kSide, 1)}};
    Write(path, Legacy::MakeFlic(movie).Bytes());
}

void WriteBands(const fs::path& path) {
    Legacy::BandRaster raster{.columns = kSide, .rows = kSide, .bands = 3};
    raster.samples = TexturedPixels(kSide, kSide, 3);
    Legacy::WriteBandFiles(fs::path(path).replace_extension(), raster);
}

/// Hands out the same few rows again and again.
class NoRows final : public Kavra::Common::RowSink {
public:
    explicit NoRows(std::size_t rowBytes) : mRowBytes(rowBytes), mRows(16 * rowBytes) {}
    std::span<unsigned char> NextRows(std::size_t most) override {
        const std::span<unsigned char> rows(mRows.data(), std::min(most * mRowBytes, mRows.size()));
        std::ranges::fill(rows, static_cast<unsigned char>(0));
        return rows;
    }

private:
    std::size_t mRowBytes;
    std::vector<unsigned char> mRows;
};

void DecodeRows(const fs::path& path) {
    const Kavra::Objects::KString name = Wide(path);
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(DetectImageFileType(name)));
    if (!reader || !reader->Open(name)) throw std::runtime_error("cannot open " + path.string());
    NoRows rows(static_cast<std::size_t>(reader->GetRowPitch()));
    if (!reader->ReadFrame(rows, 0)) throw std::runtime_error("cannot read " + path.string());
}

/// Lets the drawing be loaded at its own size, too.
class RoomForAll {
public:
    RoomForAll() { SetImageLimits({.maxBytes = std::uint64_t{3} << 30}); }
    ~RoomForAll() { SetImageLimits(mBefore); }
    RoomForAll(const RoomForAll&) = delete;
    RoomForAll& operator=(const RoomForAll&) = delete;

private:
    ImageLimits mBefore = GetImageLimits();
};

void LoadSmallLegacy(benchmark::State& state, const char* name, void (*write)(const fs::path& path)) {
    const fs::path path = FolderOfFiles() / name;
    if (!fs::exists(path)) write(path);
    const RoomForAll room;
    LoadBeside(state, path, [&] { return Seconds([&] { DecodeRows(path); }); }, [&] { return TimeLoad(path).seconds; });
}

// --- All of them -----------------------------------------------------------------------------------------------------

#define KAVRA_SMALL_BENCH(function, name, ...)     \
    BENCHMARK_CAPTURE(function, name, __VA_ARGS__) \
        ->ArgName("width")                         \
        ->UseManualTime()                          \
        ->Unit(benchmark::kMillisecond)            \
        ->MinTime(0.5)

#define KAVRA_PARTS ->Arg(256)->Arg(512)->Arg(1024)->Arg(2048)

KAVRA_SMALL_BENCH(LoadSmall, jpeg, {.name = "rgb.jpg"}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmallFast, jpeg, {.name = "rgb.jpg"}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmall, png, {.name = "rgb.png"}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmall, tiff, {.name = "plain.tif", .compression = "none"}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmall, tiff_deflate, {.name = "deflate.tif", .compression = "zip"}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmall, tiff_tiled, {.name = "tiled.tif", .compression = "none", .tile = 256}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmall, exr, {.name = "half.exr", .channels = 4, .type = OIIO::TypeHalf}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmall, hdr, {.name = "light.hdr", .type = OIIO::TypeFloat}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmall, bmp, {.name = "rgb.bmp"}) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmallLegacy, cals_a0, "a0.cals", WriteCals)
    ->Arg(512)
    ->Arg(1242)
    ->Arg(2483)
    ->Arg(4967)
    ->Arg(9933)
    ->MinTime(4);
KAVRA_SMALL_BENCH(LoadSmallLegacy, rlc, "drawing.rlc", WriteRlc)->Arg(512)->Arg(1024)->Arg(2048)->Arg(4096);
KAVRA_SMALL_BENCH(LoadSmallLegacy, pcx, "colours.pcx", WritePcx) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmallLegacy, pict, "colours.pict", WritePict) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmallLegacy, flic, "frame.flc", WriteFlic) KAVRA_PARTS;
KAVRA_SMALL_BENCH(LoadSmallLegacy, bands, "bands.bil", WriteBands) KAVRA_PARTS;

}  // namespace
