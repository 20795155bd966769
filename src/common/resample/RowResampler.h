/// Pictures at another size: whole, or row by row as they come.
#pragma once

#include "common/RowSink.h"
#include "common/resample/ResampleMethod.h"
#include "common/resample/RowAccumulator.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Common {

/// Resamples a picture in memory, on all cores, into packed rows at `to`, which do not overlap it. `resampling` is
/// possible, and `from` holds its rows, `pitch` bytes apart. Throws `std::bad_alloc`.
void Resample(const Resampling& resampling, const unsigned char* from, std::size_t pitch, unsigned char* to,
              std::size_t toPitch);

/// The same into the rows of a sink, which takes all of them. Throws what the sink throws, too.
void ResampleInto(const Resampling& resampling, const unsigned char* from, std::size_t pitch, RowSink& out);

/// Takes rows of a picture and gives rows of it at another size to the sink behind it as soon as they can be made. Holds
/// as many rows as a row of the result is made of, and about as many again; a band of them where `RowAccumulator` is
/// better.
class RowResampler final : public RowSink {
public:
    /// `resampling` is possible; `out` lives longer. Throws `std::bad_alloc`.
    RowResampler(const Resampling& resampling, RowSink& out);

    std::span<unsigned char> NextRows(std::size_t most) override;

    /// Gives the sink the rest. Rows that were not taken are zero. To be called once, at the end.
    void Finish();

    /// Bytes that it holds at most, with what it knows of the filter.
    static std::uint64_t BytesFor(const Resampling& resampling);

private:
    int RowsReady() const;
    void Give(int count);
    std::size_t FreeRows() const;
    std::size_t FirstNeeded() const;
    std::span<unsigned char> NextOfBand(std::size_t most);

    Resampling mResampling;
    RowSink& mOut;
    std::optional<RowAccumulator> mAccumulator;  ///< does the work, where there is one
    std::unique_ptr<ResampleMethod> mMethod;     ///< does it where there is none
    std::vector<int> mFirst;  ///< the first row of the source that a row of the result or any behind it needs
    std::size_t mRowBytes;
    std::size_t mCapacity = 1;  ///< of the ring, in rows
    std::size_t mMinReady = 1;  ///< rows of the result that are worth being made
    std::vector<unsigned char> mRing;
    std::size_t mTaken = 0;   ///< rows of the source that are complete
    std::size_t mHanded = 0;  ///< rows of the source that were handed out
    int mGiven = 0;           ///< rows of the result
};

}  // namespace Kavra::Common
