#include "legacy/RlcFile.h"

#include <algorithm>
#include <ranges>
#include <vector>

namespace Kavra::Legacy {

namespace {

struct Run {
    int begin = 0;
    int end = 0;
};

/// Whether readers take a run of this row: one that does not end in its first byte has to leave room behind it, unless
/// it is the whole row.
bool IsTaken(Run run, int width) {
    const int length = run.end - run.begin;
    if (length <= 8 - run.begin % 8 || length == width) return true;
    return length / 8 + 1 + run.begin / 8 < (width + 7) / 8;
}

/// The runs of bits that are 1, from left to right, those that would not be taken in pieces.
std::vector<Run> Runs(const Bitmap& image, int y) {
    std::vector<int> changes = Changes(image, y);
    if (changes.size() % 2 == 1) changes.push_back(image.width);
    std::vector<Run> runs;
    for (std::size_t i = 0; i < changes.size(); i += 2) {
        Run run = {changes[i], changes[i + 1]};
        std::vector<Run> pieces;
        for (; !IsTaken(run, image.width); run.end = pieces.back().begin)
            pieces.push_back({std::max(run.begin, (run.end - 1) / 8 * 8), run.end});
        runs.push_back(run);
        runs.append_range(pieces | std::views::reverse);
    }
    return runs;
}

}  // namespace

ByteBuilder RlcFile(const Bitmap& image) {
    ByteBuilder file;
    file.Big16(static_cast<unsigned>(image.height)).Big16(static_cast<unsigned>(image.width));
    for (int y = 0; y < image.height; ++y) {
        const std::vector<Run> runs = Runs(image, y);
        file.Big16(static_cast<unsigned>(runs.size()));
        for (const Run& run : runs | std::views::reverse) {
            file.Big16(static_cast<unsigned>(image.width - run.end));
            file.Big16(static_cast<unsigned>(image.width - run.begin));
        }
    }
    return file;
}

void AddRlcDirectory(ByteBuilder& file, std::span<const RlcEntry> entries) {
    constexpr std::size_t kTrailerBytes = 344;
    const std::size_t start = file.Size();
    file.At(start).Fill(kTrailerBytes, 0);
    file.At(start + 8).Byte(0x1A).Byte(0x1A).Byte(0x55).Byte(0x64).Byte(0x73).Byte(0x82).Byte(0x43).Byte(0x4A);
    file.At(start + 22).Little16(static_cast<unsigned>(entries.size()));
    for (std::size_t i = 0; i < entries.size(); ++i) {
        file.At(start + 24 + 16 * i).Little16(entries[i].type);
        file.At(start + 32 + 16 * i).Little32(entries[i].reference);
    }
    file.At(start + 26).Little16(2).At(file.Size());
}

void AddRlcReference(ByteBuilder& file, std::string_view path) {
    constexpr std::size_t kRecordBytes = 200;
    constexpr std::size_t kNameOffset = 56;
    const std::size_t start = file.Size();
    file.At(start).Fill(kRecordBytes, 0);
    file.At(start + kNameOffset).Text(path).At(file.Size());
}

}  // namespace Kavra::Legacy
