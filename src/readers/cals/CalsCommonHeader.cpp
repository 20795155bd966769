#include "readers/cals/CalsCommonHeader.h"

#include "common/Limits.h"
#include "readers/TextScanner.h"
#include "readers/ccitt/CcittRows.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

namespace {

constexpr std::size_t kMaxHeaderBytes = 8192;
constexpr std::size_t kStandardBytes = 2048;
constexpr std::size_t kStandardRecords = 16;
constexpr std::size_t kRecordBytes = 128;
constexpr std::string_view kBlanks(" \t\r\n\0", 5);

constexpr std::array<std::string_view, 13> kKeys = {"srcdocid", "dstdocid", "txtfilid", "figid",   "srcgph",
                                                    "doccls",   "rtype",    "rorient",  "rpelcnt", "rdensty",
                                                    "rdensity", "notes",    "version"};

// --- Records ---------------------------------------------------------------------------------------------------------

/// The bytes up to the first that no text has.
std::string_view TextOf(std::string_view bytes) {
    const auto isText = [](char character) {
        return (character >= ' ' && character <= '~') || kBlanks.contains(character) || character == '\x1A';
    };
    return bytes.substr(0, static_cast<std::size_t>(std::ranges::find_if_not(bytes, isText) - bytes.begin()));
}

struct Record {
    std::size_t start;
    std::string_view value;  ///< what follows the colon, up to the end of the line and no more than a record
};

/// The first record with a key. A key stands at the start or behind a blank, and has its colon behind it or a blank.
std::optional<Record> FindRecord(std::string_view text, std::string_view key) {
    for (std::size_t at = 0; at + key.size() < text.size(); ++at) {
        const bool begins = at == 0 || kBlanks.contains(text[at - 1]);
        if (!begins || !EqualNoCase(text.substr(at, key.size()), key)) continue;
        const std::size_t colon = text.find_first_not_of(' ', at + key.size());
        if (colon == text.npos || text[colon] != ':') continue;
        const std::string_view value = text.substr(colon + 1, kRecordBytes - std::min(kRecordBytes, colon + 1 - at));
        return Record{at, value.substr(0, value.find_first_of("\r\n"))};
    }
    return std::nullopt;
}

/// The first two whole numbers of a value, whatever stands between them.
std::pair<std::optional<std::int32_t>, std::optional<std::int32_t>> Numbers(const std::optional<Record>& record) {
    constexpr std::string_view kDigits = "0123456789";
    std::array<std::optional<std::int32_t>, 2> numbers;
    std::string_view rest = record ? record->value : std::string_view();
    for (std::optional<std::int32_t>& number : numbers) {
        rest.remove_prefix(std::min(rest.find_first_of(kDigits), rest.size()));
        number = TextScanner(rest).Integer();
        rest.remove_prefix(std::min(rest.find_first_not_of(kDigits), rest.size()));
    }
    return {numbers[0], numbers[1]};
}

EDataOrientation OrientationOf(std::int32_t pixels, std::int32_t rows) {
    const bool isLeftHand = rows == 90;  // of the way that the pixels go
    switch (pixels) {
        case 90:
            return isLeftHand ? kRightBottom : kLeftBottom;
        case 180:
            return isLeftHand ? kTopRight : kBottomRight;
        case 270:
            return isLeftHand ? kLeftTop : kRightTop;
        default:
            return pixels == 0 && isLeftHand ? kBottomLeft : kTopLeft;
    }
}

// --- Where the image begins ------------------------------------------------------------------------------------------

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(kBlanks) == text.npos;
}

/// The bytes of a record where all of them have as many; nothing where they are lines.
std::optional<std::size_t> RecordBytes(const std::vector<std::size_t>& starts) {
    for (const std::size_t bytes : {kRecordBytes, kRecordBytes + 2, kRecordBytes + 1}) {
        if (std::ranges::all_of(starts, [bytes](std::size_t start) { return start % bytes == 0; })) return bytes;
    }
    return std::nullopt;
}

/// The end of a header of these records in a text that goes on for as long as the bytes are text.
std::size_t HeaderEnd(std::string_view text, const std::vector<std::size_t>& starts) {
    const std::size_t last = *std::ranges::max_element(starts);
    const std::optional<std::size_t> record = RecordBytes(starts);
    std::size_t end = last + record.value_or(0);
    if (!record) end = std::min(text.find('\n', last), text.size() - 1) + 1;
    end = std::min(end, text.size());
    for (const std::size_t whole : {record.value_or(0) * kStandardRecords, kStandardBytes}) {
        if (whole < end || whole > text.size()) continue;
        end = whole;
        break;
    }
    const std::size_t step = record.value_or(kRecordBytes);
    while (end + step <= text.size() && IsBlank(text.substr(end, step)))
        end += step;
    return end;
}

/// Rows that decode from an offset on, of a few.
int SoundRows(ByteSource& source, std::uint64_t start, std::int32_t width) {
    constexpr int kRows = 64;
    if (!source.Seek(start)) return 0;
    Ccitt::Decoder decoder(source, width, Ccitt::Mode::kGroup4, Ccitt::BitOrder::kMostSignificantFirst);
    int rows = 0;
    while (rows < kRows && decoder.SkipRow() == Ccitt::Outcome::kDecoded)
        ++rows;
    return rows;
}

/// A header may have anything in its unused records; then the codes themselves tell.
std::uint64_t ImageStart(ByteSource& source, std::size_t end, std::int32_t width) {
    const bool isKnown = end >= kStandardBytes || source.Size() <= kStandardBytes;
    if (isKnown || width > Common::kMaxSide) return end;
    const bool isStandard = SoundRows(source, kStandardBytes, width) > SoundRows(source, end, width);
    return isStandard ? kStandardBytes : end;
}

}  // namespace

Result<CalsCommonHeader> ReadCalsCommonHeader(ByteSource& source) {
    std::array<unsigned char, kMaxHeaderBytes> bytes{};
    const std::size_t present = source.Seek(0) ? source.ReadSome(bytes) : 0;
    const std::string_view text = TextOf({reinterpret_cast<const char*>(bytes.data()), present});
    std::vector<std::size_t> starts;
    for (const std::string_view key : kKeys) {
        if (const std::optional<Record> record = FindRecord(text, key)) starts.push_back(record->start);
    }
    const bool begins = !starts.empty() && IsBlank(text.substr(0, *std::ranges::min_element(starts)));
    const auto [width, height] = Numbers(FindRecord(text, "rpelcnt"));
    if (!begins || width.value_or(0) < 1) return std::unexpected(Failure::kMalformed);

    CalsCommonHeader header;
    header.rasterType = Numbers(FindRecord(text, "rtype")).first.value_or(1);
    header.width = *width;
    header.height = height.value_or(0);
    const auto [pixels, rows] = Numbers(FindRecord(text, "rorient"));
    header.orientation = OrientationOf(pixels.value_or(0), rows.value_or(270));
    header.dataStart = ImageStart(source, HeaderEnd(text, starts), header.width);
    return header;
}

}  // namespace Kavra::Devices
