#include "readers/flic/FlicMovie.h"

#include "common/ByteOrder.h"
#include "common/Progress.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::LittleAt;
using Common::Result;

// --- Chunks ---------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kChunkHeaderBytes = 6;
constexpr std::uint64_t kFrameHeaderBytes = 16;
constexpr std::uint16_t kFli = 0xAF11;
constexpr std::uint16_t kPrefix = 0xF100;
constexpr std::uint16_t kOtherFrame = 0xF5FA;  // as some programs write it
constexpr std::uint16_t kSound = 0xAAAA;       // of a game
constexpr std::uint64_t kSoundHeaderBytes = 16;

/// Where a chunk lies in the file.
struct Chunk {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    std::uint16_t kind = 0;

    bool IsFrame() const { return kind == kFlicFrame || kind == kOtherFrame; }
};

/// The chunk that begins at a position, as much of it as lies before `end`. One that is smaller than its own header
/// leads nowhere.
std::optional<Chunk> ChunkAt(ByteSource& source, std::uint64_t start, std::uint64_t end) {
    if (end - start < kChunkHeaderBytes) return std::nullopt;
    const auto header = source.BytesAt<kChunkHeaderBytes>(start);
    if (!header) return std::nullopt;
    const auto kind = LittleAt<std::uint16_t, 4>(*header);
    std::uint64_t bytes = LittleAt<std::uint32_t, 0>(*header);
    if (kind == kSound) bytes += kSoundHeaderBytes;
    if (bytes < kChunkHeaderBytes) return std::nullopt;
    return Chunk{.start = start, .end = start + std::min(bytes, end - start), .kind = kind};
}

/// Calls `visit` for each frame from a position on, until it says false.
template <class Visit>
void ForEachFrame(ByteSource& source, std::uint64_t first, const Visit& visit) {
    constexpr int kMaxChunks = 1 << 17;  // twice as many as a header can count
    std::uint64_t at = std::min(first, source.Size());
    const Common::ProgressMeter meter(kProgressReading, kMaxChunks);
    for (int i = 0; i < kMaxChunks; ++i) {
        meter.Expect(0);
        const auto chunk = ChunkAt(source, at, source.Size());
        if (!chunk || (chunk->IsFrame() && !visit(*chunk))) return;
        at = chunk->end;
    }
}

// --- The header -----------------------------------------------------------------------------------------------------

std::uint16_t KindOf(ByteSource& source) {
    const auto start = source.BytesAt<6>(0);
    return start ? LittleAt<std::uint16_t, 4>(*start) : std::uint16_t{0};
}

constexpr std::uint64_t kHeaderBytes = 128;

/// A number of the header, or 0 where the file ends first.
template <class Number>
Number HeaderNumber(ByteSource& source, std::uint64_t at) {
    return source.Seek(at).and_then([&] { return source.Little<Number>(); }).value_or(0);
}

bool StartsFrames(ByteSource& source, std::uint64_t at) {
    if (at > source.Size()) return false;
    const auto chunk = ChunkAt(source, at, source.Size());
    return chunk && (chunk->IsFrame() || chunk->kind == kPrefix || chunk->kind == kSound);
}

/// A game wrote its frames right behind the first 12 bytes, with colours of 6 bits.
constexpr std::uint64_t kShortHeaderBytes = 12;

bool HasShortHeader(ByteSource& source) {
    return HeaderNumber<std::uint16_t>(source, kShortHeaderBytes + 4) == kFlicFrame;
}

bool HasManyColours(ByteSource& source) {
    constexpr std::uint64_t kDepth = 12;
    constexpr std::uint16_t kBits = 8, kMaxBits = 32;
    const auto depth = HeaderNumber<std::uint16_t>(source, kDepth);
    return !HasShortHeader(source) && depth > kBits && depth <= kMaxBits;
}

int CountFrames(ByteSource& source, const FlicMovie& movie) {
    int count = 0;
    ForEachFrame(source, movie.firstChunk, [&](const Chunk&) { return ++count > 0; });
    if (count == movie.header.frames + 1 && movie.header.frames > 0) --count;  // the last leads back to the first
    return std::max(count, 1);
}

}  // namespace

bool IsOtherFlic(ByteSource& source) {
    constexpr std::array<std::uint16_t, 3> kKinds = {0xAF30, 0xAF31, 0xAF44};
    return std::ranges::contains(kKinds, KindOf(source)) && StartsFrames(source, kHeaderBytes);
}

