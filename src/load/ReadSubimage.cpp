#include "load/ReadSubimage.h"

#include "formats/Attributes.h"
#include "load/LibraryErrors.h"
#include "load/OpaquePixels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>

namespace Kavra::Devices {

namespace {

constexpr std::int64_t kChunkBytes = std::int64_t{64} << 20;
constexpr std::int64_t kBandBytes = std::int64_t{2} << 20;  // of rows as the file has them
constexpr int kExrBlockRows = 256;           // the highest blocks that there are, and enough lower ones for all cores
constexpr int kLowExrBlockRows = 32;         // the highest of all compressions but one
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

std::int64_t StripRows(const OIIO::ImageSpec& spec) {
    return IntegerAttribute(spec, "tiff:RowsPerStrip").value_or(kUsualStripRows);
}

/// Whether the TIFF reader must not be asked for all rows at once: where one strip has more of them than the picture, it
/// adds up its size in 32 bits. Any smaller number it takes row by row.
bool HasGiantStrip(const OIIO::ImageSpec& spec, std::size_t rowBytes) {
    const std::int64_t strip = StripRows(spec);
    return strip > spec.height && strip > kMaxStripBytes / static_cast<std::int64_t>(rowBytes);
}

/// Rows to ask for at a time: whole strips, since files are about whose rows cannot be decoded one by one.
std::int64_t ChunkRows(const OIIO::ImageSpec& spec, std::size_t rowBytes) {
    const std::int64_t strip = StripRows(spec);
    const std::int64_t rows = std::max(kChunkBytes / static_cast<std::int64_t>(rowBytes), kMinChunkRows);
    if (strip < 1) return rows;
    if (HasGiantStrip(spec, rowBytes)) return std::max(spec.height - 1, 1);
    return (rows + strip - 1) / strip * strip;
}

/// Whether the rows of a strip may be asked for one by one, and are what they are when the strip is asked for. The TIFF
/// reader itself goes row by row through pixels that it has to widen, look up or convert; other strips it decodes as
/// one, some with a check at their end.
bool HasDivisibleStrips(const OIIO::ImageSpec& spec) {
    constexpr int kPalette = 3, kSeparated = 5;  // TIFF 6.0, PhotometricInterpretation
    const OIIO::string_view compression = TextAttribute(spec, "compression").value_or("");
    if (compression == "none") return true;
    if (TextAttribute(spec, "planarconfig") == "separate") return false;  // a row of each in turn: from the start again
    const int bits = static_cast<int>(spec.format.size()) * 8;
    const int photometric = IntegerAttribute(spec, "tiff:PhotometricInterpretation").value_or(0);
    return compression == "lzw" || compression == "packbits" || photometric == kPalette || photometric == kSeparated ||
           IntegerAttribute(spec, "oiio:BitsPerSample").value_or(bits) != bits;
}

/// Rows that are decoded together: of one tile, of one strip, of one block. A multiple will do.
int RowsTogether(const OIIO::ImageInput& input, const OIIO::ImageSpec& spec, std::size_t rowBytes) {
    const OIIO::string_view format = input.format_name();
    if (spec.tile_width != 0) return spec.tile_height;
    if (format == "openexr") return kExrBlockRows;
    if (format != "tiff") return 1;
    const std::int64_t strip = StripRows(spec);
    const bool isLarge = strip > kBandBytes / static_cast<std::int64_t>(rowBytes);
    const bool isAlone = strip < 1 || HasGiantStrip(spec, rowBytes) || (isLarge && HasDivisibleStrips(spec));
    return isAlone ? 1 : static_cast<int>(std::min<std::int64_t>(strip, spec.height));
}

}  // namespace

SubimageRows::SubimageRows(OIIO::ImageInput& input, const OIIO::ImageSpec& spec, int subimage, int level, int channels,
                           OIIO::TypeDesc type, std::size_t pixelStride, int first)
    : mInput(input),
      mSpec(spec),
      mSubimage(subimage),
      mLevel(level),
      mFirst(std::clamp(first, 0, std::max(spec.nchannels - 1, 0))),
      mChannels(std::min(channels, spec.nchannels - mFirst)),
      mType(type),
      mPixelStride(pixelStride),
      mTogether(RowsTogether(input, spec, StoredRowBytes())) {}

int SubimageRows::BandFrom(int top) const {
    const std::int64_t wanted = std::max<std::int64_t>(kBandBytes / static_cast<std::int64_t>(StoredRowBytes()), 1);
    const std::int64_t rows = (wanted + mTogether - 1) / mTogether * mTogether;
    const std::int64_t rest = mSpec.height - top;
    // A single row is never left over: the TIFF reader takes one in another way than several.
    return static_cast<int>(rows + 1 >= rest ? rest : rows);
}

bool SubimageRows::AddOpaque(std::uint32_t opaque) {
    const std::size_t bytes = mType.size();
    const bool isTriple = mChannels == 3 && mType == mSpec.format && mSpec.channelformats.empty();
    const bool isHere = mSpec.tile_width == 0 && isTriple && mPixelStride == 4 * bytes;
    if (isHere && (bytes == 1 || bytes == 2 || bytes == 4)) mOpaque = opaque;
    return mOpaque.has_value();
}

bool SubimageRows::IsAsStored() const {
    return mType == mSpec.format && mSpec.channelformats.empty() && mPixelStride == StoredPixelBytes();
}

/// Packed rows as the file has them to rows of the result; channels of equal types together.
bool SubimageRows::Convert(const unsigned char* rows, int count, unsigned char* out) const {
    if (mOpaque) {
        const std::size_t pixels = static_cast<std::size_t>(mSpec.width) * static_cast<std::size_t>(count);
        AddOpaqueAlpha(rows, pixels, mType.size(), *mOpaque, out);
        return true;
    }
    const auto from = static_cast<OIIO::stride_t>(StoredPixelBytes());
    const auto to = static_cast<OIIO::stride_t>(mPixelStride);
    for (int channel = 0, group = 0; channel < mChannels; channel += group) {
        const OIIO::TypeDesc stored = mSpec.channelformat(mFirst + channel);
        group = 1;
        while (channel + group < mChannels && mSpec.channelformat(mFirst + channel + group) == stored)
            ++group;
        if (!OIIO::parallel_convert_image(group, mSpec.width, count, 1, rows, stored, from, OIIO::AutoStride,
                                          OIIO::AutoStride, out, mType, to, OIIO::AutoStride, OIIO::AutoStride)) {
            return false;
        }
        rows += static_cast<std::size_t>(group) * stored.size();
        out += static_cast<std::size_t>(group) * mType.size();
    }
    return true;
}

/// One row of tiles at a time.
bool SubimageRows::ReadTiles(int top, int count, unsigned char* out, Common::ProgressMeter& meter) {
    const int z = mSpec.z, end = mSpec.y + top + count;
    for (int y = mSpec.y + top; y < end; y += mSpec.tile_height) {
        const int next = std::min(y + mSpec.tile_height, end);
        if (!mInput.read_tiles(mSubimage, mLevel, mSpec.x, mSpec.x + mSpec.width, y, next, z, z + 1, mFirst,
                               mFirst + mChannels, mType, out, static_cast<OIIO::stride_t>(mPixelStride))) {
            return false;
        }
        out += static_cast<std::size_t>(next - y) * RowStride();
        meter.Advance(static_cast<unsigned>(next - y));
    }
    return true;
}

/// Rows to read at a time where somebody may stop it, `parts` times as many as are decoded together; as in `BandFrom` a
/// single one is never left over.
int SubimageRows::WatchedRows(int rest, Common::PartSize& parts) const {
    const bool isLow = mTogether == kExrBlockRows && TextAttribute(mSpec, "compression").value_or("") != "dwab";
    const int together = isLow ? kLowExrBlockRows : mTogether;
    const auto wanted = static_cast<std::size_t>(rest / together) + 1;
    const std::int64_t rows = static_cast<std::int64_t>(parts.Next(wanted)) * together;
    return static_cast<int>(rows + 1 >= rest ? rest : rows);
}

bool SubimageRows::ReadScanlines(int slice, int top, int count, unsigned char* out, Common::ProgressMeter& meter) {
    const bool converts = !IsAsStored(), isPart = count < mSpec.height;
    const bool isWatched = meter.IsWatched() && !HasGiantStrip(mSpec, StoredRowBytes());
    const int chunk = static_cast<int>(std::min<std::int64_t>(ChunkRows(mSpec, StoredRowBytes()), count));
    Common::PartSize parts(std::max(std::thread::hardware_concurrency(), 1U));
    const int z = mSpec.z + slice;
    for (int done = 0, rows = 0; done < count; done += rows) {
        const int rest = count - done;
        rows = isWatched ? WatchedRows(rest, parts) : std::min(chunk, rest);
        if (converts) ReserveStored(rows);
        const int y = mSpec.y + top + done;
        unsigned char* const stored = converts ? mStored.get() : out;
        // The TIFF reader says of some strips that they were read though it could not decode all of them.
        if (converts && isPart && mTogether > 1) {
            std::memset(stored, 0, static_cast<std::size_t>(rows) * StoredRowBytes());
        }
        if (!mInput.read_native_scanlines(mSubimage, mLevel, y, y + rows, z, mFirst, mFirst + mChannels, stored))
            return false;
        if (converts && !Convert(stored, rows, out)) return false;
        out += static_cast<std::size_t>(rows) * RowStride();
        if (isWatched) parts.Done();
        meter.Advance(static_cast<unsigned>(rows));
    }
    return true;
}

void SubimageRows::ReserveStored(int rows) {
    if (mStoredRows >= rows) return;
    mStored.reset();  // before the new ones are taken, not after
    mStored = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(rows) * StoredRowBytes());
    mStoredRows = rows;
}

