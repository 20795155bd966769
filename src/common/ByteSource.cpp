#include "common/ByteSource.h"

#include "common/MemoryPicture.h"

#include <kavra/objects/OS.h>

#include <cstdio>
#include <optional>

namespace Kavra::Common {

namespace {

constexpr std::size_t kBufferBytes = std::size_t{16} << 10;

}  // namespace

/// The open file that a source and its slices share. It is told where to read each time, since they take turns.
class ByteSource::File {
public:
    explicit File(FileHandle handle) : mHandle(std::move(handle)) {
        // Each source has its own buffer; a second one below it would only copy everything once more.
        (void)std::setvbuf(mHandle.get(), nullptr, _IONBF, 0);
    }

    std::size_t Read(std::uint64_t offset, std::span<unsigned char> out) {
        if (fseeko(mHandle.get(), static_cast<off_t>(offset), SEEK_SET) != 0) return 0;
        return std::fread(out.data(), 1, out.size(), mHandle.get());
    }

private:
    FileHandle mHandle;
};

Result<ByteSource> ByteSource::Open(const Objects::KString& path) {
    if (const MemoryPicture* const picture = MemoryPicture::Current()) {
        const auto bytes = picture->Find(path.ToChars());
        if (!bytes) return std::unexpected(Failure::kCannotOpen);
        return ByteSource(*bytes);
    }
    std::FILE* opened = nullptr;
    (void)OS::wfopen(&opened, path, L"rb");
    return Over(FileHandle(opened));
}

Result<ByteSource> ByteSource::OpenNarrow(const char* path) {
    if (MemoryPicture::Current() != nullptr) return std::unexpected(Failure::kCannotOpen);
    std::FILE* opened = nullptr;
    (void)OS::fopen(&opened, path, "rb");
    return Over(FileHandle(opened));
}

Result<ByteSource> ByteSource::Over(FileHandle file) {
    if (!file) return std::unexpected(Failure::kCannotOpen);
    const std::optional<std::uint64_t> length = FileLength(file.get());
    if (!length) return std::unexpected(Failure::kCannotOpen);
    return ByteSource(std::make_shared<File>(std::move(file)), 0, *length);
}

std::unexpected<Failure> ByteSource::Truncated() const {
    return std::unexpected(Failure(Failure::kTruncated, static_cast<std::int64_t>(mStart + mSize)));
}

Result<> ByteSource::Seek(std::uint64_t position) {
    if (position > mSize) return Truncated();
    MoveWindow(position);
    return {};
}

Result<> ByteSource::Skip(std::uint64_t bytes) {
    if (bytes > Remaining()) return Truncated();
    MoveWindow(Position() + bytes);
    return {};
}

Result<> ByteSource::Read(std::span<unsigned char> out) {
    if (out.size() > Remaining()) return Truncated();
    const std::uint64_t start = Position();
    if (ReadSome(out) == out.size()) return {};
    MoveWindow(start);
    return std::unexpected(Failure(Failure::kUnreadable, static_cast<std::int64_t>(mStart + start)));
}

std::size_t ByteSource::ReadSome(std::span<unsigned char> out) {
    std::size_t done = 0;
    while (done < out.size()) {
        const std::span<unsigned char> rest = out.subspan(done);
        std::size_t count = 0;
        if (mFile && Buffered() == 0 && rest.size() >= kBufferBytes) {
            count = ReadUnbuffered(rest);
        } else {
            const std::span<const unsigned char> window = Peek();
            count = std::min(window.size(), rest.size());
            std::ranges::copy(window.first(count), rest.begin());
            mNext += count;
        }
        if (count == 0) break;
        done += count;
    }
    return done;
}

std::span<const unsigned char> ByteSource::Peek() {
    if (Buffered() == 0) Fill();
    return mWindow.subspan(mNext);
}

ByteSource ByteSource::Again() const {
    if (mFile) return ByteSource(mFile, mStart, mSize);
    ByteSource again(mWindow);
    again.mStart = mStart;
    return again;
}

Result<ByteSource> ByteSource::Slice(std::uint64_t bytes) {
    if (bytes > Remaining()) return Truncated();
    ByteSource slice = mFile ? ByteSource(mFile, mStart + Position(), bytes)
                             : ByteSource(mWindow.subspan(mNext, static_cast<std::size_t>(bytes)));
    slice.mStart = mStart + Position();
    MoveWindow(Position() + bytes);
    return slice;
}

/// Goes to a position inside the source, and drops the window when that is outside it.
void ByteSource::MoveWindow(std::uint64_t position) {
    if (position >= mWindowStart && position - mWindowStart <= mWindow.size()) {
        mNext = static_cast<std::size_t>(position - mWindowStart);
        return;
    }
    mWindow = {};
    mWindowStart = position;
    mNext = 0;
}

/// Makes a window of what follows the present one; an empty one at the end.
void ByteSource::Fill() {
    if (!mFile || Remaining() == 0) return;
    if (!mBuffer) mBuffer = std::make_unique_for_overwrite<unsigned char[]>(kBufferBytes);
    const std::uint64_t position = Position();
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(kBufferBytes, Remaining()));
    const std::size_t count = mFile->Read(mStart + position, std::span(mBuffer.get(), wanted));
    mWindow = std::span<const unsigned char>(mBuffer.get(), count);
    mWindowStart = position;
    mNext = 0;
}

std::size_t ByteSource::ReadUnbuffered(std::span<unsigned char> out) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), Remaining()));
    const std::size_t count = mFile->Read(mStart + Position(), out.first(wanted));
    MoveWindow(Position() + count);
    return count;
}

}  // namespace Kavra::Common
