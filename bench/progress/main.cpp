/// The longest time between two questions whether to stop, and how soon a stop is honoured:  pauses MODULE FOLDER [SIDE]

#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/MipChain.h>
#include <kavra/devices/ProgressScope.h>
#include <kavra/devices/Resampler.h>
#include <kavra/devices/TextureCompressor.h>
#include <kavra/devices/TextureFile.h>
#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using namespace Kavra;
using namespace Kavra::Devices;

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

double Milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

/// Notes the pauses; stops at a fraction of the first stage, and notes when.
class Pauses final : public IProgress {
public:
    explicit Pauses(float stopAt = 2) : mStopAt(stopAt) {}
    bool Progress(EProgressStage stage, float fraction) override {
        Note();
        mFirst = calls++ == 0 ? stage : mFirst;
        if (stage != mFirst || fraction < mStopAt) return true;
        stopped = Clock::now();
        return false;
    }
    void Note() {
        const auto now = Clock::now();
        longest = std::max(longest, Milliseconds(now - mLast));
        mLast = now;
    }
    double longest = 0;
    int calls = 0;
    Clock::time_point stopped;

private:
    float mStopAt;
    EProgressStage mFirst = kProgressReading;
    Clock::time_point mLast = Clock::now();
};

void Measure(const char* name, const std::function<bool()>& work) {
    auto begun = Clock::now();
    bool isDone = work();
    const double plain = Milliseconds(Clock::now() - begun);
    Pauses pauses;
    begun = Clock::now();
    {
        const ProgressScope scope(pauses);
        isDone = work() && isDone;
    }
    const double watched = Milliseconds(Clock::now() - begun);
    pauses.Note();
    Pauses stopping(0.3F);
    {
        const ProgressScope scope(stopping);
        isDone = !work() && isDone;
    }
    const double stop = Milliseconds(Clock::now() - stopping.stopped);
    std::printf("%-22s %9.0f %9.0f %7d %9.1f %9.1f%s\n", name, plain, watched, pauses.calls, pauses.longest, stop,
                isDone ? "" : "  FAILED");
    std::fflush(stdout);
}

/// Hills with some noise: files of a photograph's size.
Bytes Picture(int side) {
    Bytes pixels(std::size_t{4} * static_cast<unsigned>(side) * static_cast<unsigned>(side));
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        const auto x = static_cast<double>(i / 4 % static_cast<unsigned>(side));
        const auto y = static_cast<double>(i / 4 / static_cast<unsigned>(side));
        const double hill = 100 + 60 * std::sin(x / 97) + 60 * std::cos(y / 131);
        for (std::size_t channel = 0; channel < 3; ++channel) {
            state = state * 1664525U + 1013904223U;
            pixels[i + channel] = static_cast<unsigned char>(hill + static_cast<double>(state >> 28) + 8.0 * channel);
        }
        pixels[i + 3] = 255;
    }
    return pixels;
}

bool Load(IImageHandler& handler, const KString& path, int side = 0, EFormat format = kUnknown) {
    ImageDescription desc;
    auto* const block = handler.LoadTexture(desc, path, side, side, 1, format, false, 0, kTopLeft, nullptr);
    if (block != nullptr) block->Delete();
    return block != nullptr;
}

bool Save(IImageHandler& handler, const KString& path, const Bytes& pixels, int side) {
    ImageDescription desc;
    desc.width = desc.height = side;
    desc.depth = 1;
    desc.format = kR8G8B8A8;
    desc.rowPitch = 4 * side;
    desc.textureType = kTexture2D;
    return handler.SaveTexture(path, desc, pixels.data());
}

void MeasureFiles(IImageHandler& handler, const std::string& folder, const Bytes& pixels, int side) {
    for (const char* const type : {"png", "tif", "jpg", "exr", "dds"}) {
        const KString path(OS::FromUtf8((folder + "/a." + type).c_str()).c_str());
        Measure((std::string("save ") + type).c_str(), [&] { return Save(handler, path, pixels, side); });
        if (!Save(handler, path, pixels, side)) continue;
        Measure((std::string("load ") + type).c_str(), [&] { return Load(handler, path); });
        if (type == std::string("png")) {
            Measure("load png at 1000", [&] { return Load(handler, path, std::max(side / 10, 1)); });
            Measure("load png as floats", [&] { return Load(handler, path, 0, kR32G32B32A32F); });
        }
        std::remove((folder + "/a." + type).c_str());
    }
}

void MeasureWork(const Bytes& pixels, int side) {
    const int small = std::max(side / 4, 1);
    const auto pitch = std::size_t{4} * static_cast<unsigned>(side),
               toPitch = std::size_t{4} * static_cast<unsigned>(small);
    Bytes out(pixels.size() + pixels.size() / 2);
    Measure("resize to a quarter",
            [&] { return ResamplePicture({}, pixels.data(), pitch, side, side, out.data(), toPitch, small, small); });
    for (const auto& [name, effort] :
         {std::pair("BC7 fast", kCompressionFast), std::pair("BC7 good", kCompressionGood)}) {
        CompressionOptions options;
        options.effort = effort;
        Measure(name, [&] {
            return CompressPicture(kR8G8B8A8, pixels.data(), pitch, side, side, kBC7, out.data(), options);
        });
    }
    TextureShape shape;
    shape.format = kR8G8B8A8;
    shape.width = shape.height = side;
    shape.levels = FullTextureLevels(side, side);
    Measure("levels", [&] { return BuildMipChain(shape, pixels.data(), out.data()); });
}

}  // namespace

int main(int argc, char** argv) {
    void* const module = argc > 2 ? dlopen(argv[1], RTLD_NOW) : nullptr;
    if (module == nullptr) return std::fputs("usage: pauses MODULE FOLDER [SIDE]\n", stderr), 2;
    reinterpret_cast<bool (*)()>(dlsym(module, "KavraInitialize"))();
    auto* const handler =
        dynamic_cast<IImageHandler*>(Objects::ObjModel::Factory().CloneObject(Objects::Intern(L"ImageHandlerOIIO")));
    const int side = argc > 3 ? std::max(std::atoi(argv[3]), 1) : 10000;
    const Bytes pixels = Picture(side);
    std::puts("                        plain ms   watched  asked   longest   stop ms");
    MeasureFiles(*handler, argv[2], pixels, side);
    MeasureWork(pixels, side);
}
