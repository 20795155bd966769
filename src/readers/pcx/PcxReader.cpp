#include "readers/pcx/PcxReader.h"

#include "common/Reasons.h"
#include "readers/SampleTables.h"
#include "readers/WriteRows.h"
#include "readers/pcx/PcxCommonColours.h"
#include "readers/pcx/PcxCommonRows.h"
#include "readers/pcx/PcxComparison.h"
#include "readers/pcx/PcxSamples.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <atomic>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

// --- Colours ---------------------------------------------------------------------------------------------------------

namespace {

constexpr unsigned char kOpaque = 255;
constexpr std::size_t kTripleBytes = 3;
constexpr std::size_t kTrailingBytes = 256 * kTripleBytes;
constexpr std::size_t kMarkerBytes = 1;  // before the trailing palette, whatever its value

}  // namespace

PcxPalette::PcxPalette(std::span<const unsigned char> triples) : mCount(triples.size() / kTripleBytes) {
    for (std::size_t i = 0; i < mCount; ++i) {
        const auto triple = triples.subspan(i * kTripleBytes, kTripleBytes);
        mEntries[i] = {triple[0], triple[1], triple[2], kOpaque};
    }
}

Result<PcxPalette> PcxPalette::Read(ByteSource& source, const PcxHeader& header) {
    if (header.HasTrailingPalette()) {
        if (source.Size() < kMarkerBytes + kTrailingBytes) return std::unexpected(Failure::kTruncated);
        const auto triples = source.BytesAt<kTrailingBytes>(source.Size() - kTrailingBytes);
        if (!triples) return std::unexpected(triples.error());
        return PcxPalette(*triples);
    }
    if (header.Bits() != 1) return PcxPalette(header.palette);
    PcxPalette palette(std::span(header.palette).first<2 * kTripleBytes>());
    palette.TellTwoColoursApart();
    return palette;
}

void PcxPalette::TellTwoColoursApart() {
    if (mEntries[0] != mEntries[1]) return;
    for (unsigned char& component : std::span(mEntries[1]).first<kTripleBytes>())
        --component;
}

bool PcxPalette::IsGreyRamp() const {
    for (std::size_t i = 0; i < mCount; ++i) {
        const auto grey = static_cast<unsigned char>(i);
        if (mEntries[i] != Entry{grey, grey, grey, kOpaque}) return false;
    }
    return true;
}

void PcxPalette::Colour(std::span<const unsigned char> indices, std::span<unsigned char> pixels) const {
    auto pixel = pixels.begin();
    for (const unsigned char index : indices) {
        if (index < mCount) std::ranges::copy(mEntries[index], pixel);
        pixel += sizeof(Entry);
    }
}

namespace {

constexpr unsigned char kGreyStep = 17;  // 15 steps make 255

std::array<std::atomic<unsigned char>, 16> theNibbles;

}  // namespace

void SetPcxNibbles(bool isGreyRamp) {
    unsigned char value = 0;
    for (std::atomic<unsigned char>& nibble : theNibbles) {
        nibble.store(value, std::memory_order_relaxed);
        value = static_cast<unsigned char>(value + (isGreyRamp ? kGreyStep : 1));
    }
}

PcxNibbles CurrentPcxNibbles() {
    PcxNibbles nibbles;
    std::ranges::transform(theNibbles, nibbles.begin(),
                           [](const auto& nibble) { return nibble.load(std::memory_order_relaxed); });
    return nibbles;
}

// --- Lines -----------------------------------------------------------------------------------------------------------

PcxLines::PcxLines(ByteSource& source, const PcxHeader& header, std::size_t capacity)
    : mSource(source), mCapacity(capacity), mLineBytes(header.bytesPerLine) {
    (void)mSource.Seek(kPcxHeaderBytes);  // which a file with a header has
    if (header.encoding == 1) mRuns.emplace(source, mCapacity, mLineBytes);
}

std::size_t PcxLines::Read(std::span<unsigned char> out) {
    const std::size_t count = mRuns ? ReadCoded(out) : ReadRaw(out.first(mCapacity));
    const bool isMissingBytes = mRuns ? mRuns->IsOutOfData() : count < mCapacity;
    mEndedEarly = mEndedEarly || (isMissingBytes && mHasBytes);
    mAreShort = mAreShort || isMissingBytes;
    mHasBytes = mHasBytes || count > 0;
    return count;
}

std::size_t PcxLines::ReadCoded(std::span<unsigned char> out) {
    mWereInStep = mWereInStep && (mRuns->IsInStep() || mRuns->IsOutOfData());
    const std::span<const unsigned char> line = mRuns->NextLine();
    std::ranges::copy(line, out.begin());
    if (mRuns->IsOutOfData()) ++mLinesOutOfData;
    return line.size();
}

/// Fills the line and then goes to where the next line starts, seen from where reading stopped: back when a line is
/// shorter than that, even where the file ended before. There is nothing to go to before the file's first byte.
std::size_t PcxLines::ReadRaw(std::span<unsigned char> out) {
    const std::size_t count = mSource.ReadSome(out);
    const std::uint64_t next = mSource.Position() + mLineBytes;
    if (next >= mCapacity) (void)mSource.Seek(std::min(next - mCapacity, mSource.Size()));
    return count;
}

