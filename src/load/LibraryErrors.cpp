#include "load/LibraryErrors.h"

#include "common/Reasons.h"
#include "common/Utf8.h"

#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>

namespace Kavra::Devices {

namespace {

using namespace std::string_view_literals;
using Common::Say;

bool Contains(std::string_view text, std::string_view word) {
    return text.find(word) != std::string_view::npos;
}

struct Word {
    std::string_view word;
    EFailureKind kind;
};

/// In lower case; the first that stands in a message tells its kind.
constexpr auto kWords = std::to_array<Word>({
    {"limits:", kFailureTooLarge},
    {"exceeds the", kFailureTooLarge},
    {"too large", kFailureTooLarge},
    {"maximum supported", kFailureTooLarge},
    {"may not exceed", kFailureTooLarge},
    {"too big", kFailureTooLarge},
    {"not supported", kFailureUnsupported},
    {"unsupported", kFailureUnsupported},
    {"not implemented", kFailureUnsupported},
    {"doesn't support", kFailureUnsupported},
    {"does not support", kFailureUnsupported},
});

/// The first line that has words: those behind it go into detail, or say how to use the library. Without the empty
/// parentheses of a detail that there is none of.
std::string FirstLine(std::string_view errors, std::string_view path) {
    while (!errors.empty()) {
        const std::size_t end = std::min(errors.find('\n'), errors.size());
        std::string line = Common::OneLine(errors.substr(0, end), path);
        if (line.ends_with(" ()")) line.resize(line.size() - 3);
        if (!line.empty()) return line;
        errors.remove_prefix(std::min(end + 1, errors.size()));
    }
    return {};
}

struct KnownStart {
    std::size_t offset;
    std::string_view bytes;
    const char* name;
};

/// What people take for pictures, or give instead of one.
constexpr auto kOtherFiles = std::to_array<KnownStart>({
    {0, "%PDF-"sv, "a PDF document"},
    {0, "%!PS"sv, "a PostScript document"},
    {0, "PK\x03\x04"sv, "a ZIP archive, or a document made of one"},
    {0, "\x1F\x8B"sv, "packed by gzip"},
    {0, "\x28\xB5\x2F\xFD"sv, "packed by Zstandard"},
    {0,
     "\xFD"
     "7zXZ\0"sv,
     "packed by xz"},
    {0, "7z\xBC\xAF\x27\x1C"sv, "a 7z archive"},
    {0,
     "\x7F"
     "ELF"sv,
     "a program"},
    {0, "MZ"sv, "a program"},
    {0, "SQLite format 3"sv, "a data base"},
    {0, "OggS"sv, "sound or video"},
    {0, "\x1A\x45\xDF\xA3"sv, "a video"},
    {4, "ftypavif"sv, "an AVIF picture"},
    {4, "ftypheic"sv, "a HEIF picture"},
    {4, "ftypheix"sv, "a HEIF picture"},
    {4, "ftypmif1"sv, "a HEIF picture"},
    {4, "ftyp"sv, "a video"},
    {8, "AVI "sv, "a video"},
    {0, "gimp xcf"sv, "a layered picture of an editor (XCF)"},
    {0, "\xABKTX 11"sv, "a KTX texture of version 1"},
    {0, "\xABKTX 20"sv, "a KTX2 texture"},
    {0, "<svg"sv, "a drawing (SVG)"},
    {0, "<?xml"sv, "an XML document"},
    {0, "<!DOCTYPE"sv, "a web page"},
    {0, "<html"sv, "a web page"},
    {0, "FLIF"sv, "a FLIF picture"},
    {0, "qoif"sv, "a QOI picture"},
    {0, "\0\0\0\x0CJXL "sv, "a JPEG XL picture"},
});

bool Has(const KnownStart& known, std::span<const unsigned char> start) {
    if (start.size() < known.offset + known.bytes.size()) return false;
    return std::ranges::equal(start.subspan(known.offset, known.bytes.size()), known.bytes,
                              [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); });
}

/// No zeros or other bytes that no text has, and well-formed but for a character that the end may cut.
bool IsText(std::span<const unsigned char> start) {
    constexpr std::size_t kMaxCut = 3;
    const auto isOdd = [](unsigned char byte) { return byte < ' ' && (byte < '\t' || byte > '\r') && byte != '\x1B'; };
    if (start.empty() || std::ranges::any_of(start, isOdd)) return false;
    const std::wstring wide = Common::FromUtf8(std::string(start.begin(), start.end()).c_str());
    const auto isStray = [](wchar_t code) { return code >= 0xDC80 && code <= 0xDCFF; };
    const auto end = wide.end() - static_cast<std::ptrdiff_t>(std::min(kMaxCut, wide.size()));
    return std::none_of(wide.begin(), end, isStray);
}

}  // namespace

std::string TakeErrors(const OIIO::ImageInput& input) {
    std::string errors = input.geterror();
    const std::string lower = OIIO::Strutil::lower(errors);
    for (const std::string_view words : {"bad_alloc", "out of memory", "out_of_memory", "insufficient memory"}) {
        if (Contains(lower, words)) throw std::bad_alloc();
    }
    return errors;
}

void SayLibraryError(std::string_view errors, std::string_view path, EFailureKind otherwise) {
    const std::string line = FirstLine(errors, path);
    if (line.empty()) return;
    const std::string lower = OIIO::Strutil::lower(line);
    const auto* const found =
        std::ranges::find_if(kWords, [&](const Word& word) { return Contains(lower, word.word); });
    Say(found == kWords.end() ? otherwise : found->kind, std::string_view(line));
}

void SayOfUnknownFile(std::span<const unsigned char> start) {
    const auto* const found =
        std::ranges::find_if(kOtherFiles, [&](const KnownStart& known) { return Has(known, start); });
    if (found != kOtherFiles.end())
        return Say(kFailureUnknownType, "nothing here reads files of this kind: {}", found->name);
    if (IsText(start)) return Say(kFailureNotAnImage, "it is text, not an image");
    Say(kFailureNotAnImage, "its bytes are of no image format that is known");
}

}  // namespace Kavra::Devices
