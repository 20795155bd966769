#include "readers/cals/CalsProbe.h"

#include "readers/TextScanner.h"

#include <string>
#include <string_view>

namespace Kavra::Devices {

namespace {

constexpr std::uint64_t kRecordBytes = 128;
constexpr std::uint64_t kRasterTypeRecord = 6;
constexpr std::string_view kRasterType = "rtype:";

/// A record of the header, without what a NUL ends; empty when the file does not hold all of it.
std::string Record(ByteSource& source, std::uint64_t number) {
    const auto bytes = source.BytesAt<kRecordBytes>(number * kRecordBytes);
    return bytes ? std::string(bytes->begin(), std::ranges::find(*bytes, '\0')) : std::string();
}

}  // namespace

bool IsCals(ByteSource& source) {
    if (!Record(source, 0).starts_with("srcdocid:") && !Record(source, 1).starts_with("dstdocid:")) return false;
    const std::string type = Record(source, kRasterTypeRecord);
    return type.starts_with(kRasterType) &&
           TextScanner(std::string_view(type).substr(kRasterType.size())).Integer() == 1;
}

}  // namespace Kavra::Devices
