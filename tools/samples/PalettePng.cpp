#include "PalettePng.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace Kavra::Samples {
namespace {

constexpr int kSteps = 6;

void AppendBig32(std::string& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
}

std::uint32_t Crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

std::uint32_t Adler32(std::string_view bytes) {
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const char byte : bytes) {
        a = (a + static_cast<unsigned char>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    return (b << 16) | a;
}

void AppendChunk(std::string& out, std::string_view type, std::string_view data) {
    AppendBig32(out, static_cast<std::uint32_t>(data.size()));
    const std::string body = std::string(type) + std::string(data);
    out += body;
    AppendBig32(out, Crc32(body));
}

std::string Stored(std::string_view data) {
    constexpr std::size_t kBlock = 65535;
    std::string out = "\x78\x01";
    for (std::size_t at = 0; at < data.size(); at += kBlock) {
        const std::string_view block = data.substr(at, kBlock);
        const auto length = static_cast<std::uint16_t>(block.size());
        out.push_back(at + kBlock >= data.size() ? 1 : 0);
        for (const unsigned value : {unsigned{length}, unsigned{static_cast<std::uint16_t>(~length)}}) {
            out.push_back(static_cast<char>(value & 0xFF));
            out.push_back(static_cast<char>(value >> 8));
        }
        out += block;
    }
    AppendBig32(out, Adler32(data));
    return out;
}

std::string Palette() {
    std::string entries;
    for (int i = 0; i < kSteps * kSteps * kSteps; ++i) {
        for (const int step : {i / (kSteps * kSteps), i / kSteps % kSteps, i % kSteps}) {
            entries.push_back(static_cast<char>(step * 255 / (kSteps - 1)));
        }
    }
    return entries;
}

std::string Rows(const Picture& picture) {
    std::string rows;
    for (int y = 0; y < picture.height; ++y) {
        rows.push_back(0);  // no filter
        for (int x = 0; x < picture.width; ++x) {
            const float* p = picture.At(x, y);
            int index = 0;
            for (int c = 0; c < 3; ++c) {
                index = index * kSteps + static_cast<int>(std::clamp(p[c], 0.0F, 1.0F) * (kSteps - 1) + 0.5F);
            }
            rows.push_back(static_cast<char>(index));
        }
    }
    return rows;
}

}  // namespace

void WritePalettePng(const std::string& path, const Picture& picture) {
    std::string header;
    AppendBig32(header, static_cast<std::uint32_t>(picture.width));
    AppendBig32(header, static_cast<std::uint32_t>(picture.height));
    header += std::string("\x08\x03\x00\x00\x00", 5);  // 8 bits, palette, deflate, adaptive filters, not interlaced
    std::string file = "\x89PNG\r\n\x1a\n";
    AppendChunk(file, "IHDR", header);
    AppendChunk(file, "PLTE", Palette());
    AppendChunk(file, "IDAT", Stored(Rows(picture)));
    AppendChunk(file, "IEND", "");
    std::ofstream stream(path, std::ios::binary);
    stream << file;
    if (!stream.flush()) throw std::runtime_error(path + ": cannot be written");
}

}  // namespace Kavra::Samples
