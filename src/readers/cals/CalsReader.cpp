#include "readers/cals/CalsReader.h"

#include "common/Limits.h"
#include "common/Reasons.h"
#include "readers/BilevelRow.h"
#include "readers/TextScanner.h"
#include "readers/WriteRows.h"
#include "readers/ccitt/CcittRows.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <array>
#include <format>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
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

CalsHeader::CalsHeader(std::span<const unsigned char> bytes) : mPresent(std::min(bytes.size(), kBytes)) {
    std::ranges::copy(bytes.first(mPresent), mText.begin());
}

/// A record without what a NUL ends; empty when the file does not hold all of it.
std::string_view CalsHeader::Record(std::size_t number) const {
    if (mPresent < (number + 1) * kRecordBytes) return {};
    const std::string_view record = std::string_view(mText).substr(number * kRecordBytes, kRecordBytes);
    return record.substr(0, record.find('\0'));
}

bool CalsHeader::HasDocumentId() const {
    return Record(0).starts_with("srcdocid:") || Record(1).starts_with("dstdocid:");
}

bool CalsHeader::IsOfRasterType1() const {
    constexpr std::string_view kRasterType = "rtype:";
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

Result<CalsHeader> ReadCalsHeader(ByteSource& source) {
    std::array<unsigned char, CalsHeader::kBytes> bytes{};
    const std::size_t present = source.Seek(0) ? source.ReadSome(bytes) : 0;
    CalsHeader header({bytes.data(), present});
    if (!header.HasDocumentId()) return std::unexpected(Failure::kMalformed);
    if (!header.IsOfRasterType1()) return std::unexpected(Failure::kUnsupported);
    return header;
}

bool IsCals(ByteSource& source) {
    return ReadCalsHeader(source).has_value();
}

// --- The reader ------------------------------------------------------------------------------------------------------

namespace {

constexpr std::int32_t kUntiled = 1;
constexpr unsigned char kPaper = 0xFF;

/// The next row with its ink in zeros. One with a bad code is left as it is, with a warning.
Ccitt::Outcome DecodeInk(Ccitt::Decoder& decoder, std::span<unsigned char> packed) {
    const Ccitt::Outcome outcome = decoder.DecodeRows(packed);
    if (outcome == Ccitt::Outcome::kBadCode) {
        Sys::Warning(decoder.LastBadCode().Message().data(), nullptr);
        return outcome;
    }
    for (unsigned char& byte : packed)
        byte ^= kPaper;
    return outcome;
}

/// Rows of an image whose header does not tell them.
std::int32_t CountRows(ByteSource& source, const CalsCommonHeader& header) {
    if (header.width > Common::kMaxSide || !source.Seek(header.dataStart)) return 0;
    Ccitt::Decoder decoder(source, header.width, Ccitt::Mode::kGroup4, Ccitt::BitOrder::kMostSignificantFirst);
    std::int32_t rows = 0;
    while (rows < Common::kMaxSide && !decoder.IsAtEnd() && decoder.SkipRow() == Ccitt::Outcome::kDecoded)
        ++rows;
    return rows;
}

}  // namespace

void CALSReader::Close() {
    mSource.reset();
    mHeader = {};
    mCommonHeader.reset();
}

Result<> CALSReader::OpenFiles(PictureFiles files) {
    if (mReading.IsCommon()) return OpenCommonFiles(std::move(files));
    const Result<CalsHeader> header = ReadCalsHeader(files.source);
    if (!header) return std::unexpected(header.error());
    mHeader = *header;
    mSource = std::move(files.source);
    return {};
}

Result<> CALSReader::OpenCommonFiles(PictureFiles files) {
    Result<CalsCommonHeader> header = ReadCalsCommonHeader(files.source);
    if (!header) return std::unexpected(header.error());
    if (header->height < 1 && header->rasterType == kUntiled) header->height = CountRows(files.source, *header);
    mCommonHeader = *header;
    mSource = std::move(files.source);
    return {};
}

int CALSReader::GetRowPitch() {
    constexpr std::int64_t kPixelBytes = 4;
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<std::int64_t>(GetWidth() * kPixelBytes, Limits::min(), Limits::max()));
}

Result<> CALSReader::ReadFrame(Common::RowSink& rows, int /*frame*/) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    if (mReading.IsCommon("drawings are shown in negative by the host's rules")) return ReadCommonFrame(rows);
    const std::int32_t width = GetWidth();
    const std::int32_t height = GetHeight();
    if (width < 1 || height < 1) return {};
    (void)mSource->Seek(std::min<std::uint64_t>(CalsHeader::kBytes, mSource->Size()));
    Ccitt::Decoder decoder(*mSource, width, Ccitt::Mode::kGroup4, Ccitt::BitOrder::kMostSignificantFirst);
    std::vector<unsigned char> packed((static_cast<std::size_t>(width) + 7) / 8);
    int good = 0;
    bool isOver = false;
    const auto writeRow = [&](std::span<unsigned char> pixels) {
        const Ccitt::Outcome outcome = decoder.DecodeRows(packed);
        if (outcome == Ccitt::Outcome::kBadCode) {  // and shows what the row before left
            Sys::Warning(decoder.LastBadCode().Message().data(), nullptr);
        }
        isOver = isOver || outcome == Ccitt::Outcome::kEndOfData;
        if (!isOver) ++good;
        ExpandBilevelRow(packed, pixels);
    };
    WriteRows(rows, static_cast<std::size_t>(height), static_cast<std::size_t>(GetRowPitch()), writeRow);
    Common::SayEndsEarly(good, height, mSource->Size());
    return {};
}

Result<> CALSReader::ReadCommonFrame(Common::RowSink& rows) {
    if (mCommonHeader->rasterType != kUntiled) {
        const std::wstring text =
            std::format(L"CALS rasters of type {} are not read: type 1 is", mCommonHeader->rasterType);
        Sys::Warning(text.c_str(), nullptr);
        return std::unexpected(Failure::kUnsupported);
    }
    const std::int32_t width = GetWidth();
    if (GetHeight() < 1) return {};
    (void)mSource->Seek(mCommonHeader->dataStart);
    Ccitt::Decoder decoder(*mSource, width, Ccitt::Mode::kGroup4, Ccitt::BitOrder::kMostSignificantFirst);
    std::vector<unsigned char> packed((static_cast<std::size_t>(width) + 7) / 8);
    bool isOver = false;
    int good = 0;
    const auto writeRow = [&](std::span<unsigned char> pixels) {
        isOver = isOver || decoder.IsAtEnd();
        const Ccitt::Outcome outcome = isOver ? Ccitt::Outcome::kEndOfData : DecodeInk(decoder, packed);
        isOver = isOver || outcome == Ccitt::Outcome::kBadCode;
        if (outcome == Ccitt::Outcome::kDecoded) ++good;
        if (isOver) std::ranges::fill(packed, kPaper);
        ExpandBilevelRow(packed, pixels);
    };
    WriteRows(rows, static_cast<std::size_t>(GetHeight()), static_cast<std::size_t>(GetRowPitch()), writeRow);
    Common::SayEndsEarly(good, GetHeight(), mSource->Size());
    return {};
}

}  // namespace Kavra::Devices
