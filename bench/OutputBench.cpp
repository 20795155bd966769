// Pictures on their way out beside a plain copy of the same bytes, or the bare library call, in the same run: counter
// `times_copy` or `times_library` is the best time of the operation over the best time of the other. And the memory
// that the line writer takes on the way to pictures of different heights. Bytes are those of the pixels that go in.

#include "Bench.h"
#include "common/HostObject.h"
#include "output/FloatsAsBytes.h"

#include <kavra/devices/IWriteImageLineProvider.h>
#include <kavra/devices/MemoryTarget.h>
#include <kavra/objects/OS.h>
#include <kavra/oiio/OIIOImage.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <OpenImageIO/imagebufalgo.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;
using namespace Kavra::Devices;

using Block = Common::HostObject<IMemoryWrapper<void>>;
using Bytes = std::vector<unsigned char>;

/// Reports the best time of the work over that of the copy, and bytes a second.
template <class Work, class Copy>
void BesideCopy(benchmark::State& state, std::size_t bytes, const Work& work, const Copy& copy) {
    state.counters["times_copy"] = Beside(state, work, copy).Ratio();
    CountBytes(state, bytes);
}

// --- Image objects: a rectangle of 4 MB in images of 8 bits a channel ------------------------------------------------

constexpr int kSide = 1000, kPixelBytes = 4;
constexpr std::size_t kRectangleBytes = std::size_t{kSide} * kSide * kPixelBytes;

void CopyRectangle(unsigned char* to, std::size_t toPitch, const unsigned char* from, std::size_t fromPitch) {
    for (std::size_t y = 0; y < kSide; ++y)
        std::memcpy(to + y * toPitch, from + y * fromPitch, std::size_t{kSide} * kPixelBytes);
}

struct TwoImages {
    explicit TwoImages(int side)
        : target(side, side, kR8G8B8A8),
          pitch(static_cast<std::size_t>(side) * kPixelBytes),
          bytes(pitch * static_cast<std::size_t>(side), 1),
          otherBytes(bytes),
          image(&target),
          source(&target) {}

    MemoryTarget target;
    std::size_t pitch;
    Bytes bytes, otherBytes;
    OIIOImage image, source;
};

void ImagePaste(benchmark::State& state) {
    TwoImages images(static_cast<int>(state.range(0)));
    BesideCopy(
        state, kRectangleBytes, [&] { images.image.Paste(&images.source, 0, 0, kSide, kSide, 100, 100); },
        [&] {
            CopyRectangle(&images.bytes[100 * images.pitch], images.pitch, images.otherBytes.data(), images.pitch);
        });
}

void ImageLoadRect(benchmark::State& state) {
    TwoImages images(static_cast<int>(state.range(0)));
    BesideCopy(
        state, kRectangleBytes,
        [&] {
            ImageDescription desc;
            const Block block(
                images.image.LoadRect(desc, {100, 100}, {kSide, kSide}, {kSide, kSide}, kR8G8B8A8, kTopLeft));
        },
        [&] {
            CopyRectangle(images.bytes.data(), std::size_t{kSide} * kPixelBytes, &images.otherBytes[100 * images.pitch],
                          images.pitch);
        });
}

BENCHMARK(ImagePaste)->ArgName("side")->Arg(1200)->Arg(8000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(ImageLoadRect)->ArgName("side")->Arg(1200)->Arg(8000)->UseManualTime()->Unit(benchmark::kMicrosecond);

/// A copy of a target's pixels; those that are blue first are made red first on the way.
void ImageFromTarget(benchmark::State& state) {
    MemoryTarget target(kSide, kSide, state.range(0) != 0 ? kB8G8R8A8 : kR8G8B8A8);
    Bytes bytes(std::size_t{kSide} * kSide * kPixelBytes, 1), copy(bytes);
    constexpr std::size_t kPitch = std::size_t{kSide} * kPixelBytes;
    BesideCopy(
        state, bytes.size(), [&] { OIIOImage image(static_cast<ATarget*>(&target)); },
        [&] { CopyRectangle(copy.data(), kPitch, bytes.data(), kPitch); });
}

/// Pixels that are blue first beside the same ones red first, to a file without compression that is there already.
void SaveBlueFirst(benchmark::State& state) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "kavra-bench-save.bmp";
    const Objects::KString name(path.wstring().c_str());
    OIIOImageHandler handler;
    const Bytes bytes(std::size_t{kSide} * kSide * kPixelBytes, 1);
    ImageDescription desc;
    desc.width = desc.height = kSide;
    desc.depth = 1;
    desc.rowPitch = kSide * kPixelBytes;
    desc.textureType = kTexture2D;
    const auto save = [&](EFormat format) {
        desc.format = format;
        if (!handler.SaveTexture(name, desc, bytes.data())) state.SkipWithError("not saved");
    };
    const BestTimes best = Beside(state, [&] { save(kB8G8R8A8); }, [&] { save(kR8G8B8A8); });
    CountBytes(state, bytes.size());
    state.counters["times_red_first"] = best.Ratio();
    std::filesystem::remove(path);
}

BENCHMARK(ImageFromTarget)->ArgName("blue_first")->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(SaveBlueFirst)->UseManualTime()->Unit(benchmark::kMicrosecond);

// --- Float targets as bytes: 12 megapixels ---------------------------------------------------------------------------

