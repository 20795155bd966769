#include "common/Boundary.h"
#include "common/FileHandle.h"
#include "common/PathReasons.h"
#include "frame/host/devices/ExrPicture.h"
#include "frame/host/devices/ExrStream.h"

#include <kavra/devices/EXRHandler.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace Kavra::Devices {

namespace {

constexpr std::array<unsigned char, 4> kMagic = {0x76, 0x2F, 0x31, 0x01};

/// Open for reading, or empty. Anything but a regular file is refused without waiting for it.
Common::FileHandle Open(const wchar_t* path) {
    std::FILE* file = nullptr;
    if (OS::wfopen(&file, path, L"rb") != 0) return nullptr;
    return Common::FileHandle(file);
}

}  // namespace

EXRHandler::EXRHandler(bool) {}

EXRHandler::~EXRHandler() {
    Objects::KavraDelete(mPixels);
}

bool EXRHandler::IsPreferedHandler(const wchar_t* path) {
    return Common::AtBoundary(false, [&] {
        std::array<unsigned char, kMagic.size()> start{};
        const Common::FileHandle file = Open(path);
        return file && IsPreferedHandler(start.data(), std::fread(start.data(), 1, start.size(), file.get()));
    });
}

bool EXRHandler::IsPreferedHandler(const unsigned char* start, std::size_t bytes) {
    return start != nullptr && bytes >= kMagic.size() && std::equal(kMagic.begin(), kMagic.end(), start);
}

bool EXRHandler::ReadFromFile(const wchar_t* path) {
    Clear();
    return Common::AsOperation(false, [&] {
        Common::FileHandle file = Open(path);
        if (!file) {
            Common::SayOfPathToRead(path);
            return false;
        }
        ExrStream stream(std::move(file));
        Take(stream);
        return true;
    });
}

bool EXRHandler::ReadMemory(const void* bytes, std::size_t size) {
    Clear();
    return Common::AsOperation(false, [&] {
        if (bytes == nullptr) return false;
        ExrStream stream(std::span(static_cast<const unsigned char*>(bytes), size));
        Take(stream);
        return true;
    });
}

void EXRHandler::Clear() {
    Objects::KavraDelete(std::exchange(mPixels, nullptr));
    mWidth = mHeight = 0;
    mAlpha = false;
}

/// Throws where the stream cannot be read.
void EXRHandler::Take(ExrStream& stream) {
    ExrPicture picture = ReadExrPicture(stream);
    mWidth = picture.width;
    mHeight = picture.height;
    mAlpha = picture.alpha;
    mPixels = reinterpret_cast<float*>(picture.pixels.release());
}

int EXRHandler::width() const {
    return mWidth;
}

int EXRHandler::height() const {
    return mHeight;
}

bool EXRHandler::supportsAlpha() const {
    return mAlpha;
}

const float* EXRHandler::internalBuffer() const {
    return mPixels;
}

}  // namespace Kavra::Devices
