#include "ContactSheet.h"

#include "Picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>

namespace Kavra::App {
namespace {

using namespace Devices;

using Pixel = std::array<unsigned char, 4>;

constexpr Pixel kBackground = {48, 48, 48, 255};
constexpr std::array<unsigned char, 2> kSquares = {160, 112};
constexpr int kSquareSize = 8;

constexpr int kMarginPart = 20;  // of the shorter side

std::span<Pixel> Pixels(LoadedImage& image) {
    return {static_cast<Pixel*>(image.block->mData), image.desc.dataSize / sizeof(Pixel)};
}

std::uint8_t Blend(int colour, int alpha, int below) {
    return static_cast<std::uint8_t>((colour * alpha + below * (255 - alpha) + 127) / 255);
}

}  // namespace

SheetLayout::SheetLayout(std::size_t cells, vec2<int> cell, int columns, int captionHeight)
    : mCell(cell), mMargin(std::min(cell.x, cell.y) / kMarginPart), mCaptionHeight(captionHeight) {
    const auto count = static_cast<long long>(cells);
    const auto square = static_cast<long long>(std::ceil(std::sqrt(static_cast<double>(cells))));
    mColumns = std::min(columns > 0 ? columns : square, count);
    mRows = (count + mColumns - 1) / mColumns;
}

vec2<int> SheetLayout::Corner(std::size_t cell) const {
    const auto column = static_cast<long long>(cell) % mColumns, row = static_cast<long long>(cell) / mColumns;
    return {static_cast<int>(column * mCell.x), static_cast<int>(row * RowHeight())};
}

vec2<int> SheetLayout::Place(std::size_t cell, vec2<int> size) const {
    const vec2<int> corner = Corner(cell);
    return {corner.x + (mCell.x - size.x) / 2, corner.y + (mCell.y - size.y) / 2};
}

vec2<int> SheetLayout::CaptionPlace(std::size_t cell) const {
    const vec2<int> corner = Corner(cell);
    return {corner.x + mMargin, corner.y + mCell.y};
}

LoadedImage NewSheet(const SheetLayout& layout) {
    LoadedImage sheet = NewPicture(static_cast<int>(layout.Width()), static_cast<int>(layout.Height()), kR8G8B8A8);
    std::ranges::fill(Pixels(sheet), kBackground);
    return sheet;
}

void PutOnSquares(LoadedImage& image) {
    const int width = image.desc.width;
    int index = 0;
    for (Pixel& pixel : Pixels(image)) {
        const int x = index % width;
        const int y = index++ / width;
        const int below = kSquares[static_cast<std::size_t>((x / kSquareSize + y / kSquareSize) % 2)];
        for (std::size_t i = 0; i < 3; ++i)
            pixel[i] = Blend(pixel[i], pixel[3], below);
        pixel[3] = 255;
    }
}

}  // namespace Kavra::App
