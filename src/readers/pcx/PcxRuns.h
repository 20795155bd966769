/// The run-length coding of PCX.
#pragma once

#include "common/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace Kavra::Devices {

/// Decodes one line after another. A byte whose two top bits are set is a count (its low six bits) and the byte behind
/// it the value that is repeated; any other byte stands for itself.
///
/// A line ends when its capacity is full or when it has as many bytes as the file says that a line has. A run that
/// does not fit goes on in the next line, with what is left of it beyond the file's length of a line -
/// which is nothing where a line is longer than that, so that the padding at the end of a line is skipped by the
/// run that covers it, and by that alone.
class PcxRuns {
public:
    /// Lines from the source's position on. The source is this decoder's alone until the last line is decoded.
    PcxRuns(Common::ByteSource& source, std::size_t capacity, std::size_t lineBytes);

    /// The next line, up to where it ends or the data do. Valid until the next call.
    std::span<const unsigned char> NextLine();

    /// Whether the last line wanted a byte that was not there.
    bool IsOutOfData() const { return mIsOutOfData; }

    /// Whether the last line took as many bytes as the file says that a line has, no matter how many of them it holds.
    bool IsInStep() const { return mTaken == mLineBytes; }

    /// Where in the source the next code stands.
    std::uint64_t Position() const { return mSource.Position() + mPeeked - mAhead.size(); }

    /// Forgets what is left of the last run, and tells whether that was anything.
    bool DropRun() { return std::exchange(mRunLength, 0) != 0; }

private:
    void TakeCodes(std::size_t end);
    bool TakeCode();
    void AddRun(std::size_t length, unsigned char value);
    std::optional<unsigned char> TakeByte();

    Common::ByteSource& mSource;
    std::span<const unsigned char> mAhead;  // of the source, not yet decoded
    std::size_t mPeeked = 0;                // bytes from the source's position to the end of `mAhead`
    std::vector<unsigned char> mLine;       // as long as the capacity; steps write ahead in it
    std::size_t mCapacity;
    std::size_t mLineBytes;
    std::size_t mDone = 0;       // bytes of the line
    std::size_t mTaken;          // bytes of the codes up to the end of the line, skipped padding included
    std::size_t mRunLength = 0;  // what the next line begins with
    unsigned char mRunValue = 0;
    bool mIsOutOfData = false;
};

}  // namespace Kavra::Devices
