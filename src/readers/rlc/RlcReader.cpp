#include "readers/rlc/RlcReader.h"

#include "common/ByteOrder.h"
#include "common/Limits.h"
#include "common/Reasons.h"
#include "readers/BilevelRow.h"
#include "readers/WriteRows.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <string>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::LittleAt;
using Common::Result;

// --- The trailer and its directory ----------------------------------------------------------------------------------

namespace {

constexpr std::size_t kEntriesOffset = 24;
constexpr std::size_t kEntryBytes = 16;
constexpr int kMaxEntries = 20;
static_assert(kEntriesOffset + kMaxEntries * kEntryBytes == std::tuple_size_v<RlcTrailer>);

constexpr std::uint16_t kImage = 2;
constexpr std::uint16_t kReference = 4;

std::array<unsigned char, kEntryBytes> Entry(const RlcTrailer& trailer, int number) {
    std::array<unsigned char, kEntryBytes> entry{};
    const auto start = kEntriesOffset + static_cast<std::size_t>(number) * kEntryBytes;
    std::ranges::copy(std::span(trailer).subspan(start, kEntryBytes), entry.begin());
    return entry;
}

/// Whether the record at this offset names a file that is there and reads as RLC.
bool RefersToImage(ByteSource& source, std::uint32_t offset) {
    constexpr std::ptrdiff_t kNameOffset = 56;
    const auto record = source.BytesAt<200>(offset);
    if (!record) return false;
    const std::string name(record->begin() + kNameOffset,
                           std::find(record->begin() + kNameOffset, record->end(), '\0'));
    if (name.empty()) return false;
    Result<ByteSource> file = ByteSource::OpenNarrow(name.c_str());
    return file && IsRlc(*file);
}

}  // namespace

std::optional<RlcTrailer> ReadRlcTrailer(ByteSource& source) {
    constexpr std::array<unsigned char, 16> kSignature = {0,    0,    0,    0,    0,    0,    0,    0,
                                                          0x1A, 0x1A, 0x55, 0x64, 0x73, 0x82, 0x43, 0x4A};
    constexpr std::uint64_t kBytes = std::tuple_size_v<RlcTrailer>;
    if (source.Size() <= kBytes) return std::nullopt;
    const auto trailer = source.BytesAt<kBytes>(source.Size() - kBytes);
    if (!trailer || !std::ranges::starts_with(*trailer, kSignature)) return std::nullopt;
    return *trailer;
}

bool HasDirectory(const RlcTrailer& trailer) {
    return LittleAt<std::int16_t, 26>(trailer) == 2;
}

int CountImages(ByteSource& source, const RlcTrailer& trailer) {
    const int entries = std::min<int>(LittleAt<std::int16_t, 22>(trailer), kMaxEntries);
    int images = 0;
    for (int number = 0; number < entries; ++number) {
        const auto entry = Entry(trailer, number);
        const auto kind = LittleAt<std::uint16_t, 0>(entry);
        if (kind == kImage || (kind == kReference && RefersToImage(source, LittleAt<std::uint32_t, 8>(entry))))
            ++images;
    }
    return images;
}

// --- The header, and recognising it ---------------------------------------------------------------------------------

RlcHeader ReadRlcHeader(ByteSource& source) {
    RlcHeader header;
    if (const auto trailer = ReadRlcTrailer(source); trailer && HasDirectory(*trailer)) header.directory = trailer;
    if (!source.Seek(0)) return header;
    header.rows = source.Big<std::int16_t>().value_or(0);
    header.columns = source.Big<std::int16_t>().value_or(0);
    return header;
}

namespace {

constexpr std::int64_t kMinBytes = 5;

/// Whether the bytes between the two sizes and the end can be so many rows. A row of the most runs is counted as it
/// always was, a little short: files that come close to it are not taken. The largest sizes allow for
/// less than 2 GiB.
bool LengthFits(std::int64_t length, std::int64_t rows, std::int64_t columns) {
    constexpr std::uint64_t kMinRowBytes = 2;  // the number of its runs
    return rows >= 1 && columns >= 1 &&
           Common::CanHold(static_cast<std::uint64_t>(length), static_cast<std::uint64_t>(rows), kMinRowBytes) &&
           length <= (columns + 1) * rows * 2;
}

/// The runs of a row follow one another inside it. Positions are compared with each other as unsigned numbers and
/// with the columns as signed ones.
bool RunsFit(ByteSource& source, int runs, std::int16_t columns) {
    std::uint16_t end = 0;
    for (int run = 0; run < runs; ++run) {
        const auto start = source.Big<std::uint16_t>();
        const auto stop = source.Big<std::uint16_t>();
        if (!start || !stop) return false;
        if (*start < end || static_cast<std::int16_t>(*start) > columns) return false;
        if (*stop < *start || static_cast<std::int16_t>(*stop) > columns) return false;
        end = *stop;
    }
    return true;
}

bool RowsFit(ByteSource& source, int rows, std::int16_t columns) {
    for (int row = 0; row < rows; ++row) {
        const auto runs = source.Big<std::int16_t>();
        if (!runs || (*runs <= 0 && rows == 1) || !RunsFit(source, *runs, columns)) return false;
    }
    return true;
}

}  // namespace

