// Rotating a 24-megapixel picture: into touched memory (beside a plain copy), and as a new image (beside the library's
// own operations, which do the same).

#include "Bench.h"
#include "load/geometry/PixelGrid.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <OpenImageIO/imagebufalgo.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Bench::CountBytes;

constexpr int kWidth = 6000, kHeight = 4000;

/// A picture of `pixelBytes` a pixel, and room for another.
struct Pictures {
    explicit Pictures(std::size_t pixelBytes) : pixelBytes(pixelBytes), from(Bytes(), 1), to(Bytes(), 2) {}
    std::size_t Bytes() const { return pixelBytes * kWidth * kHeight; }
    PixelGrid Grid() const {
        return {.first = reinterpret_cast<const unsigned char*>(from.data()),
                .columnStride = static_cast<std::ptrdiff_t>(pixelBytes),
                .rowStride = static_cast<std::ptrdiff_t>(pixelBytes * kWidth),
                .width = kWidth,
                .height = kHeight,
                .pixelBytes = pixelBytes};
    }

    std::size_t pixelBytes;
    std::vector<unsigned char> from, to;
};

void RotateCopy(benchmark::State& state) {
    Pictures pictures(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::memcpy(pictures.to.data(), pictures.from.data(), pictures.Bytes());
        benchmark::ClobberMemory();
    }
    CountBytes(state, pictures.Bytes());
}

void RotateTouched(benchmark::State& state) {
    Pictures pictures(static_cast<std::size_t>(state.range(0)));
    const PixelGrid rotated = Rotated(pictures.Grid(), static_cast<Rotation>(state.range(1)));
    for (auto _ : state) {
        CopyPixels(rotated, reinterpret_cast<unsigned char*>(pictures.to.data()));
        benchmark::ClobberMemory();
    }
    CountBytes(state, pictures.Bytes());
}

void RotateImage(benchmark::State& state) {
    Pictures pictures(4);
    const OIIO::ImageBuf image(OIIO::ImageSpec(kWidth, kHeight, 4, OIIO::TypeDesc::UINT8), pictures.from.data());
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            OIIOImageHandler::ReorientImage(image, static_cast<int>(state.range(0)), 1).initialized());
    }
    CountBytes(state, pictures.Bytes());
}

void LibraryRotate90(benchmark::State& state) {
    Pictures pictures(4);
    const OIIO::ImageBuf image(OIIO::ImageSpec(kWidth, kHeight, 4, OIIO::TypeDesc::UINT8), pictures.from.data());
    for (auto _ : state) {
        benchmark::DoNotOptimize(OIIO::ImageBufAlgo::rotate90(image).initialized());
    }
    CountBytes(state, pictures.Bytes());
}

constexpr auto kMilliseconds = benchmark::kMillisecond;

BENCHMARK(RotateCopy)->Arg(4)->UseRealTime()->Unit(kMilliseconds);
BENCHMARK(RotateTouched)
    ->ArgNames({"bytes", "rotation"})
    ->ArgsProduct({{1, 2, 3, 4, 8, 16},
                   {static_cast<int>(Rotation::kFlip), static_cast<int>(Rotation::kFlop),
                    static_cast<int>(Rotation::kRotate90)}})
    ->UseRealTime()
    ->Unit(kMilliseconds);
BENCHMARK(RotateImage)->ArgName("from")->DenseRange(1, 8)->UseRealTime()->Unit(kMilliseconds);
BENCHMARK(LibraryRotate90)->UseRealTime()->Unit(kMilliseconds);

}  // namespace
