// Loading large PCX files, beside a plain write of the result into fresh memory.
//
// "pixels" are those loaded a second, "written" those that a plain write makes; both in the same turn.

#include "common/PixelBlock.h"
#include "legacy/PcxFile.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/ImageReaderInterface.h"
#include "readers/LegacyLoad.h"

#include <kavra/objects/OS.h>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

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
};

/// A file that goes when the benchmark ends.
class File {
public:
    explicit File(const Layout& layout) {
        std::string pattern = (std::filesystem::temp_directory_path() / "kavra-bench-XXXXXX").string();
        const int handle = mkstemp(pattern.data());
        if (handle < 0) throw std::runtime_error("no temporary file");
        close(handle);
        mPath = pattern;
        Legacy::PcxPicture picture{kSize, kSize, layout.bitsPerPlane, layout.planes, layout.isCoded, {}, {}};
        const bool isIndexed = layout.bitsPerPlane * layout.planes <= 8;
        const unsigned mask = (1U << (layout.bitsPerPlane * (isIndexed ? layout.planes : 1))) - 1;
        picture.samples = Samples(layout.scene, isIndexed ? 1 : layout.planes, mask);
        if (isIndexed) picture.palette.resize(3 * (mask + 1), 99);
        const std::vector<unsigned char> bytes = Legacy::PcxFile(picture);
        std::ofstream(mPath, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~File() {
        std::error_code ignored;
        std::filesystem::remove(mPath, ignored);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    Objects::KString Name() const { return Objects::KString(OS::FromUtf8(mPath.c_str()).c_str()); }

private:
    std::filesystem::path mPath;
};

double Seconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

double TimeLoad(const Objects::KString& name) {
    const auto start = std::chrono::steady_clock::now();
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(PCX));
    ImageDescription desc;
    const Common::PixelBlock block = LoadThroughReader(*reader, desc, name, {});
    if (!block || desc.dataSize != 4 * kPixels) throw std::runtime_error("not loaded");
    return Seconds(std::chrono::steady_clock::now() - start);
}

double TimeWrite() {
    const auto start = std::chrono::steady_clock::now();
    const Common::PixelBlock block = Common::NewBlock(4 * kPixels);
    std::memset(block.get(), 99, 4 * kPixels);
    benchmark::DoNotOptimize(block.get());
    return Seconds(std::chrono::steady_clock::now() - start);
}

void LoadPcx(benchmark::State& state, const Layout& layout) {
    const File file(layout);
    TimeLoad(file.Name());
    double load = 0, write = 0;
    for (auto _ : state) {
        write += TimeWrite();
        const double seconds = TimeLoad(file.Name());
        load += seconds;
        state.SetIterationTime(seconds);
    }
    const auto pixels = static_cast<double>(kPixels) * static_cast<double>(state.iterations());
    state.counters["pixels"] = benchmark::Counter(pixels / load);
    state.counters["written"] = benchmark::Counter(pixels / write);
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

}  // namespace
