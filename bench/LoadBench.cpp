// Loading large files, beside a bare OpenImageIO read of the same file into the same layout, turn and turn about.
//
// "ratio" is the time of a load over the time of a bare read.

#include "common/PixelBlock.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/objects/OS.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <OpenImageIO/imageio.h>
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

constexpr int kSize = 4096;

/// A folder that goes when the program ends.
class Folder {
public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kavra-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        mPath = pattern;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    std::filesystem::path operator/(const std::string& name) const { return mPath / name; }

private:
    std::filesystem::path mPath;
};

/// Something between noise and a flat field: smooth ramps with some texture on them.
std::vector<unsigned char> Picture(int channels) {
    std::vector<unsigned char> pixels;
    pixels.reserve(static_cast<std::size_t>(kSize) * kSize * static_cast<std::size_t>(channels));
    unsigned random = 1;
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            random = random * 1664525 + 1013904223;
            for (int c = 0; c < channels; ++c) {
                pixels.push_back(static_cast<unsigned char>((x >> 4) + (y >> (3 + c)) + (random >> 30)));
            }
        }
    }
    return pixels;
}

std::string MakeFile(const std::string& name, int channels, OIIO::TypeDesc type) {
    static const Folder folder;
    const std::string path = (folder / name).string();
    if (std::filesystem::exists(path)) return path;
    const std::vector<unsigned char> pixels = Picture(channels);
    if (name.ends_with(".dds")) {
        DDSWriter writer;
        writer.Construct(kTexture2D, kR8G8B8A8, kSize, kSize, 1, 1, static_cast<int>(pixels.size()), 0);
        if (!writer.Write(OS::FromUtf8(path.c_str()).c_str(), pixels.data())) throw std::runtime_error("no " + path);
        return path;
    }
    const auto output = OIIO::ImageOutput::create(path);
    const OIIO::ImageSpec spec(kSize, kSize, channels, type);
    if (!output || !output->open(path, spec) || !output->write_image(OIIO::TypeUInt8, pixels.data())) {
        throw std::runtime_error("cannot write " + path);
    }
    output->close();
    return path;
}

double Seconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

/// Opens the file and reads it into pixels of four elements of its type.
double TimeBareRead(const std::string& path, OIIO::TypeDesc type) {
    const auto start = std::chrono::steady_clock::now();
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    auto input = OIIO::ImageInput::open(path, &config);
    const std::size_t pixelBytes = 4 * type.size();
    Common::PixelBlock block = Common::NewBlock(static_cast<std::size_t>(kSize) * kSize * pixelBytes);
    if (!input || !input->read_image(0, 0, 0, -1, type, block.get(), static_cast<OIIO::stride_t>(pixelBytes))) {
        throw std::runtime_error("cannot read " + path);
    }
    benchmark::DoNotOptimize(block.get());
    input.reset();  // closing frees the library's own buffers, which is a part of the cost
    block.reset();
    return Seconds(std::chrono::steady_clock::now() - start);
}

double TimeLoad(const std::string& path) {
    static OIIOImageHandler handler;
    const Objects::KString name(OS::FromUtf8(path.c_str()).c_str());
    const auto start = std::chrono::steady_clock::now();
    ImageDescription desc;
    IMemoryWrapper<void>* block = handler.LoadTexture(desc, name, 0, 0, 1, kUnknown, 0, kTopLeft, nullptr);
    if (block == nullptr) throw std::runtime_error("cannot load " + path);
    block->Delete();
    return Seconds(std::chrono::steady_clock::now() - start);
}

void Load(benchmark::State& state, const std::string& name, int channels, OIIO::TypeDesc type) {
    const std::string path = MakeFile(name, channels, type);
    TimeLoad(path);
    TimeBareRead(path, type);
    double load = 0, bare = 0;
    for (auto _ : state) {
        bare += TimeBareRead(path, type);
        const double seconds = TimeLoad(path);
        load += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["bare_ms"] = 1000 * bare / static_cast<double>(state.iterations());
    state.counters["ratio"] = load / bare;
}

#define KAVRA_LOAD_BENCH(name, file, channels, type) \
    BENCHMARK_CAPTURE(Load, name, file, channels, type)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2)

KAVRA_LOAD_BENCH(png_rgb, "rgb.png", 3, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(png_rgba, "rgba.png", 4, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(jpeg, "rgb.jpg", 3, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(tiff_rgba8, "rgba.tif", 4, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(tiff_rgb_float, "float.tif", 3, OIIO::TypeFloat);
KAVRA_LOAD_BENCH(exr_rgba_half, "half.exr", 4, OIIO::TypeHalf);
KAVRA_LOAD_BENCH(dds_rgba8, "rgba.dds", 4, OIIO::TypeUInt8);

}  // namespace
