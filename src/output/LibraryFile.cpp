#include "output/LibraryFile.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "common/Boundary.h"
#include "common/Utf8.h"
#include "output/LibraryWriters.h"

namespace Kavra::Devices {

namespace {

std::unique_ptr<OIIO::ImageOutput> FindWriter(const KString& path) {
    auto writer = OIIO::ImageOutput::create(Common::ToUtf8(path));
    // The library keeps every thread's unread errors, and aborts when they pass 16 MB.
    if (!writer) (void)OIIO::geterror();
    return writer;
}

/// Whether a file may be written under this name: nothing is there yet, or a file. A pipe would be waited on for ever.
bool IsFileOrFree(const KString& path) {
    std::error_code error;
    const auto kind = std::filesystem::status(Common::ToUtf8(path), error).type();
    return kind == std::filesystem::file_type::not_found || kind == std::filesystem::file_type::regular;
}

}  // namespace

LibraryFile::LibraryFile(const KString& path) : mPath(path), mWatched(path), mWriter(FindWriter(path)) {}

LibraryFile::~LibraryFile() {
    if (mIsOpen) Common::AtBoundary(false, [&] { return mWriter->close(); });
}

bool LibraryFile::SetProxy() {
    if (!WritesThroughProxy(*mWriter, mPath)) return false;
    if (!WantsStream(*mWriter)) return mWriter->set_ioproxy(&mWatched);
    return mWriter->set_ioproxy(&mStream.emplace(mWatched));
}

bool LibraryFile::Open(const OIIO::ImageSpec& spec) {
    if (!IsFileOrFree(mPath) || Mishandles(*mWriter, spec, mPath)) return false;
    mIsWatched = SetProxy();
    mIsOpen = mWriter->open(Common::ToUtf8(mPath), spec);
    // The WebP writer takes a proxy for a sign that it did open and frees what it never had.
    if (!mIsOpen) (void)mWriter->set_ioproxy(nullptr);
    return mIsOpen;
}

bool LibraryFile::Close() {
    mIsOpen = false;
    const OIIO::ImageSpec spec = mWriter->spec();
    if (!mWriter->close()) return false;
    if (mStream) mStream->HandOn();
    return mIsWatched ? mWatched.Finish() : IsWhole(*mWriter, spec, mPath);
}

}  // namespace Kavra::Devices
