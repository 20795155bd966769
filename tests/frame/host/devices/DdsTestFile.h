/// DDS files made byte by byte, and what the reader makes of them.
#pragma once

#include "support/TemporaryFolder.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/DDSWriter.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <numeric>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

using Bytes = std::vector<unsigned char>;

/// A header of 128 or 148 bytes as the format's description gives it, and the pixels behind it.
class DdsFile {
public:
    DdsFile(std::uint32_t width, std::uint32_t height) : mHeader(128) {
        std::memcpy(mHeader.data(), "DDS ", 4);
        Set(4, 124).Set(8, 0x1007).Set(12, height).Set(16, width).Set(76, 32).Set(108, 0x1000);
    }

    /// Any 32-bit field by its offset in the file.
    DdsFile& Set(std::size_t offset, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            mHeader.at(offset + i) = static_cast<unsigned char>(value >> (8 * i));
        return *this;
    }
    DdsFile& Or(std::size_t offset, std::uint32_t bits) {
        std::uint32_t value = 0;
        for (int i = 3; i >= 0; --i)
            value = value << 8 | mHeader.at(offset + i);
        return Set(offset, value | bits);
    }

    DdsFile& Masks(std::uint32_t flags, std::uint32_t bits, std::uint32_t red, std::uint32_t green = 0,
                   std::uint32_t blue = 0, std::uint32_t alpha = 0) {
        return Set(80, flags).Set(88, bits).Set(92, red).Set(96, green).Set(100, blue).Set(104, alpha);
    }
    DdsFile& Code(std::uint32_t code) { return Set(80, 4).Set(84, code); }
    DdsFile& Code(std::string_view text) {
        std::uint32_t code = 0;
        for (int i = 3; i >= 0; --i)
            code = code << 8 | static_cast<unsigned char>(text[i]);
        return Code(code);
    }
    DdsFile& Dxgi(std::uint32_t format, std::uint32_t dimension = 3, std::uint32_t misc = 0,
                  std::uint32_t arraySize = 1) {
        Code("DX10");
        mHeader.resize(148);
        return Set(128, format).Set(132, dimension).Set(136, misc).Set(140, arraySize);
    }
    DdsFile& Mips(std::uint32_t count) { return Or(8, 0x20000).Set(28, count).Or(108, 0x400008); }
    /// Bit i of `faces`: face i is in the file.
    DdsFile& Cube(std::uint32_t faces = 0x3F) { return Or(108, 0x8).Or(112, 0x200 | faces << 10); }
    DdsFile& Volume(std::uint32_t depth) { return Or(8, 0x800000).Set(24, depth).Or(108, 0x8).Or(112, 0x200000); }

    DdsFile& Pixels(const Bytes& pixels) {
        mPixels.insert(mPixels.end(), pixels.begin(), pixels.end());
        return *this;
    }
    /// `count` bytes `first`, `first` + 1, ... modulo 256.
    DdsFile& Counting(std::size_t count, unsigned char first = 0) {
        Bytes pixels(count);
        std::iota(pixels.begin(), pixels.end(), first);
        return Pixels(pixels);
    }

    Bytes All() const {
        Bytes all = mHeader;
        all.insert(all.end(), mPixels.begin(), mPixels.end());
        return all;
    }

private:
    Bytes mHeader;
    Bytes mPixels;
};

/// A level as it was delivered, the wrapper released.
struct DdsLevel {
    Devices::ImageDescription desc;
    Bytes bytes;  ///< the whole block: of a cube all six faces
};

/// Loads the level that comes next, at the size that it has.
inline std::optional<DdsLevel> LoadNext(Devices::DDSReader& reader, int level) {
    const auto side = [&](int size) { return size >> level > 1 ? size >> level : 1; };
    DdsLevel loaded;
    Objects::IMemoryWrapper<void>* wrapper =
        reader.Load(loaded.desc, side(reader.Width()), side(reader.Height()), side(reader.Depth()));
    if (wrapper == nullptr) return std::nullopt;
    const std::size_t faces = loaded.desc.textureType == Devices::kTextureCube ? 6 : 1;
    const auto* data = static_cast<const unsigned char*>(wrapper->mData);
    loaded.bytes.assign(data, data + loaded.desc.dataSize * faces);
    wrapper->Delete();
    return loaded;
}

/// Opens the bytes as a file and loads one level, as the dispatch does.
inline std::optional<DdsLevel> LoadLevel(std::span<const unsigned char> file, int level = 0) {
    const TemporaryFolder folder;
    Devices::DDSReader reader;
    if (!reader.Load(Wide(folder.Write("picture.dds", file)))) return std::nullopt;
    for (int i = 0; i < level; ++i) {
        if (!reader.SkipMipLevel(i)) return std::nullopt;
    }
    return LoadNext(reader, level);
}

inline std::optional<DdsLevel> LoadLevel(const DdsFile& file, int level = 0) {
    return LoadLevel(file.All(), level);
}

/// Little-endian bytes of 16-bit and of float values.
inline Bytes Shorts(std::initializer_list<std::uint16_t> values) {
    Bytes bytes;
    for (const std::uint16_t value : values) {
        bytes.push_back(static_cast<unsigned char>(value));
        bytes.push_back(static_cast<unsigned char>(value >> 8));
    }
    return bytes;
}

inline Bytes Floats(std::initializer_list<float> values) {
    Bytes bytes(values.size() * 4);
    std::memcpy(bytes.data(), values.begin(), bytes.size());
    return bytes;
}

/// Bytes without a period that a misplaced row or face could share.
inline Bytes Noise(std::size_t count) {
    Bytes bytes(count);
    std::uint32_t state = 12345;
    for (unsigned char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

/// Writes a file with a writer of its own.
inline bool Save(const std::filesystem::path& path, Devices::ETextureType type, Devices::EFormat format, int width,
                 int height, int depth, int levels, const Bytes& data) {
    Devices::DDSWriter writer;
    return writer.Construct(type, format, width, height, depth, levels, static_cast<int>(data.size()), 0) &&
           writer.Write(Wide(path), data.data());
}

}  // namespace Kavra::Tests
