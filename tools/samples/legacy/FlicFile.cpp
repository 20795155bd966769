#include "legacy/FlicFile.h"

#include <algorithm>
#include <span>

namespace Kavra::Legacy {

namespace {

using Indices = std::span<const unsigned char>;

constexpr std::size_t kHeaderBytes = 128;
constexpr unsigned kFlc = 0xAF12, kFrame = 0xF1FA, kColour256 = 4, kDeltaFlc = 7, kByteRun = 15, kCopy = 16;
constexpr std::size_t kMaxCount = 127;
constexpr std::size_t kMaxSkip = 255;

ByteBuilder Chunk(unsigned kind, const ByteBuilder& body) {
    ByteBuilder chunk;
    return chunk.Little32(static_cast<unsigned>(6 + body.Size())).Little16(kind).Append(body.Bytes());
}

ByteBuilder PaletteChunk(const FlicMovie& movie) {
    ByteBuilder body;
    body.Little16(1).Byte(0).Byte(0);  // one packet of all entries
    for (const auto& colour : movie.palette)
        body.Append(colour);
    return Chunk(kColour256, body);
}

std::size_t EqualAtStart(Indices row) {
    const auto other = std::ranges::find_if(row, [&](unsigned char index) { return index != row.front(); });
    return static_cast<std::size_t>(other - row.begin());
}

/// How many bytes to copy before the next run that is worth its two bytes.
std::size_t CopyLength(Indices row) {
    std::size_t length = 0;
    while (length < row.size() && EqualAtStart(row.subspan(length)) < 3)
        ++length;
    return length;
}

void AddRuns(ByteBuilder& body, Indices row) {
    body.Byte(0);  // once the number of packets, unused since rows can have more than 255
    while (!row.empty()) {
        const std::size_t copy = std::min(CopyLength(row.first(std::min(row.size(), kMaxCount + 2))), kMaxCount);
        const std::size_t length = copy > 0 ? copy : std::min(EqualAtStart(row), kMaxCount);
        if (copy > 0) {
            body.Byte(static_cast<unsigned>(256 - copy)).Append(row.first(copy));
        } else {
            body.Byte(static_cast<unsigned>(length)).Byte(row.front());
        }
        row = row.subspan(length);
    }
}

ByteBuilder ByteRunChunk(const FlicMovie& movie, Indices frame) {
    ByteBuilder body;
    const auto width = static_cast<std::size_t>(movie.width);
    for (std::size_t start = 0; start < frame.size(); start += width)
        AddRuns(body, frame.subspan(start, width));
    return Chunk(kByteRun, body);
}

/// What changed in a row: pairs of columns.
struct Stretch {
    std::size_t first = 0;
    std::size_t words = 0;
};

Stretch Changed(Indices before, Indices after) {
    const auto first = static_cast<std::size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
    if (first == after.size()) return {};
    std::size_t end = after.size();
    while (before[end - 1] == after[end - 1])
        --end;
    // Whole words: one more column, on the right or else on the left.
    if ((end - first) % 2 == 1 && end < after.size()) ++end;
    if ((end - first) % 2 == 1 && first > 0) return {first - 1, (end - first + 1) / 2};
    return {first, (end - first) / 2};
}

/// Whether one packet says it: a row of one column has no whole word.
bool FitsPacket(const Stretch& stretch, Indices before, Indices after) {
    if (std::ranges::equal(before, after)) return true;
    return stretch.words > 0 && stretch.words <= kMaxCount && stretch.first <= kMaxSkip;
}

/// An empty builder where the frame cannot be written as changes.
ByteBuilder DeltaChunk(const FlicMovie& movie, Indices before, Indices after) {
    const auto width = static_cast<std::size_t>(movie.width);
    ByteBuilder body;
    unsigned rows = 0, needed = 0;
    std::size_t neededBytes = 2;
    body.Little16(0);
    for (std::size_t start = 0; start < after.size(); start += width) {
        const Indices row = after.subspan(start, width);
        const Stretch stretch = Changed(before.subspan(start, width), row);
        if (!FitsPacket(stretch, before.subspan(start, width), row)) return {};
        body.Little16(stretch.words > 0 ? 1 : 0);
        ++rows;
        if (stretch.words == 0) continue;
        body.Byte(static_cast<unsigned>(stretch.first)).Byte(static_cast<unsigned>(stretch.words));
        body.Append(row.subspan(stretch.first, 2 * stretch.words));
        needed = rows;
        neededBytes = body.Size();
    }
    body.At(0).Little16(needed);
    return Chunk(kDeltaFlc, body.CutTo(neededBytes));
}

ByteBuilder NextChunk(const FlicMovie& movie, std::size_t frame, FlicCoding coding) {
    ByteBuilder copy;
    if (coding == FlicCoding::kCopies) return Chunk(kCopy, copy.Append(movie.frames[frame]));
    if (coding == FlicCoding::kWhole) return ByteRunChunk(movie, movie.frames[frame]);
    ByteBuilder delta = DeltaChunk(movie, movie.frames[frame - 1], movie.frames[frame]);
    return delta.Size() > 0 ? delta : ByteRunChunk(movie, movie.frames[frame]);
}

void AddFrame(ByteBuilder& file, const std::vector<ByteBuilder>& chunks) {
    ByteBuilder body;
    body.Little16(static_cast<unsigned>(chunks.size())).Fill(8, 0);
    for (const ByteBuilder& chunk : chunks)
        body.Append(chunk.Bytes());
    file.Append(Chunk(kFrame, body).Bytes());
}

void WriteHeader(ByteBuilder& file, const FlicMovie& movie, std::size_t firstFrame, std::size_t secondFrame) {
    const auto frames = static_cast<unsigned>(movie.frames.size());
    file.At(0).Little32(static_cast<unsigned>(file.Size())).Little16(kFlc).Little16(frames);
    file.Little16(static_cast<unsigned>(movie.width)).Little16(static_cast<unsigned>(movie.height));
    file.Little16(8).Little16(3).Little32(static_cast<unsigned>(movie.milliseconds));
    file.At(38).Little16(1).Little16(1);  // square pixels
    file.At(80).Little32(static_cast<unsigned>(firstFrame)).Little32(static_cast<unsigned>(secondFrame));
}

}  // namespace

ByteBuilder MakeFlic(const FlicMovie& movie, FlicCoding coding) {
    ByteBuilder file(kHeaderBytes);
    file.At(kHeaderBytes);
    std::size_t second = kHeaderBytes;
    for (std::size_t frame = 0; frame < movie.frames.size(); ++frame) {
        const bool same = frame > 0 && movie.frames[frame] == movie.frames[frame - 1];
        std::vector<ByteBuilder> chunks;
        if (frame == 0) chunks.push_back(PaletteChunk(movie));
        if (frame == 0 && coding == FlicCoding::kChanges) {
            chunks.push_back(ByteRunChunk(movie, movie.frames[0]));
        } else if (!same) {
            chunks.push_back(NextChunk(movie, frame, coding));
        }
        AddFrame(file, chunks);
        if (frame == 0) second = file.Size();
    }
    WriteHeader(file, movie, kHeaderBytes, second);
    return file;
}

}  // namespace Kavra::Legacy
