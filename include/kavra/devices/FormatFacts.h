/// \file
/// What pixel formats are made of.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>

#include <cstdint>

namespace Kavra::Devices {

/// The type of a channel. Both 16-bit types are little-endian; a half is an IEEE 754 binary16.
enum class ElementType : std::uint8_t {
    kNone,    ///< there are no channels that could be addressed one by one
    kUInt8,   ///< an unsigned integer, 0 to 255 for 0 to 1
    kUInt16,  ///< an unsigned integer, 0 to 65535 for 0 to 1
    kHalf,    ///< 16 bits, any value
    kFloat,   ///< IEEE 754 binary32, any value
};

/// What `EFormat` says of a format in words, for programs that treat formats by what they hold instead of by name.
///
///     FormatFacts facts;
///     for (EFormat format = NextFormat(kUnknown); format != kUnknown; format = NextFormat(format)) {
///         if (GetFormatFacts(format, facts) && facts.element == ElementType::kFloat) std::puts(facts.name);
///     }
struct FormatFacts {
    std::uint32_t size = sizeof(FormatFacts);  ///< of the structure as its user knows it, in bytes
    const char* name = "";                     ///< of the enumerator; lives as long as the process
    const char* shortName = "";                ///< for people, like "rgba8"; empty where there is none
    int channels = 0;                          ///< of a pixel, of those in blocks too; a meaningless X counts
    int bytesPerPixel = 0;                     ///< 0 for block-compressed formats
    int bytesPerBlock = 0;                     ///< of 4 x 4 pixels; 0 for all that are not block-compressed
    ElementType element = ElementType::kNone;  ///< `kNone` for block-compressed formats
    bool blueFirst = false;                    ///< the first channel is blue and the third red
    bool hasAlpha = false;                     ///< the last channel is an alpha
    bool isInLibrary = false;                  ///< the image library loads and saves such pixels
};

/// Fills `facts`, as far as its `size` goes, with what is known of a format, of `kUnknown` too. False, and nothing
/// filled, for reserved numbers and values that are no format. Threads: any.
KAVRA_DEVICES_API bool GetFormatFacts(EFormat format, FormatFacts& facts);

/// Returns the format with the next larger number, `kUnknown` after the last one. Reserved numbers are left out.
/// Threads: any.
KAVRA_DEVICES_API EFormat NextFormat(EFormat format);

/// Returns the format of the same blocks that says (`isSrgb`), or does not say, that the colours are on the curve of
/// sRGB: `kBC7Srgb` of `kBC7` and the other way round. The format itself where there is no such one. Threads: any.
KAVRA_DEVICES_API EFormat SrgbVariant(EFormat format, bool isSrgb);

}  // namespace Kavra::Devices
