#include "CubeLayout.h"

#include "CubeProjection.h"
#include "FileColours.h"
#include "FormatNames.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "Sizes.h"
#include "Usage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <format>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

/// Where faces lie in a flat picture, in faces.
struct Layout {
    int columns, rows;
    std::array<vec2<int>, 6> places;
    bool turnsLast;  ///< -z is upside down
};

constexpr Layout kCross = {4, 3, {{{2, 1}, {0, 1}, {1, 0}, {1, 2}, {1, 1}, {3, 1}}}, false};
constexpr Layout kHighCross = {3, 4, {{{2, 1}, {0, 1}, {1, 0}, {1, 2}, {1, 1}, {1, 3}}}, true};
constexpr Layout kStrip = {6, 1, {{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}}}, false};
constexpr Layout kHighStrip = {1, 6, {{{0, 0}, {0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}}}, false};

bool Has(const Layout& layout, const ImageDescription& desc) {
    return desc.width % layout.columns == 0 && desc.height % layout.rows == 0 &&
           desc.width / layout.columns == desc.height / layout.rows;
}

std::size_t PixelBytes(const LoadedImage& image) {
    return static_cast<std::size_t>(Facts(image.desc.format).bytesPerPixel);
}

unsigned char* Bytes(const LoadedImage& image) {
    return static_cast<unsigned char*>(image.block->mData);
}

/// Calls `copy(at, in cube, bytes)` for each row of each face; `at` is the byte of the flat picture.
template <class Copy>
void ForEachRow(const Layout& layout, const LoadedImage& flat, const LoadedImage& cube, const Copy& copy) {
    const auto rowBytes = static_cast<std::size_t>(cube.desc.rowPitch),
               pitch = static_cast<std::size_t>(flat.desc.rowPitch);
    const auto side = static_cast<std::size_t>(cube.desc.width);
    for (std::size_t face = 0; face < layout.places.size(); ++face) {
        const vec2<int> place = layout.places[face];
        const std::size_t corner =
            static_cast<std::size_t>(place.y) * side * pitch + static_cast<std::size_t>(place.x) * rowBytes;
        for (std::size_t y = 0; y < side; ++y)
            copy(Bytes(flat) + corner + y * pitch, Bytes(cube) + (face * side + y) * rowBytes, rowBytes);
    }
}

/// Half a turn of the last face.
void TurnLast(LoadedImage& cube) {
    const std::size_t bytes = LayerBytes(cube.desc), pixel = PixelBytes(cube);
    unsigned char* const first = Bytes(cube) + 5 * bytes;
    for (std::size_t i = 0, j = bytes - pixel; i < j; i += pixel, j -= pixel)
        std::swap_ranges(first + i, first + i + pixel, first + j);
}

LoadedImage Flattened(const Layout& layout, const LoadedImage& cube) {
    const int side = cube.desc.width;
    LoadedImage flat = NewPicture(layout.columns * side, layout.rows * side, cube.desc.format);
    flat.desc.hasAlpha = cube.desc.hasAlpha;
    flat.desc.gamma = cube.desc.gamma;
    ForEachRow(layout, flat, cube,
               [](unsigned char* at, const unsigned char* face, std::size_t bytes) { std::memcpy(at, face, bytes); });
    LookAtAlphaAgain(flat);
    return flat;
}

LoadedImage Folded(const Layout& layout, const LoadedImage& flat) {
    const int side = flat.desc.width / layout.columns;
    ImageDescription desc = flat.desc;
    desc.textureType = kTextureCube;
    desc.depth = 1;
    LoadedImage cube = NewPictureLike(desc, side, side);
    ForEachRow(layout, flat, cube,
               [](const unsigned char* at, unsigned char* face, std::size_t bytes) { std::memcpy(face, at, bytes); });
    if (layout.turnsLast) TurnLast(cube);
    return cube;
}

// --- Maps ------------------------------------------------------------------------------------------------------------

