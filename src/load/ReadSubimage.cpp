#include "load/ReadSubimage.h"

#include "formats/Attributes.h"
#include "load/OpenInput.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

namespace Kavra::Devices {

namespace {

constexpr std::int64_t kChunkBytes = std::int64_t{64} << 20;
constexpr std::int64_t kMinChunkRows = 256;  // enough for every core to have rows to decode
constexpr std::int64_t kUsualStripRows = 64;
constexpr std::int64_t kMaxStripBytes = 1 << 30;
constexpr std::uint64_t kMaxTileBytes = std::uint64_t{64} << 20;  // of a picture that is small itself
constexpr std::uint64_t kMaxTileRatio = 4;                        // to the picture
constexpr int kMaxPosition = 1 << 30;
constexpr std::uint64_t kMaxRowBytes = std::numeric_limits<std::int32_t>::max();

bool HasReadableTiles(const OIIO::ImageSpec& spec) {
    if (spec.tile_width == 0) return true;
    if (spec.tile_width < 0 || spec.tile_height < 1 || spec.tile_depth < 1) return false;
    return spec.tile_bytes(true) <= std::max(kMaxTileBytes, kMaxTileRatio * spec.image_bytes(true));
}

/// Rows to ask for at a time: whole strips, since files are about whose rows cannot be decoded one by one.
std::int64_t ChunkRows(const OIIO::ImageSpec& spec, std::size_t rowBytes) {
    const std::int64_t strip = IntegerAttribute(spec, "tiff:RowsPerStrip").value_or(kUsualStripRows);
    const std::int64_t rows = std::max(kChunkBytes / static_cast<std::int64_t>(rowBytes), kMinChunkRows);
    if (strip < 1) return rows;
    // Where one strip has more rows than the picture, the TIFF reader adds up its size in 32 bits when it is asked for
    // all rows at once. Any smaller number it takes row by row.
    const bool overflows = strip > spec.height && strip > kMaxStripBytes / static_cast<std::int64_t>(rowBytes);
    if (overflows) return std::max(spec.height - 1, 1);
    return (rows + strip - 1) / strip * strip;
}

/// The pixels of one file in rows that are asked for one after another.
struct RowReader {
    OIIO::ImageInput& input;
    const OIIO::ImageSpec& spec;
    int subimage, level, channels;
    OIIO::TypeDesc type;
    std::size_t pixelStride;

    std::size_t StoredPixelBytes() const { return spec.pixel_bytes(0, channels, true); }
    std::size_t StoredRowBytes() const { return StoredPixelBytes() * static_cast<std::size_t>(spec.width); }
    std::size_t RowStride() const { return pixelStride * static_cast<std::size_t>(spec.width); }
    bool IsAsStored() const {
        return type == spec.format && spec.channelformats.empty() && pixelStride == StoredPixelBytes();
    }

    /// Rows as the file has them, packed.
    bool ReadStored(int y, int end, int z, void* rows) const {
        return input.read_native_scanlines(subimage, level, y, end, z, 0, channels, rows);
    }

    /// Packed rows as the file has them to rows of the result; channels of equal types together.
    bool Convert(const unsigned char* rows, int count, unsigned char* out) const {
        const auto from = static_cast<OIIO::stride_t>(StoredPixelBytes());
        const auto to = static_cast<OIIO::stride_t>(pixelStride);
        for (int channel = 0, group = 0; channel < channels; channel += group) {
            const OIIO::TypeDesc stored = spec.channelformat(channel);
            group = 1;
            while (channel + group < channels && spec.channelformat(channel + group) == stored)
                ++group;
            if (!OIIO::parallel_convert_image(group, spec.width, count, 1, rows, stored, from, OIIO::AutoStride,
                                              OIIO::AutoStride, out, type, to, OIIO::AutoStride, OIIO::AutoStride)) {
                return false;
            }
            rows += static_cast<std::size_t>(group) * stored.size();
            out += static_cast<std::size_t>(group) * type.size();
        }
        return true;
    }
};

bool ReadRows(const RowReader& reader, unsigned char* out) {
    const OIIO::ImageSpec& spec = reader.spec;
    const std::int64_t chunk = std::min<std::int64_t>(ChunkRows(spec, reader.StoredRowBytes()), spec.height);
    std::unique_ptr<unsigned char[]> stored;
    if (!reader.IsAsStored()) {
        stored =
            std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(chunk) * reader.StoredRowBytes());
    }
    for (int z = spec.z; z < spec.z + std::max(spec.depth, 1); ++z) {
        for (int done = 0; done < spec.height;) {
            const int rows = static_cast<int>(std::min<std::int64_t>(chunk, spec.height - done));
            const int y = spec.y + done;
            if (!reader.ReadStored(y, y + rows, z, stored ? static_cast<void*>(stored.get()) : out)) return false;
            if (stored && !reader.Convert(stored.get(), rows, out)) return false;
            out += static_cast<std::size_t>(rows) * reader.RowStride();
            done += rows;
        }
    }
    return true;
}

}  // namespace

bool IsReadable(const OIIO::ImageSpec& spec) {
    const auto inReach = [](int position, int size) {
        return position >= -kMaxPosition && position <= kMaxPosition && size <= kMaxPosition;
    };
    return spec.width > 0 && spec.height > 0 && spec.nchannels > 0 && inReach(spec.x, spec.width) &&
           inReach(spec.y, spec.height) && inReach(spec.z, spec.depth) && spec.scanline_bytes(true) <= kMaxRowBytes &&
           HasReadableTiles(spec);
}

bool ReadSubimage(OIIO::ImageInput& input, const OIIO::ImageSpec& spec, int subimage, int level, int channels,
                  OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride) {
    channels = std::min(channels, spec.nchannels);
    const bool isTiled = spec.tile_width != 0;
    const bool done =
        isTiled ? input.read_image(subimage, level, 0, channels, type, out, static_cast<OIIO::stride_t>(pixelStride))
                : ReadRows({input, spec, subimage, level, channels, type, pixelStride}, out);
    if (!done) TakeErrors(input);
    return done;
}

}  // namespace Kavra::Devices