bool SubimageRows::Read(int top, int count, unsigned char* out) {
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(count));
    const bool isTiled = mSpec.tile_width != 0;
    const bool done = isTiled ? ReadTiles(top, count, out, meter) : ReadScanlines(0, top, count, out, meter);
    if (!done) mErrors = TakeErrors(mInput);
    return done;
}

bool SubimageRows::ReadAll(unsigned char* out) {
    if (mSpec.depth <= 1) return Read(0, mSpec.height, out);
    bool done = true;
    Common::ProgressMeter meter(kProgressReading,
                                static_cast<std::uint64_t>(mSpec.height) * static_cast<unsigned>(mSpec.depth));
    if (mSpec.tile_width != 0) {  // tiles may have several slices
        done = mInput.read_image(mSubimage, mLevel, mFirst, mFirst + mChannels, mType, out,
                                 static_cast<OIIO::stride_t>(mPixelStride));
    } else {
        for (int slice = 0; done && slice < mSpec.depth; ++slice) {
            done = ReadScanlines(slice, 0, mSpec.height, out, meter);
            out += static_cast<std::size_t>(mSpec.height) * RowStride();
        }
    }
    if (!done) mErrors = TakeErrors(mInput);
    return done;
}

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
    return SubimageRows(input, spec, subimage, level, channels, type, pixelStride).ReadAll(out);
}

}  // namespace Kavra::Devices
