// Every conversion of the engine beside a plain copy that moves as many bytes, on all cores: counter `of_limit` is the
// time of the copy over the time of the conversion, 1 being the physical limit. And an icon beside a plain serial loop:
// `of_loop` is the time of the loop over the time of the conversion, more than 1 being faster than the loop. Items are
// pixels, bytes those read and written.

#include "Bench.h"
#include "common/ParallelRange.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <Imath/half.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

using namespace Kavra;
using namespace Kavra::Bench;
using namespace Kavra::Devices;
using Kavra::Utilities::AFormatConvertor;

constexpr std::size_t kLargeBytes = std::size_t{256} << 20;  // of the larger side
constexpr std::size_t kIconPixels = 64 * 64;

struct Pair {
    const char* name;
    EFormat from, to;
};

constexpr Pair kPairs[] = {
    {"L8_to_R16", kL8, kR16},
    {"L8_to_RG16", kL8, kR16G16},
    {"L8_to_RGBA8", kL8, kR8G8B8A8},
    {"R16F_to_RGBA16F", kR16F, kR16G16B16A16F},
    {"L16_to_RG16", kL16, kR16G16},
    {"L16_to_RGBA8", kL16, kR8G8B8A8},
    {"L16_to_RGBA16F", kL16, kR16G16B16A16F},
    {"L16_to_RGBA16", kL16, kR16G16B16A16},
    {"R32F_to_RGB32F", kR32F, kR32G32B32F},
    {"R32F_to_RGBA32F", kR32F, kR32G32B32A32F},
    {"RGBA8_to_L8", kR8G8B8A8, kL8},
    {"RGBA8_to_BGRA8", kR8G8B8A8, kB8G8R8A8},
    {"RGBA8_to_RGBA16F", kR8G8B8A8, kR16G16B16A16F},
    {"RGBA8_to_RGBA16", kR8G8B8A8, kR16G16B16A16},
    {"RGBA8_to_RGBA32F", kR8G8B8A8, kR32G32B32A32F},
    {"BGRA8_to_L8", kB8G8R8A8, kL8},
    {"BGRA8_to_RGBA16F", kB8G8R8A8, kR16G16B16A16F},
    {"BGRA8_to_RGBA16", kB8G8R8A8, kR16G16B16A16},
    {"BGRA8_to_RGBA32F", kB8G8R8A8, kR32G32B32A32F},
    {"RGBA16F_to_RGBA32F", kR16G16B16A16F, kR32G32B32A32F},
    {"RGBA16_to_RGBA8", kR16G16B16A16, kR8G8B8A8},
    {"RGBA16_to_BGRA8", kR16G16B16A16, kB8G8R8A8},
    {"RGBA16_to_RGBA16F", kR16G16B16A16, kR16G16B16A16F},
    {"RGBA16_to_RGBA32F", kR16G16B16A16, kR32G32B32A32F},
    {"RGBA32F_to_L8", kR32G32B32A32F, kL8},
    {"RGBA32F_to_L16", kR32G32B32A32F, kL16},
    {"RGBA32F_to_R16F", kR32G32B32A32F, kR16F},
    {"RGBA32F_to_R32F", kR32G32B32A32F, kR32F},
    {"RGBA32F_to_RG16", kR32G32B32A32F, kR16G16},
    {"RGBA32F_to_RG16F", kR32G32B32A32F, kR16G16F},
    {"RGBA32F_to_RG32F", kR32G32B32A32F, kR32G32F},
    {"RGBA32F_to_RGBA8", kR32G32B32A32F, kR8G8B8A8},
    {"RGBA32F_to_BGRA8", kR32G32B32A32F, kB8G8R8A8},
    {"RGBA32F_to_RGBA16", kR32G32B32A32F, kR16G16B16A16},
    {"RGBA32F_to_RGBA16F", kR32G32B32A32F, kR16G16B16A16F},
    {"RGBA32F_to_RGB32F", kR32G32B32A32F, kR32G32B32F},
    {"RGBA32F_to_RGBA32F", kR32G32B32A32F, kR32G32B32A32F},
};

void Convert(EFormat from, std::size_t bytes, void* source, EFormat to) {
    void* result = nullptr;
    std::size_t resultBytes = 0;
    OIIOImageHandler::FormatConversion(from, bytes, source, to, result, resultBytes);
    benchmark::DoNotOptimize(result);
    Objects::KavraDelete(result);
}

void CopyOnAllCores(unsigned char* out, const unsigned char* in, std::size_t bytes) {
    Common::ForEachRange(
        bytes, 0, [&](std::size_t begin, std::size_t end) { std::memcpy(out + begin, in + begin, end - begin); });
}

/// Pixels as files have them: floats between 0 and 1, bytes of all values.
Common::PixelBlock SourcePixels(EFormat format, std::size_t bytes) {
    Common::PixelBlock block = Common::NewBlock(bytes);
    const bool isFloat = format == kR32F || format == kR32G32B32A32F;
    const bool isHalf = format == kR16F || format == kR16G16B16A16F;
    for (std::size_t i = 0; i + 4 <= bytes; i += 4) {
        const auto noise = static_cast<std::uint32_t>(i * 2654435761U);
        const float unit = static_cast<float>(noise >> 8) / 16777216.0F;
        std::uint32_t word = noise;
        if (isFloat) std::memcpy(&word, &unit, 4);
        if (isHalf) word = half(unit).bits() * 0x10001U;
        std::memcpy(block.get() + i, &word, 4);
    }
    return block;
}

