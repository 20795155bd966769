#include "common/FileHandle.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"
#include "common/dds/DdsStoredLayouts.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/objects/OS.h>

#include <cerrno>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace Kavra::Devices {
namespace {

namespace fs = std::filesystem;

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

void DescribeShape(const Dds::Shape& shape, Dds::Header& header) {
    header.flags |= Dds::kHasCaps | Dds::kHasHeight | Dds::kHasWidth | Dds::kHasPixelFormat;
    header.width = static_cast<std::uint32_t>(shape.size.width);
    header.height = static_cast<std::uint32_t>(shape.size.height);
    header.caps1 = Dds::kCapsTexture;
    if (shape.levels > 1) {
        header.flags |= Dds::kHasMipCount;
        header.mipCount = static_cast<std::uint32_t>(shape.levels);
        header.caps1 |= Dds::kCapsMipmaps | Dds::kCapsComplex;
    }
    if (shape.type == kTextureCube) {
        header.caps1 |= Dds::kCapsComplex;
        header.caps2 = Dds::kCapsCube | Dds::kCapsAllFaces;
    }
    if (shape.type == kTextureVolume) {
        header.flags |= Dds::kHasDepth;
        header.depth = static_cast<std::uint32_t>(shape.size.depth);
        header.caps1 |= Dds::kCapsComplex;
        header.caps2 = Dds::kCapsVolume;
    }
}

/// The bytes of a row, or of the first level where there are no rows. A size that does not fit the field is left out.
void DescribePitch(const Dds::StoredLayout& layout, const Dds::Shape& shape, Dds::Header& header) {
    const bool compressed = layout.IsCompressed();
    const std::uint64_t bytes = compressed ? Dds::StoredLevelBytes(layout.unit, shape.size)
                                           : Dds::StoredRowBytes(layout.unit, shape.size.width);
    if (bytes > std::numeric_limits<std::uint32_t>::max()) return;
    header.flags |= compressed ? Dds::kHasLinearSize : Dds::kHasPitch;
    header.pitch = static_cast<std::uint32_t>(bytes);
}

void DescribeExtension(const Dds::Shape& shape, Dds::Header& header) {
    if (!header.isExtended) return;
    header.dimension = shape.type == kTextureVolume ? Dds::kDimensionVolume : Dds::kDimension2D;
    if (shape.type == kTextureCube) header.misc = Dds::kMiscCube;
    header.arraySize = 1;
}

std::optional<Dds::StoredLayout> LayoutToWrite(EFormat format) {
    Dds::Header header;
    if (!Dds::DescribeFormat(format, header)) return std::nullopt;
    return Dds::FindLayout(header);
}

/// Levels of the chain that a caller may ask for.
bool IsChain(const Dds::Shape& shape) {
    return shape.levels >= 1 && shape.levels <= Dds::FullMipChain(shape.size);
}

/// A file beside its final name: gone again unless it is committed. Its name cannot be known beforehand, and it is
/// written only where nothing has that name.
class UnfinishedFile {
public:
    explicit UnfinishedFile(fs::path finalPath) : mFinal(std::move(finalPath)) {
        constexpr int kTries = 100;
        std::random_device random;
        int error = EEXIST;
        for (int i = 0; i < kTries && error == EEXIST; ++i) {
            const std::string number = std::to_string(random()) + std::to_string(random());
            fs::path path = mFinal.parent_path() / (".kavra-" + number + ".tmp");
            std::FILE* opened = nullptr;
            error = OS::fopen(&opened, path.c_str(), "wbx");
            if (error != 0) continue;
            mFile.reset(opened);
            mPath = std::move(path);  // not a copy: one that throws would leave the file behind
        }
    }
    ~UnfinishedFile() {
        mFile.reset();
        std::error_code ignored;
        if (!mPath.empty()) fs::remove(mPath, ignored);
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    bool Write(const void* data, std::size_t bytes) {
        return mFile && std::fwrite(data, 1, bytes, mFile.get()) == bytes;
    }

    /// Closes the file and gives it its name. A full disk may show only now.
    bool Commit() {
        if (!mFile || std::fclose(mFile.release()) != 0) return false;
        std::error_code failed;
        fs::rename(mPath, mFinal, failed);
        if (!failed) mPath.clear();
        return !failed;
    }

private:
    fs::path mFinal;
    fs::path mPath;
    Common::FileHandle mFile;
};

/// A new name or a regular file: nothing else is replaced.
bool IsWritable(const fs::path& path) {
    std::error_code failed;
    const fs::file_status status = fs::status(path, failed);
    return status.type() == fs::file_type::not_found || fs::is_regular_file(status);
}

bool WriteFile(const fs::path& path, const std::vector<unsigned char>& header, const void* data, std::uint64_t bytes) {
    if (!IsWritable(path)) return false;
    UnfinishedFile file(path);
    return file.Write(header.data(), header.size()) && file.Write(data, bytes) && file.Commit();
}

}  // namespace

DDSWriter::DDSWriter()
    : mType(kTextureUnknown), mFormat(kUnknown), mWidth(0), mHeight(0), mDepth(0), mMipCount(0), mConstructed(false) {}

bool DDSWriter::Construct(ETextureType type, EFormat format, int width, int height, int depth, int mipCount, int size,
                          int /*reserved*/) {
    mConstructed = false;
    if (!Dds::IsSane(width, height, depth)) return false;
    if (type == kTextureCube && width != height) return false;
    const std::optional<Dds::StoredLayout> layout = LayoutToWrite(format);
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
        const Dds::StoredLayout layout = LayoutToWrite(mFormat).value();
        const Dds::Shape shape = ShapeToWrite(mType, mWidth, mHeight, mDepth, mMipCount);
        Dds::Header header;
        Dds::DescribeFormat(mFormat, header);
        DescribeShape(shape, header);
        DescribePitch(layout, shape, header);
        DescribeExtension(shape, header);
        return WriteFile(OS::ToUtf8(path), Dds::ComposeHeader(header), data, BytesToWrite(layout, shape));
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace Kavra::Devices
