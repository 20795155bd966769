#include "legacy/PictFile.h"

#include <algorithm>
#include <cmath>

namespace Kavra::Legacy {

namespace {

constexpr std::size_t kPreambleBytes = 512;
constexpr std::size_t kMaxUnits = 128;  // of a packet that every program reads alike
constexpr unsigned kPixelMapFlag = 0x8000;

void AddRect(ByteBuilder& file, int width, int height, int top = 0) {
    file.Big16(static_cast<unsigned>(top)).Big16(0);
    file.Big16(static_cast<unsigned>(top + height)).Big16(static_cast<unsigned>(width));
}

/// All that comes before the image.
ByteBuilder Start(int width, int height) {
    ByteBuilder file(kPreambleBytes);
    file.At(kPreambleBytes).Big16(0);  // the size is filled in at the end
    AddRect(file, width, height);
    file.Big16(0x0011).Big16(0x02FF);                                                 // version 2
    file.Big16(0x0C00).Big16(0xFFFE).Big16(0).Big16(72).Big16(0).Big16(72).Big16(0);  // header: resolutions
    AddRect(file, width, height);
    file.Fill(4, 0);
    file.Big16(0x0001).Big16(10);  // clipping region
    AddRect(file, width, height);
    return file;
}

ByteBuilder& End(ByteBuilder& file) {
    file.Fill(file.Size() % 2, 0).Big16(0x00FF);
    const auto size = static_cast<unsigned>(file.Size() - kPreambleBytes);
    file.At(kPreambleBytes).Big16(size & 0xFFFF).At(file.Size());
    return file;
}

struct PixelMap {
    unsigned type;  // 0: indices, 16: colours
    unsigned bits;
    unsigned components;
    unsigned componentBits;
    unsigned packing;
};

void AddPixelMap(ByteBuilder& file, int width, int height, unsigned rowBytes, const PixelMap& map, int top = 0) {
    file.Big16(rowBytes | kPixelMapFlag);
    AddRect(file, width, height, top);
    file.Big16(0).Big16(map.packing).Big16(0).Big16(0);
    file.Big16(72).Big16(0).Big16(72).Big16(0);
    file.Big16(map.type).Big16(map.bits).Big16(map.components).Big16(map.componentBits).Fill(12, 0);
}

void AddPlacement(ByteBuilder& file, int width, int height, PictMode mode) {
    AddRect(file, width, height);
    AddRect(file, width, height);
    file.Big16(static_cast<unsigned>(mode));
}

void AddRow(ByteBuilder& file, std::span<const unsigned char> row, std::size_t unit, bool wideCount) {
    const std::vector<unsigned char> packed = PackPictRow(row, unit);
    const auto count = static_cast<unsigned>(packed.size());
    (wideCount ? file.Big16(count) : file.Byte(count)).Append(packed);
}

/// A region: the circle in the middle that touches the upper and the lower edge. Of each row that is not like the one
/// above, where it changes.
void AddCircle(ByteBuilder& file, int width, int height) {
    ByteBuilder rows;
    int before = 0;  // half the width of the row above
    for (int y = 0; y < height; ++y) {
        const double fromMiddle = y + 0.5 - 0.5 * height;
        const int half = static_cast<int>(std::sqrt(0.25 * height * height - fromMiddle * fromMiddle));
        if (half == before) continue;
        std::vector<int> edges = {width / 2 - half, width / 2 + half};
        if (before > 0) edges.insert(edges.end(), {width / 2 - before, width / 2 + before});
        std::ranges::sort(edges);
        rows.Big16(static_cast<unsigned>(y));
        for (const int edge : edges)
            rows.Big16(static_cast<unsigned>(edge));
        rows.Big16(0x7FFF);
        before = half;
    }
    rows.Big16(static_cast<unsigned>(height)).Big16(static_cast<unsigned>(width / 2 - before));
    rows.Big16(static_cast<unsigned>(width / 2 + before)).Big16(0x7FFF).Big16(0x7FFF);
    file.Big16(static_cast<unsigned>(10 + rows.Size()));
    AddRect(file, width, height);
    file.Append(rows.Bytes());
}

/// Units from the start that are all the same.
std::size_t RunLength(std::span<const unsigned char> row, std::size_t unit) {
    const auto first = row.first(unit);
    std::size_t units = 1;
    while (units < kMaxUnits && (units + 1) * unit <= row.size() &&
           std::ranges::equal(row.subspan(units * unit, unit), first))
        ++units;
    return units;
}

/// Units from the start up to a run that is worth a packet.
std::size_t CopyLength(std::span<const unsigned char> row, std::size_t unit) {
    std::size_t units = 0;
    while (units < kMaxUnits && units * unit < row.size() && RunLength(row.subspan(units * unit), unit) < 3)
        ++units;
    return units;
}

/// A pixel of three bytes in 5 bits a channel.
unsigned To555(std::span<const unsigned char> rgb) {
    return static_cast<unsigned>(rgb[0] >> 3) << 10 | static_cast<unsigned>(rgb[1] >> 3) << 5 | rgb[2] >> 3;
}

std::vector<unsigned char> Row16(std::span<const unsigned char> rgb) {
    std::vector<unsigned char> row;
    for (std::size_t at = 0; at < rgb.size(); at += 3) {
        const unsigned pixel = To555(rgb.subspan(at, 3));
        row.push_back(static_cast<unsigned char>(pixel >> 8));
        row.push_back(static_cast<unsigned char>(pixel & 0xFF));
    }
    return row;
}

/// All red of the row, then all green, then all blue.
std::vector<unsigned char> Row32(std::span<const unsigned char> rgb) {
    std::vector<unsigned char> row;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        for (std::size_t at = channel; at < rgb.size(); at += 3)
            row.push_back(rgb[at]);
    }
    return row;
}

std::vector<unsigned char> RowOfBits(std::span<const unsigned char> black, std::size_t rowBytes) {
    std::vector<unsigned char> row(rowBytes);
    for (std::size_t x = 0; x < black.size(); ++x) {
        if (black[x] != 0) row[x / 8] |= static_cast<unsigned char>(0x80 >> x % 8);
    }
    return row;
}

}  // namespace

