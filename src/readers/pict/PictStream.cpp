#include "readers/pict/PictStream.h"

#include "common/Limits.h"

#include <array>
#include <concepts>
#include <new>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

// --- Opcodes that draw no pixels -------------------------------------------------------------------------------------

namespace {

/// What stands behind the bytes that are always there.
enum class Data : std::uint8_t {
    kNone,
    kText,    ///< a length of 1 byte, and so many bytes
    kWord,    ///< a length of 2 bytes, and so many bytes
    kLong,    ///< a length of 4 bytes, and so many bytes
    kRegion,  ///< a length of 2 bytes that counts itself
};

struct Operands {
    std::uint8_t bytes = 0;
    Data data = Data::kNone;
};

struct OpcodeRange {
    std::uint8_t first, last;
    Operands operands;
};

constexpr std::array kRanges = std::to_array<OpcodeRange>({
    {0x01, 0x01, {0, Data::kRegion}},  // clipping, which is undone before anything is drawn
    {0x02, 0x02, {8}},
    {0x03, 0x03, {2}},
    {0x04, 0x04, {1}},
    {0x05, 0x05, {2}},
    {0x06, 0x07, {4}},
    {0x08, 0x08, {2}},
    {0x09, 0x0A, {8}},
    {0x0B, 0x0C, {4}},
    {0x0D, 0x0D, {2}},
    {0x0E, 0x0F, {4}},
    {0x10, 0x10, {8}},
    {0x11, 0x11, {1}},
    {0x15, 0x16, {2}},
    {0x1D, 0x1D, {6}},
    {0x20, 0x20, {8}},
    {0x21, 0x21, {4}},
    {0x22, 0x22, {6}},
    {0x23, 0x23, {2}},
    {0x24, 0x27, {0, Data::kWord}},
    {0x28, 0x28, {4, Data::kText}},
    {0x29, 0x2A, {1, Data::kText}},
    {0x2B, 0x2B, {2, Data::kText}},
    {0x2C, 0x2F, {0, Data::kWord}},
    {0x30, 0x37, {8}},
    {0x40, 0x47, {8}},
    {0x50, 0x57, {8}},
    {0x60, 0x67, {12}},
    {0x68, 0x6F, {4}},
    {0x70, 0x77, {0, Data::kRegion}},
    {0x80, 0x87, {0, Data::kRegion}},
    {0x92, 0x97, {0, Data::kWord}},
    {0x9B, 0x9F, {0, Data::kWord}},
    {0xA0, 0xA0, {2}},
    {0xA1, 0xA1, {2, Data::kWord}},  // a comment: its kind, and data of which none has an effect
    {0xA2, 0xAF, {0, Data::kWord}},
    {0xD0, 0xFE, {0, Data::kLong}},
});

constexpr auto kOperands = [] {
    std::array<Operands, 256> table{};
    for (const OpcodeRange& range : kRanges) {
        for (unsigned opcode = range.first; opcode <= range.last; ++opcode)
            table[opcode] = range.operands;
    }
    return table;
}();

/// The opcodes above 0xFF are reserved; those below 0x8000 carry their length in themselves.
Operands OperandsOf(std::uint16_t opcode) {
    if (opcode < kOperands.size()) return kOperands[opcode];
    if (opcode < 0x8000) return {static_cast<std::uint8_t>(opcode >> 7)};
    if (opcode < 0x8100) return {};
    return {0, Data::kLong};
}

template <std::unsigned_integral Length>
Result<> SkipCounted(ByteSource& source) {
    return source.Big<Length>().and_then([&](Length length) { return source.Skip(length); });
}

}  // namespace

Result<> SkipPictOperands(ByteSource& source, std::uint16_t opcode) {
    const Operands operands = OperandsOf(opcode);
    if (const Result<> fixed = source.Skip(operands.bytes); !fixed) return fixed;
    switch (operands.data) {
        case Data::kText:
            return SkipCounted<std::uint8_t>(source);
        case Data::kWord:
            return SkipCounted<std::uint16_t>(source);
        case Data::kLong:
            return SkipCounted<std::uint32_t>(source);
        case Data::kRegion:
            return SkipPictRegion(source);
        case Data::kNone:
            break;
    }
    return {};
}

// --- The stream ------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kPreambleBytes = 512;

}  // namespace

Result<PictVersion> ReadPictVersion(ByteSource& file) {
    Result<std::uint8_t> byte = 0;
    while (byte && *byte == 0)
        byte = file.Big<std::uint8_t>();
    if (byte == 0x11) {
        byte = file.Big<std::uint8_t>();
        if (byte == 1) return PictVersion::k1;
        if (byte == 2) {
            byte = file.Big<std::uint8_t>();
            if (byte == 0xFF) return PictVersion::k2;
        }
    }
    return std::unexpected(byte ? Failure::kMalformed : byte.error());
}

