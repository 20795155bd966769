/// The rows of a PCX picture, put together from its lines.
#pragma once

#include "readers/pcx/PcxLines.h"
#include "readers/pcx/PcxNibbles.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Rows of a picture with a palette: an index a pixel.
///
/// Bytes that are not there are 0 in rows of 1 bit. In all others they are what the row before left: its indices, of
/// 4 packed bits already spread, or the bits of the same plane.
class PcxIndexRows {
public:
    PcxIndexRows(Common::ByteSource& source, const PcxHeader& header);

    /// The next row, as long as the picture is wide. Valid until the next call.
    std::span<const unsigned char> Next();

private:
    void NextFromPlanes();
    void NextFromBits();
    void NextFromNibbles();
    void NextFromBytes();

    void (PcxIndexRows::*mNext)() = nullptr;  // for the layout of the file
    PcxLines mLines;
    std::size_t mWidth;
    std::size_t mPlanes;
    std::size_t mPlaneBytes;
    std::vector<unsigned char> mPacked;   // one plane behind the other
    std::vector<unsigned char> mIndices;  // the row, up to whole bytes of bits
    PcxNibbles mNibbles;
};

/// Rows of a picture of 24 bits, which has no palette: three lines a row - red, green, blue - whatever planes the
/// header claims. Bytes that are not there are 0.
class PcxColourRows {
public:
    PcxColourRows(Common::ByteSource& source, const PcxHeader& header);

    /// Writes the next row: red, green, blue and 255 a pixel.
    void Next(std::span<unsigned char> pixels);

private:
    const unsigned char* ReadPlane(std::size_t plane);

    PcxLines mLines;
    std::size_t mPlaneBytes;
    std::vector<unsigned char> mPlanes;    // one behind the other
    std::array<std::size_t, 3> mFilled{};  // of each plane, how many bytes may be other than 0
};

}  // namespace Kavra::Devices
