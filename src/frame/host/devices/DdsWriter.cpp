#include "common/Boundary.h"
#include "common/PathReasons.h"
#include "common/UnfinishedFile.h"
#include "common/dds/DdsComposing.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/objects/OS.h>

#include <cerrno>
#include <cstdint>
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

/// Whether a DDS file can hold such a texture of `size` bytes, which a caller may mean as unsigned.
bool CanHold(ETextureType type, EFormat format, const Dds::Shape& shape, int depth, int size) {
    const auto [width, height, slices] = shape.size;
    if (!Dds::IsSane(width, height, depth)) {
        Common::Say(kFailureFormat, "DDS files hold no texture of {} x {} x {}", width, height, depth);
        return false;
    }
    if (type == kTextureCube && width != height) {
        Common::Say(kFailureFormat, "the faces of a cube map are square, and {} x {} is not", width, height);
        return false;
    }
    const std::optional<Dds::StoredLayout> layout = Dds::LayoutToWrite(format);
    if (!layout) {
        Common::Say(kFailureFormat, "DDS files do not hold this format of pixels");
        return false;
    }
    if (!IsChain(shape)) {
        Common::Say(kFailureFormat, "a texture of {} x {} has no {} levels", width, height, shape.levels);
        return false;
    }
    const std::uint64_t bytes = BytesToWrite(*layout, shape);
    if (layout->IsCompressed() || bytes == static_cast<std::uint32_t>(size)) return true;
    Common::Say(kFailureArguments, "{} bytes are given for a texture of {}", static_cast<std::uint32_t>(size), bytes);
    return false;
}

}  // namespace

DDSWriter::DDSWriter()
    : mType(kTextureUnknown), mFormat(kUnknown), mWidth(0), mHeight(0), mDepth(0), mMipCount(0), mConstructed(false) {}

bool DDSWriter::Construct(ETextureType type, EFormat format, int width, int height, int depth, int mipCount, int size,
                          int /*reserved*/) {
    mConstructed = Common::AsOperation(
        false, [&] { return CanHold(type, format, ShapeToWrite(type, width, height, depth, mipCount), depth, size); });
    if (!mConstructed) return false;
    mType = type;
    mFormat = format;
    mWidth = width;
    mHeight = height;
    mDepth = depth;
    mMipCount = mipCount;
    return true;
}

bool DDSWriter::Write(const KString& path, const void* data) {
    return Common::AsOperation(false, [&] {
        if (!mConstructed || data == nullptr) {
            Common::Say(kFailureArguments, "there is no texture to write");
            return false;
        }
        const Dds::StoredLayout layout = Dds::LayoutToWrite(mFormat).value();
        const Dds::Shape shape = ShapeToWrite(mType, mWidth, mHeight, mDepth, mMipCount);
        const std::vector<unsigned char> header = Dds::ComposeHeader(Dds::DescribeTexture(mFormat, shape).value());
        const std::uint64_t bytes = BytesToWrite(layout, shape);
        Common::ProgressMeter meter(kProgressSaving, bytes);
        Common::UnfinishedFile file(OS::ToUtf8(path));
        const bool isBegun = file.Write(header.data(), header.size());
        meter.Expect(bytes);
        const bool done = isBegun && file.Write(data, bytes) && file.Commit();
        if (!done) Common::SayOfPathToWrite(path.ToChars(), file.Error() == EINVAL ? 0 : file.Error());
        return done;
    });
}

}  // namespace Kavra::Devices
