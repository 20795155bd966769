// `kavra info FILE`, start to end, beside a process that does nothing but open the same file with OpenImageIO.
//
// "ratio" is the time of the one over the time of the other. Most of either is the library's own start.

#include <OpenImageIO/imageio.h>
#include <benchmark/benchmark.h>

#include <sys/wait.h>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace {

constexpr const char* kOpenVariable = "KAVRA_BENCH_OPEN";

/// This program, started with the variable, is the bare process: it opens the file and ends before `main`.
const bool opensBare = [] {
    const char* path = std::getenv(kOpenVariable);
    if (path == nullptr) return false;
    const auto input = OIIO::ImageInput::open(path);
    std::_Exit(input ? 0 : 1);
}();

/// Runs a program without its output; the seconds from start to end.
double TimeProcess(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = 1;
    const int spawned = posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    if (spawned == 0) waitpid(child, &status, 0);
    const auto end = std::chrono::steady_clock::now();
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0) throw std::runtime_error(arguments[0] + " failed");
    return std::chrono::duration<double>(end - start).count();
}

std::string MakePng() {
    std::string path = (std::filesystem::temp_directory_path() / ("kavra-bench-" + std::to_string(getpid()) + ".png"));
    const auto output = OIIO::ImageOutput::create(path);
    const std::vector<unsigned char> pixels(64 * 64 * 3, 90);
    if (!output || !output->open(path, OIIO::ImageSpec(64, 64, 3, OIIO::TypeUInt8)) ||
        !output->write_image(OIIO::TypeUInt8, pixels.data())) {
        throw std::runtime_error("cannot write " + path);
    }
    output->close();
    return path;
}

void Info(benchmark::State& state) {
    const std::string path = MakePng();
    const auto timeBare = [&] {
        setenv(kOpenVariable, path.c_str(), 1);
        const double seconds = TimeProcess({"/proc/self/exe"});
        unsetenv(kOpenVariable);
        return seconds;
    };
    timeBare();
    double info = 0, bare = 0;
    for (auto _ : state) {
        bare += timeBare();
        const double seconds = TimeProcess({KAVRA_PROGRAM, "info", path});
        info += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["bare_ms"] = 1000 * bare / static_cast<double>(state.iterations());
    state.counters["ratio"] = info / bare;
    std::filesystem::remove(path);
}
BENCHMARK(Info)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