bool IsRlc(ByteSource& source) {
    const auto length = static_cast<std::int64_t>(source.Size());
    if (length < kMinBytes) return false;
    const RlcHeader header = ReadRlcHeader(source);
    if (!LengthFits(length, header.rows, header.columns)) return false;
    const int checkedRows = header.directory ? std::min<int>(header.rows, std::max(header.rows / 4, 100)) : header.rows;
    return RowsFit(source, checkedRows, header.columns);
}

// --- Rows -----------------------------------------------------------------------------------------------------------

namespace {

/// `count` bits (up to 8) of a byte from bit `first` on, counted from the highest.
unsigned char Bits(std::size_t first, std::size_t count) {
    return static_cast<unsigned char>((0xFF00U >> count & 0xFF) >> first);
}

constexpr std::size_t kNumberBytes = 2;
constexpr std::size_t kRunBytes = 2 * kNumberBytes;

std::uint16_t BigNumber(std::span<const unsigned char> bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

/// Each row's runs are followed by the number of runs of the next. Where the file ends, the runs that are not whole do
/// not exist, nor do those of later rows.
class RlcRows {
public:
    /// Stands at the first row's number of runs. The source must outlive this object.
    explicit RlcRows(ByteSource& source);

    /// Reads the next row; `isLast` says that none follows.
    void Next(bool isLast);

    /// Whether the file ended before or within the row.
    bool IsShort() const { return mIsShort; }

    /// Applies the runs of the row from the last to the first. Fails when one of them is refused, which leaves those
    /// before it unapplied.
    [[nodiscard]] Result<> SetRuns(RlcMask& mask) const;

    /// Applies all runs that lie in the row.
    void SetWholeRuns(RlcMask& mask) const;

private:
    struct Run {
        std::uint16_t start, end;
    };
    Run RunAt(std::size_t number) const {
        const auto numbers = std::span(mNumbers).subspan(number * kRunBytes, kRunBytes);
        return {BigNumber(numbers), BigNumber(numbers.subspan(kNumberBytes))};
    }

    ByteSource& mSource;
    std::int16_t mRuns;        // of the row behind, as its number says
    std::size_t mPresent = 0;  // runs of the row
    bool mIsShort = false, mIsNextShort = false;
    std::vector<unsigned char> mNumbers;  // of the row, as in the file
};

RlcRows::RlcRows(ByteSource& source) : mSource(source), mRuns(source.Big<std::int16_t>().value_or(0)) {}

void RlcRows::Next(bool isLast) {
    const std::size_t runBytes = kRunBytes * static_cast<std::size_t>(std::max<int>(mRuns, 0));
    const std::size_t rowBytes = runBytes + (isLast ? 0 : kNumberBytes);
    if (mNumbers.size() < rowBytes) mNumbers.resize(rowBytes);
    const auto row =
        std::span<const unsigned char>(mNumbers).first(mSource.ReadSome(std::span(mNumbers).first(rowBytes)));
    const bool hasNext = row.size() == runBytes + kNumberBytes;
    mRuns = hasNext ? static_cast<std::int16_t>(BigNumber(row.subspan(runBytes))) : std::int16_t{0};

    mPresent = std::min(row.size(), runBytes) / kRunBytes;
    mIsShort = mIsNextShort || row.size() < runBytes;
    mIsNextShort = mIsShort || (!isLast && !hasNext);
}

Result<> RlcRows::SetRuns(RlcMask& mask) const {
    for (std::size_t run = mPresent; run-- > 0;) {
        const auto [start, end] = RunAt(run);
        if (const Result<> set = mask.SetRun(start, end); !set) return set;
    }
    return {};
}

void RlcRows::SetWholeRuns(RlcMask& mask) const {
    for (std::size_t run = 0; run < mPresent; ++run)
        mask.SetWholeRun(RunAt(run).start, RunAt(run).end);
}

}  // namespace

RlcMask::RlcMask(std::int16_t columns)
    : mColumns(static_cast<std::uint16_t>(columns)), mBytes((static_cast<std::size_t>(mColumns) + 7) / 8) {}

void RlcMask::Clear() {
    std::ranges::fill(mBytes, 0);
}

Result<> RlcMask::SetRun(std::uint16_t start, std::uint16_t end) {
    if (start == 0 && end == mColumns) {
        std::ranges::fill(mBytes, 0xFF);
        return {};
    }
    const auto left = static_cast<std::uint16_t>(mColumns - end);
    const std::size_t length = static_cast<std::uint16_t>(mColumns - start - left);
    const std::size_t first = left / 8;
    const std::size_t offset = left % 8;
    if (first >= mBytes.size()) return std::unexpected(Failure::kMalformed);
    if (length <= 8 - offset) {
        mBytes[first] |= Bits(offset, length);
        return {};
    }
    if (length / 8 + 1 + first >= mBytes.size()) return std::unexpected(Failure::kMalformed);
    const std::size_t behind = offset + length - 8;
    mBytes[first] |= Bits(offset, 8 - offset);
    std::ranges::fill(std::span(mBytes).subspan(first + 1, behind / 8), 0xFF);
    if (behind % 8 != 0) mBytes[first + 1 + behind / 8] |= Bits(0, behind % 8);
    return {};
}

void RlcMask::SetWholeRun(std::uint16_t start, std::uint16_t end) {
    if (start >= end || end > mColumns) return;
    if (start == 0 && end == mColumns) {
        std::ranges::fill(mBytes, 0xFF);  // as `SetRun` does
        return;
    }
    const std::size_t left = static_cast<std::size_t>(mColumns - end);
    const std::size_t length = static_cast<std::size_t>(end - start);
    const std::size_t inFirst = std::min(length, 8 - left % 8);
    mBytes[left / 8] |= Bits(left % 8, inFirst);
    const std::size_t whole = (length - inFirst) / 8;
    std::ranges::fill(std::span(mBytes).subspan(left / 8 + 1, whole), 0xFF);
    const std::size_t inLast = (length - inFirst) % 8;
    if (inLast != 0) mBytes[left / 8 + 1 + whole] |= Bits(0, inLast);
}

// --- The reader -----------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kFirstRowOffset = 4;

}  // namespace

