#include "InspectionText.h"

#include "PartNames.h"
#include "Printable.h"
#include "Selection.h"

#include <algorithm>
#include <format>
#include <string_view>
#include <vector>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr std::size_t kMaxValueBytes = 200;  // of a piece of metadata, for people

std::string_view AlphaName(EAlphaKind kind) {
    switch (kind) {
        case kAlphaNone:
            return "none";
        case kAlphaStraight:
            return "straight";
        case kAlphaPremultiplied:
            return "premultiplied";
    }
    return "";
}

std::string_view TransferName(ETransferKind kind) {
    switch (kind) {
        case kTransferUnknown:
            return "unknown";
        case kTransferLinear:
            return "linear";
        case kTransferSrgb:
            return "srgb";
        case kTransferGamma:
            return "gamma";
    }
    return "";
}

std::string SizeText(const FileLevel& level) {
    const std::string flat = std::format("{} x {}", level.width, level.height);
    return level.depth > 1 ? std::format("{} x {}", flat, level.depth) : flat;
}

std::string SpaceText(const FilePart& part) {
    std::string text(TransferName(part.transfer));
    if (part.transfer == kTransferSrgb) text = "sRGB";
    if (part.transfer == kTransferGamma) text += std::format(" {:.4g}", part.gamma);
    if (*part.colourSpace != '\0') text += std::format(" ({})", Printable(part.colourSpace, kMaxValueBytes));
    return text;
}

/// "R G B half, Z float": names of channels in a row that have one type together.
std::string ChannelText(const FilePart& part) {
    constexpr std::size_t kMaxShown = 64;
    std::string text;
    for (std::size_t i = 0; i < std::min(part.channelCount, kMaxShown); ++i) {
        const FileChannel& channel = part.channels[i];
        text += Printable(channel.name, kMaxValueBytes);
        const bool goesOn = i + 1 < part.channelCount && std::string_view(part.channels[i + 1].type) == channel.type;
        text += goesOn ? std::string(" ") : std::format(" {}{}", channel.type, i + 1 < part.channelCount ? ", " : "");
    }
    return part.channelCount > kMaxShown ? std::format("{}... {} in all", text, part.channelCount) : text;
}

/// The lines of a part: names of one width, and what they stand for.
class Lines {
public:
    void Add(std::string_view name, const std::string& value) {
        if (!value.empty()) mText += std::format("    {:<14}{}\n", name, value);
    }
    std::string Take() { return std::move(mText); }

private:
    std::string mText;
};

std::string LevelText(const FilePart& part) {
    if (part.levelCount < 2) return {};
    return std::format("{}, down to {}", part.levelCount, SizeText(part.levels[part.levelCount - 1]));
}

/// Where it is not simply all of the picture.
std::string WindowText(const FilePart& part) {
    const FileLevel& size = part.levels[0];
    const bool isWhole = part.dataX == part.displayX && part.dataY == part.displayY &&
                         part.displayWidth == size.width && part.displayHeight == size.height;
    if (isWhole || part.displayWidth == 0) return {};
    return std::format("{} x {} at {},{}; pixels at {},{}", part.displayWidth, part.displayHeight, part.displayX,
                       part.displayY, part.dataX, part.dataY);
}

std::string TileText(const FilePart& part) {
    if (part.tileWidth == 0) return {};
    const FileLevel tile = {part.tileWidth, part.tileHeight, part.tileDepth};
    return SizeText(tile);
}

std::string ResolutionText(const FilePart& part) {
    if (part.xResolution <= 0) return {};
    if (part.xResolution == part.yResolution) return std::format("{:.5g} dots per inch", part.xResolution);
    return std::format("{:.5g} x {:.5g} dots per inch", part.xResolution, part.yResolution);
}

