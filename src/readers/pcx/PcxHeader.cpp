#include "readers/pcx/PcxHeader.h"

#include "common/ByteOrder.h"

#include <algorithm>
#include <span>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::LittleAt;

namespace {

constexpr std::uint8_t kManufacturer = 10;

bool IsKnown(const PcxHeader& header) {
    constexpr std::array kVersions = {0, 2, 3, 5};
    constexpr std::array kBits = {1, 4, 8, 24};
    return std::ranges::contains(kVersions, header.version) && header.encoding <= 1 &&
           std::ranges::contains(kBits, header.Bits());
}

}  // namespace

std::optional<PcxHeader> ReadPcxHeader(ByteSource& source) {
    const auto bytes = source.BytesAt<kPcxHeaderBytes>(0);
    if (!bytes || bytes->front() != kManufacturer) return std::nullopt;
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
    if (!IsKnown(header)) return std::nullopt;
    std::ranges::copy(std::span(*bytes).subspan<16, 48>(), header.palette.begin());
    return header;
}

}  // namespace Kavra::Devices
