#include "readers/flic/FlicPlayer.h"

#include "readers/flic/FlicChunks.h"

namespace Kavra::Devices {

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

/// False when the file has ended. A chunk that is smaller than its own header leads nowhere.
bool SkipBody(ByteSource& source, std::uint32_t chunkBytes) {
    return chunkBytes >= kChunkHeaderBytes && source.Skip(chunkBytes - kChunkHeaderBytes);
}

/// Plays one chunk but a frame's own; false when the file has ended.
bool PlayChunk(ByteSource& source, std::uint16_t kind, std::uint32_t bytes, FlicFrame& frame, FlicPalette& palette) {
    switch (kind) {
        case kColour256:
            return DecodeFlicPalette(source, palette, 1);
        case kColour64:
            return DecodeFlicPalette(source, palette, 4);
        case kBlack:
            frame.Clear();
            return true;
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
        const ReadResult<std::uint32_t> bytes = source.Little<std::uint32_t>();
        const ReadResult<std::uint16_t> kind = source.Little<std::uint16_t>();
        if (!bytes || !kind) return;
        if (*kind == kFrame) ++reached;
        const bool goesOn = *kind == kFrame ? source.Skip(kFrameBodyBytes).has_value()
                                            : PlayChunk(source, *kind, *bytes, frame, palette);
        if (!goesOn) return;
    }
}

}  // namespace Kavra::Devices
