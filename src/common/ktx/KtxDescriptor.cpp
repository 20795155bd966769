#include "common/ktx/KtxDescriptor.h"

#include "common/PixelFormats.h"
#include "common/SrgbFormats.h"
#include "common/ktx/LittleBytes.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace Kavra::Devices::Ktx {

namespace {

using Common::ElementType;
using Common::PixelFormat;

enum Model : std::uint8_t {
    kModelRgbsda = 1,
    kModelBC1A = 128,
    kModelBC2 = 129,
    kModelBC3 = 130,
    kModelBC4 = 131,
    kModelBC5 = 132,
    kModelBC6H = 133,
    kModelBC7 = 134,
};
enum Channel : std::uint8_t { kRed = 0, kGreen = 1, kBlue = 2, kAlpha = 15, kColour = 0, kAlphaPresent = 1 };
enum Qualifier : std::uint8_t { kLinear = 0x10, kSigned = 0x40, kFloat = 0x80 };

constexpr std::uint8_t kVersion = 2;  // of the descriptor block, in edition 1.3
constexpr std::uint8_t kBt709 = 1, kTransferLinear = 1, kTransferSrgb = 2;
constexpr std::uint8_t kFlagPremultiplied = 1;
constexpr std::size_t kBlockBytes = 24, kSampleBytes = 16, kSizeBytes = 4;
constexpr unsigned kHalfBits = 64, kWholeBits = 128;  // of a block

struct Sample {
    unsigned offset = 0;  ///< in bits
    unsigned bits = 0;
    unsigned channel = 0;
    unsigned qualifiers = 0;
};

struct BlockRow {
    EFormat format;
    Model model;
    std::uint8_t qualifiers;
    std::uint8_t count;
    Sample samples[2];
};

constexpr BlockRow kBlockRows[] = {
    {kBC1, kModelBC1A, 0, 1, {{0, kHalfBits, kAlphaPresent}}},
    {kBC2, kModelBC2, 0, 2, {{0, kHalfBits, kAlpha}, {kHalfBits, kHalfBits, kColour}}},
    {kBC3, kModelBC3, 0, 2, {{0, kHalfBits, kAlpha}, {kHalfBits, kHalfBits, kColour}}},
    {kBC4, kModelBC4, 0, 1, {{0, kHalfBits, kRed}}},
    {kBC4Snorm, kModelBC4, kSigned, 1, {{0, kHalfBits, kRed}}},
    {kBC5, kModelBC5, 0, 2, {{0, kHalfBits, kRed}, {kHalfBits, kHalfBits, kGreen}}},
    {kBC5Snorm, kModelBC5, kSigned, 2, {{0, kHalfBits, kRed}, {kHalfBits, kHalfBits, kGreen}}},
    {kBC6H, kModelBC6H, kFloat, 1, {{0, kWholeBits, kColour}}},
    {kBC6HSigned, kModelBC6H, kFloat | kSigned, 1, {{0, kWholeBits, kColour}}},
    {kBC7, kModelBC7, 0, 1, {{0, kWholeBits, kColour}}},
};

std::vector<Sample> SamplesOf(const PixelFormat& facts) {
    const unsigned bits = 8U * static_cast<unsigned>(Common::BytesOf(facts.element));
    const bool isFloat = facts.element == ElementType::kHalf || facts.element == ElementType::kFloat;
    const unsigned channels[] = {facts.blueFirst ? kBlue : kRed, kGreen, facts.blueFirst ? kRed : kBlue, kAlpha};
    std::vector<Sample> samples;
    samples.reserve(std::size(channels));
    for (unsigned c = 0; c < static_cast<unsigned>(facts.channels); ++c)
        samples.push_back({c * bits, bits, channels[c], isFloat ? kFloat | kSigned : 0U});
    return samples;
}

/// The stored values that stand for the ends of the range, floats as their bits.
struct Range {
    std::uint32_t lower, upper;
};

Range RangeOf(const Sample& sample) {
    const bool isSigned = (sample.qualifiers & kSigned) != 0;
    if ((sample.qualifiers & kFloat) != 0)
        return {isSigned ? std::bit_cast<std::uint32_t>(-1.0F) : 0, std::bit_cast<std::uint32_t>(1.0F)};
    // Of blocks, which have more than 32 bits, the ends of 32.
    const std::uint32_t all = sample.bits >= 32 ? ~0U : (1U << sample.bits) - 1;
    if (isSigned) return {~(all >> 1), all >> 1};
    return {0, all};
}

void AddSample(LittleBytes& bytes, const Sample& sample, bool isSrgb) {
    const bool isLinear = isSrgb && sample.channel == kAlpha;
    bytes.Add16(sample.offset);
    bytes.Add8(sample.bits - 1);
    bytes.Add8(sample.channel | sample.qualifiers | (isLinear ? unsigned{kLinear} : 0U));
    bytes.Add32(0);  // position
    const Range range = RangeOf(sample);
    bytes.Add32(range.lower);
    bytes.Add32(range.upper);
}

}  // namespace

