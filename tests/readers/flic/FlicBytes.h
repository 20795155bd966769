/// Animations put together chunk by chunk.
#pragma once

#include "readers/ByteBuilder.h"

#include <initializer_list>

namespace Kavra::Tests {

/// A header of so many frames; nothing behind it.
inline ByteBuilder FlicHeaderBytes(unsigned frames, unsigned width, unsigned height) {
    ByteBuilder file(128);
    file.At(4).Little16(0xAF12).Little16(frames).Little16(width).Little16(height);
    file.At(128);
    return file;
}

inline void AddChunk(ByteBuilder& file, unsigned kind, const ByteBuilder& body) {
    file.Little32(static_cast<unsigned>(6 + body.Size())).Little16(kind).Append(body.Bytes());
}

/// A frame's own chunk; what is inside the frame follows.
inline void AddFrame(ByteBuilder& file) {
    AddChunk(file, 0xF1FA, ByteBuilder(10));
}

inline ByteBuilder BytesOf(std::initializer_list<unsigned> values) {
    ByteBuilder bytes;
    for (const unsigned value : values)
        bytes.Byte(value);
    return bytes;
}

/// The palette in which index i is (i, i + 1, i + 2), modulo 256.
inline ByteBuilder CountingPalette() {
    ByteBuilder body;
    body.Little16(1).Byte(0).Byte(0);
    for (unsigned i = 0; i < 256; ++i)
        body.Byte(i & 255).Byte((i + 1) & 255).Byte((i + 2) & 255);
    return body;
}

}  // namespace Kavra::Tests
