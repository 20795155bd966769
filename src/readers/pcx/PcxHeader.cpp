#include "readers/pcx/PcxHeader.h"

#include "common/ByteOrder.h"

#include <algorithm>
#include <array>
#include <span>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::LittleAt;
using Common::Result;

namespace {

constexpr std::uint8_t kManufacturer = 10;

/// The header of a file of any variety.
Result<PcxHeader> ReadAnyHeader(ByteSource& source) {
    const auto bytes = source.BytesAt<kPcxHeaderBytes>(0);
    if (!bytes) return std::unexpected(bytes.error());
    if (bytes->front() != kManufacturer) return std::unexpected(Failure::kMalformed);
    PcxHeader header = {
        .version = (*bytes)[1],
        .encoding = (*bytes)[2],
        .bitsPerPlane = (*bytes)[3],
        .planes = (*bytes)[65],
        .xMin = LittleAt<std::uint16_t, 4>(*bytes),
        .yMin = LittleAt<std::uint16_t, 6>(*bytes),
        .xMax = LittleAt<std::uint16_t, 8>(*bytes),
        .yMax = LittleAt<std::uint16_t, 10>(*bytes),
        .bytesPerLine = LittleAt<std::uint16_t, 66>(*bytes),
        .paletteInfo = LittleAt<std::uint16_t, 68>(*bytes),
    };
    std::ranges::copy(std::span(*bytes).subspan<16, 48>(), header.palette.begin());
    return header;
}

bool IsKnown(const PcxHeader& header) {
    constexpr std::array kVersions = {0, 2, 3, 5};
    constexpr std::array kBits = {1, 4, 8, 24};
    return std::ranges::contains(kVersions, header.version) && header.encoding <= 1 &&
           std::ranges::contains(kBits, header.Bits());
}

bool IsCommonlyKnown(const PcxHeader& header) {
    constexpr std::array kVersions = {0, 2, 3, 4, 5};
    constexpr std::array kBitsPerPlane = {1, 2, 4, 8};
    const bool isIndexed = header.planes >= 1 && header.Bits() <= 8;
    const bool isColour = header.bitsPerPlane >= 4 && (header.planes == 3 || header.planes == 4);
    return std::ranges::contains(kVersions, header.version) && header.encoding <= 1 &&
           std::ranges::contains(kBitsPerPlane, header.bitsPerPlane) && (isIndexed || isColour);
}

}  // namespace

Result<PcxHeader> ReadPcxHeader(ByteSource& source) {
    return ReadAnyHeader(source).and_then([](const PcxHeader& header) -> Result<PcxHeader> {
        if (!IsKnown(header)) return std::unexpected(Failure::kUnsupported);
        return header;
    });
}

bool IsPcx(ByteSource& source) {
    return ReadPcxHeader(source).has_value();
}

Result<PcxHeader> ReadCommonPcxHeader(ByteSource& source) {
    return ReadAnyHeader(source).and_then([](PcxHeader header) -> Result<PcxHeader> {
        if (!IsCommonlyKnown(header)) return std::unexpected(Failure::kUnsupported);
        if (header.Width() < 1 || header.Height() < 1) return std::unexpected(Failure::kMalformed);
        const int needed = (header.Width() * header.bitsPerPlane + 7) / 8;
        if (header.bytesPerLine == 0) header.bytesPerLine = static_cast<std::uint16_t>(std::min(needed, 0xFFFF));
        return header;
    });
}

bool IsCommonPcx(ByteSource& source) {
    return ReadCommonPcxHeader(source).has_value();
}

}  // namespace Kavra::Devices
