#include "common/Boundary.h"
#include "common/KnownFields.h"
#include "common/WatchedRange.h"
#include "common/blocks/Bc6hEncoder.h"
#include "common/blocks/Bc7Encoder.h"
#include "common/blocks/BlockDecoders.h"
#include "common/blocks/BlockEncoders.h"
#include "common/blocks/BlockPixels.h"

#include <kavra/devices/TextureCompressor.h>

#include <algorithm>
#include <limits>

namespace Kavra::Devices {

namespace {

using Common::BlockEffort;
using Common::BlockPlaces;
using Common::BlockScale;
using Common::FactsOf;
using Common::PixelFormat;

/// `options` as far as its user knows them, with values that are none put right.
CompressionOptions Known(const CompressionOptions& options) {
    CompressionOptions known;
    Common::CopyKnownFields(options, known);
    if (known.effort != kCompressionFast && known.effort != kCompressionBest) known.effort = kCompressionGood;
    for (float& weight : known.weights)
        if (!(weight > 0) || weight > std::numeric_limits<float>::max()) weight = 1;
    return known;
}

BlockEffort EffortOf(ECompressionEffort effort) {
    return effort == kCompressionFast   ? BlockEffort::kFast
           : effort == kCompressionBest ? BlockEffort::kBest
                                        : BlockEffort::kGood;
}

BlockScale ScaleOf(EFormat format) {
    switch (format) {
        case kBC4Snorm:
        case kBC5Snorm:
            return BlockScale::kSigned;
        case kBC6H:
            return BlockScale::kHalfBits;
        case kBC6HSigned:
            return BlockScale::kSignedHalfBits;
        default:
            return BlockScale::kUnsigned;
    }
}

/// Encodes rows of blocks of one format.
class Encoder {
public:
    Encoder(EFormat format, const CompressionOptions& options, bool hasAlpha)
        : mFormat(format),
          mEffort(EffortOf(options.effort)),
          mCutoff(options.cutoff * 255),
          mHasAlpha(hasAlpha),
          mStride(static_cast<std::size_t>(FactsOf(format).bytesPerBlock)) {
        std::copy_n(options.weights, mWeights.size(), mWeights.begin());
    }

    /// `blocks` may be changed on the way.
    void Encode(std::span<float> blocks, unsigned char* out) const {
        const std::size_t count = blocks.size() / Common::kBlockFloats;
        const float* const pixels = blocks.data();
        if (!mHasAlpha) SetOpaque(blocks);
        const Common::BlockFit fit{mEffort, {mWeights[0], mWeights[1], mWeights[2]}};
        const BlockPlaces first{out, mStride}, second{out + 8, mStride};
        const bool isSigned = mFormat == kBC4Snorm || mFormat == kBC5Snorm || mFormat == kBC6HSigned;
        switch (mFormat) {
            case kBC1:
            case kBC1Srgb:
                if (mHasAlpha) {
                    CutAlpha(blocks);
                    return EncodeBc1Alpha(pixels, count, first, fit);
                }
                return EncodeBc1(pixels, count, first, fit);
            case kBC2:
            case kBC2Srgb:
                Common::EncodeBc2Alpha(pixels, count, first);
                return EncodeBc3Colour(pixels, count, second, fit);
            case kBC3:
            case kBC3Srgb:
                Common::EncodeBc4(pixels, count, 3, false, first, mEffort);
                return EncodeBc3Colour(pixels, count, second, fit);
            case kBC4:
            case kBC4Snorm:
                return Common::EncodeBc4(pixels, count, 0, isSigned, first, mEffort);
            case kBC5:
            case kBC5Snorm:
                Common::EncodeBc4(pixels, count, 0, isSigned, first, mEffort);
                return Common::EncodeBc4(pixels, count, 1, isSigned, second, mEffort);
            case kBC6H:
            case kBC6HSigned:
                return EncodeBc6h(pixels, count, out, isSigned, fit);
            default:
                return Common::EncodeBc7(pixels, count, out, {mEffort, mWeights});
        }
    }

private:
    void SetOpaque(std::span<float> blocks) const {
        for (std::size_t i = 3; i < blocks.size(); i += 4)
            blocks[i] = 255;
    }
    /// The encoder cuts at a half.
    void CutAlpha(std::span<float> blocks) const {
        for (std::size_t i = 3; i < blocks.size(); i += 4)
            blocks[i] = blocks[i] >= mCutoff ? 255.0F : 0.0F;
    }

