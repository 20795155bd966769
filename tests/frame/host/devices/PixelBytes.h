/// Blocks of converted pixels as plain bytes.
#pragma once

#include <kavra/objects/IMemoryAllocator.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <span>
#include <vector>

namespace Kavra::Tests {

using ByteVector = std::vector<unsigned char>;

/// The bytes of values, as they lie in memory.
template <class T>
ByteVector BytesOf(std::span<const T> values) {
    ByteVector bytes(values.size() * sizeof(T));
    if (!bytes.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}
template <class T>
ByteVector BytesOf(const std::vector<T>& values) {
    return BytesOf(std::span<const T>(values));
}

/// Copies `size` bytes of a block and frees it.
inline ByteVector TakeBlock(void* block, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(block);
    ByteVector result(bytes, bytes + size);
    Objects::KavraDelete(block);
    return result;
}

/// The same values on every run.
inline ByteVector RandomBytes(std::size_t count) {
    std::mt19937 random(20260114);
    ByteVector bytes(count);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random());
    return bytes;
}

}  // namespace Kavra::Tests
