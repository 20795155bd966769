#include "readers/pict/PictCommonStream.h"

#include "common/Limits.h"
#include "readers/pict/PictQuickTime.h"
#include "readers/pict/PictStream.h"

#include <array>
#include <new>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

// --- Finding a picture -----------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kPreambleBytes = 512;
constexpr std::uint64_t kMacBinaryBytes = 128;
constexpr std::array<std::uint64_t, 3> kStarts = {kPreambleBytes, 0, kMacBinaryBytes + kPreambleBytes};

constexpr std::uint64_t kSizeBytes = 2;  // of the picture, its low 16 bits at best: not used

struct Start {
    PictRect frame;
    PictVersion version;
};

/// The version stands right behind the frame: writers put no zeros there.
Result<Start> ReadStart(ByteSource& file, std::uint64_t offset) {
    const Result<PictRect> frame =
        file.Seek(offset).and_then([&] { return file.Skip(kSizeBytes); }).and_then([&] { return ReadPictRect(file); });
    if (!frame) return std::unexpected(frame.error());
    if (frame->IsEmpty()) return std::unexpected(Failure::kMalformed);
    const std::uint64_t opcode = file.Position();
    return ReadPictVersion(file).and_then([&](PictVersion version) -> Result<Start> {
        const std::uint64_t bytes = version == PictVersion::k1 ? 2 : 4;
        if (file.Position() != opcode + bytes) return std::unexpected(Failure::kMalformed);
        return Start{*frame, version};
    });
}

}  // namespace

// --- The stream ------------------------------------------------------------------------------------------------------

namespace {

/// The opcodes that mean something in the common reading alone.
namespace CommonOpcode {
constexpr std::uint16_t kClip = 0x01;
constexpr std::uint16_t kClassicForeground = 0x0E;
constexpr std::uint16_t kClassicBackground = 0x0F;
constexpr std::uint16_t kHighlight = 0x1D;
constexpr std::uint16_t kDefaultHighlight = 0x1E;
constexpr std::uint16_t kHeader = 0x0C00;
constexpr std::uint16_t kCompressed = 0x8200;
constexpr std::uint16_t kUncompressed = 0x8201;
}  // namespace CommonOpcode

/// One of the eight colours of the first Macintosh, by the inks that its number asks a printer for.
PictColour ClassicColour(std::uint32_t number) {
    const bool isBlack = (number & 0x020) != 0;
    const auto channel = [&](std::uint32_t ink) -> std::uint16_t {
        return isBlack || (number & ink) != 0 ? 0 : 0xFFFF;
    };
    return {channel(0x100), channel(0x080), channel(0x040)};  // cyan, magenta, yellow
}

/// The reserved opcodes from 0x0100 on have twice their high byte of data; the contract's reading adds their bit 7.
Result<> SkipOperands(ByteSource& file, std::uint16_t opcode) {
    if (opcode >= 0x0100 && opcode < 0x8000) return file.Skip(2 * (opcode >> 8));
    return SkipPictOperands(file, opcode);
}

/// Follows the opcodes and gathers what they say.
class CommonWalk {
public:
    CommonWalk(ByteSource& file, PictCommonPicture& picture, std::size_t maxRecords)
        : mFile(file), mPicture(picture), mMaxRecords(maxRecords) {
        mState.frame = picture.frame;
        mState.clip.box = kPictEverywhere;
    }

