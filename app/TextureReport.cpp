#include "TextureReport.h"

#include "FormatNames.h"
#include "Selection.h"

#include <cmath>
#include <format>

namespace Kavra::App {

using namespace Devices;

namespace {

std::string Counted(int count, std::string_view what) {
    return std::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string_view AlphaName(ETextureAlpha alpha) {
    switch (alpha) {
        case kTextureAlphaStraight:
            return "straight";
        case kTextureAlphaPremultiplied:
            return "premultiplied";
        case kTextureAlphaOpaque:
            return "none";
        case kTextureAlphaCustom:
            return "custom";
        case kTextureAlphaUnknown:
            break;
    }
    return "unknown";
}

std::string_view KindName(ETextureFileKind kind) {
    return kind == kTextureFileKTX2 ? "KTX2" : "DDS";
}

struct Level {
    int width = 0, height = 0, depth = 0;
    std::uint64_t bytes = 0;

    Level(const TextureShape& shape, int level) : bytes(TextureLevelBytes(shape, level)) {
        GetTextureLevelSize(shape, level, width, height, depth);
    }
};

int FacesIn(const StoredTexture& stored) {
    int count = 0;
    for (int face = 0; face < FaceCount(stored.shape.type); ++face)
        count += stored.reader.HasFace(face) ? 1 : 0;
    return count;
}

}  // namespace

std::string ShapeText(const TextureShape& shape) {
    std::string text = std::format("{}{}, ", Enumerator(shape.format),
                                   shape.isSrgb && SrgbVariant(shape.format, true) != shape.format ? " as sRGB" : "");
    if (shape.type == kTextureCube) text += "cube map, ";
    text += std::format("{} x {}", shape.width, shape.height);
    if (shape.type == kTextureVolume) text += std::format(" x {}", shape.depth);
    if (shape.elements > 1) text += ", " + Counted(shape.elements, "element");
    return text + std::format(", {}, alpha {}, {} bytes", Counted(shape.levels, "level"), AlphaName(shape.alpha),
                              TextureBytes(shape));
}

Json ShapeJson(const TextureShape& shape) {
    return {{"format", static_cast<int>(shape.format)},
            {"formatName", Enumerator(shape.format)},
            {"srgb", shape.isSrgb},
            {"alpha", AlphaName(shape.alpha)},
            {"type", TextureTypeName(shape.type)},
            {"width", shape.width},
            {"height", shape.height},
            {"depth", shape.depth},
            {"levels", shape.levels},
            {"elements", shape.elements},
            {"bytes", TextureBytes(shape)}};
}

std::string ErrorText(const TextureError& error) {
    std::string text;
    for (std::size_t i = 0; i < error.names.size(); ++i) {
        const std::string value = std::isinf(error.psnr[i]) ? "exact" : std::format("{:.2f} dB", error.psnr[i]);
        text += std::format("{}{} {}", i > 0 ? ", " : "", error.names[i], value);
    }
    return text;
}

Json ErrorJson(const TextureError& error) {
    Json json = Json::object();
    for (std::size_t i = 0; i < error.names.size(); ++i)
        json[error.names[i]] = error.psnr[i];
    return json;
}

std::string InspectionText(const std::string& file, const StoredTexture& stored) {
    const TextureShape& shape = stored.shape;
    std::string text = std::format("{}: {}, {}\n", file, KindName(stored.reader.Kind()), ShapeText(shape));
    const int faces = FacesIn(stored);
    for (int level = 0; level < shape.levels; ++level) {
        const Level size(shape, level);
        const std::string depth = shape.type == kTextureVolume ? std::format(" x {}", size.depth) : std::string();
        text += std::format("  level {}: {} x {}{}, {} bytes", level, size.width, size.height, depth, size.bytes);
        const int pictures = faces * shape.elements;
        if (pictures > 1) text += std::format(" each of {}", pictures);
        text += "\n";
    }
    if (shape.type == kTextureCube) {
        text += "  faces:";
        for (int face = 0; face < kCubeFaces; ++face)
            if (stored.reader.HasFace(face)) text += " " + FaceName(face);
        text += "\n";
    }
    return text;
}

Json InspectionJson(const std::string& file, const StoredTexture& stored) {
    const TextureShape& shape = stored.shape;
    Json json = {{"file", file}, {"kind", KindName(stored.reader.Kind())}};
    json.update(ShapeJson(shape));
    json["asStored"] = stored.reader.IsAsStored();
    json["bottomUp"] = stored.reader.IsBottomUp();
    Json faces = Json::array();
    for (int face = 0; shape.type == kTextureCube && face < kCubeFaces; ++face)
        if (stored.reader.HasFace(face)) faces.push_back(FaceName(face));
    if (shape.type == kTextureCube) json["faces"] = faces;
    Json levels = Json::array();
    for (int level = 0; level < shape.levels; ++level) {
        const Level size(shape, level);
        levels.push_back(
            {{"width", size.width}, {"height", size.height}, {"depth", size.depth}, {"bytes", size.bytes}});
    }
    json["levelSizes"] = levels;
    return json;
}

}  // namespace Kavra::App
