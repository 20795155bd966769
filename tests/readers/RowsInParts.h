/// A sink that hands out a picture's rows a few at a time.
#pragma once

#include "common/RowSink.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace Kavra::Tests {

/// Hands out so many rows and then so many, over and over, each time in memory of their own, which is gone at the next
/// call. Keeps their bytes.
class RowsInParts final : public Common::RowSink {
public:
    /// A picture of `rows` rows of `rowBytes` bytes, all of them `filler`: a decoder leaves pixels alone, whatever they
    /// are, that the file says nothing of.
    RowsInParts(std::size_t rows, std::size_t rowBytes, std::vector<std::size_t> parts, unsigned char filler = 0)
        : mRowBytes(rowBytes), mRowsLeft(rows), mParts(std::move(parts)), mFiller(filler) {}

    std::span<unsigned char> NextRows(std::size_t most) override {
        Keep();
        const std::size_t count = std::min({most, mParts[mCalls++ % mParts.size()], mRowsLeft});
        mRowsLeft -= count;
        mPart = std::vector<unsigned char>(count * mRowBytes, mFiller);
        return mPart;
    }

    /// The picture; rows that were not asked for are as they would have been handed out. To be called once.
    std::vector<unsigned char> Take() {
        Keep();
        mBytes.resize(mBytes.size() + mRowsLeft * mRowBytes, mFiller);
        return std::move(mBytes);
    }

    std::size_t RowsNotAskedFor() const { return mRowsLeft; }

private:
    void Keep() {
        mBytes.insert(mBytes.end(), mPart.begin(), mPart.end());
        mPart.clear();
    }

    std::size_t mRowBytes, mRowsLeft;
    std::vector<std::size_t> mParts;
    std::size_t mCalls = 0;
    unsigned char mFiller;
    std::vector<unsigned char> mPart, mBytes;
};

}  // namespace Kavra::Tests
