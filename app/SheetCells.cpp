#include "SheetCells.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "Source.h"
#include "TextureView.h"

#include <algorithm>
#include <format>
#include <string_view>

namespace Kavra::App {

using namespace Devices;

namespace {

constexpr std::size_t kMaxCells = 10'000;  // of a file: headers may claim any number

/// Several cells in the place of one, as `count` says; `split(cell, i)` makes the i-th of them.
template <class Split>
std::vector<SheetCell> SplitEach(std::vector<SheetCell> cells, std::size_t count, const Split& split) {
    if (count < 2) return cells;
    std::vector<SheetCell> result;
    for (const SheetCell& cell : cells) {
        for (std::size_t i = 0; i < count && result.size() < kMaxCells; ++i) {
            result.push_back(cell);
            split(result.back(), static_cast<int>(i));
        }
    }
    return result;
}

void Label(SheetCell& cell, const std::string& text) {
    cell.label += (cell.label.empty() ? "" : ", ") + text;
}

std::vector<SheetCell> WithFaces(std::vector<SheetCell> cells, const ImageDesc& desc) {
    if (desc.textureType == kTextureCube) {
        return SplitEach(std::move(cells), kCubeFaces, [](SheetCell& cell, int face) {
            cell.selection.face = face;
            Label(cell, FaceName(face));
        });
    }
    const auto slices = static_cast<std::size_t>(desc.textureType == kTextureVolume ? std::max(desc.depth, 1) : 1);
    return SplitEach(std::move(cells), slices, [](SheetCell& cell, int slice) {
        cell.selection.slice = slice;
        Label(cell, std::format("slice {}", slice));
    });
}

/// Stored mip levels of the first picture.
std::size_t LevelsOf(IImageHandler& handler, const std::string& name, const ImageDesc& desc, bool isDds) {
    if (isDds) return static_cast<std::size_t>(std::max(desc.frameCount, 1));
    const OwnedInspection inspection = Inspect(handler, name);
    return inspection != nullptr && inspection->PartCount() > 0 ? inspection->Part(0).levelCount : 1;
}

}  // namespace

std::vector<SheetCell> CellsOf(IImageHandler& handler, const std::string& name, std::size_t file,
                               const SheetContent& content) {
    std::vector<SheetCell> cells(1);
    cells[0].file = file;
    if (!content.IsMore()) return cells;
    Report silent(name);
    const Owned<ImageDesc> desc = Describe(handler, silent);
    if (desc == nullptr) return cells;
    const bool isDds = IsTextureName(name);
    const auto frames = static_cast<std::size_t>(isDds ? 1 : std::max(desc->frameCount, 1));
    if (content.frames) {
        cells = SplitEach(std::move(cells), frames, [](SheetCell& cell, int frame) {
            cell.frame = frame;
            Label(cell, std::format("frame {}", frame));
        });
    }
    if (content.levels) {
        cells =
            SplitEach(std::move(cells), static_cast<std::size_t>(ElementCount(name)), [](SheetCell& cell, int element) {
                cell.element = element;
                Label(cell, std::format("element {}", element));
            });
        const std::size_t levels = LevelsOf(handler, name, *desc, isDds);
        cells = SplitEach(std::move(cells), levels, [isDds](SheetCell& cell, int level) {
            (isDds ? cell.frame : cell.selection.mipLevel) = level;
            cell.level = level;
            Label(cell, std::format("level {}", level));
        });
    }
    return content.faces ? WithFaces(std::move(cells), *desc) : cells;
}

std::string FactsOf(IImageHandler& handler, const std::string& file, const SheetCell& cell) {
    constexpr int kMaxLevel = 30;
    const ElementScope scope(cell.element);
    Report silent(file);
    const Owned<ImageDesc> desc = Describe(handler, silent);
    if (desc == nullptr) return cell.label;
    const auto side = [&](int size) { return std::max(size >> std::min(cell.level, kMaxLevel), 1); };
    std::string facts = cell.label + (cell.label.empty() ? "" : ", ");
    facts += std::format("{} x {}", side(desc->width), side(desc->height));
    if (desc->textureType == kTextureVolume && cell.selection.slice < 0)
        facts += std::format(" x {}", side(desc->depth));
    if (desc->textureType == kTextureCube && cell.selection.face < 0) facts += ", cube";
    const std::string_view shortName = Facts(desc->format).shortName;
    facts += ", " + (shortName.empty() ? Enumerator(desc->format) : std::string(shortName));
    if (!cell.label.empty() || desc->frameCount < 2) return facts;
    return facts + std::format(", {} {}", desc->frameCount, IsTextureName(file) ? "levels" : "frames");
}

}  // namespace Kavra::App
