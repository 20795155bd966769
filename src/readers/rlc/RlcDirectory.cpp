#include "readers/rlc/RlcDirectory.h"

#include "readers/ByteOrder.h"
#include "readers/rlc/RlcProbe.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kEntriesOffset = 24;
constexpr std::size_t kEntryBytes = 16;
constexpr int kMostEntries = 20;
static_assert(kEntriesOffset + kMostEntries * kEntryBytes == std::tuple_size_v<RlcTrailer>);

constexpr std::uint16_t kImage = 2;
constexpr std::uint16_t kReference = 4;

std::array<unsigned char, kEntryBytes> Entry(const RlcTrailer& trailer, int number) {
    std::array<unsigned char, kEntryBytes> entry{};
    const auto start = kEntriesOffset + static_cast<std::size_t>(number) * kEntryBytes;
    std::ranges::copy(std::span(trailer).subspan(start, kEntryBytes), entry.begin());
    return entry;
}

/// Whether the record at this offset names a file that is there and reads as RLC.
bool RefersToImage(ByteSource& source, std::uint32_t offset) {
    constexpr std::ptrdiff_t kNameOffset = 56;
    const auto record = source.BytesAt<200>(offset);
    if (!record) return false;
    const std::string name(record->begin() + kNameOffset,
                           std::find(record->begin() + kNameOffset, record->end(), '\0'));
    if (name.empty()) return false;
    ReadResult<ByteSource> file = ByteSource::OpenNarrow(name.c_str());
    return file && IsRlc(*file);
}

}  // namespace

int CountImages(ByteSource& source, const RlcTrailer& trailer) {
    const int entries = std::min<int>(LittleAt<std::int16_t, 22>(trailer), kMostEntries);
    int images = 0;
    for (int number = 0; number < entries; ++number) {
        const auto entry = Entry(trailer, number);
        const auto kind = LittleAt<std::uint16_t, 0>(entry);
        if (kind == kImage || (kind == kReference && RefersToImage(source, LittleAt<std::uint32_t, 8>(entry))))
            ++images;
    }
    return images;
}

}  // namespace Kavra::Devices
