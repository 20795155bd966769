#include "readers/flic/FlicReader.h"

#include "common/ByteOrder.h"
#include "common/Progress.h"
#include "common/Reasons.h"
#include "readers/SampleTables.h"

#include <kavra/devices/Sys.h>

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

/// A chunk that is smaller than its own header leads nowhere.
Result<> SkipBody(ByteSource& source, std::uint32_t chunkBytes) {
    if (chunkBytes < kChunkHeaderBytes) return std::unexpected(Failure::kMalformed);
    return source.Skip(chunkBytes - kChunkHeaderBytes);
}

/// Plays one chunk but a frame's own. Fails where nothing can follow it.
Result<> PlayChunk(ByteSource& source, std::uint16_t kind, std::uint32_t bytes, FlicFrame& frame, FlicPalette& palette,
                   Reading* reading) {
    switch (kind) {
        case kFlicColour256:
            return DecodeFlicPalette(source, palette, 1);
        case kFlicColour64:
            return DecodeFlicPalette(source, palette, 4);
        case kFlicBlack:
            frame.Clear();
            return {};
        case kFlicByteRun:
            return DecodeFlicByteRun(source, frame);
        case kFlicCopy:
            return DecodeFlicCopy(source, frame);
        case kFlicDeltaFli:
            return DecodeFlicByteDelta(source, frame);
        case kFlicDeltaFlc:
            return CompareFlicWordDelta(source, frame, reading);
        default:
            return SkipBody(source, bytes);
    }
}

/// Asks for what the common reading would have made of a chunk that begins at `start` and was played.
void CompareChunk(Reading& reading, const ByteSource& source, std::uint16_t kind, std::uint64_t start,
                  std::uint32_t bytes, const FlicFrame& frame, const FlicPalette& palette) {
    constexpr unsigned char kExact = 4 * 16;  // components below are the same either way
    if (kind == kFlicColour64 && std::ranges::any_of(palette, [](unsigned char value) { return value >= kExact; }))
        (void)reading.IsCommon("colours of 6 bits never get fully bright by the host's rules");
    const bool isWhole = kind != kFlicFrame && bytes >= kChunkHeaderBytes;
    if (kind == kFlicCopy && isWhole && FlicCopyRowBytes(bytes - kChunkHeaderBytes, frame) != frame.Width())
        (void)reading.IsCommon("what fills up rows is drawn by the host's rules");
    if (isWhole && source.Position() != start + bytes && source.Remaining() > kChunkHeaderBytes)
        (void)reading.IsCommon("parts of frames are looked for where others end early, by the host's rules");
}

/// Asks for what the common reading would have played beyond the last chunk.
void CompareEnd(Reading& reading, ByteSource& source, int reached, int wanted) {
    const Result<std::uint32_t> bytes = source.Little<std::uint32_t>();
    const Result<std::uint16_t> kind = source.Little<std::uint16_t>();
    const bool isComplete = reached == wanted && kind == kFlicFrame;
    if (bytes && kind && !isComplete)
        (void)reading.IsCommon("only as many parts are played as the header counts frames, by the host's rules");
}

}  // namespace

void PlayFlic(ByteSource& source, const FlicHeader& header, int wanted, FlicFrame& frame, FlicPalette& palette,
              Reading* reading) {
    if (!source.Seek(kFirstChunk)) return;
    int reached = -1;
    const Common::ProgressMeter meter(kProgressReading, header.frames);
    for (int budget = header.frames; budget > 0 && reached <= wanted; --budget) {
        meter.Expect(0);
        const std::uint64_t start = source.Position();
        const Result<std::uint32_t> bytes = source.Little<std::uint32_t>();
        const Result<std::uint16_t> kind = source.Little<std::uint16_t>();
        if (!bytes || !kind) return;
        if (*kind == kFlicFrame) ++reached;
        const Result<> played = *kind == kFlicFrame ? source.Skip(kFrameBodyBytes)
                                                    : PlayChunk(source, *kind, *bytes, frame, palette, reading);
        if (reading != nullptr) CompareChunk(*reading, source, *kind, start, *bytes, frame, palette);
        if (!played) return;
    }
    if (reading != nullptr && reached <= wanted) CompareEnd(*reading, source, reached, wanted);
}

