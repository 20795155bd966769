#include "TypeAbilities.h"

#include "FileNames.h"

#include <kavra/devices/IccProfile.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace Kavra::App {
namespace {

using enum TypeAbilities::Texts;

constexpr std::string_view kAnyDepth = " 8 16 half float ";

constexpr std::array kTypes = {
    TypeAbilities{.extensions = " .png ",
                  .depths = " 8 16 ",
                  .compressions = " none zip filtered huffman rle fixed pngfast ",
                  .hasResolution = true,
                  .maxProfile = Devices::kMaxIccBytes,
                  .texts = kAll},
    TypeAbilities{.extensions = " .jpg .jpeg .jpe .jif .jfif .jfi ",
                  .depths = " 8 ",
                  .hasAlpha = false,
                  .hasQuality = true,
                  .hasResolution = true,
                  .maxProfile = 65519,
                  .texts = kAll},
    TypeAbilities{.extensions = " .tif .tiff .tx .env .sm .vsm ",
                  .depths = " 8 16 float ",
                  .compressions = " none lzw zip packbits ",
                  .hasTiles = true,
                  .hasResolution = true,
                  .hasFrames = true,
                  .maxProfile = Devices::kMaxIccBytes,
                  .texts = kAll},
    TypeAbilities{.extensions = " .exr .sxr .mxr ",
                  .depths = " half float ",
                  .compressions = " none rle zip zips piz pxr24 b44 b44a dwaa dwab ",
                  .hasTiles = true,
                  .hasResolution = true,
                  .hasFrames = true,
                  .texts = kAll},
    TypeAbilities{.extensions = " .webp ",
                  .depths = " 8 ",
                  .compressions = " lossless ",
                  .hasQuality = true,
                  .maxProfile = Devices::kMaxIccBytes},
    TypeAbilities{.extensions = " .jxl ", .depths = kAnyDepth, .compressions = " lossless ", .hasQuality = true},
    TypeAbilities{.extensions = " .heic .heif .heics .hif .avif ", .depths = " 8 ", .hasQuality = true},
    TypeAbilities{.extensions = " .gif ", .depths = " 8 ", .hasFrames = true},
    TypeAbilities{.extensions = " .bmp .dib .ico ", .depths = " 8 "},
    TypeAbilities{.extensions = " .tga .tpic ", .depths = " 8 ", .compressions = " none rle ", .texts = kBoth},
    TypeAbilities{.extensions = " .sgi .rgb .rgba .bw .int .inta ",
                  .depths = " 8 16 ",
                  .compressions = " none rle ",
                  .texts = kDescription},
    TypeAbilities{.extensions = " .rla ", .depths = " 8 16 float ", .texts = kBoth},
    // Three channels of width 1 or 33 cannot be read.
    TypeAbilities{.extensions = " .iff .z ",
                  .depths = " 8 ",
                  .compressions = " none rle ",
                  .holdsThree = false,
                  .texts = kArtist},
    TypeAbilities{.extensions = " .dpx ", .depths = " 8 16 float ", .texts = kDescriptionAndCopyright},
    TypeAbilities{.extensions = " .jp2 .j2k .j2c ", .depths = " 8 16 "},
    TypeAbilities{.extensions = " .hdr .rgbe .pfm ", .depths = " float ", .hasAlpha = false},
    TypeAbilities{.extensions = " .ppm .pgm .pbm .pnm ", .depths = " 8 16 ", .hasAlpha = false},
    TypeAbilities{.extensions = " .fits ", .depths = " 8 float "},
    TypeAbilities{.extensions = " .dds ", .depths = kAnyDepth, .holdsThree = false},
};

constexpr TypeAbilities kUnknownType{.extensions = "", .depths = kAnyDepth, .holdsThree = false};

}  // namespace

std::string_view DepthName(Depth depth) {
    constexpr std::array<std::string_view, 5> kNames = {"", "8", "16", "half", "float"};
    return kNames[static_cast<std::size_t>(depth)];
}

bool TypeAbilities::HoldsDepth(Depth depth) const {
    return depth == Depth::kOwn || HasWord(depths, DepthName(depth));
}

bool TypeAbilities::HasCompression(std::string_view name) const {
    return HasWord(compressions, name);
}

bool TypeAbilities::HoldsText(const Devices::SavedText& text) const {
    const std::string_view name = text.name;
    switch (texts) {
        case kNone:
            return false;
        case kDescription:
            return name == "ImageDescription";
        case kArtist:
            return name == "Artist";
        case kBoth:
            return name == "ImageDescription" || name == "Artist";
        case kDescriptionAndCopyright:
            return name == "ImageDescription" || name == "Copyright";
        case kAll:
            return true;
    }
    return false;
}

const TypeAbilities& AbilitiesOf(std::string_view extension) {
    const auto* const found =
        std::ranges::find_if(kTypes, [&](const TypeAbilities& type) { return HasWord(type.extensions, extension); });
    return found == kTypes.end() ? kUnknownType : *found;
}

std::vector<std::string> CompressionNames() {
    std::vector<std::string> names;
    for (const TypeAbilities& type : kTypes) {
        std::istringstream words{std::string(type.compressions)};
        for (std::string word; words >> word;) {
            if (!std::ranges::contains(names, word)) names.push_back(word);
        }
    }
    return names;
}

}  // namespace Kavra::App
