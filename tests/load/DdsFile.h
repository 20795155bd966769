/// DDS files built by hand, field by field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

/// A header (https://learn.microsoft.com/windows/win32/direct3ddds/dx-graphics-dds-pguide) and the data behind it. As
/// it stands: one level of a flat texture, 8 bits of red, green, blue and alpha in this order.
struct DdsFile {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    std::uint32_t depth = 0;  // more than 0 makes it a volume
    std::uint32_t mips = 0;   // more than 0 says how many levels there are
    std::uint32_t faces = 0;  // bit n: face n of a cube map

    std::uint32_t pixelFlags = 0x41;  // RGB with alpha
    std::uint32_t fourCC = 0;
    std::uint32_t bitCount = 32;
    std::uint32_t masks[4] = {0x000000FF, 0x0000FF00, 0x00FF0000, 0xFF000000};

    std::uint32_t dxgiFormat = 0;  // more than 0 adds the DX10 part
    std::uint32_t miscFlags = 0;
    std::uint32_t arraySize = 1;

    // NOLINTNEXTLINE(readability-redundant-member-init): GCC misses it in initialisers that name other members
    std::vector<unsigned char> data{};

    static std::uint32_t Code(std::string_view text) {
        std::uint32_t code = 0;
        for (std::size_t i = text.size(); i-- > 0;)
            code = code << 8 | static_cast<unsigned char>(text[i]);
        return code;
    }

    DdsFile& Masks(std::uint32_t flags, std::uint32_t bits, std::uint32_t red, std::uint32_t green = 0,
                   std::uint32_t blue = 0, std::uint32_t alpha = 0) {
        pixelFlags = flags;
        bitCount = bits;
        masks[0] = red, masks[1] = green, masks[2] = blue, masks[3] = alpha;
        return *this;
    }
    DdsFile& Bgra() { return Masks(0x41, 32, 0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000); }
    DdsFile& Luminance8() { return Masks(0x20000, 8, 0xFF); }
    DdsFile& Luminance16() { return Masks(0x20000, 16, 0xFFFF); }
    DdsFile& LuminanceAlpha8() { return Masks(0x20001, 16, 0x00FF, 0, 0, 0xFF00); }
    DdsFile& FourCC(std::string_view code) {
        fourCC = Code(code);
        return Masks(4, 0, 0);
    }
    DdsFile& Dxgi(std::uint32_t format) {
        dxgiFormat = format;
        return FourCC("DX10");
    }

    std::vector<unsigned char> Bytes() const {
        std::vector<unsigned char> file;
        const auto put = [&](std::uint32_t value) {
            for (int i = 0; i < 4; ++i)
                file.push_back(static_cast<unsigned char>(value >> 8 * i));
        };
        const bool complex = mips > 0 || faces > 0 || depth > 0;
        put(Code("DDS "));
        put(124);
        put(0x1007 | (mips > 0 ? 0x20000 : 0) | (depth > 0 ? 0x800000 : 0));
        for (const std::uint32_t value : {height, width, std::uint32_t{0}, depth, mips})
            put(value);
        for (int reserved = 0; reserved < 11; ++reserved)
            put(0);
        for (const std::uint32_t value : {std::uint32_t{32}, pixelFlags, fourCC, bitCount})
            put(value);
        for (const std::uint32_t mask : masks)
            put(mask);
        put(0x1000 | (complex ? 8 : 0) | (mips > 0 ? 0x400000 : 0));
        put((faces > 0 ? 0x200 | faces << 10 : 0) | (depth > 0 ? 0x200000 : 0));
        for (int reserved = 0; reserved < 3; ++reserved)
            put(0);
        if (dxgiFormat > 0) {
            for (const std::uint32_t value :
                 {dxgiFormat, std::uint32_t{depth > 0 ? 4U : 3U}, miscFlags, arraySize, std::uint32_t{0}}) {
                put(value);
            }
        }
        file.insert(file.end(), data.begin(), data.end());
        return file;
    }
};

/// `count` pixels of one colour behind what is there.
inline void AppendPixels(std::vector<unsigned char>& data, std::size_t count, std::vector<unsigned char> pixel) {
    for (std::size_t i = 0; i < count; ++i)
        data.insert(data.end(), pixel.begin(), pixel.end());
}

}  // namespace Kavra::Tests
