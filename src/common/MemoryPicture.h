/// A picture in memory that stands for a file while an operation runs.
#pragma once

#include <kavra/objects/KString.h>

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Common {

/// While one lives, what this thread opens by the picture's name are its bytes, and there are no other files but those
/// that were put beside it: what has no name on the disk has no neighbours there either. They end in the opposite order of their beginning, on the thread
/// that they began on. The bytes are the caller's and outlive it.
class MemoryPicture {
public:
    MemoryPicture(const Objects::KString& name, std::span<const unsigned char> bytes);
    /// Stands for no file at all: there is nothing to be opened.
    MemoryPicture();
    ~MemoryPicture();
    MemoryPicture(const MemoryPicture&) = delete;
    MemoryPicture& operator=(const MemoryPicture&) = delete;

    /// The one that stands for all files of this thread; null where files are files.
    static MemoryPicture* Current();

    /// Puts another file beside it.
    void AddNeighbour(std::wstring name, std::span<const unsigned char> bytes) {
        mNeighbours.emplace_back(std::move(name), bytes);
    }

    using NamedBytes = std::pair<std::wstring, std::span<const unsigned char>>;
    const std::vector<NamedBytes>& Neighbours() const { return mNeighbours; }

    bool IsNamed(const wchar_t* path) const;
    /// The bytes of the picture or of a file beside it; nothing of any other name.
    std::optional<std::span<const unsigned char>> Find(const wchar_t* path) const;
    std::span<const unsigned char> Bytes() const { return mBytes; }

    /// Where the system opens the same bytes.
    void SetSystemPath(std::string path) { mSystemPath = std::move(path); }
    /// Where it does: as was said, else a copy, made when first asked for; empty where the system does not let one.
    const std::string& SystemPath();

    /// Whether a library has asked for bytes behind the end: what it cannot decode then is not all there.
    bool WasReadPastItsEnd() const { return mWasReadPastItsEnd; }
    /// To be called by what reads the bytes for a library, on any thread.
    void NoteReadPastEnd() { mWasReadPastItsEnd = true; }

    /// Keeps something as long as the picture: what reads the bytes for a library that does not own it.
    template <class T>
    T* Keep(std::unique_ptr<T> reader) {
        T* const kept = reader.get();
        mKept.push_back(std::move(reader));
        return kept;
    }

private:
    const Objects::KString* mName = nullptr;
    std::span<const unsigned char> mBytes;
    std::vector<NamedBytes> mNeighbours;
    MemoryPicture* mOuter;
    int mCopy = -1;
    std::atomic<bool> mWasReadPastItsEnd = false;
    bool mCopyFailed = false;
    std::string mSystemPath;
    std::vector<std::shared_ptr<void>> mKept;
};

}  // namespace Kavra::Common
