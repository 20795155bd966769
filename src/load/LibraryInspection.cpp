#include "load/LibraryInspection.h"

#include "formats/Attributes.h"
#include "load/ColourMeaning.h"
#include "load/FileDescription.h"
#include "load/FormatChannels.h"
#include "readers/ImageFileType.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace Kavra::Devices {

namespace {

constexpr int kMaxLevels = 31;
constexpr std::size_t kMaxMetadataBytes = std::size_t{256} << 20;    // that are looked at, of all parts
constexpr std::uint64_t kMaxDecodedPixels = std::uint64_t{1} << 30;  // some seconds
constexpr int kMaxElementsShown = 64;                                // of one attribute

/// Some readers divide the bits of a pixel, or of an index into a palette, by the channels.
int BitsPerSample(std::string_view format, const OIIO::ImageSpec& spec) {
    constexpr auto kOfPixels = std::to_array<std::string_view>({"bmp", "dds", "ico", "targa"});
    const int bits = static_cast<int>(spec.format.size()) * 8;
    if (std::ranges::find(kOfPixels, format) != kOfPixels.end()) return bits;
    const int stated = IntegerAttribute(spec, "oiio:BitsPerSample").value_or(bits);
    return stated >= 1 && stated <= 64 ? stated : bits;
}

/// How long a frame is shown, from frames a second: a fraction, or a number.
double Seconds(const OIIO::ImageSpec& spec) {
    double seconds = 0;
    if (const auto* fraction = spec.find_attribute("FramesPerSecond", OIIO::TypeRational)) {
        const auto* const numbers = static_cast<const int*>(fraction->data());
        if (numbers[0] > 0) seconds = static_cast<double>(numbers[1]) / numbers[0];
    } else if (const auto number = FloatAttribute(spec, "FramesPerSecond")) {
        seconds = 1.0 / double{*number};
    }
    constexpr double kMaxSeconds = 1e6;
    return seconds > 0 && seconds <= kMaxSeconds ? seconds : 0;
}

/// What has a place of its own in a `FilePart`, or is no text of the file.
bool IsToldElsewhere(const OIIO::ParamValue& attribute) {
    constexpr auto kNames =
        std::to_array<std::string_view>({"ICCProfile", "XResolution", "YResolution", "ResolutionUnit", "compression",
                                         "FramesPerSecond", "Orientation", "planarconfig", "textureformat"});
    const OIIO::string_view name = attribute.name();
    if (attribute.type().basetype == OIIO::TypeDesc::PTR) return true;
    if (OIIO::Strutil::istarts_with(name, "oiio:")) return true;
    return std::ranges::any_of(kNames, [&](std::string_view known) { return OIIO::Strutil::iequals(name, known); });
}

std::span<const unsigned char> ProfileOf(const OIIO::ImageSpec& spec) {
    const OIIO::ParamValue* const profile = spec.find_attribute("ICCProfile");
    if (profile == nullptr || profile->type().basetype != OIIO::TypeDesc::UINT8) return {};
    return {static_cast<const unsigned char*>(profile->data()), profile->type().size()};
}

std::size_t MetadataBytes(const OIIO::ImageSpec& spec) {
    std::size_t bytes = 0;
    for (const OIIO::ParamValue& attribute : spec.extra_attribs) {
        const bool isText = attribute.type() == OIIO::TypeString;
        bytes += isText ? attribute.get_ustring().size() : attribute.type().size();
    }
    return bytes;
}

FileLevel LevelOf(const OIIO::ImageSpec& spec) {
    return {spec.width, spec.height, std::max(spec.depth, 1)};
}

/// Whether one can be the level below another.
bool IsSmaller(const FileLevel& level, const FileLevel& above) {
    const bool isWithin = level.width <= above.width && level.height <= above.height && level.depth <= above.depth;
    return isWithin && (level.width < above.width || level.height < above.height || level.depth < above.depth);
}

void AddLevels(PartFacts& facts, OIIO::ImageInput& input, int subimage) {
    for (int level = 1; level < kMaxLevels && input.seek_subimage(subimage, level); ++level) {
        const FileLevel size = LevelOf(input.spec());
        if (!IsSmaller(size, facts.levels.back())) return;
        facts.levels.push_back(size);
    }
}

void SetWindows(FilePart& part, const OIIO::ImageSpec& spec) {
    if (spec.tile_width > 0) {
        part.tileWidth = spec.tile_width;
        part.tileHeight = spec.tile_height;
        part.tileDepth = std::max(spec.tile_depth, 1);
    }
    part.dataX = spec.x;
    part.dataY = spec.y;
    part.displayX = spec.full_x;
    part.displayY = spec.full_y;
    part.displayWidth = spec.full_width > 0 ? spec.full_width : spec.width;
    part.displayHeight = spec.full_height > 0 ? spec.full_height : spec.height;
}

void SetMeaning(FilePart& part, std::string_view format, const OIIO::ImageSpec& spec) {
    const Transfer transfer = TransferOf(format, spec);
    const Resolution resolution = ResolutionOf(format, spec);
    part.alpha = AlphaKindOf(format, spec);
    part.transfer = transfer.kind;
    part.gamma = transfer.gamma;
    part.xResolution = resolution.x;
    part.yResolution = resolution.y;
    part.seconds = Seconds(spec);
}

}  // namespace

