/// KTX2 files made field by field as the format's description gives them.
#pragma once

#include "frame/host/devices/DdsTestFile.h"

#include <kavra/devices/TextureFile.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kavra::Tests {

inline void Append(Bytes& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i, value >>= 8)
        bytes.push_back(static_cast<unsigned char>(value));
}

/// `count` bytes `first`, `first` + 1, ... modulo 256.
inline Bytes Counting(std::size_t count, unsigned char first = 0) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<unsigned char>(first + i));
    return bytes;
}

/// Where fields lie.
enum KtxField : std::size_t {
    kAtFormat = 12,
    kAtWidth = 20,
    kAtHeight = 24,
    kAtDepth = 28,
    kAtLayers = 32,
    kAtFaces = 36,
    kAtLevels = 40,
    kAtScheme = 44,
    kAtDfdOffset = 48,
    kAtDfdBytes = 52,
    kAtKvdOffset = 56,
    kAtKvdBytes = 60,
    kAtIndex = 80,
};

class KtxFile {
public:
    /// A file of R8 pixels with a descriptor of as many colours as its reader looks at.
    KtxFile(std::uint32_t width, std::uint32_t height) {
        Set(kAtFormat, 9).Set(16, 1).Set(kAtWidth, width).Set(kAtHeight, height).Set(kAtFaces, 1).Set(kAtLevels, 1);
    }
    KtxFile& Set(std::size_t offset, std::uint32_t value) {
        mFields.emplace_back(offset, value);
        return *this;
    }
    KtxFile& Transfer(unsigned char transfer, unsigned char flags = 0) {
        mTransfer = transfer;
        mFlags = flags;
        return *this;
    }
    KtxFile& Pair(std::string_view key, std::string_view value) {
        Append(mPairs, key.size() + 1 + value.size(), 4);
        mPairs.insert(mPairs.end(), key.begin(), key.end());
        mPairs.push_back(0);
        mPairs.insert(mPairs.end(), value.begin(), value.end());
        mPairs.resize((mPairs.size() + 3) / 4 * 4);
        return *this;
    }
    /// The next level, the largest first; `unpacked` bytes where it is packed.
    KtxFile& Level(const Bytes& bytes, std::uint64_t unpacked = 0) {
        mLevels.push_back(bytes);
        mUnpacked.push_back(unpacked == 0 ? bytes.size() : unpacked);
        return *this;
    }

    Bytes All() const {
        Bytes file = {0xAB, 'K', 'T', 'X', ' ', '2', '0', 0xBB, '\r', '\n', 0x1A, '\n'};
        file.resize(80 + 24 * mLevels.size());
        const std::size_t descriptor = file.size();
        Append(file, 44, 4);
        Append(file, 0, 4);
        Append(file, 2 | 40 << 16, 4);
        file.insert(file.end(), {1, 1, mTransfer, mFlags});
        file.resize(descriptor + 44);
        const std::size_t pairs = file.size();
        file.insert(file.end(), mPairs.begin(), mPairs.end());
        for (std::size_t level = mLevels.size(); level-- > 0;) {
            file.resize((file.size() + 47) / 48 * 48);
            Bytes place;
            Append(place, file.size(), 8);
            Append(place, mLevels[level].size(), 8);
            Append(place, mUnpacked[level], 8);
            std::ranges::copy(place, file.begin() + static_cast<std::ptrdiff_t>(80 + 24 * level));
            file.insert(file.end(), mLevels[level].begin(), mLevels[level].end());
        }
        Put(file, kAtDfdOffset, static_cast<std::uint32_t>(descriptor));
        Put(file, kAtDfdBytes, 44);
        Put(file, kAtKvdOffset, mPairs.empty() ? 0 : static_cast<std::uint32_t>(pairs));
        Put(file, kAtKvdBytes, static_cast<std::uint32_t>(mPairs.size()));
        for (const auto& [offset, value] : mFields)
            Put(file, offset, value);
        return file;
    }

    static void Put(Bytes& file, std::size_t offset, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            file.at(offset + i) = static_cast<unsigned char>(value >> (8 * i));
    }

private:
    std::vector<std::pair<std::size_t, std::uint32_t>> mFields;
    unsigned char mTransfer = 1, mFlags = 0;
    Bytes mPairs;
    std::vector<Bytes> mLevels;
    std::vector<std::uint64_t> mUnpacked;
};

/// A texture as a reader gives it; without an open file only the reason.
struct ReadTexture {
    Devices::TextureShape shape;
    Bytes bytes;
    bool isAsStored = false;
    bool isBottomUp = false;
    bool isWhole = false;
    std::string reason;
};

inline ReadTexture ReadTextureFile(const std::filesystem::path& path) {
    ReadTexture read;
    Devices::TextureFileReader reader;
    if (reader.Open(Wide(path))) {
        read.shape = reader.Shape();
        read.isAsStored = reader.IsAsStored();
        read.isBottomUp = reader.IsBottomUp();
        read.bytes.assign(Devices::TextureBytes(read.shape), 0xEE);
        read.isWhole = reader.ReadAll(read.bytes.data());
    }
    read.reason = reader.Reason();
    return read;
}

inline ReadTexture ReadTextureBytes(const Bytes& file) {
    const TemporaryFolder folder;
    return ReadTextureFile(folder.Write("texture", file));
}

}  // namespace Kavra::Tests
