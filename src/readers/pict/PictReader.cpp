#include "readers/pict/PictReader.h"

#include "common/Limits.h"
#include "readers/WriteRows.h"
#include "readers/pict/PictCanvas.h"
#include "readers/pict/PictCommonCanvas.h"
#include "readers/pict/PictComparison.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

namespace {

constexpr std::uint64_t kMaxBytes = std::numeric_limits<std::int32_t>::max();

}  // namespace

// --- Recognising -----------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kVersionOffset = 522;
constexpr std::uint64_t kEndOfStart = 1024;

using Start = std::array<unsigned char, kEndOfStart - kVersionOffset>;  // of the opcodes

/// Compared as unsigned numbers: a frame that reaches above or left of the origin is empty.
bool HasPixels(const PictRect& frame) {
    const auto less = [](int a, int b) { return static_cast<std::uint16_t>(a) < static_cast<std::uint16_t>(b); };
    return less(frame.top, frame.bottom) && less(frame.left, frame.right);
}

/// The opcode 0x0011 with its operand 0x02FF; any number of zero bytes may stand before it.
bool HasVersion2(const Start& start) {
    constexpr std::array<unsigned char, 3> kVersion2 = {0x11, 0x02, 0xFF};
    const auto rest = std::span(start).subspan(1);
    const auto opcode = std::ranges::find_if(rest, [](unsigned char byte) { return byte != 0; });
    return std::ranges::starts_with(std::ranges::subrange(opcode, rest.end()), kVersion2);
}

}  // namespace

bool IsPict(ByteSource& source) {
    if (source.Size() <= kEndOfStart || source.Size() > kMaxBytes) return false;
    const Result<PictHeader> header = ReadPictHeader(source);
    if (!header || !HasPixels(header->frame)) return false;
    const auto start = source.BytesAt<std::tuple_size_v<Start>>(kVersionOffset);
    if (!start) return false;
    switch (start->front()) {
        case 0x11:  // here the size must be that of the whole file, preamble included
            return (*start)[1] == 0x01 && header->size == source.Size();
        case 0x00:
            return HasVersion2(*start);
        default:
            return false;
    }
}

bool IsCommonPict(ByteSource& source) {
    return source.Size() <= kMaxBytes && FindPict(source).has_value();
}

// --- The reader ------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kMinBytes = 512;

}  // namespace

void PictReader::Close() {
    mSource.reset();
    mHeader = {};
    mCommon = {};
    mFile.reset();
}

Result<> PictReader::OpenFiles(PictureFiles files) {
    Result<> opened;
    try {
        opened =
            TakeFile(files.source).and_then([&] { return mReading.IsCommon() ? TakeCommonPicture() : TakePicture(); });
    } catch (const std::bad_alloc&) {
        // No memory for the file's bytes or its records: it is refused like one that is too large.
        opened = std::unexpected(Failure::kTooLarge);
    }
    if (!opened) Close();
    return opened;
}

Result<> PictReader::TakeFile(ByteSource& file) {
    if (file.Size() < (mReading.IsCommon() ? 1 : kMinBytes)) return std::unexpected(Failure::kTruncated);
    if (file.Size() > std::min(kMaxBytes, Common::ReaderBounds().bytes)) return std::unexpected(Failure::kTooLarge);
    const auto bytes = static_cast<std::size_t>(file.Size());
    mFile = Common::NewBlock(bytes);
    const std::span<unsigned char> whole(mFile.get(), bytes);
    return file.Seek(0).and_then([&] { return file.Read(whole); }).transform([&] { mSource.emplace(whole); });
}

Result<> PictReader::TakePicture() {
    Result<PictPicture> picture = ReadPictPicture(*mSource);
    if (!picture) {
        if (mIsCompared && IsReadElsewhere())
            (void)mReading.IsCommon("the picture counts as damaged by the host's rules");
        Sys::Warning(L"The data is corrupted.", nullptr);
        return std::unexpected(picture.error());
    }
    mHeader = *std::move(picture);
    return {};
}

/// Whether the common reading finds a bitmap in a file that the contract's refuses.
bool PictReader::IsReadElsewhere() {
    try {
        const Result<PictCommonPicture> picture = ReadPictCommonPicture(*mSource, kMaxComparedPictRecords);
        return picture && !picture->records.empty();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

Result<> PictReader::TakeCommonPicture() {
    Result<PictCommonPicture> picture = ReadPictCommonPicture(*mSource);
    if (!picture || picture->isDamaged) Sys::Warning(L"The data is corrupted.", nullptr);
    if (!picture) return std::unexpected(picture.error());
    mCommon = *std::move(picture);
    return {};
}

std::span<const unsigned char> PictReader::Bytes() const {
    return {mFile.get(), static_cast<std::size_t>(mSource->Size())};
}

std::uint64_t PictReader::GetWorkingBytes() {
    if (!mSource) return 0;
    return mSource->Size() + (mReading.IsCommon() ? mCommon.WorkingBytes() : mHeader.WorkingBytes());
}

Result<> PictReader::ReadFrame(Common::RowSink& rows, int /*frame*/) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    if (mReading.IsCommon()) {
        PictCommonCanvas canvas(mCommon, Bytes());
        WriteRows(rows, static_cast<std::size_t>(GetHeight()), static_cast<std::size_t>(GetRowPitch()),
                  [&](std::span<unsigned char> pixels) { canvas.DrawRow(pixels); });
    } else {
        ReadContractRows(rows);
    }
    return {};
}

void PictReader::ReadContractRows(Common::RowSink& rows) {
    PictCanvas canvas(mHeader, Bytes());
    std::optional<PictComparison> comparison;
    if (mIsCompared) comparison.emplace(mHeader, Bytes());
    WriteRows(rows, static_cast<std::size_t>(GetHeight()), static_cast<std::size_t>(GetRowPitch()),
              [&](std::span<unsigned char> pixels) {
                  canvas.DrawRow(pixels);
                  if (comparison) comparison->Look(pixels);
              });
    if (comparison && comparison->Difference() != nullptr) (void)mReading.IsCommon(comparison->Difference());
    if (canvas.LeavesPixelsOut())
        (void)mReading.IsCommon("palette indices without a colour are left out by the host's rules");
}

}  // namespace Kavra::Devices
