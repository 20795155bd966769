#include "readers/ImageReaderInterface.h"

#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

bool ImageReaderInterface::Open(const KString& path) {
    Close();
    Result<PictureFiles> files = FindFiles(path);
    return files && OpenFiles(*std::move(files));
}

Result<> ImageReaderInterface::Open(PictureFiles files) {
    Close();
    return OpenFiles(std::move(files));
}

Result<PictureFiles> ImageReaderInterface::FindFiles(const KString& path) {
    return ByteSource::Open(path).transform(
        [&](ByteSource&& source) { return PictureFiles{path.ToChars(), std::move(source), std::nullopt}; });
}

bool ImageReaderInterface::ReadImage(unsigned char* buffer, int frame) {
    const auto rows = static_cast<std::size_t>(std::max(GetHeight(), 0));
    const auto pitch = static_cast<std::size_t>(std::max(GetRowPitch(), 0));
    Common::BlockRows block({buffer, rows * pitch}, pitch);
    return ReadFrame(block, frame).has_value();
}

void* ImageReaderInterface::operator new(std::size_t bytes) noexcept {
    try {
        return ::operator new(bytes, Objects::ObjModel::mDefaultAllocator);
    } catch (...) {
        return nullptr;
    }
}

void ImageReaderInterface::operator delete(void* block) noexcept {
    Objects::KavraDelete(block);
}

}  // namespace Kavra::Devices
