#include "common/MemoryPicture.h"

#include "common/SealedFile.h"

#include <unistd.h>

#include <string_view>
#include <utility>

namespace Kavra::Common {

namespace {

constinit thread_local MemoryPicture* tCurrent = nullptr;

}  // namespace

MemoryPicture::MemoryPicture(const Objects::KString& name, std::span<const unsigned char> bytes)
    : mName(&name), mBytes(bytes), mOuter(std::exchange(tCurrent, this)) {}

MemoryPicture::MemoryPicture() : mOuter(std::exchange(tCurrent, this)) {}

MemoryPicture::~MemoryPicture() {
    tCurrent = mOuter;
    if (mCopy >= 0) close(mCopy);
}

MemoryPicture* MemoryPicture::Current() {
    return tCurrent;
}

bool MemoryPicture::IsNamed(const wchar_t* path) const {
    return path != nullptr && mName != nullptr && std::wstring_view(path) == mName->ToChars();
}

std::optional<std::span<const unsigned char>> MemoryPicture::Find(const wchar_t* path) const {
    if (IsNamed(path)) return mBytes;
    for (const auto& [name, bytes] : mNeighbours) {
        if (path != nullptr && name == path) return bytes;
    }
    return std::nullopt;
}

const std::string& MemoryPicture::SystemPath() {
    if (!mSystemPath.empty() || mCopyFailed) return mSystemPath;
    mCopy = NewSealedFile(mBytes);
    mCopyFailed = mCopy < 0;
    if (mCopy >= 0) mSystemPath = "/proc/self/fd/" + std::to_string(mCopy);
    return mSystemPath;
}

}  // namespace Kavra::Common
