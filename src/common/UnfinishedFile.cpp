#include "common/UnfinishedFile.h"

#include "common/Progress.h"

#include <kavra/objects/OS.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <string>
#include <utility>

namespace Kavra::Common {

namespace {

namespace fs = std::filesystem;

/// A new name or a regular file: nothing else is replaced.
bool IsReplaceable(const fs::path& path) {
    std::error_code failed;
    const fs::file_status status = fs::status(path, failed);
    return status.type() == fs::file_type::not_found || fs::is_regular_file(status);
}

}  // namespace

UnfinishedFile::UnfinishedFile(fs::path finalPath) : mFinal(std::move(finalPath)) {
    if (!IsReplaceable(mFinal)) {
        mError = EINVAL;
        return;
    }
    constexpr int kTries = 100;
    std::random_device random;
    mError = EEXIST;
    for (int i = 0; i < kTries && mError == EEXIST; ++i) {
        const std::string number = std::to_string(random()) + std::to_string(random());
        fs::path path = mFinal.parent_path() / (".kavra-" + number + ".tmp");
        std::FILE* opened = nullptr;
        mError = OS::fopen(&opened, path.c_str(), "wbx");
        if (mError != 0) continue;
        mFile.reset(opened);
        mPath = std::move(path);  // not a copy: one that throws would leave the file behind
    }
}

UnfinishedFile::~UnfinishedFile() {
    mFile.reset();
    std::error_code ignored;
    if (!mPath.empty()) fs::remove(mPath, ignored);
}

bool UnfinishedFile::Fail(int error) {
    if (mError == 0) mError = error == 0 ? EIO : error;
    return false;
}

bool UnfinishedFile::Write(const void* data, std::size_t bytes) {
    if (mError != 0) return false;
    constexpr std::size_t kPiece = std::size_t{4} << 20;
    ProgressMeter meter(Devices::kProgressSaving, bytes);
    const auto* next = static_cast<const unsigned char*>(data);
    for (std::size_t rest = bytes, piece = 0; rest > 0; rest -= piece, next += piece) {
        piece = std::min(kPiece, rest);
        errno = 0;
        if (std::fwrite(next, 1, piece, mFile.get()) != piece) return Fail(errno);
        meter.Advance(piece);
    }
    return true;
}

bool UnfinishedFile::Commit() {
    if (mError != 0) return false;
    errno = 0;
    if (std::fclose(mFile.release()) != 0) return Fail(errno);
    std::error_code failed;
    fs::rename(mPath, mFinal, failed);
    if (failed) return Fail(failed.value());
    mPath.clear();
    return true;
}

}  // namespace Kavra::Common
