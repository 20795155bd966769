/// Writing OpenEXR files for tests, with the format's own library.
#pragma once

#include <ImathBox.h>
#include <ImfCompression.h>
#include <ImfLineOrder.h>
#include <ImfPixelType.h>
#include <ImfTileDescription.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// One channel: its samples row after row, top row first.
struct ExrChannel {
    std::string name;
    Imf::PixelType type = Imf::FLOAT;
    std::vector<float> samples;
    int sampling = 1;
};

/// One part of a file.
struct ExrPart {
    Imath::Box2i window;  ///< data window; the display window is that of the first part
    std::vector<ExrChannel> channels;
    Imf::Compression compression = Imf::ZIP_COMPRESSION;
    Imf::LineOrder lineOrder = Imf::INCREASING_Y;
    std::optional<Imf::TileDescription> tiles = std::nullopt;
    int rowsWritten = -1;  ///< fewer than all leaves the file incomplete; -1 means all
};

inline Imath::Box2i Window(int width, int height) {
    return Imath::Box2i(Imath::V2i(0, 0), Imath::V2i(width - 1, height - 1));
}

void WriteExr(const std::filesystem::path& path, const ExrPart& part);
/// The lower levels of a mip-mapped part hold `lowerLevelValue` everywhere.
void WriteTiledExr(const std::filesystem::path& path, const ExrPart& part, float lowerLevelValue);
/// Parts are named by their number.
void WriteMultiPartExr(const std::filesystem::path& path, const std::vector<ExrPart>& parts);
/// A deep file of one sample a pixel.
void WriteDeepExr(const std::filesystem::path& path, int width, int height);

}  // namespace Kavra::Tests
