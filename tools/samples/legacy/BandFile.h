/// Writing band rasters: a ".bil" file of samples, the ".hdr" file that describes it, and a ".clr" file of colours.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace Kavra::Legacy {

/// A raster in memory, to be written in one of the three layouts; the extension of its file says nothing of that.
struct BandRaster {
    int columns = 0;
    int rows = 0;
    int bands = 1;
    int bits = 8;                ///< of a sample: 4, 8, 16 or 32
    char pixelType = 'U';        ///< U unsigned, S signed, F float
    std::string layout = "BIL";  ///< BIL, BIP or BSQ
    std::vector<unsigned char>
        samples{};  ///< the bands of a pixel side by side, little-endian, rows from the top; a byte each at 4 bits, of a single band
    std::vector<std::array<int, 3>> palette{};  ///< of a single 8-bit band, red green blue; empty: none
    bool bigEndian = false;                     ///< in the file
    int bandGapBytes = 0;                       ///< behind each band of BSQ
    std::string extension = ".bil";             ///< of the file of samples
    double cell = 1;                            ///< side of a pixel on the map, whose upper left corner is at 0, 0
};

/// Each key on a line of its own, in the spelling that mapping programs use.
std::string BandHeaderText(const BandRaster& raster);

/// A line for each colour.
std::string BandPaletteText(const BandRaster& raster);

/// The samples in the order of the layout.
std::vector<unsigned char> BandData(const BandRaster& raster);

/// Writes `stem` + the extension of the samples, ".hdr" and, where there is a palette, ".clr". Throws `std::runtime_error`.
void WriteBandFiles(const std::filesystem::path& stem, const BandRaster& raster);

}  // namespace Kavra::Legacy
