// Loading large files at a smaller size, beside a bare decode of the same file by OpenImageIO: 64 rows at a time into the
// same memory (256 of an OpenEXR, a row of tiles of a tiled file), turn and turn about.
//
// "ratio" is the best time of a load over that of a decode; "peak_mb" what a load takes beyond what the process has.
// Items are pixels of the file; of thumbnails, pictures.

#include "Bench.h"

#include <kavra/devices/LoadPreferences.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;
using namespace Kavra::Devices;

constexpr int kSide = 4096;

struct FileKind {
    const char* name;
    OIIO::TypeDesc type = OIIO::TypeUInt8;
    std::function<void(OIIO::ImageSpec&)> details = [](OIIO::ImageSpec&) {};
};

std::function<void(OIIO::ImageSpec&)> Compressed(const char* how) {
    return [how](OIIO::ImageSpec& spec) { spec.attribute("compression", how); };
}
std::function<void(OIIO::ImageSpec&)> Tiled(int side) {
    return [side](OIIO::ImageSpec& spec) { spec.tile_width = spec.tile_height = side; };
}

const std::vector<FileKind>& FileKinds() {
    static const std::vector<FileKind> kinds = {
        {"rgb.jpg"},
        {"rgb.png"},
        {"plain.tif", OIIO::TypeUInt8, Compressed("none")},
        {"deflate.tif", OIIO::TypeUInt8, Compressed("zip")},
        {"tiles.tif", OIIO::TypeUInt8, Tiled(256)},
        {"half.exr", OIIO::TypeHalf, Compressed("zip")},
        {"rgb.hdr", OIIO::TypeFloat},
        {"rgb.bmp"},
    };
    return kinds;
}

std::string MakeFile(const FileKind& kind, int side) {
    static const TemporaryFolder folder;
    const std::string path = (folder / (std::to_string(side) + kind.name)).string();
    if (std::filesystem::exists(path)) return path;
    OIIO::ImageSpec spec(side, side, 3, kind.type);
    kind.details(spec);
    const auto output = OIIO::ImageOutput::create(path);
    if (!output || !output->open(path, spec) || !output->write_image(OIIO::TypeUInt8, TexturedPixels(side, 3).data())) {
        throw std::runtime_error("cannot write " + path);
    }
    output->close();
    return path;
}

void DecodeBare(const std::string& path) {
    auto input = OIIO::ImageInput::open(path);
    if (!input) throw std::runtime_error("cannot open " + path);
    const OIIO::ImageSpec spec = input->spec();
    const bool isTiled = spec.tile_width > 0;
    const int band = isTiled ? spec.tile_height : path.ends_with(".exr") ? 256 : 64;
    std::vector<unsigned char> rows(spec.scanline_bytes(true) * static_cast<std::size_t>(band));
    for (int y = 0; y < spec.height; y += band) {
        const int end = std::min(y + band, spec.height);
        const bool done =
            isTiled ? input->read_tiles(0, 0, 0, spec.width, y, end, 0, 1, 0, spec.nchannels, spec.format, rows.data())
                    : input->read_native_scanlines(0, 0, y, end, 0, 0, spec.nchannels, rows.data());
        if (!done) throw std::runtime_error("cannot read " + path);
        benchmark::DoNotOptimize(rows.data());
    }
}

double TimeSmallLoad(const std::string& path, int side, bool fast) {
    static OIIOImageHandler handler;
    LoadPreferences preferences;
    preferences.fast = fast;
    const LoadPreferencesScope scope(preferences);
    const Objects::KString name = Wide(path);
    return Seconds([&] {
        ImageDescription desc;
        IMemoryWrapper<void>* block =
            handler.LoadTexture(desc, name, side, side, 1, kUnknown, false, 0, kTopLeft, nullptr);
        if (block == nullptr) throw std::runtime_error("cannot load " + path);
        block->Delete();
    });
}

/// A figure of the process in kilobytes, as the system keeps it.
double Kilobytes(const std::string& figure) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(figure + ":")) return std::stod(line.substr(figure.size() + 1));
    }
    return 0;
}

double PeakMegabytes(const std::string& path, int side, bool fast) {
    Objects::ObjModel::ReleaseKeptBlock();
    std::ofstream("/proc/self/clear_refs") << "5" << std::flush;  // makes the peak what is there now
    const double before = Kilobytes("VmRSS");
    (void)TimeSmallLoad(path, side, fast);
    return (Kilobytes("VmHWM") - before) / 1024;
}

void LoadSmall(benchmark::State& state, const FileKind& kind, int part, bool fast) {
    const std::string path = MakeFile(kind, kSide);
    const int side = kSide / part;
    DecodeBare(path);
    (void)TimeSmallLoad(path, side, fast);
    const double peak = PeakMegabytes(path, side, fast);
    const BestTimes best = BesideTimed(
        state, [&] { return TimeSmallLoad(path, side, fast); }, [&] { return Seconds([&] { DecodeBare(path); }); });
    CountItems(state, std::size_t{kSide} * kSide);
    state.counters["ratio"] = best.Ratio();
    state.counters["peak_mb"] = peak;
}

void Thumbnail(benchmark::State& state, bool fast) {
    const std::string path = MakeFile({"thumb.jpg"}, 480);
    for (auto _ : state)
        (void)TimeSmallLoad(path, 128, fast);
    CountItems(state, 1);
}

void Register(const FileKind& kind, int part, bool fast) {
    const std::string name =
        "LoadSmall/" + std::string(kind.name) + "/1:" + std::to_string(part) + (fast ? "/fast" : "");
    benchmark::RegisterBenchmark(name, LoadSmall, kind, part, fast)->UseManualTime()->Unit(benchmark::kMillisecond);
}

const bool kIsRegistered = [] {
    for (const FileKind& kind : FileKinds()) {
        for (const int part : {16, 8, 4, 2})
            Register(kind, part, false);
    }
    for (const int part : {16, 8, 4, 2})
        Register(FileKinds().front(), part, true);
    return true;
}();

BENCHMARK_CAPTURE(Thumbnail, plain, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Thumbnail, fast, true)->Unit(benchmark::kMillisecond);

}  // namespace