void FloatStaging(benchmark::State& state) {
    const auto channels = static_cast<std::size_t>(state.range(0));
    const bool stretch = state.range(1) != 0;
    constexpr std::size_t kWidth = 4000, kHeight = 3000;
    std::vector<float> floats(kWidth * kHeight * channels), copy(floats.size(), 1);
    for (std::size_t i = 0; i < floats.size(); ++i)
        floats[i] = static_cast<float>(i * 2654435761U % 1000003) / 900000.0F;
    const FloatRows rows{.first = reinterpret_cast<const unsigned char*>(floats.data()),
                         .pitch = kWidth * channels * sizeof(float),
                         .width = kWidth,
                         .height = kHeight,
                         .channels = channels};
    BesideCopy(
        state, floats.size() * sizeof(float), [&] { benchmark::DoNotOptimize(FloatsAsBytes(rows, stretch).get()); },
        [&] { std::memcpy(copy.data(), floats.data(), floats.size() * sizeof(float)); });
}

BENCHMARK(FloatStaging)
    ->ArgNames({"channels", "stretch"})
    ->ArgsProduct({{1, 2, 4}, {0, 1}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// --- Resize ----------------------------------------------------------------------------------------------------------

constexpr int kWide = 4000, kHigh = 3000;

struct Resizing {
    explicit Resizing(vec3<int> dstSize)
        : size(dstSize), source(std::size_t{kWide} * kHigh * kPixelBytes, 7), copy(source.size(), 1) {}

    Block Run(EResizeMethod method, EImageFilterType filter = kFilterNearest) {
        int pitch = 0;
        return Block(handler.Resize(method, source.data(), source.size(), kWide * kPixelBytes, {kWide, kHigh, 1},
                                    kR8G8B8A8, kTexture2D, size, pitch, filter));
    }

    OIIOImageHandler handler;
    vec3<int> size;
    Bytes source, copy;
};

void ResizeCopy(benchmark::State& state) {
    Resizing resizing({kWide, kHigh, 1});
    BesideCopy(
        state, resizing.source.size(), [&] { resizing.Run(kResizeCopy); },
        [&] { std::memcpy(resizing.copy.data(), resizing.source.data(), resizing.source.size()); });
}

void ResizeCrop(benchmark::State& state) {
    Resizing resizing({kWide - 100, kHigh - 100, 1});
    const std::size_t bytes = std::size_t{kWide - 100} * (kHigh - 100) * kPixelBytes;
    BesideCopy(
        state, bytes, [&] { resizing.Run(kResizeCropOrPad); },
        [&] { std::memcpy(resizing.copy.data(), resizing.source.data(), bytes); });
}

void ResizeFilter(benchmark::State& state) {
    Resizing resizing({kWide / 4, kHigh / 4, 1});
    const BestTimes best = Beside(
        state, [&] { resizing.Run(kResizeFilter, kFilterMitchell); },
        [&] {
            const OIIO::ImageBuf from(OIIO::ImageSpec(kWide, kHigh, 4, OIIO::TypeUInt8), resizing.source.data());
            OIIO::ImageBuf to(OIIO::ImageSpec(kWide / 4, kHigh / 4, 4, OIIO::TypeUInt8), resizing.copy.data());
            OIIO::ImageBufAlgo::resize(to, from, {{"filtername", "mitchell"}});
        });
    CountItems(state, std::size_t{kWide} * kHigh);
    CountBytes(state, resizing.source.size());
    state.counters["times_library"] = best.Ratio();
}

BENCHMARK(ResizeCopy)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ResizeCrop)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ResizeFilter)->UseManualTime()->Unit(benchmark::kMillisecond);

// --- The line writer's memory ----------------------------------------------------------------------------------------

class Gradient final : public IWriteImageLineProvider {
public:
    explicit Gradient(std::size_t bytes) : mBytes(bytes) {}
    void FillLine(void* line) override {
        auto* const bytes = static_cast<unsigned char*>(line);
        for (std::size_t i = 0; i < mBytes; ++i)
            bytes[i] = static_cast<unsigned char>(i / 64 + mLine);
        ++mLine;
    }

private:
    std::size_t mBytes;
    std::size_t mLine = 0;
};

void LineWriterMemory(benchmark::State& state, const char* extension) {
    constexpr int kWidth = 8000;
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / (std::string("kavra-bench-lines.") + extension);
    const OIIOImageHandler handler;
    for (auto _ : state) {
        Gradient lines(kWidth * 4);
        StartGrowth();
        const bool written = handler.writeImageOneLineAtATime(OS::FromUtf8(path.c_str()).c_str(), 300, &lines, kWidth,
                                                              static_cast<int>(state.range(0)), 4);
        state.counters["growth_MB"] = GrowthMegabytes();
        if (!written) state.SkipWithError("not written");
    }
    CountBytes(state, std::size_t{kWidth} * 4 * static_cast<std::size_t>(state.range(0)));
    std::filesystem::remove(path);
}

const bool kRegistered = [] {
    for (const char* extension : {"tif", "png", "jpg", "bmp", "tga", "sgi", "exr"}) {
        benchmark::RegisterBenchmark(std::string("LineWriterMemory/") + extension, LineWriterMemory, extension)
            ->ArgName("height")
            ->Arg(4000)
            ->Arg(40000)
            ->Iterations(1)
            ->UseRealTime()
            ->Unit(benchmark::kSecond);
    }
    return true;
}();

}  // namespace