    EFormat mFormat;
    BlockEffort mEffort;
    float mCutoff;
    bool mHasAlpha;
    std::size_t mStride;
    std::array<float, 4> mWeights{};
};

bool IsBlocks(const PixelFormat& format) {
    return format.bytesPerBlock > 0;
}

/// What blocks of a format decode to, and how.
struct Decoding {
    EFormat format = kUnknown;
    Common::DecodeBlock decode = nullptr;
};

Decoding DecodingOf(EFormat blocks) {
    switch (blocks) {
        case kBC1:
        case kBC1Srgb:
            return {kR8G8B8A8, Common::DecodeBc1};
        case kBC2:
        case kBC2Srgb:
            return {kR8G8B8A8, Common::DecodeBc2};
        case kBC3:
        case kBC3Srgb:
            return {kR8G8B8A8, Common::DecodeBc3};
        case kBC4:
            return {kL8, Common::DecodeBc4};
        case kBC4Snorm:
            return {kR16F, Common::DecodeBc4AsHalfs};
        case kBC5:
            return {kR8G8B8A8, Common::DecodeBc5};
        case kBC5Snorm:
            return {kR16G16F, Common::DecodeBc5AsHalfs};
        case kBC6H:
            return {kR16G16B16A16F, Common::DecodeBc6h};
        case kBC6HSigned:
            return {kR16G16B16A16F, Common::DecodeBc6hSigned};
        case kBC7:
        case kBC7Srgb:
            return {kR8G8B8A8, Common::DecodeBc7};
        default:
            return {};
    }
}

}  // namespace

std::uint64_t BlockBytes(EFormat format, int width, int height) {
    if (width < 1 || height < 1) return 0;
    const std::uint64_t blocks = std::uint64_t{Common::BlocksAlong(width)} * Common::BlocksAlong(height);
    return blocks * static_cast<unsigned>(FactsOf(format).bytesPerBlock);
}

namespace {

constexpr const char* kNoPixels = "there are no pixels, or no place for them";
constexpr const char* kNoFormat = "there are no blocks for these formats";
constexpr const char* kNoPitch = "its rows are shorter than its width";

// Of a row, on one thread: at the highest effort they take some milliseconds.
constexpr std::size_t kPieceBlocks = 64;

/// The part of a picture that a piece of each row of its blocks is made of.
Common::BlockPicture Piece(Common::BlockPicture picture, std::size_t firstBlock) {
    constexpr std::size_t kSide = Common::kBlockSide;
    const std::size_t left = firstBlock * kSide;
    picture.rows += left * static_cast<unsigned>(picture.format.BytesPerPixel());
    picture.width = std::min(picture.width - static_cast<int>(left), static_cast<int>(kPieceBlocks * kSide));
    return picture;
}

bool Compress(EFormat from, const void* pixels, std::size_t pitch, int width, int height, EFormat to, void* blocks,
              const CompressionOptions& options) {
    const PixelFormat &source = FactsOf(from), &target = FactsOf(to);
    using Common::Require;
    if (!Require(pixels != nullptr && blocks != nullptr && width > 0 && height > 0, kFailureArguments, kNoPixels) ||
        !Require(source.HasPixels() && !IsBlocks(source) && IsBlocks(target), kFailureFormat, kNoFormat) ||
        !Require(pitch >= static_cast<std::size_t>(width) * static_cast<unsigned>(source.BytesPerPixel()),
                 kFailureArguments, kNoPitch)) {
        return false;
    }
    const CompressionOptions known = Known(options);
    const Encoder encoder(to, known, known.withAlpha && source.hasAlpha);
    const Common::BlockPicture picture{static_cast<const unsigned char*>(pixels), pitch, width, height, source};
    const auto blockBytes = static_cast<unsigned>(target.bytesPerBlock);
    const std::size_t columns = Common::BlocksAlong(width), pieces = (columns + kPieceBlocks - 1) / kPieceBlocks;
    const std::size_t count = Common::BlocksAlong(height) * pieces;
    auto* const out = static_cast<unsigned char*>(blocks);
    Common::ForEachRangeOf(kProgressCompressing, count, 1, [&](std::size_t begin, std::size_t end) {
        std::vector<float> row;
        for (std::size_t i = begin; i < end; ++i) {
            const std::size_t y = i / pieces, first = i % pieces * kPieceBlocks;
            GatherBlocks(Piece(picture, first), y, ScaleOf(to), row);
            encoder.Encode(row, out + (y * columns + first) * blockBytes);
        }
    });
    return true;
}

bool Decompress(EFormat from, const void* blocks, int width, int height, void* pixels, std::size_t pitch) {
    const Decoding decoding = DecodingOf(from);
    using Common::Require;
    if (!Require(blocks != nullptr && pixels != nullptr && width > 0 && height > 0, kFailureArguments, kNoPixels) ||
        !Require(decoding.decode != nullptr, kFailureFormat, kNoFormat)) {
        return false;
    }
    const auto columns = static_cast<std::size_t>(width);
    const auto pixelBytes = static_cast<std::size_t>(FactsOf(decoding.format).BytesPerPixel());
    const auto blockBytes = static_cast<std::size_t>(FactsOf(from).bytesPerBlock);
    if (!Require(pitch >= columns * pixelBytes, kFailureArguments, kNoPitch)) return false;

    const std::size_t rowBytes = Common::BlocksAlong(width) * blockBytes;
    const auto* const in = static_cast<const unsigned char*>(blocks);
    auto* const out = static_cast<unsigned char*>(pixels);
    const std::size_t blockRows = Common::BlocksAlong(height);
    Common::ForEachRangeOf(kProgressCompressing, blockRows, 1, [&](std::size_t begin, std::size_t end) {
        for (std::size_t y = begin; y < end; ++y) {
            const int rows = std::min(Common::kBlockSide, height - static_cast<int>(y) * Common::kBlockSide);
            Common::DecodeBlockRow(decoding.decode, {in + y * rowBytes, rowBytes}, blockBytes, columns, rows,
                                   pixelBytes, out + y * Common::kBlockSide * pitch, pitch);
        }
    });
    return true;
}

}  // namespace

bool CompressPicture(EFormat from, const void* pixels, std::size_t pitch, int width, int height, EFormat to,
                     void* blocks, const CompressionOptions& options) {
    return Common::InOperation([&] { return Compress(from, pixels, pitch, width, height, to, blocks, options); });
}

EFormat DecodedFormat(EFormat format) {
    return DecodingOf(format).format;
}

bool DecompressPicture(EFormat from, const void* blocks, int width, int height, void* pixels, std::size_t pitch) {
    return Common::InOperation([&] { return Decompress(from, blocks, width, height, pixels, pitch); });
}

}  // namespace Kavra::Devices
