/// Writing PCX files.
#pragma once

#include <vector>

namespace Kavra::Legacy {

/// What goes into a file, row by row from the top.
struct PcxPicture {
    int width = 0;
    int height = 0;
    int bitsPerPlane = 8;  ///< 1, 2, 4 or 8
    int planes = 1;        ///< 1, or with one bit each more (a bit of the index in each), or 3 with 8 bits
    bool isCoded = true;   ///< run-length coded, else raw

    /// Red, green, blue of up to 16 colours for the header, or of 256 colours for the end of the file.
    std::vector<unsigned char> palette;

    /// A byte a pixel - an index, or in a file of one bit in one plane the bit - or red, green, blue of 8 bits.
    std::vector<unsigned char> samples;
};

/// The bytes of a file of version 5. Lines have an even number of bytes, as the format asks for; the byte that fills
/// them up repeats the last one and is a part of its run, so that no reader can take it for a pixel.
std::vector<unsigned char> PcxFile(const PcxPicture& picture);

/// The bytes of a DCX file of these PCX files, at most 1023.
std::vector<unsigned char> DcxFile(const std::vector<std::vector<unsigned char>>& pages);

}  // namespace Kavra::Legacy
