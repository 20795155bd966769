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
                data.push_back(raster.samples[at + byte]);
        }
    }
}

}  // namespace

std::string BandHeaderText(const BandRaster& raster) {
    const int bandRowBytes = raster.columns * raster.bits / 8;
    return std::format(
        "BYTEORDER      I\nLAYOUT         {}\nNROWS          {}\nNCOLS          {}\nNBANDS         {}\n"
        "NBITS          {}\nBANDROWBYTES   {}\nTOTALROWBYTES  {}\nPIXELTYPE      {}\n"
        "ULXMAP         {}\nULYMAP         {}\nXDIM           {}\nYDIM           {}\n",
        raster.layout, raster.rows, raster.columns, raster.bands, raster.bits, bandRowBytes,
        bandRowBytes * raster.bands,
        raster.pixelType == 'F'   ? "FLOAT"
        : raster.pixelType == 'S' ? "SIGNEDINT"
                                  : "UNSIGNEDINT",
        raster.cell / 2, -raster.cell / 2, raster.cell, raster.cell);
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
    if (raster.layout == "BIP") return raster.samples;
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
    WriteFile(stem.string() + ".bil", {reinterpret_cast<const char*>(data.data()), data.size()});
    WriteFile(stem.string() + ".hdr", BandHeaderText(raster));
    if (!raster.palette.empty()) WriteFile(stem.string() + ".clr", BandPaletteText(raster));
}

}  // namespace Kavra::Legacy
