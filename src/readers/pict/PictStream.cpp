#include "readers/pict/PictStream.h"

#include "common/Limits.h"
#include "readers/pict/PictOpcodes.h"
#include "readers/pict/PictPixelMap.h"

#include <new>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

namespace {

constexpr std::uint64_t kPreambleBytes = 512;

enum class Version { k1, k2 };

std::optional<Version> ReadVersion(ByteSource& file) {
    Result<std::uint8_t> byte = 0;
    while (byte && *byte == 0)
        byte = file.Big<std::uint8_t>();
    if (byte != 0x11) return std::nullopt;
    byte = file.Big<std::uint8_t>();
    if (byte == 1) return Version::k1;
    if (byte == 2 && file.Big<std::uint8_t>() == 0xFF) return Version::k2;
    return std::nullopt;
}

Result<std::uint16_t> ReadOpcode(ByteSource& file, Version version) {
    if (version == Version::k1) {
        return file.Big<std::uint8_t>().transform([](std::uint8_t opcode) { return std::uint16_t{opcode}; });
    }
    const std::uint64_t pad = file.Position() % 2;
    return file.Skip(pad).and_then([&] { return file.Big<std::uint16_t>(); });
}

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

    /// False where the stream is damaged.
    bool ToTheEnd(Version version) {
        for (;;) {
            const Result<std::uint16_t> opcode = ReadOpcode(mFile, version);
            if (!opcode) return false;
            if (*opcode == PictOpcode::kEnd) return true;
            if (!Take(*opcode)) return false;
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
    bool Take(std::uint16_t opcode) {
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

    bool TakeColour(PictColour& colour) {
        const std::optional<PictColour> read = ReadPictColour(mFile);
        if (read) colour = *read;
        return read.has_value();
    }

    bool TakeRecord(PictBitmapKind kind) {
        std::optional<PictRecord> record = ReadPictRecord(mFile, kind, mPicture.frame);
        if (!record) return false;
        ++mBitmaps;
        mIsStretched |= IsStretched(*record);
        mPixels += Pixels(record->covered);
        if (record->covered.IsEmpty()) return true;
        mBytes += PictPicture::BytesOf(*record);
        if (mBytes > mMaxBytes) throw std::bad_alloc();
        mPicture.records.push_back(std::move(*record));
        return mPixels <= kMaxPictPixels;
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

std::optional<PictPicture> ReadPictPicture(ByteSource& file) {
    if (!file.Seek(kPreambleBytes)) return std::nullopt;
    const Result<std::uint16_t> size = file.Big<std::uint16_t>();
    if (!size || *size > file.Size()) return std::nullopt;
    const std::optional<PictRect> frame = ReadPictRect(file);
    if (!frame || frame->IsEmpty()) return std::nullopt;
    const std::optional<Version> version = ReadVersion(file);
    if (!version) return std::nullopt;
    PictPicture picture;
    picture.frame = *frame;
    Walk walk(file, picture);
    if (!walk.ToTheEnd(*version)) return std::nullopt;
    walk.Settle();
    return picture;
}

}  // namespace Kavra::Devices
