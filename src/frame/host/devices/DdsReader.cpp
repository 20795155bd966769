#include "common/FileHandle.h"
#include "common/PackedLayout.h"
#include "common/PixelBlock.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"
#include "common/dds/DdsStoredLevel.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/objects/OS.h>

#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <span>

namespace Kavra::Devices {

using Common::FileHandle;
using Common::PixelBlock;

/// An open file and what its header says.
struct DDSReader::State {
    FileHandle file;
    std::uint64_t bytes;        ///< of the file
    std::uint64_t pixelsBegin;  ///< bytes before the first pixel
    Dds::StoredLayout layout;
    Dds::Shape shape;
    int nextLevel = 0;

    /// Whether the file is long enough for every face of this level.
    bool IsWhole(int level) const { return pixelsBegin + Dds::LevelEnd(layout.unit, shape, level) <= bytes; }
    ImageDescription Describe(int level) const;
    PixelBlock ReadLevel(int level, std::uint64_t faceBytes) const;

private:
    bool ReadFace(int face, int level, unsigned char* out) const;
};

ImageDescription DDSReader::State::Describe(int level) const {
    const Dds::Extent size = Dds::LevelSize(shape.size, level);
    ImageDescription desc = Common::DescribePacked(size.width, size.height, layout.format);
    desc.depth = size.depth;
    desc.dataSize = layout.IsCompressed() ? Dds::StoredLevelBytes(layout.unit, size)
                                          : desc.dataSize * static_cast<std::uint64_t>(size.depth);
    desc.textureType = shape.type;
    desc.hasAlpha = layout.hasAlpha;
    return desc;
}

/// All faces of a level, each of `faceBytes`. Null when the file does not hold them. Throws `std::bad_alloc`.
PixelBlock DDSReader::State::ReadLevel(int level, std::uint64_t faceBytes) const {
    if (!IsWhole(level)) return nullptr;
    const int faces = shape.FaceCount();
    const std::size_t blockBytes = faceBytes * static_cast<unsigned>(faces);
    PixelBlock block = shape.HasAllFaces() ? Common::NewBlock(blockBytes) : Common::NewZeroedBlock(blockBytes);
    for (int face = 0; face < faces; ++face) {
        if (shape.HasFace(face) && !ReadFace(face, level, block.get() + face * faceBytes)) return nullptr;
    }
    return block;
}

bool DDSReader::State::ReadFace(int face, int level, unsigned char* out) const {
    const std::uint64_t begin = pixelsBegin + Dds::LevelOffset(layout.unit, shape, face, level);
    if (fseeko(file.get(), static_cast<off_t>(begin), SEEK_SET) != 0) return false;
    return Dds::ReadStoredLevel(file.get(), layout, Dds::LevelSize(shape.size, level), out);
}

DDSReader::DDSReader() = default;
DDSReader::~DDSReader() = default;

bool DDSReader::Load(const KString& path) {
    mState.reset();
    std::FILE* opened = nullptr;
    if (OS::wfopen(&opened, path, L"rb") != 0) return false;
    FileHandle file(opened);
    const std::optional<std::uint64_t> bytes = Common::FileLength(file.get());
    if (!bytes || fseeko(file.get(), 0, SEEK_SET) != 0) return false;

    std::array<unsigned char, Dds::kMaxHeaderBytes> start;
    const std::size_t count = std::fread(start.data(), 1, start.size(), file.get());
    const std::optional<Dds::Header> header = Dds::ParseHeader(std::span(start).first(count));
    if (!header) return false;
    const std::optional<Dds::StoredLayout> layout = Dds::FindLayout(*header);
    const std::optional<Dds::Shape> shape = Dds::ShapeOf(*header);
    if (!layout || !shape) return false;
    mState = std::make_unique<State>(std::move(file), *bytes, header->Bytes(), *layout, *shape);
    return true;
}

int DDSReader::Width() const {
    return mState ? mState->shape.size.width : 0;
}

int DDSReader::Height() const {
    return mState ? mState->shape.size.height : 0;
}

int DDSReader::Depth() const {
    return mState ? mState->shape.size.depth : 0;
}

int DDSReader::Mipmaps() const {
    return mState ? mState->shape.levels : 0;
}

EFormat DDSReader::Format() {
    return mState ? mState->layout.format : kUnknown;
}

ETextureType DDSReader::TextureType() {
    return mState ? mState->shape.type : kTextureUnknown;
}

bool DDSReader::HasFace(int face) const {
    return mState && face >= 0 && face < kCubeFaces && mState->shape.HasFace(face);
}

bool DDSReader::SkipMipLevel(int level) {
    if (!mState || level < 0 || level >= mState->shape.levels) return false;
    mState->nextLevel = level + 1;
    return true;
}

IMemoryWrapper<void>* DDSReader::Load(ImageDescription& desc, int width, int height, int depth) {
    if (!mState || mState->nextLevel >= mState->shape.levels) return nullptr;
    const ImageDescription level = mState->Describe(mState->nextLevel);
    if (width != level.width || height != level.height || depth != level.depth) return nullptr;
    try {
        PixelBlock block = mState->ReadLevel(mState->nextLevel, level.dataSize);
        if (!block) return nullptr;
        auto* wrapper = new MemoryArrayWrapper<void, unsigned char>();
        if (wrapper == nullptr) return nullptr;
        wrapper->mData = block.release();
        ++mState->nextLevel;
        desc = level;
        return wrapper;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace Kavra::Devices
