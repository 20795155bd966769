/// What stands in the cells of a contact sheet.
#pragma once

#include "LoadOptions.h"

#include <string>
#include <vector>

namespace Kavra::App {

/// Which of its pictures a file shows, each in a cell of its own; the first one unless said.
struct SheetContent {
    bool frames = false;  ///< every frame, page or part
    bool levels = false;  ///< every mip level, of arrays those of every element
    bool faces = false;   ///< every face of a cube map and slice of a volume

    bool IsMore() const { return frames || levels || faces; }
};

struct SheetCell {
    std::size_t file = 0;  ///< its number among the files
    int frame = 0;
    Selection selection = {};
    int level = 0;
    int element = 0;    ///< of an array
    std::string label;  ///< which of the file's pictures it is; empty where it shows one
};

/// The cells of the file with a number, in the order of frames, levels, faces. One where the file cannot be described,
/// and 10,000 at most.
std::vector<SheetCell> CellsOf(Devices::IImageHandler& handler, const std::string& name, std::size_t file,
                               const SheetContent& content);

/// "512 x 256, rgba16f, 12 frames", or "level 1, 256 x 128, rgba16f": what a file holds, or the cell of one that has
/// several. Only the label where the file cannot be described.
std::string FactsOf(Devices::IImageHandler& handler, const std::string& file, const SheetCell& cell);

}  // namespace Kavra::App
