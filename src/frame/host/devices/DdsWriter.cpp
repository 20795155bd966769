#include "common/UnfinishedFile.h"
#include "common/dds/DdsComposing.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/objects/OS.h>

#include <cstdint>
#include <exception>
#include <optional>
#include <vector>

namespace Kavra::Devices {
namespace {

Dds::Shape ShapeToWrite(ETextureType type, int width, int height, int depth, int levels) {
    const bool volume = type == kTextureVolume;
    const bool cube = type == kTextureCube;
    const std::uint32_t faces = cube ? Dds::kAllFaces : 1;
    const ETextureType written = volume || cube ? type : kTexture2D;
    return {{width, height, volume ? depth : 1}, levels, written, faces};
}

std::uint64_t BytesToWrite(const Dds::StoredLayout& layout, const Dds::Shape& shape) {
    return Dds::StoredChainBytes(layout.unit, shape) * static_cast<unsigned>(shape.FaceCount());
}

/// Levels of the chain that a caller may ask for.
bool IsChain(const Dds::Shape& shape) {
    return shape.levels >= 1 && shape.levels <= Dds::FullMipChain(shape.size);
}

}  // namespace

DDSWriter::DDSWriter()
    : mType(kTextureUnknown), mFormat(kUnknown), mWidth(0), mHeight(0), mDepth(0), mMipCount(0), mConstructed(false) {}

bool DDSWriter::Construct(ETextureType type, EFormat format, int width, int height, int depth, int mipCount, int size,
                          int /*reserved*/) {
    mConstructed = false;
    if (!Dds::IsSane(width, height, depth)) return false;
    if (type == kTextureCube && width != height) return false;
    const std::optional<Dds::StoredLayout> layout = Dds::LayoutToWrite(format);
    const Dds::Shape shape = ShapeToWrite(type, width, height, depth, mipCount);
    if (!layout || !IsChain(shape)) return false;

    // The size comes in 32 bits, which a caller may mean as unsigned.
    const std::uint64_t bytes = BytesToWrite(*layout, shape);
    if (!layout->IsCompressed() && bytes != static_cast<std::uint32_t>(size)) return false;

    mType = type;
    mFormat = format;
    mWidth = width;
    mHeight = height;
    mDepth = depth;
    mMipCount = mipCount;
    mConstructed = true;
    return true;
}

bool DDSWriter::Write(const KString& path, const void* data) {
    if (!mConstructed || data == nullptr) return false;
    try {
        const Dds::StoredLayout layout = Dds::LayoutToWrite(mFormat).value();
        const Dds::Shape shape = ShapeToWrite(mType, mWidth, mHeight, mDepth, mMipCount);
        const std::vector<unsigned char> header = Dds::ComposeHeader(Dds::DescribeTexture(mFormat, shape).value());
        Common::UnfinishedFile file(OS::ToUtf8(path));
        return file.Write(header.data(), header.size()) && file.Write(data, BytesToWrite(layout, shape)) &&
               file.Commit();
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace Kavra::Devices
