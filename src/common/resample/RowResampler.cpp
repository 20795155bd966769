#include "common/resample/RowResampler.h"

#include "common/Limits.h"
#include "common/Progress.h"
#include "common/WatchedRange.h"
#include "common/resample/OrderedMethod.h"

#include <algorithm>
#include <cstring>

namespace Kavra::Common {

namespace {

using Devices::kProgressResizing;

constexpr std::size_t kBandRows = 64;                      // asked for at a time, where nobody writes them
constexpr std::size_t kSpareBytes = std::size_t{1} << 20;  // of rows in a ring for the sake of speed
constexpr std::size_t kSerialBytes = 1 << 16;              // of the result: less is not worth waking a worker

/// Rows of the result that are made on one thread. A row costs as much as the longer side of it.
std::size_t SerialRows(const Resampling& resampling) {
    return kSerialBytes / std::max(resampling.ToRowBytes(), resampling.FromRowBytes());
}

/// Rows of the result, packed at `out`, split over all cores.
void MakeRows(const ResampleMethod& method, const Resampling& resampling, const SourceRows& source, int y, int count,
              unsigned char* out) {
    const std::size_t rowBytes = resampling.ToRowBytes();
    const auto rows = static_cast<std::size_t>(count);
    ForEachRangeOf(kProgressResizing, rows, SerialRows(resampling), [&](std::size_t begin, std::size_t end) {
        method.Make(source, y + static_cast<int>(begin), static_cast<int>(end - begin), out + begin * rowBytes);
    });
}

/// Rows of a picture, `pitch` bytes apart, one by one.
class SpacedRows final : public RowSink {
public:
    SpacedRows(unsigned char* first, std::size_t pitch, std::size_t rowBytes)
        : mNext(first), mPitch(pitch), mRowBytes(rowBytes) {}

