#include "common/dds/DdsStoredLevel.h"

#include "common/PixelFormats.h"
#include "common/Progress.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace Kavra::Devices::Dds {

namespace {

/// Row by row, slices included. `next()` gives the stored bytes of the next row, none where there are no more.
template <class Next>
bool WidenRows(const StoredLayout& layout, const Extent& size, unsigned char* out, const Next& next) {
    const auto width = static_cast<std::size_t>(size.width);
    const std::size_t pitch = width * static_cast<unsigned>(Common::FactsOf(layout.format).BytesPerPixel());
    const std::int64_t rows = std::int64_t{size.height} * size.depth;
    Common::ProgressMeter meter(kProgressReading, static_cast<std::uint64_t>(rows));
    for (std::int64_t y = 0; y < rows; ++y, out += pitch, meter.Advance(1)) {
        const std::span<const unsigned char> row = next();
        if (row.empty()) return false;
        layout.widen(layout, row, out, width);
    }
    return true;
}

/// In pieces, between which it can be stopped.
bool ReadBytes(std::FILE* file, std::span<unsigned char> bytes) {
    constexpr std::size_t kPiece = std::size_t{4} << 20;
    Common::ProgressMeter meter(kProgressReading, bytes.size());
    while (!bytes.empty()) {
        const std::span<unsigned char> piece = bytes.first(std::min(kPiece, bytes.size()));
        if (std::fread(piece.data(), 1, piece.size(), file) != piece.size()) return false;
        bytes = bytes.subspan(piece.size());
        meter.Advance(piece.size());
    }
    return true;
}

}  // namespace

bool ReadStoredLevel(std::FILE* file, const StoredLayout& layout, const Extent& levelSize, unsigned char* out) {
    if (layout.widen == nullptr) return ReadBytes(file, std::span(out, StoredLevelBytes(layout.unit, levelSize)));
    std::vector<unsigned char> row(StoredRowBytes(layout.unit, levelSize.width));
    return WidenRows(layout, levelSize, out, [&] {
        const bool isWhole = std::fread(row.data(), 1, row.size(), file) == row.size();
        return isWhole ? std::span<const unsigned char>(row) : std::span<const unsigned char>();
    });
}

void DeliverLevel(std::span<const unsigned char> stored, const StoredLayout& layout, const Extent& levelSize,
                  unsigned char* out) {
    if (layout.widen == nullptr) {
        std::memcpy(out, stored.data(), stored.size());
        return;
    }
    const std::size_t rowBytes = StoredRowBytes(layout.unit, levelSize.width);
    WidenRows(layout, levelSize, out, [&] {
        const std::span<const unsigned char> row = stored.first(rowBytes);
        stored = stored.subspan(rowBytes);
        return row;
    });
}

}  // namespace Kavra::Devices::Dds