std::uint64_t FindFlicStart(ByteSource& source) {
    constexpr std::uint64_t kFirstFrame = 80;  // where the header of FLC tells it
    if (HasShortHeader(source)) return kShortHeaderBytes;
    if (KindOf(source) == kFli || StartsFrames(source, kHeaderBytes)) return kHeaderBytes;
    const auto told = HeaderNumber<std::uint32_t>(source, kFirstFrame);
    return told > kHeaderBytes && StartsFrames(source, told) ? told : kHeaderBytes;
}

const wchar_t* WhyFlicIsRefused(ByteSource& source) {
    if (IsOtherFlic(source))
        return L"FLICReader::Unsupported kind -- an animation of many colours or of another coding (FLX)";
    if (HasManyColours(source)) return L"FLICReader::Unsupported kind -- an animation of more than 8 bits a pixel";
    return nullptr;
}

Result<FlicMovie> ReadFlicMovie(ByteSource& source) {
    const Result<FlicHeader> header = ReadFlicHeader(source);
    if (!header) return std::unexpected(header.error());
    if (HasManyColours(source)) return std::unexpected(Failure::kUnsupported);
    FlicMovie movie = {.header = *header, .firstChunk = FindFlicStart(source), .hasSixBits = HasShortHeader(source)};
    if (movie.header.width == 0 || movie.header.height == 0) {
        const bool isFli = KindOf(source) == kFli;
        movie.header.width = isFli ? 320 : 640;
        movie.header.height = isFli ? 200 : 480;
    }
    movie.frames = CountFrames(source, movie);
    return movie;
}

// --- Playing --------------------------------------------------------------------------------------------------------

namespace {

/// Plays the chunks of one frame after another.
class Player {
public:
    Player(ByteSource& source, bool hasSixBits, FlicFrame& frame, FlicPalette& palette)
        : mSource(source), mHasSixBits(hasSixBits), mFrame(frame), mPalette(palette) {}

    void Play(const Chunk& frame) {
        if (frame.end - frame.start < kFrameHeaderBytes) return;
        int chunks = HeaderNumber<std::uint16_t>(mSource, frame.start + kChunkHeaderBytes);
        for (std::uint64_t at = frame.start + kFrameHeaderBytes; chunks > 0; --chunks) {
            const auto chunk = ChunkAt(mSource, at, frame.end);
            if (!chunk) return;
            PlayBody(*chunk);
            at = chunk->end;
        }
    }

private:
    /// Short bodies are read at once, long ones through a buffer of their own, whole copies into the frame.
    void PlayBody(const Chunk& chunk) {
        constexpr std::uint64_t kMaxAtOnce = 1 << 20;
        const std::uint64_t bytes = chunk.end - chunk.start - kChunkHeaderBytes;
        const bool isWholeCopy = chunk.kind == kFlicCopy && bytes >= mFrame.Indices().size() &&
                                 FlicCopyRowBytes(bytes, mFrame) == mFrame.Width();
        if (isWholeCopy) return (void)DecodeFlicCopy(mSource, mFrame);
        if (bytes > kMaxAtOnce) {
            if (auto body = mSource.Slice(bytes)) Decode(chunk.kind, *body);
            return;
        }
        mBody.resize(static_cast<std::size_t>(bytes));
        ByteSource body{std::span<const unsigned char>(mBody).first(mSource.ReadSome(mBody))};
        Decode(chunk.kind, body);
    }

    /// What fails has changed what there was for it.
    void Decode(std::uint16_t kind, ByteSource& body) {
        switch (kind) {
            case kFlicColour256:
                return (void)DecodeFlicCommonPalette(body, mPalette, mHasSixBits);
            case kFlicColour64:
                return (void)DecodeFlicCommonPalette(body, mPalette, true);
            case kFlicBlack:
                return mFrame.Clear();
            case kFlicByteRun:
                return (void)DecodeFlicByteRun(body, mFrame);
            case kFlicCopy:
                return (void)DecodeFlicCommonCopy(body, mFrame);
            case kFlicDeltaFli:
                return (void)DecodeFlicByteDelta(body, mFrame);
            case kFlicDeltaFlc:
                return (void)DecodeFlicCommonWordDelta(body, mFrame);
            default:
                return;
        }
    }

    ByteSource& mSource;
    bool mHasSixBits;
    FlicFrame& mFrame;
    FlicPalette& mPalette;
    std::vector<unsigned char> mBody;
};

}  // namespace

void PlayFlicMovie(ByteSource& source, const FlicMovie& movie, int wanted, FlicFrame& frame, FlicPalette& palette) {
    Player player(source, movie.hasSixBits, frame, palette);
    int left = std::clamp(wanted, 0, movie.frames - 1) + 1;
    ForEachFrame(source, movie.firstChunk, [&](const Chunk& chunk) {
        player.Play(chunk);
        return --left > 0;
    });
}

}  // namespace Kavra::Devices