std::vector<unsigned char> ComposeDescriptor(EFormat format, const ColourMeaning& meaning) {
    const PixelFormat& facts = Common::FactsOf(format);
    const auto* const block = std::ranges::find(kBlockRows, Common::WithoutSrgb(format), &BlockRow::format);
    std::vector<Sample> samples = SamplesOf(facts);
    Model model = kModelRgbsda;
    if (block != std::end(kBlockRows)) {
        model = block->model;
        samples.assign(block->samples, block->samples + block->count);
        for (Sample& sample : samples)
            sample.qualifiers = block->qualifiers;
        if (block->format == kBC1 && meaning.isOpaque) samples[0].channel = kColour;
    }
    if (samples.empty()) return {};

    const std::size_t blockBytes = kBlockBytes + samples.size() * kSampleBytes;
    const std::uint8_t side = model == kModelRgbsda ? 0 : 3;  // less one
    const int unitBytes = model == kModelRgbsda ? facts.BytesPerPixel() : facts.bytesPerBlock;
    LittleBytes bytes;
    bytes.Add32(kSizeBytes + blockBytes);
    bytes.Add32(0);  // the basic block of Khronos
    bytes.Add16(kVersion);
    bytes.Add16(blockBytes);
    for (const std::uint8_t value : {std::uint8_t{model}, kBt709, meaning.isSrgb ? kTransferSrgb : kTransferLinear,
                                     meaning.isPremultiplied ? kFlagPremultiplied : std::uint8_t{0}})
        bytes.Add8(value);
    for (const std::uint8_t value : {side, side, std::uint8_t{0}, std::uint8_t{0}})
        bytes.Add8(value);
    bytes.Add32(static_cast<std::uint32_t>(unitBytes));  // of the first plane; there are no others
    bytes.Add32(0);
    for (const Sample& sample : samples)
        AddSample(bytes, sample, meaning.isSrgb);
    return std::move(bytes).Take();
}

std::optional<ColourMeaning> ParseDescriptor(std::span<const unsigned char> bytes) {
    constexpr std::size_t kKindAt = 4, kVersionAt = 8, kTransferAt = 14, kFlagsAt = 15;
    if (bytes.size() < kSizeBytes + kBlockBytes || Little32(bytes, 0) != bytes.size()) return std::nullopt;
    const std::uint32_t blockBytes = Little32(bytes, kVersionAt) >> 16;
    if (Little32(bytes, kKindAt) != 0 || blockBytes < kBlockBytes || blockBytes > bytes.size() - kSizeBytes)
        return std::nullopt;
    return ColourMeaning{.isSrgb = bytes[kTransferAt] == kTransferSrgb,
                         .isPremultiplied = (bytes[kFlagsAt] & kFlagPremultiplied) != 0};
}

}  // namespace Kavra::Devices::Ktx
