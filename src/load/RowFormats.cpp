#include "load/RowFormats.h"

#include "formats/Attributes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace Kavra::Devices {

namespace {

constexpr std::uint64_t kPngInterlacePosition = 28;  // the last byte of IHDR, which is the first chunk

// ITU-T T.81, table B.1.
constexpr unsigned char kMarker = 0xFF, kStartOfFrame0 = 0xC0, kStartOfFrame15 = 0xCF, kHuffmanTables = 0xC4,
                        kJpegExtensions = 0xC8, kArithmeticTables = 0xCC, kStartOfScan = 0xDA;
constexpr std::array<unsigned char, 3> kSequentialFrames = {0xC0, 0xC1, 0xC9};
constexpr int kMaxSegments = 4096;

bool IsFrame(unsigned char code) {
    return code >= kStartOfFrame0 && code <= kStartOfFrame15 && code != kHuffmanTables && code != kJpegExtensions &&
           code != kArithmeticTables;
}

bool IsInterlaced(Common::ByteSource& file) {
    const auto method = file.BytesAt<1>(kPngInterlacePosition);
    return !method || method->front() != 0;
}

bool IsTiffOfRows(const OIIO::ImageSpec& spec) {
    constexpr std::array kConvertedCompressions = {6, 7};        // JPEG, old and new
    constexpr std::array kOwnPhotometrics = {0, 1, 2, 3, 4, 5};  // grey, RGB, palette, mask, separated
    const int compression = IntegerAttribute(spec, "tiff:Compression").value_or(kConvertedCompressions[0]);
    const int photometric = IntegerAttribute(spec, "tiff:PhotometricInterpretation").value_or(-1);
    return !std::ranges::contains(kConvertedCompressions, compression) &&
           std::ranges::contains(kOwnPhotometrics, photometric);
}

}  // namespace

bool GivesRows(const OIIO::ImageInput& input, const OIIO::ImageSpec& spec, Common::ByteSource& file) {
    const OIIO::string_view format = input.format_name();
    if (format == "png") return !IsInterlaced(file);
    if (format == "jpeg") return IsJpegOfOneScan(file);
    if (format == "tiff") return IsTiffOfRows(spec);
    if (format == "bmp") return !TextAttribute(spec, "compression");
    return format == "openexr" || format == "hdr" || format == "dpx" || format == "sgi";
}

bool IsJpegOfOneScan(Common::ByteSource& file) {
    constexpr std::uint64_t kFirstSegment = 2, kSegmentHeader = 4;
    std::optional<unsigned char> components;
    std::uint64_t position = kFirstSegment;
    for (int i = 0; i < kMaxSegments; ++i) {
        const auto segment = file.BytesAt<kSegmentHeader>(position);
        if (!segment || (*segment)[0] != kMarker) return false;
        const auto [marker, code, high, low] = *segment;
        if (code == kMarker) {  // a fill byte
            ++position;
            continue;
        }
        if (IsFrame(code)) {
            const auto count = file.BytesAt<1>(position + 9);
            if (!count || components || !std::ranges::contains(kSequentialFrames, code)) return false;
            components = count->front();
        }
        if (code == kStartOfScan) {
            const auto count = file.BytesAt<1>(position + kSegmentHeader);
            return count && components == count->front();
        }
        position += 2 + (std::uint64_t{high} << 8 | low);
    }
    return false;
}

}  // namespace Kavra::Devices
