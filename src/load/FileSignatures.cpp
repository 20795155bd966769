#include "load/FileSignatures.h"

#include <algorithm>
#include <array>

namespace Kavra::Devices {

namespace {

using namespace std::string_view_literals;

struct Signature {
    std::string_view format;
    std::size_t offset;
    std::string_view bytes;
};

/// What every file that the reader accepts has one of. Left out are formats without a fixed start (Targa, RLA, camera
/// raw, video) and readers that take more than one kind of it (WebP, HDR, ICO...).
constexpr auto kSignatures = std::to_array<Signature>({
    {"dds", 0, "DDS "sv},
    {"dpx", 0, "SDPX"sv},
    {"dpx", 0, "XPDS"sv},
    {"fits", 0, "SIMPLE"sv},
    {"gif", 0, "GIF"sv},
    {"iff", 0, "FOR4"sv},
    {"iff", 0, "FOR8"sv},
    {"iff", 0, "FORM"sv},
    {"iff", 0, "CAT4"sv},
    {"iff", 0, "CAT "sv},
    {"iff", 0, "LIS4"sv},
    {"iff", 0, "LIST"sv},
    {"jpeg", 0, "\xFF\xD8"sv},
    {"jpeg2000", 0, "\xFF\x4F\xFF\x51"sv},
    {"jpeg2000", 4, "jP  "sv},
    {"openexr", 0, "\x76\x2F\x31\x01"sv},
    {"png", 0, "\x89PNG"sv},
    {"psd", 0, "8BPS"sv},
    {"pnm", 0, "P1"sv},
    {"pnm", 0, "P2"sv},
    {"pnm", 0, "P3"sv},
    {"pnm", 0, "P4"sv},
    {"pnm", 0, "P5"sv},
    {"pnm", 0, "P6"sv},
    {"pnm", 0, "P7"sv},
    {"pnm", 0, "PF"sv},
    {"pnm", 0, "Pf"sv},
    {"sgi", 0, "\x01\xDA"sv},
    {"softimage", 0, "\x53\x80\xF6\x34"sv},
    {"tiff", 0, "II\x2A\0"sv},
    {"tiff", 0, "MM\0\x2A"sv},
    {"tiff", 0, "II\x2B\0"sv},
    {"tiff", 0, "MM\0\x2B"sv},
    {"tiff", 0, "EP\x2A\0"sv},  // as a document imaging program writes it
});

/// The groups that the first data element of a DICOM file can be of, in either order of bytes.
constexpr std::array<unsigned char, 7> kDicomGroups = {0x02, 0x04, 0x08, 0x10, 0x18, 0x20, 0x28};

bool StartsWithDicomElement(std::span<const unsigned char> start) {
    if (start.size() < 2 || (start[0] == 0) == (start[1] == 0)) return false;
    return std::ranges::find(kDicomGroups, start[0] | start[1]) != kDicomGroups.end();
}

bool Has(const Signature& signature, std::span<const unsigned char> start) {
    if (start.size() < signature.offset + signature.bytes.size()) return false;
    return std::ranges::equal(
        start.subspan(signature.offset, signature.bytes.size()), signature.bytes,
        [](std::uint8_t byte, char expected) { return byte == static_cast<std::uint8_t>(expected); });
}

/// Whether the first data element stands where it has to: behind a preamble of 128 bytes and its mark, or at the start.
bool MayBeDicom(std::span<const unsigned char> start) {
    constexpr Signature kMark = {"dicom", 128, "DICM"sv};
    constexpr std::size_t kFirstElement = kMark.offset + kMark.bytes.size();
    return StartsWithDicomElement(Has(kMark, start) ? start.subspan(kFirstElement) : start);
}

}  // namespace

bool MayBeOfFormat(std::string_view format, std::span<const unsigned char> start) {
    if (format == "dicom") return MayBeDicom(start);
    bool known = false;
    for (const Signature& signature : kSignatures) {
        if (signature.format != format) continue;
        if (Has(signature, start)) return true;
        known = true;
    }
    return !known;
}

}  // namespace Kavra::Devices
