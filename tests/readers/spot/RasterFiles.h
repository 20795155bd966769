/// Decoding a raster given as the contents of its files.
#pragma once

#include "readers/Decode.h"
#include "readers/spot/SpotReader.h"

#include <span>
#include <string>
#include <vector>

namespace Kavra::Tests {

struct RasterFiles {
    std::string header;
    std::vector<unsigned char> data;
    std::string pal = {};  ///< no file where empty
    std::string clr = {};
};

/// Writes "q.bil", "q.hdr" and the palettes.
inline void WriteRaster(const TemporaryFolder& folder, const RasterFiles& files) {
    folder.Write("q.bil", std::span<const unsigned char>(files.data));
    folder.Write("q.hdr", files.header);
    if (!files.pal.empty()) folder.Write("q.pal", files.pal);
    if (!files.clr.empty()) folder.Write("q.clr", files.clr);
}

inline Decoded DecodeRaster(const RasterFiles& files, int frame = 0) {
    const TemporaryFolder folder;
    WriteRaster(folder, files);
    return DecodeFile<Devices::SpotReader>(folder / "q.bil", frame);
}

}  // namespace Kavra::Tests
