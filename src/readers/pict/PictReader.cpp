#include "readers/pict/PictReader.h"

#include "common/Limits.h"
#include "readers/WriteRows.h"
#include "readers/pict/PictCanvas.h"

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

// --- The reader ------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kMinBytes = 512;

}  // namespace

void PictReader::Close() {
    mSource.reset();
    mHeader = {};
    mFile.reset();
}

Result<> PictReader::OpenFiles(PictureFiles files) {
    Result<> opened;
    try {
        opened = TakeFile(files.source).and_then([&] { return TakePicture(); });
    } catch (const std::bad_alloc&) {
        // No memory for the file's bytes or its records: it is refused like one that is too large.
        opened = std::unexpected(Failure::kTooLarge);
    }
    if (!opened) Close();
    return opened;
}

Result<> PictReader::TakeFile(ByteSource& file) {
    if (file.Size() < kMinBytes) return std::unexpected(Failure::kTruncated);
    if (file.Size() > std::min(kMaxBytes, Common::ReaderBounds().bytes)) return std::unexpected(Failure::kTooLarge);
    const auto bytes = static_cast<std::size_t>(file.Size());
    mFile = Common::NewBlock(bytes);
    const std::span<unsigned char> whole(mFile.get(), bytes);
    return file.Seek(0).and_then([&] { return file.Read(whole); }).transform([&] { mSource.emplace(whole); });
}

Result<> PictReader::TakePicture() {
    Result<PictPicture> picture = ReadPictPicture(*mSource);
    if (!picture) {
        Sys::Warning(L"The data is corrupted.", nullptr);
        return std::unexpected(picture.error());
    }
    mHeader = *std::move(picture);
    return {};
}

Result<> PictReader::ReadFrame(Common::RowSink& rows, int /*frame*/) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    PictCanvas canvas(mHeader, {mFile.get(), static_cast<std::size_t>(mSource->Size())});
    WriteRows(rows, static_cast<std::size_t>(GetHeight()), static_cast<std::size_t>(GetRowPitch()),
              [&](std::span<unsigned char> pixels) { canvas.DrawRow(pixels); });
    return {};
}

}  // namespace Kavra::Devices