/// In floats whose colours are multiplied by their alpha, as `project` wants them, and back.
template <class Project>
LoadedImage Projected(const LoadedImage& image, EAlphaKind alpha, const Project& project) {
    const bool multiplies = alpha == kAlphaStraight && Facts(image.desc.format).hasAlpha;
    const EAlphaKind own = multiplies ? kAlphaStraight : kAlphaNone,
                     even = multiplies ? kAlphaPremultiplied : kAlphaNone;
    ColourFindings ignored;
    LoadedImage result = project(Changed(image, {.alphaFrom = own, .alphaTo = even}, kR32G32B32A32F, ignored));
    result.desc.hasAlpha = image.desc.hasAlpha;
    result.desc.gamma = image.desc.gamma;
    result = Changed(result, {.alphaFrom = even, .alphaTo = own}, image.desc.format, ignored);
    LookAtAlphaAgain(result);
    return result;
}

std::string_view NameOf(CubeForm form) {
    if (form == CubeForm::kCross) return "cross";
    return form == CubeForm::kStrip ? "strip" : "equirect";
}

const Layout* LayoutOf(CubeForm form, const ImageDescription& desc) {
    const bool isCross = form == CubeForm::kCross;
    for (const Layout* const layout : {isCross ? &kCross : &kStrip, isCross ? &kHighCross : &kHighStrip}) {
        if (Has(*layout, desc)) return layout;
    }
    return nullptr;
}

/// The size of a flat picture, in faces.
vec2<int> FacesOf(CubeForm form) {
    if (form == CubeForm::kEquirect) return {4, 2};
    const Layout& layout = form == CubeForm::kCross ? kCross : kStrip;
    return {layout.columns, layout.rows};
}

std::string_view ShapeOf(CubeForm form) {
    if (form == CubeForm::kCross) return "4 x 3 or 3 x 4 squares";
    return form == CubeForm::kStrip ? "6 x 1 or 1 x 6 squares" : "twice as wide as high, and 4 pixels or more";
}

LoadedImage Flat(CubeForm form, const LoadedImage& cube, EAlphaKind alpha) {
    if (form == CubeForm::kEquirect) return Projected(cube, alpha, ToEquirect);
    return Flattened(form == CubeForm::kCross ? kCross : kStrip, cube);
}

/// `block` is null where the picture has not the shape.
LoadedImage Cube(CubeForm form, const LoadedImage& flat, EAlphaKind alpha) {
    const ImageDescription& desc = flat.desc;
    if (form == CubeForm::kEquirect) {
        const bool isMap = desc.width == 2LL * desc.height && desc.width >= 4;
        return isMap ? Projected(flat, alpha, FromEquirect) : LoadedImage();
    }
    const Layout* const layout = LayoutOf(form, desc);
    return layout != nullptr ? Folded(*layout, flat) : LoadedImage();
}

}  // namespace

void CubeOption::AddTo(CLI::App& command) {
    AddChoice<CubeForm>(
        command, "--cube",
        {{"cross", CubeForm::kCross}, {"strip", CubeForm::kStrip}, {"equirect", CubeForm::kEquirect}},
        [this](CubeForm chosen) { form = chosen; },
        "Of a cube map, the flat picture: the faces as a cross (4 x 3), as a strip (6 x 1), or an equirectangular map "
        "(+z in the middle, four faces wide). Of a flat picture in that form, the cube map, which is written as .dds. "
        "Sizes are those of what is loaded");
}

LoadedImage CubeOption::Apply(Report& report, LoadedImage image, EAlphaKind alpha) const {
    if (!form) return image;
    if (!HasPixels(report, image, "laid out")) return {};
    if (image.desc.textureType == kTextureVolume) {
        report.Fail("a volume, and no cube map");
        return {};
    }
    if (image.desc.textureType == kTextureCube) {
        const vec2<int> faces = FacesOf(*form);
        const long long side = image.desc.width;
        const std::string obstacle = SizeObstacle(faces.x * side, faces.y * side, image.desc.format);
        if (!obstacle.empty()) report.Fail("cannot be laid out: " + obstacle);
        return obstacle.empty() ? Flat(*form, image, alpha) : LoadedImage();
    }
    LoadedImage cube = Cube(*form, image, alpha);
    if (cube.block == nullptr) {
        report.Fail(std::format("{} x {} pixels, and a picture of the form {} is {}", image.desc.width,
                                image.desc.height, NameOf(*form), ShapeOf(*form)));
    }
    return cube;
}

}  // namespace Kavra::App
