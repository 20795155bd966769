/// The files that several benchmarks load, and how the image library reads them by itself.
#pragma once

#include "legacy/Bitmap.h"

#include <OpenImageIO/typedesc.h>

#include <filesystem>
#include <string>

namespace Kavra::Bench {

/// A file with `TexturedPixels`, written by the image library, or by the DDS writer where its name says so.
struct PictureFile {
    std::string name;
    int width = 4096, height = 4096;
    int channels = 3;
    OIIO::TypeDesc type = OIIO::TypeUInt8;
    const char* compression = nullptr;  ///< as the library names it; its own choice when null
    int tile = 0;                       ///< side of a tile; 0: rows
};

/// A folder that goes when the program ends.
const std::filesystem::path& FolderOfFiles();

/// Makes the file in that folder unless it is there. Throws `std::runtime_error`.
std::filesystem::path MakeFile(const PictureFile& file);

/// Opens a file and reads it into pixels of four elements of this type. Throws `std::runtime_error`.
void ReadWhole(const std::filesystem::path& path, OIIO::TypeDesc type);

/// Opens a file and decodes it some rows at a time, each over the ones before. Throws `std::runtime_error`.
void ReadRows(const std::filesystem::path& path);

/// Lines in all directions, most of them along the sides, as many in a square inch at 600 dots as a drawing has.
Legacy::Bitmap Drawing(int width, int height);

}  // namespace Kavra::Bench
