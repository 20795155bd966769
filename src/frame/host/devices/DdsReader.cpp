#include "common/Boundary.h"
#include "common/FileHandle.h"
#include "common/PackedLayout.h"
#include "common/PathReasons.h"
#include "common/PixelBlock.h"
#include "common/Progress.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"
#include "common/dds/DdsStoredLevel.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/objects/OS.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <span>

namespace Kavra::Devices {

using Common::FileHandle;
using Common::PixelBlock;

namespace {

constexpr std::array<unsigned char, 4> kMagic = {'D', 'D', 'S', ' '};

/// Why bytes are no header.
void SayOfNoHeader(std::span<const unsigned char> head, std::uint64_t fileBytes) {
    const bool begins = head.size() >= kMagic.size() && std::ranges::equal(head.first(kMagic.size()), kMagic);
    if (!begins) return Common::Say(kFailureNotAnImage, "it is no DDS file");
    if (head.size() < Dds::kMaxHeaderBytes)
        return Common::Say({Common::Failure::kTruncated, static_cast<std::int64_t>(fileBytes)});
    Common::Say({Common::Failure::kMalformed, static_cast<std::int64_t>(kMagic.size())});
}

void SayOfLevel(int level, int levels) {
    Common::Say(kFailureOutOfRange, "there is no mip level {}; the file has {}", level, levels);
}

}  // namespace

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
    Common::Failure EndsEarly(int level) const;
    static std::unique_ptr<State> Open(FileHandle file);
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
    if (!IsWhole(level)) {
        Common::Say(EndsEarly(level));
        return nullptr;
    }
    const int faces = shape.FaceCount();
    const std::size_t blockBytes = faceBytes * static_cast<unsigned>(faces);
    PixelBlock block = shape.HasAllFaces() ? Common::NewBlock(blockBytes) : Common::NewZeroedBlock(blockBytes);
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(faces));
    for (int face = 0; face < faces; ++face, meter.Advance(1)) {
        meter.Expect(1);
        if (!shape.HasFace(face) || ReadFace(face, level, block.get() + face * faceBytes)) continue;
        Common::Say(Common::Failure::kUnreadable);
        return nullptr;
    }
    return block;
}

bool DDSReader::State::ReadFace(int face, int level, unsigned char* out) const {
    const std::uint64_t begin = pixelsBegin + Dds::LevelOffset(layout.unit, shape, face, level);
    if (fseeko(file.get(), static_cast<off_t>(begin), SEEK_SET) != 0) return false;
    return Dds::ReadStoredLevel(file.get(), layout, Dds::LevelSize(shape.size, level), out);
}

/// The rows that are there of a level which is not there whole.
Common::Failure DDSReader::State::EndsEarly(int level) const {
    Common::Failure failure(Common::Failure::kTruncated, static_cast<std::int64_t>(bytes));
    const std::uint64_t pixelBytes = bytes > pixelsBegin ? bytes - pixelsBegin : 0;
    const Dds::RowCount count = Dds::RowsWithin(layout.unit, shape, level, pixelBytes);
    failure.goodRows = count.there;
    failure.rows = count.all;
    return failure;
}

DDSReader::DDSReader() = default;
DDSReader::~DDSReader() = default;

std::unique_ptr<DDSReader::State> DDSReader::State::Open(FileHandle file) {
    const std::optional<std::uint64_t> bytes = Common::FileLength(file.get());
    if (!bytes || fseeko(file.get(), 0, SEEK_SET) != 0) {
        Common::Say(Common::Failure::kUnreadable);
        return nullptr;
    }
    std::array<unsigned char, Dds::kMaxHeaderBytes> start;
    const std::span<const unsigned char> head =
        std::span(start).first(std::fread(start.data(), 1, start.size(), file.get()));
    const std::optional<Dds::Header> header = Dds::ParseHeader(head);
    if (!header) {
        SayOfNoHeader(head, *bytes);
        return nullptr;
    }
    const std::optional<Dds::StoredLayout> layout = Dds::FindLayout(*header);
    const std::optional<Dds::Shape> shape = Dds::ShapeOf(*header);
    if (!layout) Common::Say(kFailureUnsupported, "a DDS file whose layout of pixels is not read");
    if (!shape) {
        Common::Say(kFailureDamaged, "a DDS file of an impossible size: {} x {} x {}", header->width, header->height,
                    header->depth);
    }
    if (!layout || !shape) return nullptr;
    return std::make_unique<State>(std::move(file), *bytes, header->Bytes(), *layout, *shape);
}

bool DDSReader::Load(const KString& path) {
    mState.reset();
    return Common::InOperation([&] {
        std::FILE* opened = nullptr;
        if (const int error = OS::wfopen(&opened, path, L"rb"); error != 0) {
            Common::SayOfPathToRead(path.ToChars());
            return false;
        }
        mState = State::Open(FileHandle(opened));
        return mState != nullptr;
    });
}

bool DDSReader::LoadMemory(const void* bytes, std::size_t size) {
    mState.reset();
    return Common::InOperation([&] {
        // The stream is for reading and never writes to what it is given.
        FileHandle file(bytes != nullptr ? fmemopen(const_cast<void*>(bytes), size, "rb") : nullptr);
        if (file) mState = State::Open(std::move(file));
        return mState != nullptr;
    });
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
    return Common::InOperation([&] {
        const int levels = mState ? mState->shape.levels : 0;
        if (level < 0 || level >= levels) return SayOfLevel(level, levels), false;
        mState->nextLevel = level + 1;
        return true;
    });
}

IMemoryWrapper<void>* DDSReader::Load(ImageDescription& desc, int width, int height, int depth) {
    return Common::AsOperation<IMemoryWrapper<void>*>(nullptr, [&]() -> IMemoryWrapper<void>* {
        const int levels = mState ? mState->shape.levels : 0;
        if (!mState || mState->nextLevel >= levels) return SayOfLevel(mState ? mState->nextLevel : 0, levels), nullptr;
        const ImageDescription level = mState->Describe(mState->nextLevel);
        if (width != level.width || height != level.height || depth != level.depth) {
            Common::Say(kFailureArguments, "level {} is {} x {} x {}, and {} x {} x {} was asked for",
                        mState->nextLevel, level.width, level.height, level.depth, width, height, depth);
            return nullptr;
        }
        PixelBlock block = mState->ReadLevel(mState->nextLevel, level.dataSize);
        if (!block) return nullptr;
        auto* wrapper = new MemoryArrayWrapper<void, unsigned char>();
        if (wrapper == nullptr) throw std::bad_alloc();
        wrapper->mData = block.release();
        ++mState->nextLevel;
        desc = level;
        return wrapper;
    });
}

}  // namespace Kavra::Devices
