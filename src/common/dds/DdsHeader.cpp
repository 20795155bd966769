#include "common/dds/DdsHeader.h"

#include <algorithm>

namespace Kavra::Devices::Dds {
namespace {

constexpr std::size_t kPlainHeaderBytes = 128;

struct Field {
    std::size_t offset;
    std::uint32_t Header::* value;
};

/// Where each field lies in the file; every one is 32 bits, little-endian.
constexpr Field kPlainFields[] = {
    {8, &Header::flags},       {12, &Header::height},   {16, &Header::width},      {20, &Header::pitch},
    {24, &Header::depth},      {28, &Header::mipCount}, {80, &Header::pixelFlags}, {84, &Header::fourCC},
    {88, &Header::bitCount},   {92, &Header::redMask},  {96, &Header::greenMask},  {100, &Header::blueMask},
    {104, &Header::alphaMask}, {108, &Header::caps1},   {112, &Header::caps2},
};
constexpr Field kExtensionFields[] = {
    {128, &Header::dxgiFormat}, {132, &Header::dimension}, {136, &Header::misc},
    {140, &Header::arraySize},  {144, &Header::misc2},
};

struct Constant {
    std::size_t offset;
    std::uint32_t value;
};

/// What every file has: the magic number and the sizes of the header and of the pixel format within it.
constexpr Constant kConstants[] = {{0, FourCC("DDS ")}, {4, 124}, {76, 32}};

std::uint32_t Get(std::span<const unsigned char> bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | bytes[offset + i];
    return value;
}

void Put(std::vector<unsigned char>& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

}  // namespace

std::size_t Header::Bytes() const {
    return isExtended ? kMaxHeaderBytes : kPlainHeaderBytes;
}

std::optional<Header> ParseHeader(std::span<const unsigned char> file, ExtensionRule rule) {
    if (file.size() < kPlainHeaderBytes) return std::nullopt;
    const auto holds = [&](const Constant& constant) { return Get(file, constant.offset) == constant.value; };
    if (!std::ranges::all_of(kConstants, holds)) return std::nullopt;

    Header header;
    const auto read = [&](std::span<const Field> fields) {
        for (const Field& field : fields)
            header.*field.value = Get(file, field.offset);
    };
    read(kPlainFields);
    header.isExtended = header.fourCC == kFourCCDX10 && (rule == ExtensionRule::kAnyCode || header.HasFourCC());
    if (!header.isExtended) return header;
    if (file.size() < kMaxHeaderBytes) return std::nullopt;
    read(kExtensionFields);
    return header;
}

std::vector<unsigned char> ComposeHeader(const Header& header) {
    std::vector<unsigned char> bytes(header.Bytes());
    for (const Constant& constant : kConstants)
        Put(bytes, constant.offset, constant.value);
    for (const Field& field : kPlainFields)
        Put(bytes, field.offset, header.*field.value);
    if (!header.isExtended) return bytes;
    for (const Field& field : kExtensionFields)
        Put(bytes, field.offset, header.*field.value);
    return bytes;
}

}  // namespace Kavra::Devices::Dds
