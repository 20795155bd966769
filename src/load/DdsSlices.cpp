#include "load/DdsSlices.h"

#include "common/Progress.h"
#include "formats/Attributes.h"
#include "load/DdsLibraryView.h"

#include <OpenImageIO/filesystem.h>

#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

bool HasText(const OIIO::ImageSpec& spec, const char* word) {
    return OIIO::Strutil::contains(TextAttribute(spec, "textureformat").value_or(""), word);
}

}  // namespace

bool DecodeFlatDds(std::span<const unsigned char> file, int width, int height, int fileChannels, int channels,
                   OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride) {
    OIIO::Filesystem::IOMemReader memory(file.data(), file.size());
    OIIO::Filesystem::IOProxy* proxy = &memory;
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    // The reader takes it from here only, not from the argument of the same name.
    config.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, static_cast<const void*>(&proxy));

    const auto input = OIIO::ImageInput::create("dds");
    OIIO::ImageSpec spec;
    if (!input || !input->open("slice.dds", spec, config)) return false;
    if (spec.width != width || spec.height != height || spec.depth != 1 || spec.nchannels != fileChannels) return false;
    return input->read_image(0, 0, 0, channels, type, out, static_cast<OIIO::stride_t>(pixelStride)) &&
           !input->has_error();
}

OIIO::ImageSpec DdsLevelSpec(const OIIO::ImageSpec& top, int level) {
    OIIO::ImageSpec spec = top;
    const bool cube = HasText(top, "Cube");
    const Dds::Extent topSize =
        cube ? Dds::Extent{top.full_width, top.full_height, top.depth} : Dds::Extent{top.width, top.height, top.depth};
    const Dds::Extent size = Dds::LevelSize(topSize, level);
    spec.full_width = size.width;
    spec.full_height = size.height;
    spec.full_depth = size.depth;
    spec.width = spec.full_width;
    spec.height = cube ? kCubeFaces * spec.full_height : spec.full_height;
    spec.depth = spec.full_depth;
    if (top.tile_width != 0) spec.tile_width = spec.full_width;
    if (cube) spec.tile_height = spec.full_height;
    return spec;
}

OIIO::ImageSpec DdsLevelSpec(OIIO::ImageInput& input) {
    const OIIO::ImageSpec& here = input.spec();
    if (!HasText(here, "Cube") && !HasText(here, "Volume")) return here;
    const int level = input.current_miplevel();
    if (level == 0) return DdsLevelSpec(here, 0);
    const OIIO::ImageSpec top = input.spec(0, 0);
    (void)input.seek_subimage(0, level);  // asking for another level's spec has moved the input there
    return DdsLevelSpec(top, level);
}

DdsSlices::DdsSlices(Common::ByteSource file, const Dds::Header& header, const Dds::Shape& shape,
                     const Dds::StoredUnit& unit)
    : mFile(std::move(file)), mHeader(header), mShape(shape), mUnit(unit) {}

std::optional<DdsSlices> DdsSlices::Open(Common::ByteSource file) {
    return Open(std::move(file), Dds::LibraryShapeOf);
}

std::optional<DdsSlices> DdsSlices::OpenStored(Common::ByteSource file) {
    return Open(std::move(file), Dds::ShapeOf);
}

std::optional<DdsSlices> DdsSlices::Open(Common::ByteSource file,
                                         std::optional<Dds::Shape> (*shapeOf)(const Dds::Header& header)) {
    std::array<unsigned char, Dds::kMaxHeaderBytes> start{};
    if (!file.Seek(0)) return std::nullopt;
    const std::size_t count = file.ReadSome(start);
    const auto header = Dds::ParseLibraryHeader(std::span(start).first(count));
    if (!header) return std::nullopt;
    const auto shape = shapeOf(*header);
    const auto unit = Dds::LibraryUnitOf(*header);
    if (!shape || !unit) return std::nullopt;
    return DdsSlices(std::move(file), *header, *shape, *unit);
}

bool DdsSlices::HasLevel(int level) const {
    return level >= 0 && level < mShape.levels && mHeader.Bytes() + Dds::LevelEnd(mUnit, mShape, level) <= mFile.Size();
}

/// Where a face of a cube map or a slice of a volume lies in the file.
std::uint64_t DdsSlices::SliceOffset(int level, int slice) const {
    if (mShape.type == kTextureCube) return mHeader.Bytes() + Dds::LevelOffset(mUnit, mShape, slice, level);
    const std::uint64_t sliceBytes = Dds::StoredSliceBytes(mUnit, Dds::LevelSize(mShape.size, level));
    return mHeader.Bytes() + Dds::LevelOffset(mUnit, mShape, 0, level) + static_cast<unsigned>(slice) * sliceBytes;
}

bool DdsSlices::ReadBytes(std::uint64_t offset, std::span<unsigned char> bytes) {
    return mFile.Seek(offset) && mFile.Read(bytes);
}

bool DdsSlices::ReadLevel(int level, const OIIO::ImageSpec& levelSpec, int channels, OIIO::TypeDesc type,
                          unsigned char* out, std::size_t pixelStride) {
    return HasLevel(level) && ReadSlices(level, levelSpec, 0, SliceCount(level), channels, type, out, pixelStride);
}

bool DdsSlices::ReadSlices(int level, const OIIO::ImageSpec& levelSpec, int first, int count, int channels,
                           OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride) {
    if (!HasLevel(level)) return false;
    const auto [width, height, depth] = Dds::LevelSize(mShape.size, level);
    const int slices = SliceCount(level);
    if (first < 0 || count < 0 || count > slices - first) return false;
    // A cube's faces stand on one another, a volume's slices behind one another.
    const std::int64_t rows = std::int64_t{levelSpec.height} * levelSpec.depth;
    const bool isWhole = rows == std::int64_t{height} * slices, isOne = rows == height && count <= 1;
    if (levelSpec.width != width || (!isWhole && !isOne)) return false;

    std::vector<unsigned char> flat = Dds::ComposeHeader(Dds::FlatHeader(mHeader, {width, height, 1}));
    const std::size_t headerBytes = flat.size();
    flat.resize(headerBytes + Dds::StoredSliceBytes(mUnit, {width, height, 1}));
    const std::size_t sliceStride = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * pixelStride;
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(count));
    for (int slice = first; slice < first + count; ++slice, out += sliceStride, meter.Advance(1)) {
        if (mShape.type == kTextureCube && !mShape.HasFace(slice)) {
            std::memset(out, 0, sliceStride);
            continue;
        }
        if (!ReadBytes(SliceOffset(level, slice), std::span(flat).subspan(headerBytes)) ||
            !DecodeFlatDds(flat, width, height, levelSpec.nchannels, channels, type, out, pixelStride)) {
            return false;
        }
    }
    return true;
}

}  // namespace Kavra::Devices
