#include "readers/pict/PictReader.h"

#include "common/Limits.h"
#include "readers/pict/PictCanvas.h"
#include "readers/pict/PictStream.h"

#include <kavra/devices/Sys.h>

#include <cstdint>
#include <limits>
#include <new>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

namespace {

constexpr std::uint64_t kLeastBytes = 512;
constexpr std::uint64_t kMostBytes = std::numeric_limits<std::int32_t>::max();

}  // namespace

bool PictReader::Open(const KString& path) {
    mPicture.reset();
    try {
        if (!ReadFile(path)) return false;
        ByteSource file(File());
        mPicture = ReadPictPicture(file);
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (!mPicture) Sys::Warning(L"The data is corrupted.", nullptr);
    return mPicture.has_value();
}

bool PictReader::ReadFile(const KString& path) {
    mFile.reset();
    mFileBytes = 0;
    Result<ByteSource> source = ByteSource::Open(path);
    if (!source || source->Size() < kLeastBytes || source->Size() > kMostBytes) return false;
    if (source->Size() > Common::ReaderBounds().bytes) return false;
    const auto bytes = static_cast<std::size_t>(source->Size());
    mFile = Common::NewBlock(bytes);
    if (!source->Read({mFile.get(), bytes})) return false;
    mFileBytes = bytes;
    return true;
}

bool PictReader::ReadImage(unsigned char* buffer, int /*frame*/) {
    if (!mPicture) return false;
    PictCanvas canvas(*mPicture, File());
    const auto pitch = static_cast<std::size_t>(GetRowPitch());
    const std::span<unsigned char> block(buffer, pitch * static_cast<std::size_t>(GetHeight()));
    for (std::size_t at = 0; at < block.size(); at += pitch)
        canvas.DrawRow(block.subspan(at, pitch));
    return true;
}

}  // namespace Kavra::Devices