PartFacts FactsOfSpec(std::string_view format, const OIIO::ImageSpec& spec) {
    PartFacts facts;
    FilePart& part = facts.part;
    const ImageDesc desc = DescribeSpec(spec, format == "hdr", Other, false);
    part.textureType = desc.textureType;
    part.orientation = desc.orientation;
    part.elements = 1;
    if (desc.textureType == kTextureCube) part.faces = (1U << kCubeFaces) - 1;
    part.bitsPerSample = BitsPerSample(format, spec);
    SetWindows(part, spec);
    SetMeaning(part, format, spec);
    facts.name = TextAttribute(spec, "oiio:subimagename").value_or("");
    facts.colourSpace = TextAttribute(spec, "oiio:ColorSpace").value_or("");
    facts.compression = TextAttribute(spec, "compression").value_or("");
    facts.levels = {{desc.width, desc.height, std::max(desc.depth, 1)}};
    for (int channel = 0; channel < spec.nchannels; ++channel)
        facts.channels.push_back({spec.channel_name(channel), TypeName(spec.channelformat(channel))});
    for (const OIIO::ParamValue& attribute : spec.extra_attribs) {
        if (facts.texts.size() == InspectedFile::kMaxTexts) break;
        if (IsToldElsewhere(attribute)) continue;
        facts.texts.push_back({std::string(attribute.name()), attribute.get_string(kMaxElementsShown)});
    }
    facts.profile = ProfileOf(spec);
    return facts;
}

void AddLibraryParts(InspectedFile& file, OIIO::ImageInput& input) {
    const std::string_view format = input.format_name();
    const bool isDecoded = format == "gif";  // up to the frame that is asked for
    std::uint64_t pixels = 0;
    std::size_t bytes = 0;
    for (int subimage = 0; file.PartCount() < InspectedFile::kMaxParts; ++subimage) {
        if (subimage > 0 && !input.seek_subimage(subimage, 0)) break;
        const OIIO::ImageSpec spec = input.spec();
        bytes += MetadataBytes(spec);
        if (isDecoded) pixels += spec.image_pixels();
        if (subimage > 0 && (bytes > kMaxMetadataBytes || pixels > kMaxDecodedPixels)) break;
        PartFacts facts = FactsOfSpec(format, spec);
        AddLevels(facts, input, subimage);
        file.Add(facts);
    }
    (void)input.geterror();  // that of the part after the last
}

}  // namespace Kavra::Devices
