// Blocks of every format, of pictures of any size: decoded, and what they decode to compressed again, in any effort. The
// blocks that come of it are none of reserved modes and decode as well.
//
// An input is three bytes that say what - the format and the effort, the width, the height - and then the blocks, as often
// over as it takes.

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/TextureCompressor.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Bytes = std::vector<unsigned char>;

constexpr int kMaxSide = 64;
constexpr int kMaxCompressed = 256;  // pixels; more take long

void Require(bool holds) {
    if (!holds) std::abort();
}

std::size_t PitchOf(EFormat format, int width) {
    const int pixelBytes = Kavra::Utilities::AFormatConvertor::BytesPerPixel(DecodedFormat(format));
    return static_cast<std::size_t>(pixelBytes) * static_cast<std::size_t>(width);
}

/// Exactly as large as it has to be, so that a byte beyond it is seen.
Bytes Decompressed(EFormat format, const Bytes& blocks, int width, int height) {
    Bytes pixels(PitchOf(format, width) * static_cast<std::size_t>(height));
    Require(DecompressPicture(format, blocks.data(), width, height, pixels.data(), PitchOf(format, width)));
    return pixels;
}

bool IsReserved(EFormat format, unsigned char first) {
    constexpr unsigned kModeBits = 31, kReservedBits = 0x13;  // 10011, 10111, 11011, 11111
    if (format == kBC7) return first == 0;
    return (format == kBC6H || format == kBC6HSigned) && (first & kModeBits & kReservedBits) == kReservedBits;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::array kFormats = {kBC1, kBC2, kBC3, kBC4, kBC4Snorm, kBC5, kBC5Snorm, kBC6H, kBC6HSigned, kBC7};
    constexpr std::size_t kHead = 3, kEfforts = 3;
    if (size <= kHead) return 0;
    const EFormat format = kFormats[data[0] % kFormats.size()];
    const auto effort = static_cast<ECompressionEffort>(data[0] / kFormats.size() % kEfforts);
    const int width = 1 + data[1] % kMaxSide, height = 1 + data[2] % kMaxSide;
    const std::span input(data + kHead, size - kHead);
    Bytes blocks(BlockBytes(format, width, height));
    for (std::size_t i = 0; i < blocks.size(); ++i)
        blocks[i] = input[i % input.size()];
    const Bytes pixels = Decompressed(format, blocks, width, height);
    if (width * height > kMaxCompressed) return 0;

    CompressionOptions options;
    options.effort = effort;
    Bytes again(blocks.size());
    Require(CompressPicture(DecodedFormat(format), pixels.data(), PitchOf(format, width), width, height, format,
                            again.data(), options));
    const std::size_t blockBytes = BlockBytes(format, 1, 1);
    for (std::size_t i = 0; i < again.size(); i += blockBytes)
        Require(!IsReserved(format, again[i]));
    (void)Decompressed(format, again, width, height);
    return 0;
}