std::string PartText(std::size_t index, const FilePart& part) {
    const std::string name = *part.name == '\0' ? "" : std::format(" \"{}\"", Printable(part.name, kMaxValueBytes));
    std::string text =
        std::format("  part {}{}: {}, {}\n", index, name, SizeText(part.levels[0]), TextureTypeName(part.textureType));
    Lines lines;
    lines.Add("channels", ChannelText(part));
    lines.Add("bits", part.bitsPerSample > 0 ? std::to_string(part.bitsPerSample) : "");
    lines.Add("alpha", std::string(AlphaName(part.alpha)));
    lines.Add("values", SpaceText(part));
    if (part.textureType == kTextureCube) lines.Add("faces", FaceList(part.faces));
    lines.Add("levels", LevelText(part));
    if (part.elements > 1) lines.Add("elements", std::to_string(part.elements));
    lines.Add("orientation", part.orientation == kTopLeft ? "" : OrientationName(part.orientation));
    lines.Add("compression", Printable(part.compression, kMaxValueBytes));
    lines.Add("tiles", TileText(part));
    lines.Add("window", WindowText(part));
    lines.Add("resolution", ResolutionText(part));
    if (part.seconds > 0) lines.Add("shown", std::format("{:.4g} seconds", part.seconds));
    if (part.iccProfile != nullptr) lines.Add("profile", std::format("{} bytes", part.iccBytes));
    text += lines.Take();
    for (std::size_t i = 0; i < part.textCount; ++i) {
        text += std::format("      {}: {}\n", Printable(part.texts[i].name, kMaxValueBytes),
                            Printable(part.texts[i].value, kMaxValueBytes));
    }
    return text;
}

Json Levels(const FilePart& part) {
    Json levels = Json::array();
    for (std::size_t i = 0; i < part.levelCount; ++i) {
        const FileLevel& level = part.levels[i];
        levels.push_back({{"width", level.width}, {"height", level.height}, {"depth", level.depth}});
    }
    return levels;
}

Json Faces(const FilePart& part) {
    Json faces = Json::array();
    for (int face = 0; face < kCubeFaces; ++face) {
        if ((part.faces >> face & 1) != 0) faces.push_back(FaceName(face));
    }
    return faces;
}

Json PartJson(const FilePart& part) {
    Json channels = Json::array(), texts = Json::array();
    for (std::size_t i = 0; i < part.channelCount; ++i)
        channels.push_back({{"name", part.channels[i].name}, {"type", part.channels[i].type}});
    for (std::size_t i = 0; i < part.textCount; ++i)
        texts.push_back({{"name", part.texts[i].name}, {"value", part.texts[i].value}});
    return {
        {"name", part.name},
        {"textureType", static_cast<int>(part.textureType)},
        {"orientation", static_cast<int>(part.orientation)},
        {"levels", Levels(part)},
        {"faces", Faces(part)},
        {"elements", part.elements},
        {"channels", channels},
        {"bitsPerSample", part.bitsPerSample},
        {"alpha", AlphaName(part.alpha)},
        {"transfer", TransferName(part.transfer)},
        {"gamma", part.gamma},
        {"colourSpace", part.colourSpace},
        {"profileBytes", part.iccBytes},
        {"compression", part.compression},
        {"tile", {{"width", part.tileWidth}, {"height", part.tileHeight}, {"depth", part.tileDepth}}},
        {"data", {{"x", part.dataX}, {"y", part.dataY}}},
        {"display",
         {{"x", part.displayX}, {"y", part.displayY}, {"width", part.displayWidth}, {"height", part.displayHeight}}},
        {"resolution", {{"x", part.xResolution}, {"y", part.yResolution}}},
        {"seconds", part.seconds},
        {"texts", texts}};
}

}  // namespace

std::string InspectionText(const IFileInspection& file) {
    std::string text = std::format("  type {}, parts {}\n", Printable(file.FileType()), file.PartCount());
    for (std::size_t i = 0; i < file.PartCount(); ++i)
        text += PartText(i, file.Part(i));
    return text;
}

void AddInspection(Json& json, const IFileInspection& file) {
    json["fileType"] = file.FileType();
    json["parts"] = Json::array();
    for (std::size_t i = 0; i < file.PartCount(); ++i)
        json["parts"].push_back(PartJson(file.Part(i)));
}

}  // namespace Kavra::App
