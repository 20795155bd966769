// Thumbnails of many JPEGs. Items are pictures.
//
// `Thumbnails` loads 200 of 480 x 320 on one core, beside the same loads without a size; times are those of the
// processor, which other work on the machine changes least. "ratio" is the best time over that of the limit, "per_core_s"
// how many come of a second at best.
// `Sheet` is the command, start to end, on 100 of camera size, beside the image library decoding them on all cores;
// "fast" is whether JPEGs may be decoded in part.

#include "Bench.h"
#include "Files.h"
#include "common/ParallelRange.h"

#include <kavra/devices/LoadPreferences.h>

#include <OpenImageIO/imageio.h>
#include <tbb/global_control.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using namespace Kavra;
using namespace Kavra::Bench;

/// Holds the loads of this thread to one core while it lives.
class OneCore {
public:
    OneCore() : mLimit(tbb::global_control::max_allowed_parallelism, 1) {
        OIIO::getattribute("threads", mThreads);
        OIIO::attribute("threads", 1);
    }
    ~OneCore() { OIIO::attribute("threads", mThreads); }
    OneCore(const OneCore&) = delete;
    OneCore& operator=(const OneCore&) = delete;

private:
    tbb::global_control mLimit;
    int mThreads = 0;
};

std::vector<fs::path> MakeJpegs(const std::string& prefix, int count, int width, int height) {
    std::vector<fs::path> paths;
    paths.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        paths.push_back(MakeFile(
            {.name = prefix + std::to_string(i) + ".jpg", .width = width, .height = height, .compression = "jpeg:90"}));
    }
    return paths;
}

double TimeLoads(const std::vector<fs::path>& paths, const LoadWish& wish) {
    const double before = ProcessorSeconds();
    for (const fs::path& path : paths)
        TimeLoad(path, wish);
    return ProcessorSeconds() - before;
}

void Thumbnails(benchmark::State& state) {
    const std::vector<fs::path> paths = MakeJpegs("small", 200, 480, 320);
    const auto side = static_cast<int>(state.range(0));
    Devices::LoadPreferences preferences;
    preferences.fast = state.range(1) != 0;
    const Devices::LoadPreferencesScope scope(preferences);
    const OneCore oneCore;
    const LoadWish wish{.width = side, .height = side};
    TimeLoads(paths, wish);
    const BestTimes best =
        BesideTimed(state, [&] { return TimeLoads(paths, wish); }, [&] { return TimeLoads(paths, {}); });
    CountItems(state, paths.size());
    state.counters["ratio"] = best.Ratio();
    state.counters["per_core_s"] = static_cast<double>(paths.size()) / best.work;
}

BENCHMARK(Thumbnails)
    ->ArgNames({"side", "fast"})
    ->ArgsProduct({{128, 256}, {0, 1}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2);

/// Eight different pictures in turn: the command looks at each file by itself.
std::vector<std::string> CameraFiles() {
    const std::vector<fs::path> different = MakeJpegs("camera", 8, 4000, 3000);
    std::vector<std::string> files;
    files.reserve(100);
    for (std::size_t i = 0; i < 100; ++i)
        files.push_back(different[i % different.size()].string());
    return files;
}

void Sheet(benchmark::State& state) {
    const std::vector<std::string> files = CameraFiles();
    std::vector<std::string> command{KAVRA_PROGRAM, "sheet", (FolderOfFiles() / "sheet.png").string()};
    command.insert(command.end(), files.begin(), files.end());
    if (state.range(0) == 0) command.emplace_back("--no-fast");
    const BestTimes best = Beside(
        state, [&] { TimeProcess(command); },
        [&] {
            Common::ForEachRange(files.size(), 1, [&](std::size_t begin, std::size_t end) {
                for (std::size_t i = begin; i < end; ++i)
                    ReadRows(files[i]);
            });
        });
    CountItems(state, files.size());
    state.counters["ratio"] = best.Ratio();
}

BENCHMARK(Sheet)->ArgName("fast")->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
