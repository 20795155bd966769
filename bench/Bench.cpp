#include "Bench.h"

#include "common/FileHandle.h"

#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <fcntl.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace Kavra::Bench {

using namespace Devices;

namespace {

/// A figure of this process in MB, as the system tells it.
double StatusMegabytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ":")) return std::strtod(line.c_str() + name.size() + 1, nullptr) / 1024;
    }
    return 0;
}

double MegabytesAtFirst() {
    static const double megabytes = StatusMegabytes("VmRSS");
    return megabytes;
}

}  // namespace

double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double TimeProcess(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

    int status = 1;
    const double seconds = Seconds([&] {
        pid_t child = 0;
        if (posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environ) == 0)
            waitpid(child, &status, 0);
    });
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0) throw std::runtime_error(arguments[0] + " failed");
    return seconds;
}

void StartGrowth() {
    Objects::ObjModel::ReleaseKeptBlock();
    malloc_trim(0);
    MegabytesAtFirst();
    std::ofstream("/proc/self/clear_refs") << "5";
}

double GrowthMegabytes() {
    return StatusMegabytes("VmHWM") - MegabytesAtFirst();
}

double TimeBlockWrite(std::size_t bytes, Memory memory) {
    if (memory == Memory::kFresh) Objects::ObjModel::ReleaseKeptBlock();
    return Seconds([bytes] {
        const Common::PixelBlock block = Common::NewBlock(bytes);
        std::memset(block.get(), 0x55, bytes);
        benchmark::DoNotOptimize(block.get());
    });
}

double TimePlainRead(const std::filesystem::path& path) {
    return Seconds([&path] {
        const Common::FileHandle file(std::fopen(path.c_str(), "rb"));
        std::vector<char> buffer(std::size_t{1} << 20);
        while (file && std::fread(buffer.data(), 1, buffer.size(), file.get()) > 0)
            benchmark::DoNotOptimize(buffer.data());
    });
}

Load TimeLoad(const std::filesystem::path& path, const LoadWish& wish) {
    static OIIOImageHandler handler;
    const Objects::KString name = Wide(path);
    if (wish.memory == Memory::kFresh) Objects::ObjModel::ReleaseKeptBlock();
    ImageDescription desc;
    const double seconds = Seconds([&] {
        IMemoryWrapper<void>* block =
            handler.LoadTexture(desc, name, wish.width, wish.height, 1, kUnknown, wish.frame, kTopLeft, nullptr);
        if (block == nullptr) throw std::runtime_error("cannot load " + path.string());
        block->Delete();
    });
    return {seconds, desc};
}

std::vector<unsigned char> TexturedPixels(int width, int height, int channels) {
    std::vector<unsigned char> pixels;
    pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                   static_cast<std::size_t>(channels));
    unsigned random = 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            random = random * 1664525 + 1013904223;
            for (int c = 0; c < channels; ++c)
                pixels.push_back(static_cast<unsigned char>((x >> 4) + (y >> (3 + c)) + (random >> 30)));
        }
    }
    return pixels;
}

}  // namespace Kavra::Bench
