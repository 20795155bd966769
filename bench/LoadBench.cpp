// Loading large files, beside a bare OpenImageIO read of the same file into the same layout, turn and turn about.
//
// "ratio" is the best time of a load over that of a bare read. Items are pixels, bytes those of the block.

#include "Bench.h"

#include <kavra/devices/DDSWriter.h>

#include <OpenImageIO/imageio.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;
using namespace Kavra::Devices;

constexpr int kSize = 4096;
constexpr std::size_t kPixels = std::size_t{kSize} * kSize;

std::string MakeFile(const std::string& name, int channels, OIIO::TypeDesc type) {
    static const TemporaryFolder folder;
    const std::string path = (folder / name).string();
    if (std::filesystem::exists(path)) return path;
    const std::vector<unsigned char> pixels = TexturedPixels(kSize, channels);
    if (name.ends_with(".dds")) {
        DDSWriter writer;
        writer.Construct(kTexture2D, kR8G8B8A8, kSize, kSize, 1, 1, static_cast<int>(pixels.size()), 0);
        if (!writer.Write(Wide(path), pixels.data())) throw std::runtime_error("no " + path);
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

/// Opens the file and reads it into pixels of four elements of its type.
void ReadBare(const std::string& path, OIIO::TypeDesc type) {
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    auto input = OIIO::ImageInput::open(path, &config);
    const std::size_t pixelBytes = 4 * type.size();
    Common::PixelBlock block = Common::NewBlock(kPixels * pixelBytes);
    if (!input || !input->read_image(0, 0, 0, -1, type, block.get(), static_cast<OIIO::stride_t>(pixelBytes))) {
        throw std::runtime_error("cannot read " + path);
    }
    benchmark::DoNotOptimize(block.get());
    input.reset();  // closing frees the library's own buffers, which is a part of the cost
    block.reset();
}

void LoadFile(benchmark::State& state, const std::string& name, int channels, OIIO::TypeDesc type) {
    const std::string path = MakeFile(name, channels, type);
    const std::size_t bytes = TimeLoad(path).desc.dataSize;
    ReadBare(path, type);
    const BestTimes best = BesideTimed(
        state, [&] { return TimeLoad(path).seconds; }, [&] { return Seconds([&] { ReadBare(path, type); }); });
    CountItems(state, kPixels);
    CountBytes(state, bytes);
    state.counters["ratio"] = best.Ratio();
}

#define KAVRA_LOAD_BENCH(name, file, channels, type) \
    BENCHMARK_CAPTURE(LoadFile, name, file, channels, type)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2)

KAVRA_LOAD_BENCH(png_rgb, "rgb.png", 3, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(png_rgba, "rgba.png", 4, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(jpeg, "rgb.jpg", 3, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(tiff_rgba8, "rgba.tif", 4, OIIO::TypeUInt8);
KAVRA_LOAD_BENCH(tiff_rgb_float, "float.tif", 3, OIIO::TypeFloat);
KAVRA_LOAD_BENCH(exr_rgba_half, "half.exr", 4, OIIO::TypeHalf);
KAVRA_LOAD_BENCH(dds_rgba8, "rgba.dds", 4, OIIO::TypeUInt8);

}  // namespace
