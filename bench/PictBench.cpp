// Loading large PICT pictures, beside a plain write of a block of the result's size.
//
// "pixels" is pixels a second of the load, "plain" those of the write; "ratio" the time of the load over that of the
// write.

#include "common/PixelBlock.h"
#include "legacy/PictFile.h"

#include <kavra/objects/OS.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

constexpr int kSide = 8192;
constexpr std::size_t kPixels = std::size_t{kSide} * kSide;

/// A file that goes with its owner.
class TemporaryFile {
public:
    explicit TemporaryFile(const Legacy::ByteBuilder& content) {
        std::string pattern = (std::filesystem::temp_directory_path() / "kavra-pict-XXXXXX").string();
        const int handle = mkstemp(pattern.data());
        if (handle < 0) throw std::runtime_error("no temporary file");
        close(handle);
        mPath = pattern;
        std::ofstream file(mPath, std::ios::binary);
        file.write(reinterpret_cast<const char*>(content.Bytes().data()), static_cast<std::streamsize>(content.Size()));
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(mPath, ignored);
    }
    Objects::KString Name() const { return OS::FromUtf8(mPath.c_str()).c_str(); }

private:
    std::filesystem::path mPath;
};

/// Something between noise and a flat field: smooth ramps with some texture on them.
std::vector<unsigned char> Texture(std::size_t channels) {
    std::vector<unsigned char> bytes;
    bytes.reserve(kPixels * channels);
    unsigned random = 1;
    for (unsigned y = 0; y < kSide; ++y) {
        for (unsigned x = 0; x < kSide; ++x) {
            random = random * 1664525 + 1013904223;
            for (unsigned c = 0; c < channels; ++c)
                bytes.push_back(static_cast<unsigned char>((x >> 4) + (y >> (3 + c)) + (random >> 30)));
        }
    }
    return bytes;
}

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

double Seconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

double TimeLoad(const TemporaryFile& file) {
    static OIIOImageHandler handler;
    const auto start = std::chrono::steady_clock::now();
    ImageDescription desc;
    IMemoryWrapper<void>* block = handler.LoadTexture(desc, file.Name(), 0, 0, 1, kUnknown, 0, kTopLeft, nullptr);
    if (block == nullptr) throw std::runtime_error("cannot load");
    block->Delete();
    return Seconds(std::chrono::steady_clock::now() - start);
}

double TimePlainWrite() {
    const auto start = std::chrono::steady_clock::now();
    const Common::PixelBlock block = Common::NewBlock(4 * kPixels);
    std::memset(block.get(), 0x55, 4 * kPixels);
    benchmark::DoNotOptimize(block.get());
    return Seconds(std::chrono::steady_clock::now() - start);
}

template <class MakePicture>
void Load(benchmark::State& state, MakePicture makePicture) {
    const TemporaryFile file(makePicture());
    TimeLoad(file);
    double load = 0, plain = 0;
    for (auto _ : state) {
        plain += TimePlainWrite();
        const double seconds = TimeLoad(file);
        load += seconds;
        state.SetIterationTime(seconds);
    }
    const auto pixels = static_cast<double>(kPixels) * static_cast<double>(state.iterations());
    state.counters["pixels"] = pixels / load;
    state.counters["plain"] = pixels / plain;
    state.counters["ratio"] = load / plain;
}

#define KAVRA_PICT_BENCH(name, picture) \
    BENCHMARK_CAPTURE(Load, name, [] { return picture; })->UseManualTime()->Unit(benchmark::kMillisecond)

using Legacy::PictMode;

KAVRA_PICT_BENCH(pict_32_as_it_is, Legacy::PictOfColours(kSide, kSide, Texture(3), 32, PictMode::kTransparent));
KAVRA_PICT_BENCH(pict_32_minimum, Legacy::PictOfColours(kSide, kSide, Texture(3), 32, PictMode::kMinimum));
KAVRA_PICT_BENCH(pict_32_two_colours, Legacy::PictOfColours(kSide, kSide, Texture(3), 32, PictMode::kCopy));
KAVRA_PICT_BENCH(pict_16, Legacy::PictOfColours(kSide, kSide, Texture(3), 16, PictMode::kTransparent));
KAVRA_PICT_BENCH(pict_8, Indices(Texture(1)));
KAVRA_PICT_BENCH(pict_8_fields, Indices(Fields()));
KAVRA_PICT_BENCH(pict_1, Legacy::PictOfBits(kSide, kSide, Dots()));

}  // namespace
