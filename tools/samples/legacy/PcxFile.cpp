#include "legacy/PcxFile.h"

#include "legacy/ByteBuilder.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace Kavra::Legacy {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kMaxRun = 63;
constexpr unsigned kCountMark = 0xC0;
constexpr std::size_t kHeaderBytes = 128;
constexpr std::size_t kHeaderPaletteBytes = 48;
constexpr unsigned char kPaletteMarker = 12;

std::size_t UsedBytesOfLine(const PcxPicture& picture) {
    return (static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.bitsPerPlane) + 7) / 8;
}

std::size_t BytesOfLine(const PcxPicture& picture) {
    return (UsedBytesOfLine(picture) + 1) / 2 * 2;
}

Bytes Header(const PcxPicture& picture) {
    ByteBuilder header(kHeaderBytes);
    header.At(0).Byte(10).Byte(5).Byte(picture.isCoded ? 1 : 0).Byte(static_cast<unsigned>(picture.bitsPerPlane));
    header.Little16(0).Little16(0);
    header.Little16(static_cast<unsigned>(picture.width - 1)).Little16(static_cast<unsigned>(picture.height - 1));
    header.Little16(72).Little16(72);  // dots an inch, which readers ignore
    if (picture.palette.size() <= kHeaderPaletteBytes) header.Append(picture.palette);
    header.At(65).Byte(static_cast<unsigned>(picture.planes));
    header.Little16(static_cast<unsigned>(BytesOfLine(picture))).Little16(1);
    return {header.Bytes().begin(), header.Bytes().end()};
}

/// What a pixel has in a plane.
unsigned Sample(const PcxPicture& picture, std::size_t pixel, int plane) {
    if (picture.bitsPerPlane == 8) return picture.samples[pixel * static_cast<std::size_t>(picture.planes) + plane];
    if (picture.planes > 1) return (picture.samples[pixel] >> plane) & 1U;
    return picture.samples[pixel];
}

Bytes Pack(const PcxPicture& picture, int row, int plane) {
    Bytes line(BytesOfLine(picture));
    const auto bits = static_cast<std::size_t>(picture.bitsPerPlane);
    const auto width = static_cast<std::size_t>(picture.width);
    for (std::size_t x = 0; x < width; ++x) {
        const unsigned sample = Sample(picture, static_cast<std::size_t>(row) * width + x, plane);
        const std::size_t shift = 8 - bits - x * bits % 8;
        line[x * bits / 8] |= static_cast<unsigned char>(sample << shift);
    }
    const std::size_t used = UsedBytesOfLine(picture);
    std::fill(line.begin() + static_cast<std::ptrdiff_t>(used), line.end(), line[used - 1]);
    return line;
}

void AppendRun(Bytes& out, std::size_t length, unsigned char value) {
    if (length > 1 || value >= kCountMark) out.push_back(static_cast<unsigned char>(kCountMark | length));
    out.push_back(value);
}

void AppendRuns(Bytes& out, std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const auto last = std::ranges::find_if(bytes, [&](unsigned char byte) { return byte != bytes.front(); });
        const std::size_t length = std::min(static_cast<std::size_t>(last - bytes.begin()), kMaxRun);
        AppendRun(out, length, bytes.front());
        bytes = bytes.subspan(length);
    }
}

void AppendLine(const PcxPicture& picture, const Bytes& line, Bytes& out) {
    const std::size_t used = UsedBytesOfLine(picture);
    if (!picture.isCoded) {
        out.insert(out.end(), line.begin(), line.end());
    } else if (used == line.size()) {
        AppendRuns(out, line);
    } else {
        AppendRuns(out, std::span(line).first(used - 1));
        AppendRun(out, line.size() - used + 1, line.back());
    }
}

}  // namespace

std::vector<unsigned char> PcxFile(const PcxPicture& picture) {
    Bytes file = Header(picture);
    for (int row = 0; row < picture.height; ++row) {
        for (int plane = 0; plane < picture.planes; ++plane)
            AppendLine(picture, Pack(picture, row, plane), file);
    }
    if (picture.palette.size() > kHeaderPaletteBytes) {
        file.push_back(kPaletteMarker);
        file.insert(file.end(), picture.palette.begin(), picture.palette.end());
    }
    return file;
}

std::vector<unsigned char> DcxFile(const std::vector<std::vector<unsigned char>>& pages) {
    constexpr unsigned kDcx = 0x3ADE68B1;
    ByteBuilder list, pictures;
    list.Little32(kDcx);
    const std::size_t start = 4 * (pages.size() + 2);
    for (const Bytes& page : pages) {
        list.Little32(static_cast<unsigned>(start + pictures.Size()));
        pictures.Append(page);
    }
    list.Little32(0).Append(pictures.Bytes());
    return {list.Bytes().begin(), list.Bytes().end()};
}

}  // namespace Kavra::Legacy
