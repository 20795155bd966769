/// The one door through which readers see a file.
#pragma once

#include "common/ByteOrder.h"
#include "common/FileHandle.h"
#include "common/Result.h"

#include <kavra/objects/KString.h>

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>

namespace Kavra::Common {

/// A sequence of bytes with a position: a file, a part of one, or memory. Nothing outside the sequence can be read or
/// reached, whatever numbers a file holds. An exact read and a move of the position either succeed whole or change
/// nothing.
///
/// What fails is one of `kCannotOpen`, `kTruncated` (the source ends before the bytes; its end is the position) and
/// `kUnreadable`. Positions of failures are those in the file or memory, also of slices.
///
/// Reads are buffered, so single numbers are cheap; a seek inside the buffer costs nothing. A source and its slices
/// share one open file, which closes with the last of them. They may be used from one thread at a time.
class ByteSource {
public:
    /// Opens a regular file by its wide path and fixes its size as of now; what a `MemoryPicture`
    /// has in its place, where one stands for the files of this thread.
    [[nodiscard]] static Result<ByteSource> Open(const Objects::KString& path);
    /// The same by a path whose bytes go to the system as they are: names that are stored inside files.
    [[nodiscard]] static Result<ByteSource> OpenNarrow(const char* path);

    /// Takes over an open file. Null is none.
    [[nodiscard]] static Result<ByteSource> Over(FileHandle file);

    /// Memory that stays its owner's and must outlive the source.
    explicit ByteSource(std::span<const unsigned char> bytes) : mWindow(bytes), mSize(bytes.size()) {}

    ByteSource(ByteSource&&) noexcept = default;
    ByteSource& operator=(ByteSource&&) noexcept = default;

    std::uint64_t Size() const { return mSize; }
    std::uint64_t Position() const { return mWindowStart + mNext; }
    std::uint64_t Remaining() const { return mSize - Position(); }

    /// Moves to a position from 0 to `Size()`.
    [[nodiscard]] Result<> Seek(std::uint64_t position);
    /// Moves forward.
    [[nodiscard]] Result<> Skip(std::uint64_t bytes);

    /// Fills `out` whole.
    [[nodiscard]] Result<> Read(std::span<unsigned char> out);
    /// Fills `out` as far as the source goes and tells how far that was; the rest of `out` stays as it is.
    [[nodiscard]] std::size_t ReadSome(std::span<unsigned char> out);

    /// The `Count` bytes from a position on, which is left behind them.
    template <std::size_t Count>
    [[nodiscard]] Result<std::array<unsigned char, Count>> BytesAt(std::uint64_t position) {
        std::array<unsigned char, Count> bytes{};
        return Seek(position).and_then([&] { return Read(bytes); }).transform([&] { return bytes; });
    }

    /// An integer in the given byte order: `source.Big<std::int16_t>()`.
    template <std::integral T>
    [[nodiscard]] Result<T> Little() {
        return Number<T, std::endian::little>();
    }
    template <std::integral T>
    [[nodiscard]] Result<T> Big() {
        return Number<T, std::endian::big>();
    }

    /// The next bytes without moving past them: all that are buffered, at least one unless the source is at its end or
    /// unreadable. Valid until the next operation but `Skip` within them. For decoders that eat one byte after another.
    [[nodiscard]] std::span<const unsigned char> Peek();

    /// Another view of the whole source, with a position and a buffer of its own.
    [[nodiscard]] ByteSource Again() const;

    /// The next `bytes` bytes as a source of their own, with its own position and buffer; this source moves past them.
    [[nodiscard]] Result<ByteSource> Slice(std::uint64_t bytes);

private:
    class File;

    ByteSource(std::shared_ptr<File> file, std::uint64_t start, std::uint64_t size)
        : mFile(std::move(file)), mStart(start), mSize(size) {}

    template <std::integral T, std::endian Order>
    Result<T> Number() {
        std::array<unsigned char, sizeof(T)> bytes{};
        if (Buffered() >= bytes.size()) {
            std::copy_n(mWindow.subspan(mNext).begin(), sizeof(T), bytes.begin());
            mNext += bytes.size();
        } else if (const Result<> read = Read(bytes); !read) {
            return std::unexpected(read.error());
        }
        return Order == std::endian::little ? LittleAt<T, 0>(bytes) : BigAt<T, 0>(bytes);
    }

    std::unexpected<Failure> Truncated() const;
    std::size_t Buffered() const { return mWindow.size() - mNext; }
    void MoveWindow(std::uint64_t position);
    void Fill();
    std::size_t ReadUnbuffered(std::span<unsigned char> out);

    std::shared_ptr<File> mFile;  // null for memory, which is one window from start to end
    std::unique_ptr<unsigned char[]> mBuffer;
    std::span<const unsigned char> mWindow;  // the bytes at hand
    std::uint64_t mStart = 0;                // of this source in its file
    std::uint64_t mSize = 0;
    std::uint64_t mWindowStart = 0;  // of the window in this source
    std::size_t mNext = 0;           // the position, from the window's start
};

}  // namespace Kavra::Common
