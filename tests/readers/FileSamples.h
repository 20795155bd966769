/// The smallest file of each kind that detection knows by content.
#pragma once

#include "readers/ByteBuilder.h"

#include <initializer_list>
#include <utility>

namespace Kavra::Tests {

/// Version 5, run-length coded, 8 bits in one plane.
inline ByteBuilder PcxStart() {
    ByteBuilder file(128);
    file.At(0).Byte(10).Byte(5).Byte(1).Byte(8);
    file.At(65).Byte(1);
    return file;
}

/// The records up to the raster type, each padded with spaces.
inline ByteBuilder CalsStart() {
    ByteBuilder file;
    file.Fill(896, ' ');
    file.At(0).Text("srcdocid: NONE");
    file.At(128).Text("dstdocid: NONE");
    file.At(768).Text("rtype: 1");
    return file;
}

/// An FLC header of 3 frames of 320 x 200 without the part that nobody reads.
inline ByteBuilder FlicStart() {
    ByteBuilder file;
    return file.Little32(1000).Little16(0xAF12).Little16(3).Little16(320).Little16(200);
}

/// 1025 bytes of a version-2 picture with the frame (top 1, left 2, bottom 30, right 40).
inline ByteBuilder PictVersion2() {
    ByteBuilder file(1025);
    file.At(512).Big16(513).Big16(1).Big16(2).Big16(30).Big16(40).Byte(0x00).Byte(0x11).Byte(0x02).Byte(0xFF);
    return file;
}

using RlcRow = std::initializer_list<std::pair<int, int>>;

inline void AddRlcRow(ByteBuilder& file, RlcRow runs) {
    file.Big16(static_cast<unsigned>(runs.size()));
    for (const auto& [start, end] : runs)
        file.Big16(static_cast<unsigned>(start)).Big16(static_cast<unsigned>(end));
}

inline ByteBuilder RlcFile(int columns, std::initializer_list<RlcRow> rows) {
    ByteBuilder file;
    file.Big16(static_cast<unsigned>(rows.size())).Big16(static_cast<unsigned>(columns));
    for (const RlcRow& row : rows)
        AddRlcRow(file, row);
    return file;
}

/// The 344 bytes of a trailer with these two bytes as its directory flag.
inline void AddRlcTrailer(ByteBuilder& file, unsigned flagLow, unsigned flagHigh) {
    const std::size_t start = file.Size();
    file.At(start).Fill(344, 0);
    file.At(start + 8).Byte(0x1A).Byte(0x1A).Byte(0x55).Byte(0x64).Byte(0x73).Byte(0x82).Byte(0x43).Byte(0x4A);
    file.At(start + 26).Byte(flagLow).Byte(flagHigh);
}

}  // namespace Kavra::Tests
