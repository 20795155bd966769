/// The bytes of PCX files, field by field.
#pragma once

#include "readers/ByteBuilder.h"
#include "readers/pcx/PcxReader.h"

#include <initializer_list>
#include <vector>

namespace Kavra::Tests {

using Bytes = std::vector<unsigned char>;

/// A header of version 5 with run-length coded lines for so many pixels, at its usual place.
inline Devices::PcxHeader PcxFields(int bitsPerPlane, int planes, int width, int height, int bytesPerLine) {
    Devices::PcxHeader header;
    header.version = 5;
    header.encoding = 1;
    header.bitsPerPlane = static_cast<std::uint8_t>(bitsPerPlane);
    header.planes = static_cast<std::uint8_t>(planes);
    header.xMin = header.yMin = 0;
    header.xMax = static_cast<std::uint16_t>(width - 1);
    header.yMax = static_cast<std::uint16_t>(height - 1);
    header.bytesPerLine = static_cast<std::uint16_t>(bytesPerLine);
    header.paletteInfo = 1;
    // Entry i is (i, 100 + i, 200 + i): no grey ramp, and no two alike.
    for (std::size_t i = 0; i < 16; ++i) {
        for (std::size_t c = 0; c < 3; ++c)
            header.palette[3 * i + c] = static_cast<unsigned char>(100 * c + i);
    }
    return header;
}

/// The 128 bytes of the header.
inline ByteBuilder PcxHead(const Devices::PcxHeader& header) {
    ByteBuilder file(128);
    file.At(0).Byte(10).Byte(header.version).Byte(header.encoding).Byte(header.bitsPerPlane);
    file.Little16(header.xMin).Little16(header.yMin).Little16(header.xMax).Little16(header.yMax);
    file.At(16).Append(header.palette);
    file.At(65).Byte(header.planes).Little16(header.bytesPerLine).Little16(header.paletteInfo);
    return file.At(128);
}

inline ByteBuilder PcxHead(const Devices::PcxHeader& header, const Bytes& data) {
    return PcxHead(header).Append(data);
}

/// The marker and 256 colours: entry i is (i, 255 - i, 7).
inline Bytes PcxTail(unsigned char marker = 12) {
    Bytes tail = {marker};
    for (int i = 0; i < 256; ++i)
        tail.insert(tail.end(), {static_cast<unsigned char>(i), static_cast<unsigned char>(255 - i), 7});
    return tail;
}

/// The pixels of these indices in the colours of `PcxTail`.
inline Bytes InTailColours(std::initializer_list<int> indices) {
    Bytes pixels;
    for (const int i : indices)
        pixels.insert(pixels.end(), {static_cast<unsigned char>(i), static_cast<unsigned char>(255 - i), 7, 255});
    return pixels;
}

/// The pixels of these indices in the colours of `PcxFields`.
inline Bytes InHeaderColours(std::initializer_list<int> indices) {
    Bytes pixels;
    for (const int i : indices) {
        pixels.insert(pixels.end(), {static_cast<unsigned char>(i), static_cast<unsigned char>(100 + i),
                                     static_cast<unsigned char>(200 + i), 255});
    }
    return pixels;
}

}  // namespace Kavra::Tests