void RlcReader::Close() {
    mSource.reset();
    mHeader = {};
}

Result<> RlcReader::OpenFiles(PictureFiles files) {
    mHeader = ReadRlcHeader(files.source);
    mFrameCount = mHeader.directory ? mFrameCount + CountImages(files.source, *mHeader.directory) : 1;
    mSource = std::move(files.source);
    return {};
}

Result<> RlcReader::ReadFrame(Common::RowSink& rows, int /*frame*/) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    if (mHeader.rows < 1 || mHeader.columns < 1) return {};
    (void)mSource->Seek(std::min(kFirstRowOffset, mSource->Size()));
    RlcRows stored(*mSource);
    RlcMask mask(mHeader.columns);
    int left = mHeader.rows, good = 0;
    const auto tellOfLostRuns = [&] {
        if (!mIsCompared || mReading.Difference() != nullptr) return;
        RlcMask whole(mHeader.columns);
        stored.SetWholeRuns(whole);
        if (std::ranges::equal(mask.Bytes(), whole.Bytes())) return;
        (void)mReading.IsCommon("runs that come close to the end of a row are left out by the host's rules");
    };
    const auto writeRow = [&](std::span<unsigned char> pixels) {
        mask.Clear();
        stored.Next(--left == 0);
        if (!stored.IsShort()) ++good;
        if (mReading.IsCommon()) {
            stored.SetWholeRuns(mask);
        } else if (!stored.SetRuns(mask)) {
            Sys::Warning(L"Invalid Row -- out of buffer bound", nullptr);
            tellOfLostRuns();
        }
        ExpandBilevelRow(mask.Bytes(), pixels);
    };
    WriteRows(rows, static_cast<std::size_t>(mHeader.rows), static_cast<std::size_t>(GetRowPitch()), writeRow);
    Common::SayEndsEarly(good, mHeader.rows, mSource->Size());
    return {};
}

}  // namespace Kavra::Devices
