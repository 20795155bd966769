#include "StreamTypes.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Kavra::App {
namespace {

using namespace std::string_view_literals;

/// Bytes at a place of the file.
struct Mark {
    std::string_view extension;
    std::size_t at;
    std::string_view bytes;
};

/// What comes first is looked for first.
constexpr std::array kMarks = {
    Mark{".png", 0, "\x89PNG\r\n\x1A\n"sv},
    Mark{".jpg", 0, "\xFF\xD8\xFF"sv},
    Mark{".gif", 0, "GIF8"sv},
    Mark{".bmp", 0, "BM"sv},
    Mark{".tif", 0, "II*\0"sv},
    Mark{".tif", 0, "MM\0*"sv},
    Mark{".tif", 0, "II+\0"sv},
    Mark{".tif", 0, "MM\0+"sv},
    Mark{".dds", 0, "DDS "sv},
    Mark{".ktx2", 0, "\xABKTX 20\xBB\r\n\x1A\n"sv},
    Mark{".exr", 0, "v/1\x01"sv},
    Mark{".hdr", 0, "#?"sv},
    Mark{".webp", 8, "WEBP"sv},
    Mark{".psd", 0, "8BPS"sv},
    Mark{".jp2", 4, "jP  \r\n"sv},
    Mark{".j2k", 0, "\xFFO\xFFQ"sv},
    Mark{".jxl", 4, "JXL \r\n"sv},
    Mark{".jxl", 0, "\xFF\n"sv},
    Mark{".avif", 4, "ftypavif"sv},
    Mark{".heic", 4, "ftyp"sv},
    Mark{".pfm", 0, "PF"sv},
    Mark{".pfm", 0, "Pf"sv},
    Mark{".pbm", 0, "P1"sv},
    Mark{".pgm", 0, "P2"sv},
    Mark{".ppm", 0, "P3"sv},
    Mark{".pbm", 0, "P4"sv},
    Mark{".pgm", 0, "P5"sv},
    Mark{".ppm", 0, "P6"sv},
    Mark{".dpx", 0, "SDPX"sv},
    Mark{".dpx", 0, "XPDS"sv},
    Mark{".cin", 0, "\x80*_\xD7"sv},
    Mark{".sgi", 0, "\x01\xDA"sv},
    Mark{".fits", 0, "SIMPLE"sv},
    Mark{".iff", 0, "FOR4"sv},
    Mark{".iff", 0, "FORM"sv},
    Mark{".ico", 0, "\0\0\1\0"sv},
    Mark{".fli", 4, "\x11\xAF"sv},
    Mark{".flc", 4, "\x12\xAF"sv},
    Mark{".cal", 0, "srcdocid"sv},
    Mark{".pcx", 0, "\x0A\x05\x01"sv},
    Mark{".pcx", 0, "\x0A\x00\x01"sv},
    Mark{".pcx", 0, "\x0A\x02\x01"sv},
    Mark{".pcx", 0, "\x0A\x03\x01"sv},
    Mark{".pict", 522, "\x00\x11\x02\xFF"sv},
    Mark{".pict", 522, "\x11\x01"sv},
};

constexpr const char* kTarga = ".tga";

/// Targa files have no mark: a kind of picture, with a colour table or without, of so many bits a pixel.
bool IsLikeTarga(std::string_view begin) {
    constexpr std::size_t kHeader = 18, kTable = 1, kKind = 2, kBits = 16;
    if (begin.size() < kHeader || (begin[kTable] != 0 && begin[kTable] != 1)) return false;
    constexpr std::string_view kKinds = "\x01\x02\x03\x09\x0A\x0B"sv, kDepths = "\x08\x0F\x10\x18\x20"sv;
    return kKinds.contains(begin[kKind]) && kDepths.contains(begin[kBits]);
}

}  // namespace

std::string ExtensionOf(std::string_view begin) {
    for (const Mark& mark : kMarks) {
        if (begin.size() > mark.at && begin.substr(mark.at).starts_with(mark.bytes)) return std::string(mark.extension);
    }
    return IsLikeTarga(begin) ? kTarga : "";
}

std::vector<std::string> TypesOfBytes() {
    std::vector<std::string> types = {kTarga + 1};
    for (const Mark& mark : kMarks) {
        const std::string type(mark.extension.substr(1));
        if (!std::ranges::contains(types, type)) types.push_back(type);
    }
    std::ranges::sort(types);
    return types;
}

}  // namespace Kavra::App