void PcxLines::DropRun() {
    if (mRuns && mRuns->DropRun()) mWereInStep = false;
}

int PcxLines::TakeLinesOutOfData() {
    return std::exchange(mLinesOutOfData, 0);
}

// --- Rows ------------------------------------------------------------------------------------------------------------

namespace {

constexpr std::size_t kBitsOfByte = 8;
constexpr std::size_t kColours = 3;

constexpr std::size_t BytesOfBits(std::size_t width) {
    return (width + kBitsOfByte - 1) / kBitsOfByte;
}

std::size_t Width(const PcxHeader& header) {
    return static_cast<std::size_t>(header.Width());
}

/// How many bytes a row takes of a line.
std::size_t LineCapacity(const PcxHeader& header) {
    if (header.IsPlanar() || header.Bits() == 24) return header.bytesPerLine;
    return header.Bits() == 1 ? BytesOfBits(Width(header)) : Width(header);
}

/// How many bytes of a plane lie ready for a row: a line, or what the width takes where that is more.
std::size_t PlaneBytes(const PcxHeader& header) {
    const std::size_t needed = header.Bits() == 24 ? Width(header) : BytesOfBits(Width(header));
    return std::max(LineCapacity(header), needed);
}

}  // namespace

PcxIndexRows::PcxIndexRows(ByteSource& source, const PcxHeader& header)
    : mLines(source, header, LineCapacity(header)),
      mWidth(Width(header)),
      mPlanes(header.planes),
      mPlaneBytes(PlaneBytes(header)),
      mIndices(BytesOfBits(mWidth) * kBitsOfByte),
      mNibbles(CurrentPcxNibbles()) {
    if (header.IsPlanar()) {
        mNext = &PcxIndexRows::NextFromPlanes;
        mPacked.resize(mPlanes * mPlaneBytes);
    } else if (header.Bits() == 1) {
        mNext = &PcxIndexRows::NextFromBits;
        mPacked.resize(mPlaneBytes);
    } else {
        mNext = header.Bits() == 4 ? &PcxIndexRows::NextFromNibbles : &PcxIndexRows::NextFromBytes;
    }
}

std::span<const unsigned char> PcxIndexRows::Next() {
    (this->*mNext)();
    return std::span(mIndices).first(mWidth);
}

/// Every plane counts one bit a pixel, whatever the header says.
void PcxIndexRows::NextFromPlanes() {
    std::ranges::fill(mIndices, 0);
    for (std::size_t plane = 0; plane < mPlanes; ++plane) {
        const std::span<unsigned char> packed = std::span(mPacked).subspan(plane * mPlaneBytes, mPlaneBytes);
        (void)mLines.Read(packed);
        AddPcxSamples<1>(packed.first(BytesOfBits(mWidth)), 0x00, static_cast<unsigned>(plane), mIndices);
    }
}

/// A set bit is the first colour.
void PcxIndexRows::NextFromBits() {
    const std::size_t count = mLines.Read(mPacked);
    std::ranges::fill(std::span(mPacked).subspan(count), 0);
    std::ranges::fill(mIndices, 0);
    AddPcxSamples<1>(mPacked, 0xFF, 0, mIndices);
}

/// The packed bytes are read into the row and spread from its end, so that none is overwritten before its turn.
void PcxIndexRows::NextFromNibbles() {
    (void)mLines.Read(mIndices);
    for (std::size_t x = mWidth; x-- > 0;) {
        const unsigned char packed = mIndices[x / 2];
        mIndices[x] = mNibbles[x % 2 == 0 ? packed >> 4 : packed & 0xF];
    }
}

void PcxIndexRows::NextFromBytes() {
    (void)mLines.Read(mIndices);
}

PcxColourRows::PcxColourRows(ByteSource& source, const PcxHeader& header)
    : mLines(source, header, LineCapacity(header)), mPlaneBytes(PlaneBytes(header)), mPlanes(kColours * mPlaneBytes) {}

void PcxColourRows::Next(std::span<unsigned char> pixels) {
    mLines.DropRun();
    const unsigned char* red = ReadPlane(0);
    const unsigned char* green = ReadPlane(1);
    const unsigned char* blue = ReadPlane(2);
    // Four plain stores are what the compiler makes vectors of.
    for (std::size_t x = 0; x < pixels.size() / 4; ++x) {
        pixels[4 * x] = red[x];
        pixels[4 * x + 1] = green[x];
        pixels[4 * x + 2] = blue[x];
        pixels[4 * x + 3] = kOpaque;
    }
}

const unsigned char* PcxColourRows::ReadPlane(std::size_t plane) {
    const std::span<unsigned char> bytes = std::span(mPlanes).subspan(plane * mPlaneBytes, mPlaneBytes);
    const std::size_t count = mLines.Read(bytes);
    // What was clear stays clear: once the data have ended, a line costs its warning and no more.
    if (mFilled[plane] > count) std::ranges::fill(bytes.first(mFilled[plane]).subspan(count), 0);
    mFilled[plane] = count;
    return bytes.data();
}

