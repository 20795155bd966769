#include "readers/flic/FlicReader.h"

#include "common/ByteOrder.h"
#include "readers/SampleTables.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::LittleAt;
using Common::Result;

// --- The header -----------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint16_t kFli = 0xAF11;
constexpr std::uint16_t kFlc = 0xAF12;
constexpr std::size_t kBytesThroughKind = 6;

}  // namespace

Result<FlicHeader> ReadFlicHeader(ByteSource& source) {
    std::array<unsigned char, 12> bytes{};
    if (!source.Seek(0) || source.ReadSome(bytes) < kBytesThroughKind) return std::unexpected(Failure::kTruncated);
    const auto kind = LittleAt<std::uint16_t, 4>(bytes);
    if (kind != kFli && kind != kFlc) return std::unexpected(Failure::kMalformed);
    return FlicHeader{.frames = LittleAt<std::uint16_t, 6>(bytes),
                      .width = LittleAt<std::uint16_t, 8>(bytes),
                      .height = LittleAt<std::uint16_t, 10>(bytes)};
}

bool IsFlic(ByteSource& source) {
    return ReadFlicHeader(source).has_value();
}

// --- Playing --------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kFirstChunk = 128;
constexpr std::uint32_t kChunkHeaderBytes = 6;
constexpr std::uint64_t kFrameBodyBytes = 10;

enum ChunkKind : std::uint16_t {
    kColour256 = 4,
    kDeltaFlc = 7,
    kColour64 = 11,
    kDeltaFli = 12,
    kBlack = 13,
    kByteRun = 15,
    kCopy = 16,
    kFrame = 0xF1FA,
};

/// A chunk that is smaller than its own header leads nowhere.
Result<> SkipBody(ByteSource& source, std::uint32_t chunkBytes) {
    if (chunkBytes < kChunkHeaderBytes) return std::unexpected(Failure::kMalformed);
    return source.Skip(chunkBytes - kChunkHeaderBytes);
}

/// Plays one chunk but a frame's own. Fails where nothing can follow it.
Result<> PlayChunk(ByteSource& source, std::uint16_t kind, std::uint32_t bytes, FlicFrame& frame,
                   FlicPalette& palette) {
    switch (kind) {
        case kColour256:
            return DecodeFlicPalette(source, palette, 1);
        case kColour64:
            return DecodeFlicPalette(source, palette, 4);
        case kBlack:
            frame.Clear();
            return {};
        case kByteRun:
            return DecodeFlicByteRun(source, frame);
        case kCopy:
            return DecodeFlicCopy(source, frame);
        case kDeltaFli:
            return DecodeFlicByteDelta(source, frame);
        case kDeltaFlc:
            return DecodeFlicWordDelta(source, frame);
        default:
            return SkipBody(source, bytes);
    }
}

}  // namespace

void PlayFlic(ByteSource& source, const FlicHeader& header, int wanted, FlicFrame& frame, FlicPalette& palette) {
    if (!source.Seek(kFirstChunk)) return;
    int reached = -1;
    for (int budget = header.frames; budget > 0 && reached <= wanted; --budget) {
        const Result<std::uint32_t> bytes = source.Little<std::uint32_t>();
        const Result<std::uint16_t> kind = source.Little<std::uint16_t>();
        if (!bytes || !kind) return;
        if (*kind == kFrame) ++reached;
        const Result<> played =
            *kind == kFrame ? source.Skip(kFrameBodyBytes) : PlayChunk(source, *kind, *bytes, frame, palette);
        if (!played) return;
    }
}

// --- The reader -----------------------------------------------------------------------------------------------------

namespace {

Table256<std::uint32_t> PixelTable(const FlicPalette& palette) {
    Table256<std::uint32_t> table;
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = PackedPixel(palette[3 * i], palette[3 * i + 1], palette[3 * i + 2], 255);
    return table;
}

}  // namespace

void FLICReader::Close() {
    mSource.reset();
    mHeader = {};
}

Result<> FLICReader::OpenFiles(PictureFiles files) {
    const Result<FlicHeader> header = ReadFlicHeader(files.source);
    if (!header) return std::unexpected(header.error());
    mHeader = *header;
    mSource = std::move(files.source);
    return {};
}

Result<> FLICReader::ReadFrame(Common::RowSink& rows, int frame) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    if (mHeader.width == 0 || mHeader.height == 0) return {};
    FlicFrame played(mHeader.width, mHeader.height);
    FlicPalette palette{};
    PlayFlic(*mSource, mHeader, std::max(frame, 0), played, palette);
    const Table256<std::uint32_t> table = PixelTable(palette);
    for (std::span<const unsigned char> indices = played.Indices(); !indices.empty();) {
        const std::span<unsigned char> pixels = rows.NextRows(indices.size() / mHeader.width);
        const std::size_t count = pixels.size() / sizeof table[0];
        LookUp(pixels, indices.first(count), table);
        indices = indices.subspan(count);
    }
    return {};
}

}  // namespace Kavra::Devices