    /// Fails where the stream is damaged, with all records before that taken. Behind a bitmap it may end without saying so.
    Result<> ToTheEnd(PictVersion version) {
        for (;;) {
            const Result<std::uint16_t> opcode = ReadPictOpcode(mFile, version);
            if (!opcode && !mPicture.records.empty()) return {};
            if (!opcode) return std::unexpected(opcode.error());
            if (*opcode == PictOpcode::kEnd) return {};
            if (const Result<> taken = Take(*opcode); !taken) return taken;
        }
    }

private:
    Result<> Take(std::uint16_t opcode) {
        switch (opcode) {
            case CommonOpcode::kClip:
                return TakeClip();
            case PictOpcode::kBackgroundPattern:
            case PictOpcode::kPenPattern:
            case PictOpcode::kFillPattern:
                return SkipPictPattern(mFile);
            case CommonOpcode::kClassicForeground:
                return TakeClassicColour(mState.colours.foreground);
            case CommonOpcode::kClassicBackground:
                return TakeClassicColour(mState.colours.background);
            case PictOpcode::kForeground:
                return TakeColour(mState.colours.foreground);
            case PictOpcode::kBackground:
                return TakeColour(mState.colours.background);
            case PictOpcode::kOperationColour:
                return TakeColour(mState.colours.operation);
            case CommonOpcode::kHighlight:
                return TakeColour(mState.highlight);
            case CommonOpcode::kDefaultHighlight:
                mState.highlight = kPictBlack;
                return {};
            case CommonOpcode::kHeader:
                return TakeHeader();
            case CommonOpcode::kCompressed:
            case CommonOpcode::kUncompressed:
                return TakeQuickTime(opcode);
            default:
                break;
        }
        if (const auto bitmap = PictBitmapOpcodeOf(opcode)) return TakeRecord(*bitmap);
        return SkipOperands(mFile, opcode);
    }

    Result<> TakeColour(PictColour& colour) {
        return ReadPictColour(mFile).transform([&](const PictColour& read) { colour = read; });
    }

    Result<> TakeClassicColour(PictColour& colour) {
        return mFile.Big<std::uint32_t>().transform([&](std::uint32_t number) { colour = ClassicColour(number); });
    }

    /// A region without pixels hides everything. No picture is meant to, but some writers leave it empty.
    Result<> TakeClip() {
        return ReadPictRegion(mFile).transform([&](const PictRegion& region) {
            mState.clip = region.box.IsEmpty() ? PictRegion{.box = kPictEverywhere} : region;
        });
    }

    /// Of version -2, the extended one: 2 bytes not used, the resolutions (2 x 4), the rectangle that opcodes draw in,
    /// 4 bytes not used. In all others what follows the version says nothing that the frame does not.
    Result<> TakeHeader() {
        constexpr std::uint16_t kExtended = 0xFFFE;
        const Result<std::uint16_t> version = mFile.Big<std::uint16_t>();
        if (!version) return std::unexpected(version.error());
        const Result<PictRect> native = mFile.Skip(10).and_then([&] { return ReadPictRect(mFile); });
        if (!native) return std::unexpected(native.error());
        if (*version == kExtended && !native->IsEmpty() && mPicture.records.empty())
            mPicture.frame = mState.frame = *native;
        return mFile.Skip(4);
    }

    Result<> TakeRecord(PictBitmapOpcode opcode) {
        Result<PictCommonRecord> record = ReadPictCommonRecord(mFile, opcode, mState);
        if (!record) return std::unexpected(record.error());
        const bool isComplete = record->IsComplete();
        if (const Result<> kept = Keep(*std::move(record)); !kept) return kept;
        if (!isComplete) return std::unexpected(Failure::kTruncated);
        return {};
    }

    /// A picture that cannot be decoded is skipped, as any program without its compression does.
    Result<> TakeQuickTime(std::uint16_t opcode) {
        const Result<std::uint32_t> length = mFile.Big<std::uint32_t>();
        if (!length) return std::unexpected(length.error());
        const std::uint64_t end = mFile.Position() + *length;
        if (end > mFile.Size()) return std::unexpected(Failure::kTruncated);
        std::optional<PictCommonRecord> record = opcode == CommonOpcode::kCompressed
                                                     ? ReadPictCompressed(mFile, end, mState)
                                                     : ReadPictUncompressed(mFile, end, mState);
        if (const Result<> behind = mFile.Seek(end); !behind || !record) return behind;
        const PictRect place = record->bitmap.destination;
        return Keep(*std::move(record)).transform([&] {
            mQuickTime = place;
            mIsBehindQuickTime = true;
        });
    }

    /// Whether a bitmap is only for programs without QuickTime: the next one behind a picture of it, in just its place, or
    /// any in one bit within it, which say that something else is needed.
    bool IsStandIn(const PictCommonRecord& record) {
        if (record.IsCompressed() || mQuickTime.IsEmpty()) return false;
        const bool isNext = std::exchange(mIsBehindQuickTime, false);
        const PictRect& to = record.bitmap.destination;
        const PictRect common = Intersection(to, mQuickTime);
        const bool isWithin = common.Width() == to.Width() && common.Height() == to.Height();
        const bool isAll = isWithin && to.Width() == mQuickTime.Width() && to.Height() == mQuickTime.Height();
        return (isNext && isAll) || (isWithin && record.bitmap.layout.pixelSize == 1);
    }

