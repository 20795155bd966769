#include "legacy/BandFile.h"

#include <algorithm>
#include <format>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace Kavra::Legacy {

namespace {

void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) throw std::runtime_error(path.string() + ": cannot be written");
}

/// Gathers band after band from so many pixels: all of a raster, or one row.
void AppendBands(std::vector<unsigned char>& data, const BandRaster& raster, std::size_t firstPixel,
                 std::size_t pixels) {
    const auto bands = static_cast<std::size_t>(raster.bands);
    const auto sampleBytes = static_cast<std::size_t>(raster.bits / 8);
    for (std::size_t band = 0; band < bands; ++band) {
        for (std::size_t pixel = firstPixel; pixel < firstPixel + pixels; ++pixel) {
            const std::size_t at = (pixel * bands + band) * sampleBytes;
            for (std::size_t byte = 0; byte < sampleBytes; ++byte)
                data.push_back(raster.samples[at + (raster.bigEndian ? sampleBytes - 1 - byte : byte)]);
        }
        if (raster.layout == "BSQ") data.insert(data.end(), static_cast<std::size_t>(raster.bandGapBytes), 0);
    }
}

/// Two samples of 4 bits a byte, the first in the high half; each row begins with a byte.
std::vector<unsigned char> PackedData(const BandRaster& raster) {
    std::vector<unsigned char> data;
    const auto columns = static_cast<std::size_t>(raster.columns);
    for (std::size_t row = 0; row < raster.samples.size(); row += columns) {
        for (std::size_t x = 0; x < columns; x += 2) {
            const unsigned second = x + 1 < columns ? raster.samples[row + x + 1] : 0;
            data.push_back(static_cast<unsigned char>(raster.samples[row + x] << 4 | second));
        }
    }
    return data;
}

}  // namespace

std::string BandHeaderText(const BandRaster& raster) {
    const int bandRowBytes = (raster.columns * raster.bits + 7) / 8;
    const std::string gap = raster.bandGapBytes > 0 ? std::format("BANDGAPBYTES   {}\n", raster.bandGapBytes) : "";
    return std::format(
        "BYTEORDER      {}\nLAYOUT         {}\nNROWS          {}\nNCOLS          {}\nNBANDS         {}\n"
        "NBITS          {}\nBANDROWBYTES   {}\nTOTALROWBYTES  {}\nPIXELTYPE      {}\n"
        "ULXMAP         {}\nULYMAP         {}\nXDIM           {}\nYDIM           {}\n{}",
        raster.bigEndian ? 'M' : 'I', raster.layout, raster.rows, raster.columns, raster.bands, raster.bits,
        bandRowBytes, bandRowBytes * raster.bands,
        raster.pixelType == 'F'   ? "FLOAT"
        : raster.pixelType == 'S' ? "SIGNEDINT"
                                  : "UNSIGNEDINT",
        raster.cell / 2, -raster.cell / 2, raster.cell, raster.cell, gap);
}

std::string BandPaletteText(const BandRaster& raster) {
    std::string text;
    for (std::size_t i = 0; i < raster.palette.size(); ++i) {
        const auto& [red, green, blue] = raster.palette[i];
        text += std::format("{} {} {} {}\n", i, red, green, blue);
    }
    return text;
}

std::vector<unsigned char> BandData(const BandRaster& raster) {
    const auto columns = static_cast<std::size_t>(raster.columns);
    const auto rows = static_cast<std::size_t>(raster.rows);
    if (raster.bits < 8) return PackedData(raster);
    if (raster.layout == "BIP" && !raster.bigEndian) return raster.samples;
    std::vector<unsigned char> data;
    data.reserve(raster.samples.size());
    if (raster.layout == "BSQ") {
        AppendBands(data, raster, 0, columns * rows);
    } else {
        for (std::size_t row = 0; row < rows; ++row)
            AppendBands(data, raster, row * columns, columns);
    }
    return data;
}

void WriteBandFiles(const std::filesystem::path& stem, const BandRaster& raster) {
    const std::vector<unsigned char> data = BandData(raster);
    WriteFile(stem.string() + raster.extension, {reinterpret_cast<const char*>(data.data()), data.size()});
    WriteFile(stem.string() + ".hdr", BandHeaderText(raster));
    if (!raster.palette.empty()) WriteFile(stem.string() + ".clr", BandPaletteText(raster));
}

}  // namespace Kavra::Legacy