Result<std::uint16_t> ReadPictOpcode(ByteSource& file, PictVersion version) {
    if (version == PictVersion::k1) {
        return file.Big<std::uint8_t>().transform([](std::uint8_t opcode) { return std::uint16_t{opcode}; });
    }
    const std::uint64_t pad = file.Position() % 2;
    return file.Skip(pad).and_then([&] { return file.Big<std::uint16_t>(); });
}

namespace {

std::uint64_t Pixels(const PictRect& rect) {
    if (rect.IsEmpty()) return 0;
    return static_cast<std::uint64_t>(rect.Width()) * static_cast<std::uint64_t>(rect.Height());
}

/// Stretching is told from the left and right edges alone.
bool IsStretched(const PictRecord& record) {
    return record.source.left != record.destination.left || record.source.right != record.destination.right;
}

/// Follows the opcodes and gathers what they say.
class Walk {
public:
    Walk(ByteSource& file, PictPicture& picture) : mFile(file), mPicture(picture) {}

    /// Fails where the stream is damaged.
    Result<> ToTheEnd(PictVersion version) {
        for (;;) {
            const Result<std::uint16_t> opcode = ReadPictOpcode(mFile, version);
            if (!opcode) return std::unexpected(opcode.error());
            if (*opcode == PictOpcode::kEnd) return {};
            if (const Result<> taken = Take(*opcode); !taken) return taken;
        }
    }

    /// What can be said of the picture only when all of it was seen.
    void Settle() {
        std::vector<PictRecord>& records = mPicture.records;
        if (mIsStretched) records.clear();
        mPicture.indexed =
            mBitmaps == 1 && records.size() == 1 && !records[0].layout.IsDirect() && records[0].layout.components < 2;
    }

private:
    Result<> Take(std::uint16_t opcode) {
        switch (opcode) {
            case PictOpcode::kBackgroundPattern:
            case PictOpcode::kPenPattern:
            case PictOpcode::kFillPattern:
                return SkipPictPattern(mFile);
            case PictOpcode::kForeground:
                return TakeColour(mPicture.colours.foreground);
            case PictOpcode::kBackground:
                return TakeColour(mPicture.colours.background);
            case PictOpcode::kOperationColour:
                return TakeColour(mPicture.colours.operation);
            case PictOpcode::kBitsRect:
            case PictOpcode::kPackBitsRect:
                return TakeRecord(PictBitmapKind::kIndexed);
            case PictOpcode::kBitsRegion:
            case PictOpcode::kPackBitsRegion:
                return TakeRecord(PictBitmapKind::kIndexedRegion);
            case PictOpcode::kDirectBitsRect:
                return TakeRecord(PictBitmapKind::kDirect);
            default:
                return SkipPictOperands(mFile, opcode);
        }
    }

    Result<> TakeColour(PictColour& colour) {
        return ReadPictColour(mFile).transform([&](const PictColour& read) { colour = read; });
    }

    Result<> TakeRecord(PictBitmapKind kind) {
        Result<PictRecord> record = ReadPictRecord(mFile, kind, mPicture.frame);
        if (!record) return std::unexpected(record.error());
        ++mBitmaps;
        mIsStretched |= IsStretched(*record);
        mPixels += Pixels(record->covered);
        if (record->covered.IsEmpty()) return {};
        mBytes += PictPicture::BytesOf(*record);
        if (mBytes > mMaxBytes) throw std::bad_alloc();
        mPicture.records.push_back(std::move(*record));
        if (mPixels > kMaxPictPixels) return std::unexpected(Failure::kTooLarge);
        return {};
    }

    ByteSource& mFile;
    PictPicture& mPicture;
    std::uint64_t mBitmaps = 0;  // those that draw nothing included
    std::uint64_t mPixels = 0;
    std::uint64_t mBytes = mFile.Size();  // and what the records take
    const std::uint64_t mMaxBytes = Common::ReaderBounds().bytes;
    bool mIsStretched = false;
};

}  // namespace

Result<PictHeader> ReadPictHeader(ByteSource& file) {
    const Result<std::uint16_t> size = file.Seek(kPreambleBytes).and_then([&] { return file.Big<std::uint16_t>(); });
    if (!size) return std::unexpected(size.error());
    if (*size > file.Size()) return std::unexpected(Failure::kMalformed);
    return ReadPictRect(file).transform([&](const PictRect& frame) { return PictHeader{*size, frame}; });
}

Result<PictPicture> ReadPictPicture(ByteSource& file) {
    const Result<PictHeader> header = ReadPictHeader(file);
    if (!header) return std::unexpected(header.error());
    if (header->frame.IsEmpty()) return std::unexpected(Failure::kMalformed);
    const Result<PictVersion> version = ReadPictVersion(file);
    if (!version) return std::unexpected(version.error());
    PictPicture picture;
    picture.frame = header->frame;
    Walk walk(file, picture);
    if (const Result<> walked = walk.ToTheEnd(*version); !walked) return std::unexpected(walked.error());
    walk.Settle();
    return picture;
}

}  // namespace Kavra::Devices
