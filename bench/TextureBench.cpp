// Block compression of a photograph of 1024 x 1024 pixels, on one core and on all, and its decoding; a whole texture.
//
// "bits" is the width of the vectors that compression may use, 0 the machine's own.
//
// Items are pixels, bytes those of the pixels. Of compression the limit is a plain copy of the pixels, "times_copy" the
// best time over it, "psnr" in dB over the channels that the format keeps (of BC6H: of the bits of halves). Of decoding
// the limit is the image library reading the same blocks from a file, both on one core, and "times_library" the
// library's time over ours: larger is better. Of the chain, all levels of BC7 of 8192 x 8192 pixels in memory, the limit is
// the image library reading the largest from a PNG file ten times (one reading is timed), on all cores both.

#include "Bench.h"
#include "load/DdsFile.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/FormatFacts.h>
#include <kavra/devices/MipChain.h>
#include <kavra/devices/TextureCompressor.h>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>
#include <hwy/base.h>
#include <hwy/targets.h>
#include <tbb/global_control.h>

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace {

using namespace Kavra::Bench;
using namespace Kavra::Devices;
using Kavra::Tests::DdsFile;
using Bytes = std::vector<unsigned char>;

constexpr int kSide = 1024;
constexpr std::size_t kPixels = std::size_t{kSide} * kSide;

/// The sample photograph beside and below itself, with an alpha that follows its green.
const Bytes& Photograph() {
    static const Bytes pixels = [] {
        OIIO::ImageBuf photo(KAVRA_SOURCE_DIR "/examples/photo.jpg");
        Bytes rgb(photo.spec().image_pixels() * 3), all(kPixels * 4);
        if (!photo.get_pixels(photo.roi(), OIIO::TypeUInt8, rgb.data())) throw std::runtime_error(photo.geterror());
        const auto width = static_cast<std::size_t>(photo.spec().width),
                   height = static_cast<std::size_t>(photo.spec().height);
        for (std::size_t i = 0; i < kPixels; ++i) {
            const std::size_t from = 3 * (i / kSide % height * width + i % kSide % width);
            std::memcpy(&all[4 * i], &rgb[from], 3);
            all[4 * i + 3] = rgb[from + 1];
        }
        return all;
    }();
    return pixels;
}

/// The same as light up to 16.
const Bytes& Light() {
    static const Bytes light = [] {
        std::vector<float> values;
        for (const unsigned char value : Photograph())
            values.push_back(16 * std::pow(static_cast<float>(value) / 255, 2.2F));
        Bytes bytes(values.size() * sizeof(float));
        std::memcpy(bytes.data(), values.data(), bytes.size());
        return bytes;
    }();
    return light;
}

bool IsLight(EFormat format) {
    return format == kBC6H || format == kBC6HSigned;
}

EFormat SourceFormat(EFormat format) {
    return IsLight(format) ? kR32G32B32A32F : kR8G8B8A8;
}

const Bytes& SourceOf(EFormat format) {
    return IsLight(format) ? Light() : Photograph();
}

Bytes Compressed(EFormat format, ECompressionEffort effort) {
    Bytes blocks(BlockBytes(format, kSide, kSide));
    CompressionOptions options;
    options.effort = effort;
    options.withAlpha = format != kBC1;
    const Bytes& source = SourceOf(format);
    if (!CompressPicture(SourceFormat(format), source.data(), source.size() / kSide, kSide, kSide, format,
                         blocks.data(), options))
        throw std::runtime_error("cannot be compressed");
    return blocks;
}

Bytes NewPixels(EFormat format) {
    const int pixelBytes = Kavra::Utilities::AFormatConvertor::BytesPerPixel(DecodedFormat(format));
    return Bytes(kPixels * static_cast<std::size_t>(pixelBytes));
}

void Decompress(EFormat format, const Bytes& blocks, Bytes& pixels) {
    if (!DecompressPicture(format, blocks.data(), kSide, kSide, pixels.data(), pixels.size() / kSide))
        throw std::runtime_error("cannot be decompressed");
}

Bytes Decompressed(EFormat format, const Bytes& blocks) {
    Bytes pixels = NewPixels(format);
    Decompress(format, blocks, pixels);
    return pixels;
}

/// Of formats that decode to 8 bits.
double Psnr(EFormat format, const Bytes& blocks) {
    const Bytes shown = Decompressed(format, blocks);
    const std::size_t step = shown.size() / kPixels;
    const std::size_t channels = format == kBC4 ? 1 : format == kBC5 ? 2 : format == kBC1 ? 3 : 4;
    double sum = 0;
    for (std::size_t i = 0; i < kPixels; ++i) {
        for (std::size_t c = 0; c < channels; ++c) {
            const double off = double{0} + Photograph()[4 * i + c] - shown[step * i + c];
            sum += off * off;
        }
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(kPixels * channels) / sum);
}

/// Of halves as the numbers that their bits are, which go to 31743.
double PsnrOfBits(const Bytes& blocks) {
    const Bytes shown = Decompressed(kBC6H, blocks);
    std::vector<float> light(kPixels * 4);
    std::memcpy(light.data(), Light().data(), Light().size());
    double sum = 0;
    for (std::size_t i = 0; i < kPixels * 4; ++i) {
        if (i % 4 == 3) continue;
        std::uint16_t bits = 0;
        std::memcpy(&bits, &shown[2 * i], 2);
        const auto exact = hwy::BitCastScalar<std::uint16_t>(hwy::F16FromF32(light[i]));
        const double off = double{0} + bits - exact;
        sum += off * off;
    }
    return 10 * std::log10(31743.0 * 31743.0 * static_cast<double>(kPixels * 3) / sum);
}

/// Keeps to vectors of so many bits for as long as it lives; 0: the machine's own.
class VectorBits {
public:
    explicit VectorBits(std::int64_t bits) : mTarget(bits == 0 ? 0 : bits == 128 ? HWY_SSE4 : HWY_AVX2) {
        hwy::SetSupportedTargetsForTest(mTarget);
    }
    ~VectorBits() { hwy::SetSupportedTargetsForTest(0); }
    VectorBits(const VectorBits&) = delete;
    VectorBits& operator=(const VectorBits&) = delete;

    static bool AreThere(std::int64_t bits) {
        return bits == 0 || (HWY_ARCH_X86 && (hwy::SupportedTargets() & (bits == 128 ? HWY_SSE4 : HWY_AVX2)) != 0);
    }

private:
    std::int64_t mTarget;
};

void CompressBeside(benchmark::State& state, EFormat format, ECompressionEffort effort) {
    if (!VectorBits::AreThere(state.range(1))) return state.SkipWithError("the machine has no such vectors");
    const VectorBits bits(state.range(1));
    const auto threads = static_cast<std::size_t>(state.range(0));
    const tbb::global_control limit(
        tbb::global_control::max_allowed_parallelism,
        threads == 0 ? tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism) : threads);
    const Bytes& source = SourceOf(format);
    Bytes copy(source.size()), blocks;
    const BestTimes best = Beside(
        state, [&] { blocks = Compressed(format, effort); },
        [&] { std::memcpy(copy.data(), source.data(), source.size()); });
    CountItems(state, kPixels);
    CountBytes(state, source.size());
    state.counters["times_copy"] = best.Ratio();
    state.counters["psnr"] = IsLight(format) ? PsnrOfBits(blocks) : Psnr(format, blocks);
}

