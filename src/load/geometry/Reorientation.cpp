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

/// Up to two rotations, one after the other.
using RotationPair = std::array<std::optional<Rotation>, 2>;
/// What undoes the source's orientation, then what applies the wanted one.
using Rotations = std::array<std::optional<Rotation>, 4>;

// By Exif orientation number, 1 to 8.
constexpr std::array<RotationPair, 9> kUndo = {{
    {},
    {Rotation::kNone},
    {Rotation::kFlop},
    {Rotation::kRotate180},
    {Rotation::kFlip},
    {Rotation::kRotate90, Rotation::kFlop},
    {Rotation::kRotate90},
    {Rotation::kFlip, Rotation::kRotate270},
    {Rotation::kRotate270},
}};
constexpr std::array<RotationPair, 9> kApply = {{
    {},
    {},
    {Rotation::kFlop},
    {Rotation::kRotate180},
    {Rotation::kFlip},
    {Rotation::kFlop, Rotation::kRotate270},
    {Rotation::kRotate270},
    {Rotation::kRotate90, Rotation::kFlip},
    {Rotation::kRotate90},
}};

bool IsExifOrientation(int orientation) {
    return orientation >= 1 && orientation <= 8;
}

/// The rotations from one orientation to the other, at least one.
Rotations RotationsBetween(int from, int to) {
    if (from == to) return {Rotation::kNone};
    const RotationPair& undo = kUndo[static_cast<std::size_t>(from)];
    const RotationPair& apply = kApply[static_cast<std::size_t>(IsExifOrientation(to) ? to : 1)];
    return {undo[0], undo[1], apply[0], apply[1]};
}

PixelGrid Rotated(PixelGrid grid, const Rotations& rotations) {
    for (const std::optional<Rotation> rotation : rotations)
        grid = Devices::Rotated(grid, rotation.value_or(Rotation::kNone));
    return grid;
}

ImageBuf LibraryRotation(const ImageBuf& image, Rotation rotation) {
    switch (rotation) {
        case Rotation::kNone:
            break;
        case Rotation::kFlip:
            return OIIO::ImageBufAlgo::flip(image);
        case Rotation::kFlop:
            return OIIO::ImageBufAlgo::flop(image);
        case Rotation::kRotate90:
            return OIIO::ImageBufAlgo::rotate90(image);
        case Rotation::kRotate180:
            return OIIO::ImageBufAlgo::rotate180(image);
        case Rotation::kRotate270:
            return OIIO::ImageBufAlgo::rotate270(image);
    }
    return image.copy(OIIO::TypeUnknown);
}

/// The image rotated by the library; empty where one of the operations fails.
ImageBuf RotatedByLibrary(const ImageBuf& image, const Rotations& rotations) {
    ImageBuf result;
    for (const std::optional<Rotation> rotation : rotations) {
        if (!rotation) continue;
        result = LibraryRotation(result.initialized() ? result : image, *rotation);
        if (result.has_error()) return {};
    }
    return result;
}

/// Moves the data window and the full window of `spec` as a rotation of its pixels does: the data window keeps its
/// place in the picture. Only for windows as `HasPlainWindows` wants them.
void RotateWindows(ImageSpec& spec, Rotation rotation) {
    switch (rotation) {
        case Rotation::kNone:
            break;
        case Rotation::kFlip:
            spec.y = spec.full_height - (spec.y + spec.height);
            break;
        case Rotation::kFlop:
            spec.x = spec.full_width - (spec.x + spec.width);
            break;
        case Rotation::kRotate180:
            RotateWindows(spec, Rotation::kFlip);
            RotateWindows(spec, Rotation::kFlop);
            break;
        case Rotation::kRotate90:
        case Rotation::kRotate270:
            std::swap(spec.x, spec.y);
            std::swap(spec.width, spec.height);
            std::swap(spec.full_width, spec.full_height);
            RotateWindows(spec, rotation == Rotation::kRotate90 ? Rotation::kFlop : Rotation::kFlip);
            break;
    }
}

/// The spec of the rotated image. Everything but the windows is what the library's own operations make of it: they are
/// asked, with one pixel.
ImageSpec RotatedSpec(const ImageSpec& spec, const Rotations& rotations) {
    ImageSpec onePixel = spec;
    onePixel.x = onePixel.y = 0;
    onePixel.width = onePixel.height = onePixel.full_width = onePixel.full_height = 1;
    ImageSpec rotated = RotatedByLibrary(ImageBuf(onePixel, OIIO::InitializePixels::Yes), rotations).spec();
    rotated.x = spec.x, rotated.y = spec.y;
    rotated.width = spec.width, rotated.height = spec.height;
    rotated.full_width = spec.full_width, rotated.full_height = spec.full_height;
    for (const std::optional<Rotation> rotation : rotations) {
        RotateWindows(rotated, rotation.value_or(Rotation::kNone));
    }
    return rotated;
}

/// Whether the full window starts at the origin and no window is so large that its borders cannot be added up.
bool HasPlainWindows(const ImageSpec& spec) {
    constexpr int largest = 1 << 28;
    const auto fits = [](int value) { return value > -largest && value < largest; };
    return spec.full_x == 0 && spec.full_y == 0 && spec.full_width > 0 && spec.full_height > 0 && fits(spec.x) &&
           fits(spec.y) && fits(spec.width) && fits(spec.height) && fits(spec.full_width) && fits(spec.full_height);
}

/// Whether rotating is a mere permutation of the pixels here. Other element types go through float in the library.
bool IsPermutation(const ImageBuf& image) {
    const ImageSpec& spec = image.spec();
    const bool isFlat = spec.z == 0 && spec.full_z == 0 && spec.depth == 1 && spec.full_depth == 1;
    const bool plainType = spec.format == OIIO::TypeUInt8 || spec.format == OIIO::TypeUInt16 ||
                           spec.format == OIIO::TypeHalf || spec.format == OIIO::TypeFloat;
    return plainType && isFlat && HasPlainWindows(spec) && spec.channelformats.empty() && !spec.deep &&
           image.localpixels();
}

ImageBuf RotatedHere(const ImageBuf& image, const Rotations& rotations) {
    const ImageSpec& spec = image.spec();
    ImageBuf result = NewImage(RotatedSpec(spec, rotations));
    if (!result.initialized()) return {};
    const PixelGrid grid{.first = static_cast<const unsigned char*>(image.localpixels()),
                         .columnStride = image.pixel_stride(),
                         .rowStride = image.scanline_stride(),
                         .width = static_cast<std::size_t>(spec.width),
                         .height = static_cast<std::size_t>(spec.height),
                         .pixelBytes = spec.pixel_bytes()};
    CopyPixels(Rotated(grid, rotations), static_cast<unsigned char*>(result.localpixels()));
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

    const Rotations rotations = RotationsBetween(from, to);
    return IsPermutation(image) ? RotatedHere(image, rotations) : RotatedByLibrary(image, rotations);
}

PixelGrid Reoriented(PixelGrid grid, int from, int to) {
    return Rotated(grid, RotationsBetween(from, to));
}

}  // namespace Kavra::Devices
