// The handler's operations on pictures in memory: those on files, while the bytes stand for the file.

#include "common/Boundary.h"
#include "common/MemoryPicture.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <span>

namespace Kavra::Devices {

namespace {

std::span<const unsigned char> BytesOf(const MemoryFile& file) {
    return {static_cast<const unsigned char*>(file.bytes), file.bytes != nullptr ? file.size : 0};
}

/// Runs an operation on the file's name.
template <class Answer, class Operation>
Answer* WithMemory(const MemoryFile& file, Operation&& operation) {
    return Common::AtBoundary<Answer*>(nullptr, [&] {
        const KString name(file.name != nullptr ? file.name : L"");
        Common::MemoryPicture picture(name, BytesOf(file));
        for (std::size_t i = 0; i < file.neighbourCount; ++i) {
            const MemoryFile& neighbour = file.neighbours[i];
            if (neighbour.name != nullptr) picture.AddNeighbour(neighbour.name, BytesOf(neighbour));
        }
        if (file.systemPath != nullptr) picture.SetSystemPath(file.systemPath);
        return operation(name);
    });
}

}  // namespace

IMemoryWrapper<void>* OIIOImageHandler::LoadMemory(ImageDescription& desc, const MemoryFile& file, int width,
                                                   int height, int depth, EFormat format, bool highQualityResize,
                                                   int level, EDataOrientation orientation,
                                                   IImageFormatHandler* formatHandler) {
    return WithMemory<IMemoryWrapper<void>>(file, [&](const KString& name) {
        return OIIOImageHandler::LoadTexture(desc, name, width, height, depth, format, highQualityResize, level,
                                             orientation, formatHandler);
    });
}

ImageDesc* OIIOImageHandler::GetMemoryDesc(const MemoryFile& file) {
    return WithMemory<ImageDesc>(file, [&](const KString& name) { return OIIOImageHandler::GetImageDesc(name); });
}

IFileInspection* OIIOImageHandler::InspectMemory(const MemoryFile& file) {
    return WithMemory<IFileInspection>(file, [&](const KString& name) { return OIIOImageHandler::Inspect(name); });
}

}  // namespace Kavra::Devices
