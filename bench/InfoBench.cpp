// `kavra info FILE`, start to end, beside a process that does nothing but open the same file with OpenImageIO.
//
// "ratio" is the best time of the one over that of the other; items are runs. Most of either is the library's own start.

#include "Bench.h"

#include <OpenImageIO/imageio.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr const char* kOpenVariable = "KAVRA_BENCH_OPEN";

/// This program, started with the variable, is the bare process: it opens the file and ends before `main`.
const bool opensBare = [] {
    const char* path = std::getenv(kOpenVariable);
    if (path == nullptr) return false;
    const auto input = OIIO::ImageInput::open(path);
    std::_Exit(input ? 0 : 1);
}();

void WritePng(const std::string& path) {
    const auto output = OIIO::ImageOutput::create(path);
    const std::vector<unsigned char> pixels(64 * 64 * 3, 90);
    if (!output || !output->open(path, OIIO::ImageSpec(64, 64, 3, OIIO::TypeUInt8)) ||
        !output->write_image(OIIO::TypeUInt8, pixels.data())) {
        throw std::runtime_error("cannot write " + path);
    }
    output->close();
}

void Info(benchmark::State& state) {
    const Kavra::Bench::TemporaryFolder folder;
    const std::string path = (folder / "small.png").string();
    WritePng(path);
    const auto timeBare = [&] {
        setenv(kOpenVariable, path.c_str(), 1);
        const double seconds = Kavra::Bench::TimeProcess({"/proc/self/exe"});
        unsetenv(kOpenVariable);
        return seconds;
    };
    timeBare();
    const auto best = Kavra::Bench::BesideTimed(
        state, [&] { return Kavra::Bench::TimeProcess({KAVRA_PROGRAM, "info", path}); }, timeBare);
    Kavra::Bench::CountItems(state, 1);
    state.counters["ratio"] = best.Ratio();
}
BENCHMARK(Info)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
