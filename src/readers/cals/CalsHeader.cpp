#include "readers/cals/CalsHeader.h"

#include "readers/TextScanner.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kRecordBytes = 128;
constexpr std::size_t kOrientationRecord = 7;
constexpr std::size_t kCountsRecord = 8;

std::int32_t NumberBehind(char mark, std::string_view text) {
    const std::size_t at = text.find(mark);
    return at == text.npos ? 0 : TextScanner(text.substr(at + 1)).Integer().value_or(0);
}

/// The numbers behind the first colon and the first comma from a record on. They may stand in later records: what
/// other programs write in this one is not always complete.
std::pair<std::int32_t, std::int32_t> Numbers(std::span<const unsigned char> header, std::size_t record) {
    const std::span<const unsigned char> bytes = header.subspan(record * kRecordBytes);
    const std::string text(bytes.begin(), bytes.end());
    return {NumberBehind(':', text), NumberBehind(',', text)};
}

}  // namespace

CalsHeader::CalsHeader(ByteSource& source) {
    if (source.Seek(0)) (void)source.ReadSome(mBytes);
}

std::pair<std::int32_t, std::int32_t> CalsHeader::Counts() const {
    return Numbers(mBytes, kCountsRecord);
}

EDataOrientation CalsHeader::Orientation() const {
    constexpr std::int32_t kColumnsUp = 90;
    const auto [rows, columns] = Numbers(mBytes, kOrientationRecord);
    const bool up = columns == kColumnsUp;
    switch (rows) {
        case 0:
            return up ? kBottomLeft : kTopLeft;
        case 90:
            return up ? kLeftTop : kLeftBottom;
        case 180:
            return up ? kTopRight : kBottomRight;
        case 270:
            return up ? kRightBottom : kRightTop;
        default:
            return kTopLeft;
    }
}

}  // namespace Kavra::Devices
