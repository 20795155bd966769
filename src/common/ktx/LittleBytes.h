/// Little-endian numbers, to and from bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace Kavra::Devices::Ktx {

/// Bytes that grow number by number. What does not fit is cut.
class LittleBytes {
public:
    void Add8(std::uint64_t value) { Add(value, 1); }
    void Add16(std::uint64_t value) { Add(value, 2); }
    void Add32(std::uint64_t value) { Add(value, 4); }
    void Add64(std::uint64_t value) { Add(value, 8); }
    void AddBytes(std::span<const unsigned char> bytes) { mBytes.insert(mBytes.end(), bytes.begin(), bytes.end()); }
    /// Text and a NUL.
    void AddText(std::string_view text) {
        mBytes.insert(mBytes.end(), text.begin(), text.end());
        mBytes.push_back(0);
    }
    /// Zeros up to a multiple of `bytes`.
    void PadTo(std::size_t bytes) { mBytes.resize((mBytes.size() + bytes - 1) / bytes * bytes); }

    std::size_t Size() const { return mBytes.size(); }
    std::vector<unsigned char> Take() && { return std::move(mBytes); }

private:
    void Add(std::uint64_t value, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            mBytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }

    std::vector<unsigned char> mBytes;
};

/// The number that begins at `offset`, within the bytes.
inline std::uint32_t Little32(std::span<const unsigned char> bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | bytes[offset + i];
    return value;
}
inline std::uint64_t Little64(std::span<const unsigned char> bytes, std::size_t offset) {
    return std::uint64_t{Little32(bytes, offset + 4)} << 32 | Little32(bytes, offset);
}

}  // namespace Kavra::Devices::Ktx
