#include "load/TextureFiles.h"

#include "common/PixelBlock.h"
#include "load/TextureLoader.h"

#include <array>
#include <string_view>

namespace Kavra::Tests {

LoadedTexture LoadFile(const std::filesystem::path& path, const LoadRequest& request, int fileType) {
    LoadedTexture result;
    const Common::PixelBlock block = Devices::LoadTextureByOIIO(result.desc, Wide(path), request, fileType);
    if (!block) return result;
    result.loaded = true;
    const std::size_t faces = result.desc.textureType == Devices::kTextureCube ? 6 : 1;
    result.bytes.assign(block.get(), block.get() + result.desc.dataSize * faces);
    return result;
}

namespace {

using ByteVector = std::vector<unsigned char>;

void PutBig32(ByteVector& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(value >> shift));
}

/// The checksum of a chunk (https://www.w3.org/TR/png-3/#D-CRCAppendix).
std::uint32_t Crc(const ByteVector& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const unsigned char byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? 0xEDB88320 ^ crc >> 1 : crc >> 1;
    }
    return ~crc;
}

void PutChunk(ByteVector& file, std::string_view type, const ByteVector& data) {
    PutBig32(file, static_cast<std::uint32_t>(data.size()));
    ByteVector covered(type.begin(), type.end());
    covered.insert(covered.end(), data.begin(), data.end());
    file.insert(file.end(), covered.begin(), covered.end());
    PutBig32(file, Crc(covered));
}

/// One stored, uncompressed block (RFC 1950, RFC 1951).
ByteVector Stored(const ByteVector& data) {
    const auto size = static_cast<std::uint16_t>(data.size());
    const auto inverse = static_cast<std::uint16_t>(~size);
    ByteVector stream = {0x78,
                         0x01,
                         0x01,
                         static_cast<unsigned char>(size),
                         static_cast<unsigned char>(size >> 8),
                         static_cast<unsigned char>(inverse),
                         static_cast<unsigned char>(inverse >> 8)};
    std::uint32_t a = 1, b = 0;
    for (const unsigned char byte : data) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    stream.insert(stream.end(), data.begin(), data.end());
    PutBig32(stream, b << 16 | a);
    return stream;
}

}  // namespace

std::vector<unsigned char> PngFile::Bytes() const {
    ByteVector file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    ByteVector header;
    PutBig32(header, width);
    PutBig32(header, height);
    header.insert(header.end(), {bitDepth, colourType, 0, 0, 0});
    PutChunk(file, "IHDR", header);
    ByteVector gammaChunk;
    PutBig32(gammaChunk, gamma);
    if (gamma != 0) PutChunk(file, "gAMA", gammaChunk);
    if (!palette.empty()) PutChunk(file, "PLTE", palette);
    PutChunk(file, "IDAT", Stored(rows));
    PutChunk(file, "IEND", {});
    return file;
}

}  // namespace Kavra::Tests
