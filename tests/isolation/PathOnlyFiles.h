/// Small pictures in the formats that the image library reads by paths alone.
#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

/// Numbers as a file has them.
template <std::unsigned_integral T>
std::string LittleEndian(T value) {
    std::string bytes;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

template <std::unsigned_integral T>
std::string BigEndian(T value) {
    const std::string bytes = LittleEndian(value);
    return {bytes.rbegin(), bytes.rend()};
}

/// 2 x 2 grey pixels of 8 bits, the last row first: cards of 80 characters; header and data are blocks of 2880 bytes
/// (FITS standard 4.0, 3.1 and 4.1).
inline std::string Fits(std::string_view pixels) {
    constexpr std::size_t kCard = 80, kBlock = 2880;
    std::string bytes;
    for (std::string card :
         {"SIMPLE  =                    T", "BITPIX  =                    8", "NAXIS   =                    2",
          "NAXIS1  =                    2", "NAXIS2  =                    2", "END"}) {
        card.resize(kCard, ' ');
        bytes += card;
    }
    bytes.resize(kBlock, ' ');
    bytes += pixels;
    bytes.resize(2 * kBlock, '\0');
    return bytes;
}

/// 2 x 1 pixels of three channels of 10 bits, packed in words (the file interchange format of Kodak's Cineon, 4.5).
inline std::string Cineon() {
    constexpr std::size_t kHeader = 2048, kChannels = 192, kSizeOfChannel = 28, kLayout = 680;
    std::string bytes = BigEndian(0x802A5FD7U) + BigEndian(2048U) + BigEndian(1024U) + BigEndian(1024U) +
                        BigEndian(0U) + BigEndian(2056U) + "V4.5";
    bytes.resize(kHeader);
    bytes[kChannels + 1] = 3;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const std::string size = BigEndian(2U) + BigEndian(1U);
        const std::size_t start = kChannels + 4 + channel * kSizeOfChannel;
        bytes[start + 1] = static_cast<char>(channel + 1);  // red, green, blue
        bytes[start + 2] = 10;
        bytes.replace(start + 4, size.size(), size);
    }
    bytes[kLayout + 1] = 5;  // channels of 10 bits at the left of words of 32
    return bytes + BigEndian(0x40080200U) + BigEndian(0xFFC80400U);
}

/// One element of a data set: group and number, kind of value, value (PS3.5, 7.1.2).
inline std::string DicomElement(unsigned tag, const std::string& kind, std::string value) {
    if (value.size() % 2 != 0) value += kind == "UI" || kind == "OB" ? '\0' : ' ';
    std::string bytes = LittleEndian(static_cast<unsigned short>(tag >> 16)) +
                        LittleEndian(static_cast<unsigned short>(tag & 0xFFFF)) + kind;
    bytes += kind == "OB" ? LittleEndian<unsigned short>(0) + LittleEndian(static_cast<unsigned>(value.size()))
                          : LittleEndian(static_cast<unsigned short>(value.size()));
    return bytes + value;
}

/// 2 x 2 grey pixels of 8 bits, uncompressed (DICOM PS3.10).
inline std::string Dicom() {
    using Number = unsigned short;
    const auto number = [](unsigned tag, Number value) { return DicomElement(tag, "US", LittleEndian(value)); };
    const std::string kind = "1.2.840.10008.5.1.4.1.1.7", file = "1.2.3";
    const std::string meta = DicomElement(0x00020001, "OB", std::string("\0\1", 2)) +
                             DicomElement(0x00020002, "UI", kind) + DicomElement(0x00020003, "UI", file) +
                             DicomElement(0x00020010, "UI", "1.2.840.10008.1.2.1");
    return std::string(128, '\0') + "DICM" +
           DicomElement(0x00020000, "UL", LittleEndian(static_cast<unsigned>(meta.size()))) + meta +
           DicomElement(0x00080016, "UI", kind) + DicomElement(0x00080018, "UI", file) + number(0x00280002, 1) +
           DicomElement(0x00280004, "CS", "MONOCHROME2") + number(0x00280010, 2) + number(0x00280011, 2) +
           number(0x00280100, 8) + number(0x00280101, 8) + number(0x00280102, 7) + number(0x00280103, 0) +
           DicomElement(0x7FE00010, "OB", "\1\2\3\4");
}

/// 2 x 2 pixels of three channels of 8 bits, unpacked rows (the PIC format of Softimage 3D).
inline std::string Softimage() {
    std::string bytes = BigEndian(0x5380F634U) + BigEndian(0x406D70A4U);  // version 3.71
    bytes.resize(88);                                                     // a comment
    bytes += "PICT" + BigEndian<unsigned short>(2) + BigEndian<unsigned short>(2) + BigEndian(0x3F800000U) +
             BigEndian<unsigned short>(3) + BigEndian<unsigned short>(0);
    return bytes + std::string("\0\x08\0\xE0", 4) + "abcdefghijkl";
}

/// One frame of 4 x 2 pixels of three channels of 8 bits, unpacked (AVI RIFF file reference, DirectX).
inline std::string Movie() {
    const auto chunk = [](const std::string& name, const std::string& bytes) {
        return name + LittleEndian(static_cast<unsigned>(bytes.size())) + bytes;
    };
    const auto numbers = [](std::initializer_list<unsigned> values) {
        std::string bytes;
        for (const unsigned value : values)
            bytes += LittleEndian(value);
        return bytes;
    };
    const std::string pixels = "abcdefghijklmnopqrstuvwx";
    constexpr unsigned kWidth = 4, kHeight = 2, kBytes = 24;
    const std::string main = chunk("avih", numbers({200000, 0, 0, 0, 1, 0, 1, kBytes, kWidth, kHeight, 0, 0, 0, 0})),
                      stream = chunk("strh", "vids" + numbers({0, 0, 0, 0, 1, 5, 0, 1, kBytes, 0, 0, 0, 0})),
                      format = chunk("strf", numbers({40, kWidth, kHeight, 24U << 16 | 1, 0, kBytes, 0, 0, 0, 0}));
    return chunk("RIFF", "AVI " + chunk("LIST", "hdrl" + main + chunk("LIST", "strl" + stream + format)) +
                             chunk("LIST", "movi" + chunk("00db", pixels)));
}

struct NamedFile {
    const char* name;
    std::string bytes;
};

/// One of each that can be built by hand.
inline std::vector<NamedFile> PathOnlyFiles() {
    return {{"x.fits", Fits("\1\2\3\4")}, {"x.cin", Cineon()}, {"x.dcm", Dicom()}, {"x.pic", Softimage()}};
}

}  // namespace Kavra::Tests
