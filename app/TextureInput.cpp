#include "TextureInput.h"

#include "ColourOptions.h"
#include "CubeLayout.h"
#include "FileColours.h"
#include "FormatNames.h"
#include "Picture.h"

#include <algorithm>
#include <cstring>
#include <format>
#include <optional>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

struct Loaded {
    LoadedImage image = {};
    Source source = {};
};

Loaded LoadOne(IImageHandler& handler, Report& report, const std::string& file) {
    Report own(file);
    Loaded loaded{.source = SourceOf(handler, file, 0)};
    const LoadOptions load = ColourOptions().ForLoading(handler, {}, file, loaded.source);
    loaded.image = LoadUpright(handler, own, load);
    const bool hasPixels = loaded.image.block != nullptr && HasPixels(own, loaded.image, "made a texture");
    report.Take(own);
    if (!hasPixels) loaded.image = {};
    return loaded;
}

/// The form that a flat picture of all faces has, by its proportions.
std::optional<CubeForm> FormOf(const ImageDescription& desc) {
    const auto is = [&](long long columns, long long rows) { return desc.width * rows == desc.height * columns; };
    if (is(4, 3) || is(3, 4)) return CubeForm::kCross;
    if (is(6, 1) || is(1, 6)) return CubeForm::kStrip;
    if (is(2, 1)) return CubeForm::kEquirect;
    return std::nullopt;
}

LoadedImage Folded(Report& report, Loaded picture) {
    if (picture.image.desc.textureType == kTextureCube) return std::move(picture.image);
    const std::optional<CubeForm> form = FormOf(picture.image.desc);
    if (!form) {
        report.Fail(
            std::format("{} x {} pixels, which is no cross (4 x 3 or 3 x 4 squares), no strip (6 x 1 or 1 x 6) and "
                        "no equirectangular map (2 x 1)",
                        picture.image.desc.width, picture.image.desc.height));
        return {};
    }
    return CubeOption{form}.Apply(report, std::move(picture.image), picture.source.alpha);
}

/// Faces or slices, one behind the other. All have the format of the first.
LoadedImage Stacked(std::span<LoadedImage> parts, ETextureType type) {
    ImageDescription desc = parts.front().desc;
    desc.textureType = type;
    desc.depth = type == kTextureVolume ? static_cast<int>(parts.size()) : 1;
    desc.hasAlpha = std::ranges::any_of(parts, [](const LoadedImage& part) { return part.desc.hasAlpha; });
    desc.hasTransparentPixels = desc.hasTranslucentPixels = false;
    LoadedImage stack = NewPictureLike(desc, desc.width, desc.height);
    auto* out = static_cast<unsigned char*>(stack.block->mData);
    for (const LoadedImage& part : parts) {
        std::memcpy(out, part.block->mData, LayerBytes(desc));
        out += LayerBytes(desc);
    }
    return stack;
}

/// The format that holds what all of them do: the most channels and the finest of their elements.
EFormat CommonFormat(std::span<const LoadedImage> images) {
    EFormat format = images.front().desc.format;
    if (std::ranges::all_of(images, [&](const LoadedImage& image) { return image.desc.format == format; }))
        return format;
    ElementType element = ElementType::kUInt8;
    const auto rank = [](ElementType type) { return static_cast<int>(type); };
    for (const LoadedImage& image : images)
        element =
            std::max(element, Facts(image.desc.format).element, [&](auto a, auto b) { return rank(a) < rank(b); });
    return FormatOf(element, 4);
}

void Unify(std::vector<LoadedImage>& images) {
    const EFormat format = CommonFormat(images);
    ColourFindings ignored;
    for (LoadedImage& image : images)
        if (image.desc.format != format) image = Changed(image, {}, format, ignored);
}

/// Flat pictures and cubes as the elements of a texture.
std::vector<LoadedImage> Grouped(std::vector<LoadedImage> images, const TextureForm& form) {
    const bool areFaces = form.isCube && images.front().desc.textureType != kTextureCube;
    if (!areFaces && !form.isVolume) return images;
    const std::size_t count = areFaces ? kCubeFaces : images.size();
    std::vector<LoadedImage> elements;
    for (std::size_t i = 0; i + count <= images.size(); i += count)
        elements.push_back(Stacked(std::span(images).subspan(i, count), areFaces ? kTextureCube : kTextureVolume));
    return elements;
}

}  // namespace

void TextureForm::AddTo(CLI::App& command) {
    command.add_flag(
        "--cube", isCube,
        "A cube map: of six files (+x -x +y -y +z -z), or of one that shows all faces as a cross, a strip or "
        "an equirectangular map, which its proportions tell");
    command.add_flag("--volume", isVolume, "A volume, whose slices are the files in their order")->excludes("--cube");
    command.add_flag("--array", isArray, "An array, whose elements are the files in their order; with --cube, cubes")
        ->excludes("--volume");
}

std::string TextureForm::Obstacle(std::size_t inputs) const {
    if (isCube && !isArray && inputs != 1 && inputs != kCubeFaces)
        return std::format("--cube takes six files or one, and these are {}", inputs);
    return {};
}

TextureInput LoadPictures(IImageHandler& handler, Report& report, std::span<const std::string> files,
                          const TextureForm& form, bool areResized) {
    TextureInput input;
    std::vector<LoadedImage> images;
    bool areFaces = form.isCube && files.size() > 1;
    for (const std::string& file : files) {
        Loaded loaded = LoadOne(handler, report, file);
        if (loaded.image.block == nullptr) return {};
        if (images.empty()) {
            input.source = loaded.source;
            // In an array either the squares are the faces of its cubes, or each picture shows one.
            if (form.isArray && FormOf(loaded.image.desc)) areFaces = false;
        }
        const bool folds = form.isCube && !areFaces;
        LoadedImage image = folds ? Folded(report, std::move(loaded)) : std::move(loaded.image);
        if (image.block == nullptr) return {};
        images.push_back(std::move(image));
    }
    const bool mayDifferInSize = areResized && form.isArray && !areFaces;
    if (!AreAlike(report, images, mayDifferInSize)) return {};
    if (areFaces && images.size() % kCubeFaces != 0) {
        report.Fail(std::format("{} faces, and each cube map has six", images.size()));
        return {};
    }
    Unify(images);
    images = Grouped(std::move(images), form);
    input.texture.shape.type = images.front().desc.textureType;
    input.texture.shape.elements = static_cast<int>(images.size());
    input.texture.images = std::move(images);
    input.texture.TakeSizeOfImages();
    return input;
}

}  // namespace Kavra::App
