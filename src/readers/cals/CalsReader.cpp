#include "readers/cals/CalsReader.h"

#include "readers/BilevelRow.h"
#include "readers/TextScanner.h"
#include "readers/ccitt/CcittDecoder.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

namespace {

constexpr std::size_t kRecordBytes = 128;
constexpr std::size_t kRasterTypeRecord = 6;
constexpr std::size_t kOrientationRecord = 7;
constexpr std::size_t kCountsRecord = 8;

std::int32_t NumberBehind(char mark, std::string_view text) {
    const std::size_t at = text.find(mark);
    return at == text.npos ? 0 : TextScanner(text.substr(at + 1)).Integer().value_or(0);
}

}  // namespace

// --- The header ------------------------------------------------------------------------------------------------------

CalsHeader::CalsHeader(ByteSource& source) {
    std::array<unsigned char, kBytes> bytes{};
    if (source.Seek(0)) mPresent = source.ReadSome(bytes);
    std::ranges::copy(bytes, mText.begin());
}

/// A record without what a NUL ends; empty when the file does not hold all of it.
std::string_view CalsHeader::Record(std::size_t number) const {
    if (mPresent < (number + 1) * kRecordBytes) return {};
    const std::string_view record = std::string_view(mText).substr(number * kRecordBytes, kRecordBytes);
    return record.substr(0, record.find('\0'));
}

bool CalsHeader::IsCals() const {
    constexpr std::string_view kRasterType = "rtype:";
    if (!Record(0).starts_with("srcdocid:") && !Record(1).starts_with("dstdocid:")) return false;
    const std::string_view type = Record(kRasterTypeRecord);
    return type.starts_with(kRasterType) && TextScanner(type.substr(kRasterType.size())).Integer() == 1;
}

/// The numbers behind the first colon and the first comma from a record on. They may stand in later records: what
/// other programs write in this one is not always complete.
std::pair<std::int32_t, std::int32_t> CalsHeader::NumbersFrom(std::size_t record) const {
    const std::string_view text = std::string_view(mText).substr(record * kRecordBytes);
    return {NumberBehind(':', text), NumberBehind(',', text)};
}

std::pair<std::int32_t, std::int32_t> CalsHeader::Counts() const {
    return NumbersFrom(kCountsRecord);
}

EDataOrientation CalsHeader::Orientation() const {
    constexpr std::int32_t kColumnsUp = 90;
    const auto [rows, columns] = NumbersFrom(kOrientationRecord);
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

bool IsCals(ByteSource& source) {
    return CalsHeader(source).IsCals();
}

// --- The reader ------------------------------------------------------------------------------------------------------

bool CALSReader::Open(const KString& path) {
    mSource.reset();
    mHeader = {};
    Result<ByteSource> source = ByteSource::Open(path);
    if (!source) return false;
    const CalsHeader header(*source);
    if (!header.IsCals()) return false;
    mSource = std::move(*source);
    mHeader = header;
    return true;
}

int CALSReader::GetRowPitch() {
    constexpr std::int64_t kPixelBytes = 4;
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<std::int64_t>(GetWidth() * kPixelBytes, Limits::min(), Limits::max()));
}

bool CALSReader::ReadImage(unsigned char* buffer, int /*frame*/) {
    if (!mSource) return false;
    const std::int32_t width = GetWidth();
    const std::int32_t height = GetHeight();
    if (width < 1 || height < 1) return true;
    (void)mSource->Seek(std::min<std::uint64_t>(CalsHeader::kBytes, mSource->Size()));
    Ccitt::Decoder decoder(*mSource, width, Ccitt::Mode::kGroup4, Ccitt::BitOrder::kMostSignificantFirst);
    const auto pitch = static_cast<std::size_t>(GetRowPitch());
    const std::span<unsigned char> pixels(buffer, pitch * static_cast<std::size_t>(height));
    std::vector<unsigned char> packed((static_cast<std::size_t>(width) + 7) / 8);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        (void)decoder.DecodeRows(packed);  // a row that fails shows what the row before left
        ExpandBilevelRow(packed, pixels.subspan(y * pitch, pitch));
    }
    return true;
}

}  // namespace Kavra::Devices