    std::span<unsigned char> NextRows(std::size_t /*most*/) override {
        const std::span<unsigned char> row(mNext, mRowBytes);
        mNext += mPitch;
        return row;
    }

private:
    unsigned char* mNext;
    std::size_t mPitch, mRowBytes;
};

/// A picture in memory through an accumulator.
void AddUp(const Resampling& resampling, const unsigned char* from, std::size_t pitch, RowSink& out) {
    RowAccumulator sums(resampling, out);
    const std::size_t rowBytes = resampling.FromRowBytes(), band = RowAccumulator::BandRows(resampling);
    const auto rows = static_cast<std::size_t>(resampling.y.fromCount);
    std::vector<unsigned char> packed(band * rowBytes);
    ProgressMeter meter(kProgressResizing, rows);
    for (std::size_t y = 0; y < rows; y += band) {
        const std::size_t count = std::min(band, rows - y);
        for (std::size_t i = 0; i < count; ++i)
            std::memcpy(packed.data() + i * rowBytes, from + (y + i) * pitch, rowBytes);
        sums.Take(packed.data(), count);
        meter.Advance(count);
    }
}

}  // namespace

// --- Whole -----------------------------------------------------------------------------------------------------------

void Resample(const Resampling& resampling, const unsigned char* from, std::size_t pitch, unsigned char* to,
              std::size_t toPitch) {
    if (RowAccumulator::IsBetter(resampling)) {
        SpacedRows out(to, toPitch, resampling.ToRowBytes());
        return AddUp(resampling, from, pitch, out);
    }
    const std::unique_ptr<ResampleMethod> method = NewResampleMethod(resampling);
    const SourceRows source{from, pitch, static_cast<std::size_t>(resampling.y.fromCount)};
    const std::size_t rowBytes = resampling.ToRowBytes();
    if (toPitch == rowBytes) return MakeRows(*method, resampling, source, 0, resampling.y.toCount, to);
    const int group = method->GroupRows();
    const auto groups = static_cast<std::size_t>((resampling.y.toCount + group - 1) / group);
    ForEachRangeOf(kProgressResizing, groups, 0, [&](std::size_t begin, std::size_t end) {
        std::vector<unsigned char> rows(static_cast<std::size_t>(group) * rowBytes);
        for (std::size_t i = begin; i < end; ++i) {
            const int y = static_cast<int>(i) * group, count = std::min(group, resampling.y.toCount - y);
            method->Make(source, y, count, rows.data());
            for (int row = 0; row < count; ++row)
                std::memcpy(to + static_cast<std::size_t>(y + row) * toPitch,
                            rows.data() + static_cast<std::size_t>(row) * rowBytes, rowBytes);
        }
    });
}

void ResampleInto(const Resampling& resampling, const unsigned char* from, std::size_t pitch, RowSink& out) {
    if (RowAccumulator::IsBetter(resampling)) return AddUp(resampling, from, pitch, out);
    const std::unique_ptr<ResampleMethod> method = NewResampleMethod(resampling);
    const SourceRows source{from, pitch, static_cast<std::size_t>(resampling.y.fromCount)};
    ProgressMeter meter(kProgressResizing, static_cast<unsigned>(resampling.y.toCount));
    for (int y = 0; y < resampling.y.toCount;) {
        const std::span<unsigned char> rows = out.NextRows(static_cast<std::size_t>(resampling.y.toCount - y));
        const int count = static_cast<int>(rows.size() / resampling.ToRowBytes());
        if (count == 0) return;
        meter.Expect(static_cast<unsigned>(count));
        MakeRows(*method, resampling, source, y, count, rows.data());
        meter.Advance(static_cast<unsigned>(count));
        y += count;
    }
}

// --- Row by row ------------------------------------------------------------------------------------------------------

namespace {

/// Rows of a ring for rows of the result that need `longest` rows each: as many again, or what as many rows of the
/// result are made of as two cores make best at a time; and a band to decode into.
std::size_t RingRows(const Resampling& resampling, std::size_t longest) {
    constexpr double kResultRows = 32;
    const std::size_t rowBytes = std::max<std::size_t>(resampling.FromRowBytes(), 1);
    const std::size_t band = RowAccumulator::BandRows(resampling);
    const auto wanted = static_cast<std::size_t>(kResultRows / static_cast<double>(resampling.y.Ratio()));
    const std::size_t many = std::min(wanted, kSpareBytes / rowBytes);
    return std::min(static_cast<std::size_t>(resampling.y.fromCount), longest + std::max({band, longest, many}));
}

}  // namespace

RowResampler::RowResampler(const Resampling& resampling, RowSink& out)
    : mResampling(resampling), mOut(out), mRowBytes(resampling.FromRowBytes()) {
    if (RowAccumulator::IsBetter(resampling)) {
        mAccumulator.emplace(resampling, out);
        mCapacity = RowAccumulator::BandRows(resampling);
        mRing.resize(mCapacity * mRowBytes);
        return;
    }
    mMethod = NewResampleMethod(resampling);
    mFirst.resize(static_cast<std::size_t>(resampling.y.toCount));
    int first = resampling.y.fromCount;
    std::size_t longest = 1;
    for (int y = resampling.y.toCount; y-- > 0;) {
        const RowSpan needs = mMethod->Needs(y);
        if (needs.end > needs.first) first = std::min(first, needs.first);
        mFirst[static_cast<std::size_t>(y)] = first;
        longest = std::max(longest, static_cast<std::size_t>(std::max(needs.end - first, 1)));
    }
    mCapacity = RingRows(resampling, longest);
    const std::size_t spare = mCapacity - std::min(longest, mCapacity);
    mMinReady = std::max<std::size_t>(
        spare * static_cast<std::size_t>(resampling.y.toCount) / static_cast<std::size_t>(resampling.y.fromCount), 1);
    mRing.resize(mCapacity * mRowBytes);
}

std::uint64_t RowResampler::BytesFor(const Resampling& resampling) {
    if (RowAccumulator::IsBetter(resampling)) return RowAccumulator::BytesFor(resampling);
    const auto taps = [&](const ResampleAxis& axis) {
        const double ratio = static_cast<double>(axis.Ratio());
        return static_cast<std::uint64_t>(static_cast<double>(resampling.FilterAlong(axis).width) / ratio) + 8;
    };
    const auto weights = [&](const ResampleAxis& axis) {
        return Product<std::uint64_t>(static_cast<std::uint64_t>(axis.toCount), taps(axis) * sizeof(float));
    };
    const std::size_t rows = RingRows(resampling, static_cast<std::size_t>(taps(resampling.y)));
    const std::uint64_t ring = Product<std::uint64_t>(rows, resampling.FromRowBytes());
    const std::uint64_t tables = Sum<std::uint64_t>(weights(resampling.x), weights(resampling.y));
    const auto made = static_cast<std::size_t>(resampling.y.toCount);
    const std::size_t threads = ThreadsFor(made, SerialRows(resampling));
    const std::uint64_t groups = IsOrdered(resampling)
                                     ? Product<std::uint64_t>(threads, OrderedMethod::BytesOfThread(resampling))
                                     : BytesOfGroups(resampling, threads, made);
    return Sum<std::uint64_t>(ring, Sum<std::uint64_t>(tables, groups));
}

std::size_t RowResampler::FirstNeeded() const {
    return mGiven < mResampling.y.toCount ? static_cast<std::size_t>(mFirst[static_cast<std::size_t>(mGiven)]) : mTaken;
}

/// Rows of the result, behind those that are given, whose rows of the source are complete.
int RowResampler::RowsReady() const {
    int ready = 0;
    while (mGiven + ready < mResampling.y.toCount &&
           static_cast<std::size_t>(mMethod->Needs(mGiven + ready).end) <= mTaken)
        ++ready;
    return ready;
}

void RowResampler::Give(int count) {
    const SourceRows source{mRing.data(), mRowBytes, mCapacity};
    while (count > 0) {
        const std::span<unsigned char> rows = mOut.NextRows(static_cast<std::size_t>(count));
        const int given = static_cast<int>(rows.size() / mResampling.ToRowBytes());
        if (given == 0) return;
        MakeRows(*mMethod, mResampling, source, mGiven, given, rows.data());
        mGiven += given;
        count -= given;
    }
}

/// Rows that may be written before another row of the result is made.
std::size_t RowResampler::FreeRows() const {
    return mCapacity - (mTaken - std::min(FirstNeeded(), mTaken));
}

/// The same where rows are added up: the band that was handed out before is taken, and its memory handed out again.
std::span<unsigned char> RowResampler::NextOfBand(std::size_t most) {
    mAccumulator->Take(mRing.data(), mHanded - mTaken);
    mTaken = mHanded;
    const std::size_t left = static_cast<std::size_t>(mResampling.y.fromCount) - mTaken;
    const std::size_t count = std::min({most, left, mCapacity});
    const std::span<unsigned char> rows(mRing.data(), count * mRowBytes);
    std::ranges::fill(rows, static_cast<unsigned char>(0));
    mHanded += count;
    return rows;
}

std::span<unsigned char> RowResampler::NextRows(std::size_t most) {
    if (mAccumulator) return NextOfBand(most);
    mTaken = mHanded;
    const std::size_t left = static_cast<std::size_t>(mResampling.y.fromCount) - mTaken;
    if (left == 0) return {};
    const int ready = RowsReady();
    const bool isWorth = static_cast<std::size_t>(ready) >= mMinReady;
    if (ready > 0 && (isWorth || FreeRows() == 0)) Give(ready);
    const std::size_t place = mTaken % mCapacity;
    const std::size_t count = std::min({most, FreeRows(), left, mCapacity - place});
    const std::span<unsigned char> rows(mRing.data() + place * mRowBytes, count * mRowBytes);
    std::ranges::fill(rows, static_cast<unsigned char>(0));
    mHanded = mTaken + count;
    return rows;
}

void RowResampler::Finish() {
    while (!NextRows(kBandRows).empty()) {
    }
    if (!mAccumulator) Give(mResampling.y.toCount - mGiven);
}

}  // namespace Kavra::Common
