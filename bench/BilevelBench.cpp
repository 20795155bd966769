// Loading large drawings, CALS and RLC, beside a plain write of memory of the result's size; and the fax decoder alone.
//
// "ratio" is the time of a load over the time of a plain write, both into fresh memory.

#include "common/PixelBlock.h"
#include "legacy/CalsFile.h"
#include "legacy/CcittEncoder.h"
#include "legacy/RlcFile.h"
#include "readers/ccitt/CcittDecoder.h"

#include <kavra/objects/OS.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;
using Legacy::Bitmap;

/// A file that goes with the program.
class File {
public:
    explicit File(std::span<const unsigned char> bytes)
        : mPath((std::filesystem::temp_directory_path() / "kavra-bench-XXXXXX").string()) {
        const int file = mkstemp(mPath.data());
        if (file < 0) throw std::runtime_error("no temporary file");
        close(file);
        std::ofstream(mPath, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~File() {
        std::error_code ignored;
        std::filesystem::remove(mPath, ignored);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    KString Name() const { return KString(OS::FromUtf8(mPath.c_str()).c_str()); }

private:
    std::string mPath;
};

void DrawLine(Bitmap& image, double x, double y, double angle, double length, int thickness) {
    for (double along = 0; along < length; along += 0.7) {
        for (int i = 0; i < thickness; ++i) {
            const int column = static_cast<int>(x + along * std::cos(angle)) + i;
            const int row = static_cast<int>(y + along * std::sin(angle)) + i;
            if (column >= 0 && row >= 0 && column < image.width && row < image.height) image.Set(column, row);
        }
    }
}

/// Lines in all directions, most of them along the sides, as many in a square inch at 600 dots as a drawing has.
Bitmap Drawing(int width, int height) {
    constexpr double kRightAngle = 1.5707963267948966;
    Bitmap image(width, height);
    std::mt19937 random(1);
    const auto below = [&](int limit) { return static_cast<double>(random() % static_cast<unsigned>(limit)); };
    const int lines = static_cast<int>(static_cast<double>(width) * height / 140'000);
    for (int line = 0; line < lines; ++line) {
        const double angle = line % 3 == 0 ? below(6283) / 1000 : kRightAngle * below(4);
        DrawLine(image, below(width), below(height), angle, below(width / 8), 3 + static_cast<int>(below(6)));
    }
    return image;
}

double Seconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

/// Neither side may work in memory that the other has touched.
double TimePlainWrite(std::size_t bytes) {
    Objects::ObjModel::ReleaseKeptBlock();
    const auto start = std::chrono::steady_clock::now();
    const Common::PixelBlock block = Common::NewBlock(bytes);
    std::memset(block.get(), 0xFF, bytes);
    benchmark::ClobberMemory();
    return Seconds(std::chrono::steady_clock::now() - start);
}

double TimeLoad(const KString& name) {
    static OIIOImageHandler handler;
    Objects::ObjModel::ReleaseKeptBlock();
    const auto start = std::chrono::steady_clock::now();
    ImageDescription desc;
    IMemoryWrapper<void>* block = handler.LoadTexture(desc, name, 0, 0, 1, kUnknown, 0, kTopLeft, nullptr);
    if (block == nullptr) throw std::runtime_error("cannot load");
    const double seconds = Seconds(std::chrono::steady_clock::now() - start);
    block->Delete();
    return seconds;
}

void Load(benchmark::State& state, const Bitmap& image, const Legacy::ByteBuilder& bytes) {
    const File file(bytes.Bytes());
    const std::int64_t pixels = std::int64_t{image.width} * image.height;
    double load = 0, write = 0;
    for (auto _ : state) {
        write += TimePlainWrite(static_cast<std::size_t>(pixels) * 4);
        const double seconds = TimeLoad(file.Name());
        load += seconds;
        state.SetIterationTime(seconds);
    }
    state.SetItemsProcessed(state.iterations() * pixels);
    state.counters["write_ms"] = 1000 * write / static_cast<double>(state.iterations());
    state.counters["ratio"] = load / write;
}

void LoadCals(benchmark::State& state) {
    const Bitmap image = Drawing(20'000, 14'000);
    Load(state, image, Legacy::CalsFile(image));
}

void LoadRlc(benchmark::State& state) {
    const Bitmap image = Drawing(8192, 8192);
    Load(state, image, Legacy::RlcFile(image));
}

/// The rows alone, without their expansion: "items" are pixels, as in the loads.
void DecodeFax(benchmark::State& state, Ccitt::Mode mode, std::vector<unsigned char> (*encode)(const Bitmap&)) {
    const Bitmap image = Drawing(19'866, 28'087);
    const std::vector<unsigned char> data = encode(image);
    std::vector<unsigned char> rows(image.bytes.size());
    for (auto _ : state) {
        ByteSource source{std::span<const unsigned char>(data)};
        Ccitt::Decoder decoder(source, image.width, mode, Ccitt::BitOrder::kMostSignificantFirst);
        if (decoder.DecodeRows(rows) != Ccitt::Result::kDecoded) return state.SkipWithError("cannot decode");
    }
    if (rows != image.bytes) state.SkipWithError("decoded wrongly");
    state.SetItemsProcessed(state.iterations() * std::int64_t{image.width} * image.height);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(data.size()));
}

BENCHMARK(LoadCals)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(LoadRlc)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK_CAPTURE(DecodeFax, group4, Ccitt::Mode::kGroup4, Legacy::EncodeGroup4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DecodeFax, group3, Ccitt::Mode::kGroup3, Legacy::EncodeGroup3)->Unit(benchmark::kMillisecond);

}  // namespace