ByteBuilder PictOfBands(int width, int height, std::span<const unsigned char> rgb, int rowsOfBand) {
    const std::size_t bytes = 3 * static_cast<std::size_t>(width);
    const auto rowBytes = static_cast<unsigned>(4 * width);
    ByteBuilder file = Start(width, height);
    for (int top = 0; top < height; top += rowsOfBand) {
        const int rows = std::min(rowsOfBand, height - top);
        file.Fill(file.Size() % 2, 0).Big16(0x009A).Big16(0).Big16(0x00FF);
        AddPixelMap(file, width, rows, rowBytes,
                    {.type = 16, .bits = 32, .components = 3, .componentBits = 8, .packing = 4}, top);
        AddRect(file, width, rows, top);
        AddRect(file, width, rows, top);
        file.Big16(static_cast<unsigned>(PictMode::kCopy));
        for (int y = top; y < top + rows; ++y)
            AddRow(file, Row32(rgb.subspan(static_cast<std::size_t>(y) * bytes, bytes)), 1, rowBytes > 250);
    }
    return End(file);
}

ByteBuilder PictThroughCircle(int width, int height, std::span<const unsigned char> rgb, int times) {
    const std::size_t bytes = 3 * static_cast<std::size_t>(width);
    const auto rowBytes = static_cast<unsigned>(2 * width);
    ByteBuilder file = Start(times * width, times * height);
    file.Big16(0x009B).Big16(0).Big16(0x00FF);
    AddPixelMap(file, width, height, rowBytes,
                {.type = 16, .bits = 16, .components = 3, .componentBits = 5, .packing = 3});
    AddRect(file, width, height);
    AddRect(file, times * width, times * height);
    file.Big16(static_cast<unsigned>(PictMode::kCopy));
    AddCircle(file, times * width, times * height);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y)
        AddRow(file, Row16(rgb.subspan(y * bytes, bytes)), 2, rowBytes > 250);
    return End(file);
}

std::vector<unsigned char> PackPictRow(std::span<const unsigned char> row, std::size_t unit) {
    std::vector<unsigned char> packed;
    while (!row.empty()) {
        const std::size_t copied = CopyLength(row, unit);
        const std::size_t units = copied > 0 ? copied : RunLength(row, unit);
        const std::size_t stored = copied > 0 ? units * unit : unit;
        packed.push_back(static_cast<unsigned char>(copied > 0 ? units - 1 : 257 - units));
        packed.insert(packed.end(), row.begin(), row.begin() + static_cast<std::ptrdiff_t>(stored));
        row = row.subspan(units * unit);
    }
    return packed;
}

ByteBuilder PictOfIndices(int width, int height, std::span<const unsigned char> indices,
                          std::span<const PictEntry> colours) {
    const auto pixels = static_cast<std::size_t>(width);
    const auto rowBytes = static_cast<unsigned>(width);  // not made even: some programs take no padding
    ByteBuilder file = Start(width, height);
    file.Big16(0x0098);
    AddPixelMap(file, width, height, rowBytes,
                {.type = 0, .bits = 8, .components = 1, .componentBits = 8, .packing = 0});
    file.Fill(6, 0).Big16(static_cast<unsigned>(colours.size() - 1));
    for (unsigned i = 0; i < colours.size(); ++i) {
        file.Big16(i);
        for (const unsigned channel : colours[i])
            file.Big16(channel * 257);
    }
    AddPlacement(file, width, height, PictMode::kCopy);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const auto row = indices.subspan(y * pixels, pixels);
        if (rowBytes < 8) {
            file.Append(row);
        } else {
            AddRow(file, row, 1, rowBytes > 250);
        }
    }
    return End(file);
}

ByteBuilder PictOfColours(int width, int height, std::span<const unsigned char> rgb, int bits, PictMode mode) {
    const std::size_t bytes = 3 * static_cast<std::size_t>(width);
    const bool wide = bits == 32;
    ByteBuilder file = Start(width, height);
    file.Big16(0x009A).Big16(0).Big16(0x00FF);
    AddPixelMap(file, width, height, static_cast<unsigned>(width * bits / 8),
                {.type = 16,
                 .bits = static_cast<unsigned>(bits),
                 .components = 3,
                 .componentBits = wide ? 8U : 5U,
                 .packing = wide ? 4U : 3U});
    AddPlacement(file, width, height, mode);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const auto row = rgb.subspan(y * bytes, bytes);
        AddRow(file, wide ? Row32(row) : Row16(row), wide ? 1 : 2, true);
    }
    return End(file);
}

ByteBuilder PictOfBits(int width, int height, std::span<const unsigned char> black) {
    const auto pixels = static_cast<std::size_t>(width);
    const unsigned rowBytes = static_cast<unsigned>((width + 15) / 16 * 2);
    const bool packed = rowBytes >= 8;
    ByteBuilder file = Start(width, height);
    file.Big16(packed ? 0x0098 : 0x0090).Big16(rowBytes);
    AddRect(file, width, height);
    AddPlacement(file, width, height, PictMode::kCopy);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const std::vector<unsigned char> row = RowOfBits(black.subspan(y * pixels, pixels), rowBytes);
        if (packed) {
            AddRow(file, row, 1, rowBytes > 250);
        } else {
            file.Append(row);
        }
    }
    return End(file);
}

}  // namespace Kavra::Legacy