// --- The reader ------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint16_t kGreyPalette = 2;

void WarnOfMissingData() {
    Sys::Warning(L"PCXReader::Invalid Frame -- out of data", nullptr);
}

void WarnOfLinesOutOfData(PcxLines& lines) {
    for (int line = lines.TakeLinesOutOfData(); line > 0; --line)
        WarnOfMissingData();
}

}  // namespace

void PCXReader::Close() {
    mSource.reset();
    mBinder.reset();
    mPages.clear();
    mHeader = {};
    mPalette.reset();
}

Result<> PCXReader::OpenFiles(PictureFiles files) {
    return mReading.IsCommon() ? OpenCommonFile(std::move(files.source)) : OpenContractFile(std::move(files.source));
}

Result<> PCXReader::OpenContractFile(ByteSource source) {
    const Result<PcxHeader> header = ReadPcxHeader(source);
    if (!header) return std::unexpected(header.error());
    if (header->Width() < 1 || header->Height() < 1) return std::unexpected(Failure::kMalformed);
    if (header->Bits() != 24) {
        const Result<PcxPalette> palette = PcxPalette::Read(source, *header);
        if (!palette) {
            (void)mReading.IsCommon("a picture without its 256 colours is refused by the host's rules");
            return std::unexpected(palette.error());
        }
        if (header->Bits() == 4) SetPcxNibbles(header->paletteInfo == kGreyPalette || palette->IsGreyRamp());
        mPalette = *palette;
    }
    mHeader = *header;
    mSource = std::move(source);
    return {};
}

Result<> PCXReader::OpenCommonFile(ByteSource source) {
    if (!IsDcx(source)) {
        const Result<PcxHeader> header = ReadCommonPcxHeader(source);
        if (!header) return std::unexpected(header.error());
        mHeader = *header;
        mSource = std::move(source);
        return {};
    }
    Result<std::vector<DcxPage>> pages = FindDcxPages(source);
    if (!pages) return std::unexpected(pages.error());
    mPages = *std::move(pages);
    mBinder = std::move(source);
    return OpenPage(0);
}

Result<> PCXReader::OpenPage(std::size_t page) {
    Result<ByteSource> file = OpenDcxPage(*mBinder, mPages[page]);
    if (!file) return std::unexpected(file.error());
    const Result<PcxHeader> header = ReadCommonPcxHeader(*file);
    if (!header) return std::unexpected(header.error());
    mHeader = *header;
    mSource = *std::move(file);
    return {};
}

bool PCXReader::SelectFrame(int frame) {
    if (mPages.empty()) return true;  // the one picture, whatever is asked for
    const std::size_t page = frame < 0 ? 0 : static_cast<std::size_t>(frame);
    if (page >= mPages.size()) {
        Sys::Warning(L"Frame index out of range", nullptr);
        return false;
    }
    return OpenPage(page).has_value();
}

Result<> PCXReader::ReadFrame(Common::RowSink& rows, int /*frame*/) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    if (mReading.IsCommon()) {
        ReadCommonFrame(rows);
    } else {
        ReadContractFrame(rows);
    }
    return {};
}

void PCXReader::ReadCommonFrame(Common::RowSink& rows) {
    PcxCommonRows stored(*mSource, mHeader, FindCommonPcxColours(*mSource, mHeader));
    int good = 0;
    WriteRows(rows, static_cast<std::size_t>(GetHeight()), static_cast<std::size_t>(GetRowPitch()),
              [&](std::span<unsigned char> pixels) {
                  stored.Next(pixels);
                  if (!stored.IsOutOfData()) ++good;
              });
    if (stored.IsOutOfData()) WarnOfMissingData();
    Common::SayEndsEarly(good, GetHeight(), mSource->Size());
}

void PCXReader::ReadContractFrame(Common::RowSink& rows) {
    ByteSource again = mSource->Again();
    std::optional<PcxComparison> comparison;
    if (mIsCompared) comparison.emplace(again, mHeader, mPalette ? &*mPalette : nullptr);
    const auto write = [&](auto& stored, const auto& next) {
        int good = 0;
        WriteRows(rows, static_cast<std::size_t>(GetHeight()), static_cast<std::size_t>(GetRowPitch()),
                  [&](std::span<unsigned char> pixels) {
                      next(pixels);
                      if (!stored.Lines().AreShort()) ++good;
                      WarnOfLinesOutOfData(stored.Lines());
                      if (comparison) comparison->Look(pixels);
                  });
        Common::SayEndsEarly(good, GetHeight(), mSource->Size());
        const char* const how = comparison ? comparison->Difference(stored.Lines()) : nullptr;
        if (how != nullptr) (void)mReading.IsCommon(how);
    };
    if (mPalette) {
        PcxIndexRows stored(*mSource, mHeader);
        write(stored, [&](std::span<unsigned char> pixels) { mPalette->Colour(stored.Next(), pixels); });
    } else {
        PcxColourRows stored(*mSource, mHeader);
        write(stored, [&](std::span<unsigned char> pixels) { stored.Next(pixels); });
    }
}

}  // namespace Kavra::Devices