void LargeBlock(benchmark::State& state, const Pair& pair) {
    const auto from = static_cast<std::size_t>(AFormatConvertor::BytesPerPixel(pair.from));
    const auto to = static_cast<std::size_t>(AFormatConvertor::BytesPerPixel(pair.to));
    const std::size_t pixels = kLargeBytes / std::max(from, to);
    const std::size_t moved = pixels * (from + to);
    const Common::PixelBlock source = SourcePixels(pair.from, pixels * from);
    const Common::PixelBlock copyFrom = Common::NewZeroedBlock(moved / 2), copyTo = Common::NewZeroedBlock(moved / 2);
    std::memset(copyFrom.get(), 1, moved / 2);
    std::memset(copyTo.get(), 1, moved / 2);
    Convert(pair.from, pixels * from, source.get(), pair.to);  // touches the block that later ones are given

    const BestTimes best = Beside(
        state, [&] { Convert(pair.from, pixels * from, source.get(), pair.to); },
        [&] { CopyOnAllCores(copyTo.get(), copyFrom.get(), moved / 2); });
    CountItems(state, pixels);
    CountBytes(state, moved);
    state.counters["of_limit"] = best.limit / best.work;
    state.counters["GB_s"] = static_cast<double>(moved) / best.work / 1e9;
    state.counters["copy_GB_s"] = static_cast<double>(moved) / best.limit / 1e9;
}

// --- The icon and its plain loops ------------------------------------------------------------------------------------

using Loop = void (*)(unsigned char* out, const unsigned char* in);

void SwapLoop(unsigned char* out, const unsigned char* in) {
    for (std::size_t i = 0; i < 4 * kIconPixels; i += 4) {
        out[i] = in[i + 2];
        out[i + 1] = in[i + 1];
        out[i + 2] = in[i];
        out[i + 3] = in[i + 3];
    }
}

void SpreadLoop(unsigned char* out, const unsigned char* in) {
    for (std::size_t i = 0; i < kIconPixels; ++i) {
        out[4 * i] = out[4 * i + 1] = out[4 * i + 2] = in[i];
        out[4 * i + 3] = 255;
    }
}

void FloatLoop(unsigned char* out, const unsigned char* in) {
    for (std::size_t i = 0; i < 4 * kIconPixels; ++i)
        reinterpret_cast<float*>(out)[i] = in[i] * (1.0F / 255.0F);
}

void GreyLoop(unsigned char* out, const unsigned char* in) {
    for (std::size_t i = 0; i < kIconPixels; ++i) {
        const unsigned char* pixel = in + 4 * i;
        const float sum = (pixel[1] * 0.587F + pixel[0] * 0.299F) + pixel[2] * 0.114F;
        out[i] = static_cast<unsigned char>(static_cast<double>(sum) + 0.5);
    }
}

void PackLoop(unsigned char* out, const unsigned char* in) {
    const auto* floats = reinterpret_cast<const float*>(in);
    for (std::size_t i = 0; i < 4 * kIconPixels; ++i) {
        const float limited = floats[i] > 0.0F ? std::min(floats[i], 1.0F) : 0.0F;
        out[i] = static_cast<unsigned char>(limited * 255.0F + 0.5F);
    }
}

void Icon(benchmark::State& state, const Pair& pair, Loop loop) {
    const auto from = static_cast<std::size_t>(AFormatConvertor::BytesPerPixel(pair.from));
    const auto to = static_cast<std::size_t>(AFormatConvertor::BytesPerPixel(pair.to));
    const Common::PixelBlock source = SourcePixels(pair.from, kIconPixels * from);
    constexpr int kRepeats = 100;
    const BestTimes best = BesideTimed(
        state,
        [&] {
            return Seconds([&] {
                       for (int i = 0; i < kRepeats; ++i)
                           Convert(pair.from, kIconPixels * from, source.get(), pair.to);
                   }) /
                   kRepeats;
        },
        [&] {
            return Seconds([&] {
                       for (int i = 0; i < kRepeats; ++i) {
                           const Common::PixelBlock out = Common::NewBlock(kIconPixels * to);
                           loop(out.get(), source.get());
                           benchmark::DoNotOptimize(*out);
                           benchmark::ClobberMemory();
                       }
                   }) /
                   kRepeats;
        });
    CountItems(state, kIconPixels);
    CountBytes(state, kIconPixels * (from + to));
    state.counters["of_loop"] = best.limit / best.work;
}

const bool kRegistered = [] {
    for (const Pair& pair : kPairs) {
        benchmark::RegisterBenchmark(std::string("Conversion/256MB/") + pair.name,
                                     [&pair](benchmark::State& state) { LargeBlock(state, pair); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(12);
    }
    const auto icon = [](const Pair& pair, Loop loop) {
        benchmark::RegisterBenchmark(std::string("Conversion/Icon/") + pair.name,
                                     [pair, loop](benchmark::State& state) { Icon(state, pair, loop); })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond)
            ->Iterations(100);
    };
    icon({"RGBA8_to_BGRA8", kR8G8B8A8, kB8G8R8A8}, SwapLoop);
    icon({"L8_to_RGBA8", kL8, kR8G8B8A8}, SpreadLoop);
    icon({"RGBA8_to_RGBA32F", kR8G8B8A8, kR32G32B32A32F}, FloatLoop);
    icon({"RGBA8_to_L8", kR8G8B8A8, kL8}, GreyLoop);
    icon({"RGBA32F_to_RGBA8", kR32G32B32A32F, kR8G8B8A8}, PackLoop);
    return true;
}();

}  // namespace
