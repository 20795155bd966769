#include "common/isolation/DecoderRecords.h"

#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "common/isolation/DecoderRequest.h"
#include "common/isolation/Fields.h"

#include <kavra/objects/OS.h>

#include <cmath>
#include <cstddef>
#include <utility>

namespace Kavra::Common {

using namespace Devices;

namespace {

constexpr std::size_t kMaxTextBytes = std::size_t{16} << 10;
constexpr std::uint64_t kPageBytes = 4096;
constexpr std::int32_t kMaxDimension = 1 << 30;

enum class Flag : std::uint32_t { kTransparent = 1, kTranslucent = 2, kAlpha = 4, kDefaultOrientation = 8, kAll = 15 };

std::string_view Cut(std::string_view text) {
    return text.substr(0, kMaxTextBytes);
}

bool IsOrientation(std::int32_t value) {
    return value >= kTopLeft && value <= kRightBottom;
}

bool IsTextureType(std::int32_t value) {
    return value == kTextureUnknown || value == kTexture1D || value == kTexture2D || value == kTextureCube ||
           value == kTextureVolume;
}

bool IsFormat(std::int32_t value) {
    return FactsOf(static_cast<EFormat>(value)).value == value && value != kUnknown;
}

bool IsDimension(std::int32_t value) {
    return value >= 1 && value <= kMaxDimension;
}

/// Whether no pixel or block that the description speaks of lies behind the end of the block.
bool Holds(const ImageDescription& desc, std::uint64_t blockBytes) {
    const PixelFormat& format = FactsOf(desc.format);
    const auto width = static_cast<std::uint64_t>(desc.width), height = static_cast<std::uint64_t>(desc.height);
    std::uint64_t slice = 0;
    if (format.bytesPerBlock > 0) {
        const std::uint64_t blocks = Product<std::uint64_t>((width + 3) / 4, (height + 3) / 4);
        slice = Product<std::uint64_t>(blocks, static_cast<unsigned>(format.bytesPerBlock));
        if (desc.rowPitch < 0) return false;
    } else {
        const std::int64_t packed = std::int64_t{format.BytesPerPixel()} * desc.width;
        if (desc.rowPitch < 1 || desc.rowPitch < packed) return false;
        slice = Product<std::uint64_t>(static_cast<unsigned>(desc.rowPitch), height);
    }
    const auto faces = static_cast<unsigned>(FaceCount(desc.textureType));
    return Product<std::uint64_t>(slice, static_cast<unsigned>(desc.depth)) <= desc.dataSize &&
           Product<std::uint64_t>(desc.dataSize, faces) <= blockBytes;
}

// --- Reading -----------------------------------------------------------------------------------------------------------

template <class T>
using Parsed = std::optional<T>;

Parsed<MessageRecord> ParseMessage(FieldReader& in) {
    MessageRecord record;
    const auto isError = in.Take<std::uint8_t>(), hasDetail = in.Take<std::uint8_t>();
    if (isError > 1 || hasDetail > 1) return std::nullopt;
    record.isError = isError != 0;
    record.text = CleanText(in.TakeText());
    std::string detail = CleanText(in.TakeText());
    if (hasDetail != 0) record.detail = std::move(detail);
    return record;
}

Parsed<QuestionRecord> ParseQuestion(FieldReader& in) {
    const auto format = in.Take<std::int32_t>(), usage = in.Take<std::int32_t>();
    if (!IsFormat(format)) return std::nullopt;
    return QuestionRecord{static_cast<EFormat>(format), usage};
}

Parsed<FailureRecord> ParseFailure(FieldReader& in) {
    FailureRecord record;
    const auto kind = in.Take<std::int32_t>();
    if (kind < kFailureNone || kind > kFailureOther) return std::nullopt;
    record.report.kind = static_cast<EFailureKind>(kind);
    record.report.position = in.Take<std::int64_t>();
    record.report.goodRows = in.Take<std::int64_t>();
    record.report.rows = in.Take<std::int64_t>();
    record.text = CleanText(in.TakeText());
    return record;
}

Parsed<PictureRecord> ParsePicture(FieldReader& in) {
    PictureRecord record;
    ImageDescription& desc = record.desc;
    desc.width = in.Take<std::int32_t>();
    desc.height = in.Take<std::int32_t>();
    desc.depth = in.Take<std::int32_t>();
    const auto format = in.Take<std::int32_t>();
    desc.rowPitch = in.Take<std::int32_t>();
    desc.dataSize = in.Take<std::uint64_t>();
    const auto type = in.Take<std::int32_t>(), orientation = in.Take<std::int32_t>();
    const auto flags = in.Take<std::uint32_t>();
    desc.gamma = in.Take<double>();
    record.offset = in.Take<std::uint64_t>();
    record.blockBytes = in.Take<std::uint64_t>();
    if (!IsDimension(desc.width) || !IsDimension(desc.height) || !IsDimension(desc.depth)) return std::nullopt;
    if (!IsFormat(format) || !IsTextureType(type) || !IsOrientation(orientation)) return std::nullopt;
    if (flags > static_cast<std::uint32_t>(Flag::kAll) || !std::isfinite(desc.gamma)) return std::nullopt;
    desc.format = static_cast<EFormat>(format);
    desc.textureType = static_cast<ETextureType>(type);
    desc.orientation = static_cast<EDataOrientation>(orientation);
    const auto isSet = [flags](Flag flag) { return (flags & static_cast<std::uint32_t>(flag)) != 0; };
    desc.hasTransparentPixels = isSet(Flag::kTransparent);
    desc.hasTranslucentPixels = isSet(Flag::kTranslucent);
    desc.hasAlpha = isSet(Flag::kAlpha);
    desc.defaultOrientation = isSet(Flag::kDefaultOrientation);
    if (record.offset % kPageBytes != 0 || record.blockBytes < 1 || !Holds(desc, record.blockBytes))
        return std::nullopt;
    return record;
}

Parsed<DescriptionRecord> ParseDescription(FieldReader& in) {
    DescriptionRecord record;
    record.width = in.Take<std::int32_t>();
    record.height = in.Take<std::int32_t>();
    record.depth = in.Take<std::int32_t>();
    const auto format = in.Take<std::int32_t>(), type = in.Take<std::int32_t>();
    record.frameCount = in.Take<std::int32_t>();
    const auto orientation = in.Take<std::int32_t>();
    record.gamma = in.Take<double>();
    if (!IsFormat(format) || !IsTextureType(type) || !IsOrientation(orientation)) return std::nullopt;
    if (std::isnan(record.gamma)) return std::nullopt;
    record.format = static_cast<EFormat>(format);
    record.textureType = static_cast<ETextureType>(type);
    record.orientation = static_cast<EDataOrientation>(orientation);
    return record;
}

InspectionRecord ParseInspection(FieldReader& in) {
    InspectionRecord record;
    record.offset = in.Take<std::uint64_t>();
    record.bytes = in.Take<std::uint64_t>();
    return record;
}

template <class T>
std::optional<DecoderRecord> Whole(Parsed<T> record, const FieldReader& in) {
    if (!record || !in.IsAtEnd()) return std::nullopt;
    return DecoderRecord(*std::move(record));
}

// --- Writing -----------------------------------------------------------------------------------------------------------

void Write(FieldWriter& out, const MessageRecord& record) {
    out.Add(static_cast<std::uint8_t>(record.isError));
    out.Add(static_cast<std::uint8_t>(record.detail.has_value()));
    out.AddText(Cut(record.text));
    out.AddText(Cut(record.detail.value_or("")));
}

void Write(FieldWriter& out, const QuestionRecord& record) {
    out.Add(static_cast<std::int32_t>(record.fileFormat));
    out.Add(record.usage);
}

void Write(FieldWriter& out, const DifferenceRecord& record) {
    out.AddText(Cut(record.text));
}

void Write(FieldWriter& out, const FailureRecord& record) {
    out.Add(static_cast<std::int32_t>(record.report.kind));
    out.Add(record.report.position);
    out.Add(record.report.goodRows);
    out.Add(record.report.rows);
    out.AddText(Cut(record.text));
}

void Write(FieldWriter& out, const PictureRecord& record) {
    const ImageDescription& desc = record.desc;
    out.Add(desc.width);
    out.Add(desc.height);
    out.Add(desc.depth);
    out.Add(static_cast<std::int32_t>(desc.format));
    out.Add(desc.rowPitch);
    out.Add(desc.dataSize);
    out.Add(static_cast<std::int32_t>(desc.textureType));
    out.Add(static_cast<std::int32_t>(desc.orientation));
    const auto bit = [](bool isSet, Flag flag) { return isSet ? static_cast<std::uint32_t>(flag) : 0; };
    out.Add(bit(desc.hasTransparentPixels, Flag::kTransparent) | bit(desc.hasTranslucentPixels, Flag::kTranslucent) |
            bit(desc.hasAlpha, Flag::kAlpha) | bit(desc.defaultOrientation, Flag::kDefaultOrientation));
    out.Add(desc.gamma);
    out.Add(record.offset);
    out.Add(record.blockBytes);
}

void Write(FieldWriter& out, const DescriptionRecord& record) {
    out.Add(record.width);
    out.Add(record.height);
    out.Add(record.depth);
    out.Add(static_cast<std::int32_t>(record.format));
    out.Add(static_cast<std::int32_t>(record.textureType));
    out.Add(record.frameCount);
    out.Add(static_cast<std::int32_t>(record.orientation));
    out.Add(record.gamma);
}

void Write(FieldWriter& out, const InspectionRecord& record) {
    out.Add(record.offset);
    out.Add(record.bytes);
}

void Write(FieldWriter& /*out*/, const DoneRecord& /*record*/) {}

}  // namespace

std::optional<DecoderRecord> ParseRecord(std::span<const unsigned char> packet) {
    FieldReader in(packet);
    const auto kind = in.Take<std::uint32_t>();
    switch (in.IsWhole() ? kind : std::variant_size_v<DecoderRecord>) {
        case 0:
            return Whole(ParseMessage(in), in);
        case 1:
            return Whole(ParseQuestion(in), in);
        case 2:
            return Whole(Parsed<DifferenceRecord>(DifferenceRecord{CleanText(in.TakeText())}), in);
        case 3:
            return Whole(ParseFailure(in), in);
        case 4:
            return Whole(ParsePicture(in), in);
        case 5:
            return Whole(ParseDescription(in), in);
        case 6:
            return Whole(Parsed<InspectionRecord>(ParseInspection(in)), in);
        case 7:
            return Whole(Parsed<DoneRecord>(DoneRecord{}), in);
        default:
            return std::nullopt;
    }
}

std::vector<unsigned char> PacketOf(const DecoderRecord& record) {
    FieldWriter out;
    out.Add(static_cast<std::uint32_t>(record.index()));
    std::visit([&](const auto& held) { Write(out, held); }, record);
    return out.Bytes();
}

std::string CleanText(std::string_view text) {
    constexpr wchar_t kReplacement = 0xFFFD;
    constexpr wchar_t kSpace = 0x20, kDelete = 0x7F, kControlEnd = 0x9F;
    constexpr wchar_t kSurrogates = 0xD800, kSurrogatesEnd = 0xDFFF, kLineBreaks = 0x2028, kLineBreaksEnd = 0x2029;
    std::wstring wide = OS::FromUtf8(std::string(text).c_str());
    for (wchar_t& c : wide) {
        const bool isControl = c < kSpace || (c >= kDelete && c <= kControlEnd);
        const bool isByte = c >= kSurrogates && c <= kSurrogatesEnd;
        if (isControl || isByte || (c >= kLineBreaks && c <= kLineBreaksEnd)) c = kReplacement;
    }
    return OS::ToUtf8(wide.c_str());
}

}  // namespace Kavra::Common
