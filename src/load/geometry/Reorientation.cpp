#include "load/geometry/Reorientation.h"

#include "load/geometry/NewImage.h"

#include <OpenImageIO/imagebufalgo.h>

#include <array>
#include <optional>
#include <utility>

namespace Kavra::Devices {
namespace {

using OIIO::ImageBuf;
using OIIO::ImageSpec;

/// Up to two turns, one after the other.
using TurnPair = std::array<std::optional<Turn>, 2>;
/// What undoes the source's orientation, then what applies the wanted one.
using Turns = std::array<std::optional<Turn>, 4>;

// By Exif orientation number, 1 to 8.
constexpr std::array<TurnPair, 9> kUndo = {{
    {},
    {Turn::kNone},
    {Turn::kFlop},
    {Turn::kRotate180},
    {Turn::kFlip},
    {Turn::kRotate90, Turn::kFlop},
    {Turn::kRotate90},
    {Turn::kFlip, Turn::kRotate270},
    {Turn::kRotate270},
}};
constexpr std::array<TurnPair, 9> kApply = {{
    {},
    {},
    {Turn::kFlop},
    {Turn::kRotate180},
    {Turn::kFlip},
    {Turn::kFlop, Turn::kRotate270},
    {Turn::kRotate270},
    {Turn::kRotate90, Turn::kFlip},
    {Turn::kRotate90},
}};

bool IsExifOrientation(int orientation) {
    return orientation >= 1 && orientation <= 8;
}

/// The turns from one orientation to the other, at least one.
Turns TurnsBetween(int from, int to) {
    if (from == to) return {Turn::kNone};
    const TurnPair& undo = kUndo[static_cast<std::size_t>(from)];
    const TurnPair& apply = kApply[static_cast<std::size_t>(IsExifOrientation(to) ? to : 1)];
    return {undo[0], undo[1], apply[0], apply[1]};
}

PixelGrid Turned(PixelGrid grid, const Turns& turns) {
    for (const std::optional<Turn> turn : turns)
        grid = Devices::Turned(grid, turn.value_or(Turn::kNone));
    return grid;
}

ImageBuf LibraryTurn(const ImageBuf& image, Turn turn) {
    switch (turn) {
        case Turn::kNone:
            break;
        case Turn::kFlip:
            return OIIO::ImageBufAlgo::flip(image);
        case Turn::kFlop:
            return OIIO::ImageBufAlgo::flop(image);
        case Turn::kRotate90:
            return OIIO::ImageBufAlgo::rotate90(image);
        case Turn::kRotate180:
            return OIIO::ImageBufAlgo::rotate180(image);
        case Turn::kRotate270:
            return OIIO::ImageBufAlgo::rotate270(image);
    }
    return image.copy(OIIO::TypeUnknown);
}

/// The image turned by the library; empty where one of the operations fails.
ImageBuf TurnedByLibrary(const ImageBuf& image, const Turns& turns) {
    ImageBuf result;
    for (const std::optional<Turn> turn : turns) {
        if (!turn) continue;
        result = LibraryTurn(result.initialized() ? result : image, *turn);
        if (result.has_error()) return {};
    }
    return result;
}

/// Moves the data window and the full window of `spec` as a turn of its pixels does: the data window keeps its place in
/// the picture. Only for windows as `HasPlainWindows` wants them.
void TurnWindows(ImageSpec& spec, Turn turn) {
    switch (turn) {
        case Turn::kNone:
            break;
        case Turn::kFlip:
            spec.y = spec.full_height - (spec.y + spec.height);
            break;
        case Turn::kFlop:
            spec.x = spec.full_width - (spec.x + spec.width);
            break;
        case Turn::kRotate180:
            TurnWindows(spec, Turn::kFlip);
            TurnWindows(spec, Turn::kFlop);
            break;
        case Turn::kRotate90:
        case Turn::kRotate270:
            std::swap(spec.x, spec.y);
            std::swap(spec.width, spec.height);
            std::swap(spec.full_width, spec.full_height);
            TurnWindows(spec, turn == Turn::kRotate90 ? Turn::kFlop : Turn::kFlip);
            break;
    }
}

/// The spec of the turned image. Everything but the windows is what the library's own operations make of it: they are
/// asked, with one pixel.
ImageSpec TurnedSpec(const ImageSpec& spec, const Turns& turns) {
    ImageSpec onePixel = spec;
    onePixel.x = onePixel.y = 0;
    onePixel.width = onePixel.height = onePixel.full_width = onePixel.full_height = 1;
    ImageSpec turned = TurnedByLibrary(ImageBuf(onePixel, OIIO::InitializePixels::Yes), turns).spec();
    turned.x = spec.x, turned.y = spec.y;
    turned.width = spec.width, turned.height = spec.height;
    turned.full_width = spec.full_width, turned.full_height = spec.full_height;
    for (const std::optional<Turn> turn : turns) {
        TurnWindows(turned, turn.value_or(Turn::kNone));
    }
    return turned;
}

/// Whether the full window starts at the origin and no window is so large that its borders cannot be added up.
bool HasPlainWindows(const ImageSpec& spec) {
    constexpr int largest = 1 << 28;
    const auto fits = [](int value) { return value > -largest && value < largest; };
    return spec.full_x == 0 && spec.full_y == 0 && spec.full_width > 0 && spec.full_height > 0 && fits(spec.x) &&
           fits(spec.y) && fits(spec.width) && fits(spec.height) && fits(spec.full_width) && fits(spec.full_height);
}

/// Whether turning is a mere permutation of the pixels here. Other element types go through float in the library.
bool IsPermutation(const ImageBuf& image) {
    const ImageSpec& spec = image.spec();
    const bool isFlat = spec.z == 0 && spec.full_z == 0 && spec.depth == 1 && spec.full_depth == 1;
    const bool plainType = spec.format == OIIO::TypeUInt8 || spec.format == OIIO::TypeUInt16 ||
                           spec.format == OIIO::TypeHalf || spec.format == OIIO::TypeFloat;
    return plainType && isFlat && HasPlainWindows(spec) && spec.channelformats.empty() && !spec.deep &&
           image.localpixels();
}

ImageBuf TurnedHere(const ImageBuf& image, const Turns& turns) {
    const ImageSpec& spec = image.spec();
    ImageBuf result = NewImage(TurnedSpec(spec, turns));
    if (!result.initialized()) return {};
    const PixelGrid grid{.first = static_cast<const std::byte*>(image.localpixels()),
                         .columnStride = image.pixel_stride(),
                         .rowStride = image.scanline_stride(),
                         .width = static_cast<std::size_t>(spec.width),
                         .height = static_cast<std::size_t>(spec.height),
                         .pixelBytes = spec.pixel_bytes()};
    CopyPixels(Turned(grid, turns), static_cast<std::byte*>(result.localpixels()));
    return result;
}

}  // namespace

int ToOIIOOrientation(const EDataOrientation& orientation) {
    switch (orientation) {
        case kTopLeft:
            return 1;
        case kTopRight:
            return 2;
        case kBottomLeft:
            return 4;
        case kBottomRight:
            return 3;
        case kLeftTop:
            return 5;
        case kRightTop:
            return 6;
        case kLeftBottom:
            return 8;
        case kRightBottom:
            return 7;
    }
    return 1;
}

ImageBuf ReorientImage(const ImageBuf& image, int from, int to) {
    if (from != to && !IsExifOrientation(from)) return {};
    // The library ends the process over an image without pixels or an element type, and over memory it cannot get.
    if (!image.initialized() || image.pixeltype().basetype == OIIO::TypeDesc::UNKNOWN) return {};
    const std::size_t bytes = PixelBytes(image.spec());
    if (bytes == 0 || !CanAllocate(bytes)) return {};

    const Turns turns = TurnsBetween(from, to);
    return IsPermutation(image) ? TurnedHere(image, turns) : TurnedByLibrary(image, turns);
}

PixelGrid Reoriented(PixelGrid grid, int from, int to) {
    return Turned(grid, TurnsBetween(from, to));
}

}  // namespace Kavra::Devices