    Result<> Keep(PictCommonRecord&& record) {
        if (record.bitmap.covered.IsEmpty() || IsStandIn(record)) return {};
        mWork = Common::Sum<std::uint64_t>(mWork, record.Work());
        if (mWork > kMaxPictWork || mPicture.records.size() >= mMaxRecords) return std::unexpected(Failure::kTooLarge);
        mBytes += PictCommonPicture::BytesOf(record);
        if (mBytes > mMaxBytes) throw std::bad_alloc();
        mPicture.records.push_back(std::move(record));
        return {};
    }

    ByteSource& mFile;
    PictCommonPicture& mPicture;
    PictState mState;
    PictRect mQuickTime;  // where the last picture of QuickTime is
    bool mIsBehindQuickTime = false;
    const std::size_t mMaxRecords;
    std::uint64_t mWork = 0;
    std::uint64_t mBytes = mFile.Size();  // and what the records take
    const std::uint64_t mMaxBytes = Common::ReaderBounds().bytes;
};

/// Whether a few opcodes from the position on are whole, up to one that is long. Zeros alone are no opcodes.
bool BeginsWithOpcodes(ByteSource& file, PictVersion version) {
    constexpr int kEnough = 8;
    bool hasMeaning = false;
    for (int i = 0; i < kEnough; ++i) {
        const Result<std::uint16_t> opcode = ReadPictOpcode(file, version);
        if (!opcode) return false;
        const bool isPattern = *opcode >= PictOpcode::kBackgroundPattern && *opcode <= PictOpcode::kFillPattern;
        const bool isBitmap = *opcode >= PictOpcode::kBitsRect && *opcode <= PictOpcode::kDirectBitsRegion;
        if (*opcode == PictOpcode::kEnd || isPattern || isBitmap) return true;
        const bool isColour = *opcode == PictOpcode::kForeground || *opcode == PictOpcode::kBackground ||
                              *opcode == PictOpcode::kOperationColour;
        if (const Result<> skipped = isColour ? file.Skip(6) : SkipOperands(file, *opcode); !skipped) return false;
        hasMeaning |= *opcode != 0;
    }
    return hasMeaning;
}

}  // namespace

std::uint64_t PictCommonPicture::BytesOf(const PictCommonRecord& record) {
    const PictRect& bounds = record.bitmap.bounds;
    const std::uint64_t pixels =
        record.IsCompressed() ? static_cast<std::uint64_t>(bounds.Width()) * static_cast<std::uint64_t>(bounds.Height())
                              : 0;
    return 4096 + record.bitmap.colours.size() * sizeof(PictColour) +
           16 * (std::uint64_t{record.clip.words} + record.mask.words) + 3 * pixels;
}

std::optional<std::uint64_t> FindPict(ByteSource& file) {
    for (const std::uint64_t offset : kStarts) {
        const Result<Start> start = ReadStart(file, offset);
        if (start && BeginsWithOpcodes(file, start->version)) return offset;
    }
    return std::nullopt;
}

Result<PictCommonPicture> ReadPictCommonPicture(ByteSource& file, std::size_t maxRecords) {
    // A picture that breaks off early is still one, as is one with zeros before its version.
    const std::uint64_t offset = FindPict(file).value_or(kPreambleBytes);
    const Result<PictRect> frame =
        file.Seek(offset).and_then([&] { return file.Skip(kSizeBytes); }).and_then([&] { return ReadPictRect(file); });
    if (!frame) return std::unexpected(frame.error());
    if (frame->IsEmpty()) return std::unexpected(Failure::kMalformed);
    const Result<PictVersion> version = ReadPictVersion(file);
    if (!version) return std::unexpected(version.error());
    PictCommonPicture picture;
    picture.frame = *frame;
    CommonWalk walk(file, picture, maxRecords);
    const Result<> walked = walk.ToTheEnd(*version);
    if (!walked && (walked.error() == Failure::kTooLarge || picture.records.empty()))
        return std::unexpected(walked.error());
    picture.isDamaged = !walked;
    return picture;
}

}  // namespace Kavra::Devices
