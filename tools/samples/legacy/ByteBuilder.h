/// Writing the bytes of a file down, in the order of its format.
#pragma once

#include "common/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace Kavra::Legacy {

class ByteBuilder {
public:
    ByteBuilder() = default;
    /// So many zero bytes, to be overwritten with `At`.
    explicit ByteBuilder(std::size_t count) : mBytes(count) {}

    /// What is added next overwrites the bytes from `position` on.
    ByteBuilder& At(std::size_t position) {
        mNext = position;
        return *this;
    }
    ByteBuilder& Byte(unsigned value);
    ByteBuilder& Big16(unsigned value) { return Byte(value >> 8).Byte(value & 0xFF); }
    ByteBuilder& Little16(unsigned value) { return Byte(value & 0xFF).Byte(value >> 8); }
    ByteBuilder& Little32(unsigned value) { return Little16(value & 0xFFFF).Little16(value >> 16); }
    ByteBuilder& Text(std::string_view text) {
        for (const char character : text)
            Byte(static_cast<unsigned char>(character));
        return *this;
    }
    ByteBuilder& Append(std::span<const unsigned char> bytes) {
        for (const unsigned char byte : bytes)
            Byte(byte);
        return *this;
    }
    ByteBuilder& Fill(std::size_t count, unsigned value) {
        while (count-- > 0)
            Byte(value);
        return *this;
    }
    ByteBuilder& CutTo(std::size_t size) {
        mBytes.resize(size);
        mNext = size;
        return *this;
    }

    std::size_t Size() const { return mBytes.size(); }
    std::span<const unsigned char> Bytes() const { return mBytes; }
    /// The builder must outlive the source.
    Common::ByteSource Source() const { return Common::ByteSource(std::span<const unsigned char>(mBytes)); }

private:
    std::vector<unsigned char> mBytes;
    std::size_t mNext = 0;
};

}  // namespace Kavra::Legacy
