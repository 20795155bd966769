/// A call of the resize service, argument by argument.
#pragma once

#include "common/HostObject.h"
#include "output/CountingAllocator.h"
#include "support/MessageRecorder.h"

#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace Kavra::Tests {

using Size = vec3<int>;
using Bytes = std::vector<unsigned char>;
using Block = Common::HostObject<Devices::IMemoryWrapper<void>>;

inline constexpr int kUntouched = -12345;

/// The bytes 1, 2, 3 ...
inline Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

/// Arguments of one call; unless changed they ask for the nearest pixels of a 4 x 4 picture in 2 x 2.
struct Resizing : testing::Test {
    Block Run(Devices::EResizeMethod method) {
        Devices::IImageHandler& host = handler;
        return Block(host.Resize(method, data, bytes.size(), srcPitch, srcSize, format, type, dstSize, pitch, filter));
    }
    /// The first `count` bytes of the new block, which must be all of it for the sanitizer to notice a longer one.
    std::optional<Bytes> Result(Devices::EResizeMethod method, std::size_t count) {
        const Block block = Run(method);
        if (!block) return std::nullopt;
        const auto* first = static_cast<const unsigned char*>(block->mData);
        return Bytes(first, first + count);
    }
    void Use(Bytes source) {
        bytes = std::move(source);
        data = bytes.data();
    }
    template <class T>
    void UseElements(const std::vector<T>& elements) {
        const auto* raw = reinterpret_cast<const unsigned char*>(elements.data());
        Use(Bytes(raw, raw + elements.size() * sizeof(T)));
    }

    Devices::OIIOImageHandler handler;
    MessageRecorder messages;
    CountingAllocator blocks{Objects::ObjModel::mDefaultAllocator};
    Bytes bytes = Counting(64);
    const void* data = bytes.data();
    int srcPitch = 16;
    Size srcSize{4, 4, 1};
    Devices::EFormat format = Devices::kR8G8B8A8;
    Devices::ETextureType type = Devices::kTexture2D;
    Size dstSize{2, 2, 1};
    int pitch = kUntouched;
    Devices::EImageFilterType filter = Devices::kFilterNearest;
};

}  // namespace Kavra::Tests
