/// Where the rows of a picture go as they are decoded.
#pragma once

#include <cstddef>
#include <span>

namespace Kavra::Common {

/// Takes the rows of one picture, top row first, in memory that it hands out. So whoever decodes need not know whether
/// the picture ever stands in memory whole.
class RowSink {
public:
    virtual ~RowSink() = default;

    /// Memory for the next rows, packed and all zero: for at least one of them and for `most` at most, all of which are
    /// rows of the picture that were not handed out before. The rows handed out by the call before are complete now, and
    /// their memory is no longer the caller's. `most` is at least 1. Throws `std::bad_alloc`.
    virtual std::span<unsigned char> NextRows(std::size_t most) = 0;
};

/// A sink over a block that holds the whole picture and is all zero: hands out what is asked for.
class BlockRows : public RowSink {
public:
    /// `block`: at least 1 row of `rowBytes` bytes.
    BlockRows(std::span<unsigned char> block, std::size_t rowBytes) : mRest(block), mRowBytes(rowBytes) {}

    std::span<unsigned char> NextRows(std::size_t most) override {
        const std::size_t count = most < mRest.size() / mRowBytes ? most : mRest.size() / mRowBytes;
        const std::span<unsigned char> rows = mRest.first(count * mRowBytes);
        mRest = mRest.subspan(rows.size());
        return rows;
    }

private:
    std::span<unsigned char> mRest;
    std::size_t mRowBytes;
};

}  // namespace Kavra::Common