// --- The reader -----------------------------------------------------------------------------------------------------

namespace {

Table256<std::uint32_t> PixelTable(const FlicPalette& palette) {
    Table256<std::uint32_t> table;
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = PackedPixel(palette[3 * i], palette[3 * i + 1], palette[3 * i + 2], 255);
    return table;
}

/// The header begins with the length of the file. Frames are made of changes to those before, so that no number of good
/// rows follows from it.
void SayIfShort(ByteSource source) {
    const Result<std::array<unsigned char, 4>> head = source.BytesAt<4>(0);
    if (head && LittleAt<std::uint32_t, 0>(*head) > source.Size())
        Common::Say({Failure::kTruncated, static_cast<std::int64_t>(source.Size())});
}

/// Whether the common reading shows another picture than one that was played. Of large frames it is not known.
bool IsPlayedOtherwise(ByteSource& source, int frame, const FlicFrame& played, const FlicPalette& palette) {
    constexpr std::size_t kMaxCompared = 1 << 24;  // what a comparison may take in memory
    const Result<FlicMovie> movie = ReadFlicMovie(source);
    if (!movie || played.Indices().size() > kMaxCompared) return false;
    FlicFrame other(played.Width(), played.Height());
    FlicPalette otherPalette{};
    PlayFlicMovie(source, *movie, frame, other, otherPalette);
    const Table256<std::uint32_t> ours = PixelTable(palette), theirs = PixelTable(otherPalette);
    return !std::ranges::equal(played.Indices(), other.Indices(),
                               [&](unsigned char a, unsigned char b) { return ours[a] == theirs[b]; });
}

}  // namespace

void FLICReader::Close() {
    mSource.reset();
    mHeader = {};
    mMovie = {};
}

Result<> FLICReader::OpenFiles(PictureFiles files) {
    if (mReading.IsCommon()) {
        if (const wchar_t* const why = WhyFlicIsRefused(files.source)) Sys::Warning(why, nullptr);
        const Result<FlicMovie> movie = ReadFlicMovie(files.source);
        if (!movie) return std::unexpected(movie.error());
        mMovie = *movie;
        mHeader = movie->header;
    } else {
        const Result<FlicHeader> header = ReadFlicHeader(files.source);
        if (!header) return std::unexpected(header.error());
        mHeader = *header;
        if (mHeader.width == 0 || mHeader.height == 0)
            (void)mReading.IsCommon("a picture whose size is not told is refused by the host's rules");
    }
    mSource = std::move(files.source);
    return {};
}

void FLICReader::PlayContract(int frame, FlicFrame& played, FlicPalette& palette) {
    Reading how;  // the first thing that the common reading does otherwise, whether it shows or not
    if (!mIsCompared) return PlayFlic(*mSource, mHeader, frame, played, palette);
    if (FindFlicStart(*mSource) != kFirstChunk)
        (void)how.IsCommon("frames that begin elsewhere than usual are not found by the host's rules");
    PlayFlic(*mSource, mHeader, frame, played, palette, &how);
    if (IsPlayedOtherwise(*mSource, frame, played, palette))
        (void)mReading.IsCommon(how.Difference() != nullptr ? how.Difference()
                                                            : "other frames are shown by the host's rules");
}

Result<> FLICReader::ReadFrame(Common::RowSink& rows, int frame) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    if (mHeader.width == 0 || mHeader.height == 0) return {};
    FlicFrame played(mHeader.width, mHeader.height);
    FlicPalette palette{};
    if (mReading.IsCommon()) {
        PlayFlicMovie(*mSource, mMovie, frame, played, palette);
    } else {
        PlayContract(std::max(frame, 0), played, palette);
    }
    const Table256<std::uint32_t> table = PixelTable(palette);
    for (std::span<const unsigned char> indices = played.Indices(); !indices.empty();) {
        const std::span<unsigned char> pixels = rows.NextRows(indices.size() / mHeader.width);
        const std::size_t count = pixels.size() / sizeof table[0];
        LookUp(pixels, indices.first(count), table);
        indices = indices.subspan(count);
    }
    SayIfShort(mSource->Again());
    return {};
}

}  // namespace Kavra::Devices