#define KAVRA_COMPRESS_BENCH(name, format, effort)          \
    BENCHMARK_CAPTURE(CompressBeside, name, format, effort) \
        ->ArgNames({"cores", "bits"})                       \
        ->Args({1, 128})                                    \
        ->Args({1, 256})                                    \
        ->Args({1, 0})                                      \
        ->Args({0, 0})                                      \
        ->UseManualTime()                                   \
        ->Unit(benchmark::kMillisecond)                     \
        ->MinTime(0.5)

#define KAVRA_COMPRESS_BENCHES(name, format)                     \
    KAVRA_COMPRESS_BENCH(name##_fast, format, kCompressionFast); \
    KAVRA_COMPRESS_BENCH(name##_good, format, kCompressionGood); \
    KAVRA_COMPRESS_BENCH(name##_best, format, kCompressionBest)

KAVRA_COMPRESS_BENCHES(bc1, kBC1);
KAVRA_COMPRESS_BENCHES(bc3, kBC3);
KAVRA_COMPRESS_BENCHES(bc4, kBC4);
KAVRA_COMPRESS_BENCHES(bc5, kBC5);
KAVRA_COMPRESS_BENCHES(bc6h, kBC6H);
KAVRA_COMPRESS_BENCHES(bc7, kBC7);

void DecompressBeside(benchmark::State& state, EFormat format, std::uint32_t dxgi) {
    const tbb::global_control single(tbb::global_control::max_allowed_parallelism, 1);
    OIIO::attribute("threads", 1);
    DdsFile file{.width = kSide, .height = kSide};
    file.Dxgi(dxgi);
    file.data = Compressed(format, kCompressionFast);
    const TemporaryFolder folder;
    const auto path = folder.Write("blocks.dds", file.Bytes());
    const OIIO::TypeDesc type = IsLight(format) ? OIIO::TypeHalf : OIIO::TypeUInt8;
    Bytes pixels = NewPixels(format), theirs(kPixels * 8);
    const auto byLibrary = [&] {
        const auto input = OIIO::ImageInput::open(path.string());
        if (!input || !input->read_image(0, 0, 0, -1, type, theirs.data())) throw std::runtime_error("cannot be read");
    };
    const BestTimes best = Beside(state, [&] { Decompress(format, file.data, pixels); }, byLibrary);
    CountItems(state, kPixels);
    CountBytes(state, pixels.size());
    state.counters["times_library"] = 1 / best.Ratio();
    OIIO::attribute("threads", 0);
}

#define KAVRA_DECOMPRESS_BENCH(name, format, dxgi)          \
    BENCHMARK_CAPTURE(DecompressBeside, name, format, dxgi) \
        ->UseManualTime()                                   \
        ->Unit(benchmark::kMillisecond)                     \
        ->MinTime(0.5)

KAVRA_DECOMPRESS_BENCH(bc1, kBC1, 71);
KAVRA_DECOMPRESS_BENCH(bc2, kBC2, 74);
KAVRA_DECOMPRESS_BENCH(bc3, kBC3, 77);
KAVRA_DECOMPRESS_BENCH(bc4, kBC4, 80);
KAVRA_DECOMPRESS_BENCH(bc5, kBC5, 83);
KAVRA_DECOMPRESS_BENCH(bc6h, kBC6H, 95);
KAVRA_DECOMPRESS_BENCH(bc7, kBC7, 98);

// --- A whole texture -------------------------------------------------------------------------------------------------

constexpr int kChainSide = 8192;

/// The photograph beside and below itself.
const Bytes& LargePhotograph() {
    static const Bytes pixels = [] {
        constexpr std::size_t kRow = std::size_t{kSide} * 4;
        Bytes all(std::size_t{kChainSide} * kChainSide * 4);
        for (std::size_t at = 0; at < all.size(); at += kRow)
            std::memcpy(&all[at], &Photograph()[at / (kRow * kChainSide / kSide) % kSide * kRow], kRow);
        for (std::size_t i = 3; i < all.size(); i += 4)
            all[i] = 255;
        return all;
    }();
    return pixels;
}

/// Compresses each level that is made.
class LevelCompressor final : public IMipSink {
public:
    explicit LevelCompressor(ECompressionEffort effort) { mOptions.effort = effort; }
    bool TakeLevel(const MipLevel& level) override {
        Bytes blocks(BlockBytes(kBC7Srgb, level.width, level.height));
        mBytes += blocks.size();
        return CompressPicture(kR8G8B8A8, level.pixels, std::size_t{4} * static_cast<std::size_t>(level.width),
                               level.width, level.height, kBC7Srgb, blocks.data(), mOptions);
    }
    std::size_t BytesMade() const { return mBytes; }

private:
    CompressionOptions mOptions;
    std::size_t mBytes = 0;
};

void TextureChain(benchmark::State& state, ECompressionEffort effort) {
    const TemporaryFolder folder;
    const std::string path = (folder.Path() / "photograph.png").string();
    const OIIO::ImageSpec layout(kChainSide, kChainSide, 4, OIIO::TypeUInt8);
    const auto output = OIIO::ImageOutput::create(path);
    if (!output || !output->open(path, layout) || !output->write_image(OIIO::TypeUInt8, LargePhotograph().data()) ||
        !output->close())
        throw std::runtime_error("the PNG file cannot be written");
    Bytes read(LargePhotograph().size());
    const auto readOnce = [&] {
        const auto input = OIIO::ImageInput::open(path);
        if (!input || !input->read_image(0, 0, 0, -1, OIIO::TypeUInt8, read.data()))
            throw std::runtime_error("the PNG file cannot be read");
    };
    TextureShape shape;
    shape.format = kR8G8B8A8;
    shape.isSrgb = true;
    shape.alpha = kTextureAlphaOpaque;
    shape.width = shape.height = kChainSide;
    shape.levels = FullTextureLevels(kChainSide, kChainSide);
    const void* const pictures[] = {LargePhotograph().data()};
    MipSource source;
    source.pictures = pictures;
    const auto makeChain = [&] {
        LevelCompressor compressor(effort);
        MipLevel largest;
        largest.width = largest.height = kChainSide;
        largest.pixels = pictures[0];
        if (!compressor.TakeLevel(largest) || !BuildMipChain(shape, source, compressor, MipOptionsFor(shape)))
            throw std::runtime_error("the chain cannot be made");
        benchmark::DoNotOptimize(compressor.BytesMade());
    };
    constexpr int kReadings = 10;
    const BestTimes best =
        BesideTimed(state, [&] { return Seconds(makeChain); }, [&] { return kReadings * Seconds(readOnce); });
    CountItems(state, TextureBytes(shape) / 4);
    CountBytes(state, TextureBytes(shape));
    state.counters["times_ten_readings"] = best.Ratio();
}

BENCHMARK_CAPTURE(TextureChain, fast, kCompressionFast)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(TextureChain, good, kCompressionGood)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
