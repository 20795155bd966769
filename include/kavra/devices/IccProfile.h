/// \file
/// Whether a colour profile is one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

namespace Icc {

/// Four bytes as a number, the first one the highest.
inline std::uint32_t Number(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           std::uint32_t{bytes[3]};
}

/// Four characters as a number: Signature("acsp").
constexpr std::uint32_t Signature(const char (&text)[5]) {
    return std::uint32_t{static_cast<unsigned char>(text[0])} << 24 |
           std::uint32_t{static_cast<unsigned char>(text[1])} << 16 |
           std::uint32_t{static_cast<unsigned char>(text[2])} << 8 | std::uint32_t{static_cast<unsigned char>(text[3])};
}

constexpr std::size_t kTagTable = 128;  ///< where the count of tags is; 12 bytes a tag follow

/// Whether every tag lies behind the header and inside the profile.
inline bool HasSoundTags(const unsigned char* profile, std::size_t bytes) {
    const std::size_t count = Number(profile + kTagTable);
    if (count > (bytes - kTagTable - 4) / 12) return false;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char* const tag = profile + kTagTable + 4 + i * 12;
        const std::size_t offset = Number(tag + 4), size = Number(tag + 8);
        if (offset < kTagTable || offset > bytes || size > bytes - offset) return false;
    }
    return count > 0;
}

}  // namespace Icc

/// The longest profile that is written or told of, in bytes.
constexpr std::size_t kMaxIccBytes = std::size_t{16} << 20;

/// Whether `bytes` bytes at `data` are an ICC profile of pictures with so many channels, as far as its header and its
/// table of tags tell (ICC.1:2022, 7.2 and 7.3): its length is the one that it names, a multiple of four from version 4
/// on; it is the profile of an input, display, output or colour space device between grey (1 or 2 channels) or RGB (3 or
/// 4) and XYZ or Lab; its tags are inside. What the tags hold is not looked at. `data` may be null.
inline bool IsSoundIccProfile(const void* data, std::size_t bytes, int channels) {
    using Icc::Number;
    using Icc::Signature;
    if (data == nullptr || bytes < Icc::kTagTable + 4 || bytes > kMaxIccBytes) return false;
    const auto* const profile = static_cast<const unsigned char*>(data);
    const bool isPadded = profile[8] < 4 || bytes % 4 == 0;
    if (Number(profile) != bytes || !isPadded || Number(profile + 36) != Signature("acsp")) return false;
    const std::uint32_t device = Number(profile + 12), space = Number(profile + 16), connection = Number(profile + 20);
    const bool isOfDevice = device == Signature("scnr") || device == Signature("mntr") || device == Signature("prtr") ||
                            device == Signature("spac");
    const bool fits = channels >= 1 && channels <= 4 && space == (channels < 3 ? Signature("GRAY") : Signature("RGB "));
    const bool isConnected = connection == Signature("XYZ ") || connection == Signature("Lab ");
    const bool hasIntent = Number(profile + 64) <= 3;
    return isOfDevice && fits && isConnected && hasIntent && Icc::HasSoundTags(profile, bytes);
}

}  // namespace Kavra::Devices
