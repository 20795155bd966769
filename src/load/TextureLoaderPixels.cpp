// Reading the pixels of a texture, and the files whose few channels are spread over four.

#include "common/HostObject.h"
#include "common/Progress.h"
#include "common/WatchedRange.h"
#include "formats/Attributes.h"
#include "load/AlphaAnalysis.h"
#include "load/CutFiles.h"
#include "load/HostReaders.h"
#include "load/OpenInput.h"
#include "load/ReadSubimage.h"
#include "load/TextureLoader.h"
#include "readers/ImageFileType.h"

#include <kavra/devices/DDSReader.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kSerialPixels = 1 << 16;
constexpr int kWatchedRows = 256;  // between two looks at whether to stop

// --- Luminance with alpha --------------------------------------------------------------------------------------------

bool IsLuminanceAlpha(const TextureLoad& load) {
    return load.fileSpec.nchannels == 2 && (load.fileSpec.alpha_channel > 0 || load.IsDds()) &&
           load.nativeSpec.nchannels == 4;
}

using LuminanceAlpha = std::array<unsigned char, 2>;
using Rgba8 = std::array<unsigned char, 4>;

/// Whether luminance is alpha in each of some pixels, which begin with the two.
template <class Pixel>
bool IsMask(const Pixel* pixels, std::size_t count) {
    const auto equalPair = [](const Pixel& pixel) { return pixel[0] == pixel[1]; };
    return std::all_of(pixels, pixels + count, equalPair);
}

/// The same of all pixels of the file, of which no more are read than it takes. They come from another input, as the
/// load's own gives each row once. Nothing where they cannot be read.
std::optional<bool> IsMaskFile(const TextureLoad& load) {
    const OIIO::ImageSpec& spec = load.fileSpec;
    const auto input = OpenInput(load.path);
    if (!input || !input->seek_subimage(load.index, load.level)) return std::nullopt;
    const OIIO::ImageSpec& same = input->spec();
    if (same.width != spec.width || same.height != spec.height || same.nchannels != spec.nchannels) return std::nullopt;
    SubimageRows rows(*input, spec, load.index, load.level, 2, OIIO::TypeUInt8, sizeof(LuminanceAlpha));
    const auto width = static_cast<std::size_t>(spec.width);
    std::vector<LuminanceAlpha> band;
    for (int top = 0, count = 0; top < spec.height; top += count) {
        count = rows.BandFrom(top);
        band.resize(width * static_cast<std::size_t>(count));
        if (!rows.Read(top, count, band.front().data())) return std::nullopt;
        if (!IsMask(band.data(), band.size())) return false;
    }
    return true;
}

/// Pixels (L, A, -, -) to (L, L, L, A), or for an inverted mask to opaque ones that are dark where it is full.
void SpreadLuminanceAlpha(unsigned char* block, std::size_t count, bool isMask) {
    auto* const pixels = reinterpret_cast<Rgba8*>(block);
    Common::ForEachRangeOf(kProgressReading, count, kSerialPixels, [=](std::size_t begin, std::size_t end) {
        for (Rgba8* pixel = pixels + begin; pixel != pixels + end; ++pixel) {
            const auto [luminance, alpha] = std::pair((*pixel)[0], (*pixel)[1]);
            const auto grey = static_cast<unsigned char>(isMask ? 255 - luminance : luminance);
            *pixel = {grey, grey, grey, isMask ? static_cast<unsigned char>(255) : alpha};
        }
    });
}

// --- OpenEXR files with one channel ----------------------------------------------------------------------------------

bool IsSingleChannelExr(const TextureLoad& load) {
    return load.fileType == OpenEXR && load.fileSpec.nchannels == 1 &&
           (load.fileDesc.format == kR16G16B16A16F || load.fileDesc.format == kR32G32B32A32F);
}

/// The one of four channels that a file's only channel is, by its name; -1 for all three colours.
int ColourOfName(const std::string& name) {
    if (name == "G") return 1;
    if (name == "B") return 2;
    if (name == "A") return 3;
    return -1;
}

/// Puts the values, which stand in channel `from` of each pixel, into the first three channels if `grey`; the other
/// colours and, but for the values' own channel, alpha get their defaults. T holds the bits of an element.
template <class T>
void SpreadChannel(unsigned char* block, std::size_t count, std::size_t from, bool grey, T opaque) {
    using Pixel = std::array<T, 4>;
    auto* pixels = reinterpret_cast<Pixel*>(block);
    Common::ForEachRangeOf(kProgressReading, count, kSerialPixels, [=](std::size_t begin, std::size_t end) {
        for (Pixel* pixel = pixels + begin; pixel != pixels + end; ++pixel) {
            const T value = (*pixel)[from];
            *pixel = grey ? Pixel{value, value, value, opaque} : Pixel{0, 0, 0, opaque};
            if (!grey) (*pixel)[from] = value;
        }
    });
}

/// The channel of the pixels that the values are read into.
std::size_t PlaceOfChannel(int colour) {
    return colour < 0 ? 0 : static_cast<std::size_t>(colour);
}

// --- 16-bit luminance in DDS files -----------------------------------------------------------------------------------

/// The library keeps the upper half of each value only, the host's reader both.
bool IsHostLuminance16(const TextureLoad& load) {
    return load.IsDds() && load.fileDesc.format == kR16 && (load.hostFormat == kR16 || load.hostFormat == kL16);
}

bool IsWholeLevel(const ImageDescription& level, const TextureLoad& load) {
    const auto faces = static_cast<std::uint64_t>(FaceCount(level.textureType));
    return level.format == load.hostFormat && level.textureType == load.fileDesc.textureType &&
           level.rowPitch == level.width * 2 && level.dataSize * faces == load.nativeSpec.image_bytes(false);
}

/// Copied out of the host's wrapper, whatever that does with its data when it goes.
bool ReadHostLevel(const TextureLoad& load, unsigned char* out) {
    DDSReader reader;
    if (!OpenHostDds(reader, load.path)) return false;
    for (int passed = 0; passed < load.level; ++passed) {
        if (!reader.SkipMipLevel(passed)) return false;
    }
    ImageDescription level;
    const Common::HostObject<IMemoryWrapper<void>> wrapper(
        reader.Load(level, load.fileDesc.width, load.fileDesc.height, load.fileDesc.depth));
    if (!wrapper || wrapper->mData == nullptr || !IsWholeLevel(level, load)) return false;
    std::memcpy(out, wrapper->mData, load.nativeSpec.image_bytes(false));
    return true;
}

/// The bits of an opaque alpha.
std::uint32_t OpaqueBits(OIIO::TypeDesc type) {
    if (type == OIIO::TypeHalf) return 0x3C00;
    return type == OIIO::TypeFloat ? 0x3F800000 : 0xFFFF;
}

bool ComesInSlices(const TextureLoad& load) {
    return load.IsDds() && (load.IsCube() || load.IsVolume() || load.slice >= 0);
}

}  // namespace

TexturePixels::Kind TexturePixels::KindOf(const TextureLoad& load) {
    if (load.chosen) return Kind::kChosen;
    if (IsLuminanceAlpha(load)) return Kind::kLuminanceAlpha;
    if (IsSingleChannelExr(load)) return Kind::kSingleChannel;
    return IsHostLuminance16(load) ? Kind::kHostLevel : Kind::kOrdinary;
}

TexturePixels::TexturePixels(TextureLoad& load, const OIIO::ImageSpec& as)
    : mLoad(load), mAs(as), mKind(KindOf(load)), mType(as.format), mPixelStride(as.pixel_bytes(false)) {
    ChooseChannels();
    if (mKind != Kind::kHostLevel && !ComesInSlices(load)) {
        mRows.emplace(*load.input, load.fileSpec, load.Subimage(), load.level, mChannels, mType, mPixelStride, mFirst);
        mAddsAlpha = mKind == Kind::kOrdinary && mLacksAlpha && mRows->AddOpaque(OpaqueBits(as.format));
    }
}

/// The file's channels as the first ones of the layout. A fourth channel that the file does not call alpha counts as
/// such when it is interleaved with the others, and not when it lies in a plane of its own.
void TexturePixels::ChooseChannels() {
    const OIIO::ImageSpec &file = mLoad.fileSpec, &native = mLoad.nativeSpec;
    if (mKind == Kind::kChosen) {
        // Faces and slices come with all channels before those that are wanted.
        mFirst = ComesInSlices(mLoad) ? 0 : mLoad.chosen->first;
        mChannels = mLoad.chosen->last - mFirst + 1;
        mType = native.format;
        mPixelStride = static_cast<std::size_t>(mChannels) * mType.size();
        return;
    }
    if (mKind != Kind::kOrdinary) {
        mChannels = mKind == Kind::kLuminanceAlpha ? 2 : 1;
        mType = native.format;
        mPixelStride = native.pixel_bytes(false);
        mLacksAlpha = !IsNativeLayout() && mAs.nchannels == 4 && native.nchannels < 4;
        if (mLoad.IsDds()) mIsMask = false;
        return;
    }
    mChannels = std::min(mAs.nchannels, file.nchannels);
    if (mAs.nchannels == 4 && file.alpha_channel < 0) {
        const bool planar = TextAttribute(file, "planarconfig") == "separate";
        mLacksAlpha = file.nchannels < 4 || planar;
        if (mLacksAlpha) mChannels = std::min(mAs.alpha_channel, file.nchannels);
        if (!mLacksAlpha) mLoad.desc.hasAlpha = true;
    }
}

int TexturePixels::RowCount() const {
    return mAs.height * std::max(mAs.depth, 1);
}

int TexturePixels::BandFrom(int top) const {
    if (mKind == Kind::kHostLevel || mLoad.fileSpec.depth > 1) return RowCount();
    return mRows ? mRows->BandFrom(top) : mLoad.fileDesc.height;
}

bool TexturePixels::FillsAll() const {
    if (mKind == Kind::kOrdinary) return mChannels + (mLacksAlpha ? 1 : 0) == mAs.nchannels;
    return IsNativeLayout() || mLoad.nativeSpec.nchannels >= mAs.nchannels;
}

/// Whether pixels of `nativeSpec` are such of the layout. They are so too where the conversion engine goes on from them.
bool TexturePixels::IsNativeLayout() const {
    return mAs.nchannels == mLoad.nativeSpec.nchannels && mAs.format == mLoad.nativeSpec.format;
}

std::size_t TexturePixels::PixelsIn(int rows) const {
    return static_cast<std::size_t>(mAs.width) * static_cast<std::size_t>(rows);
}

bool TexturePixels::ReadChannels(int top, int count, unsigned char* out) {
    const OIIO::ImageSpec& file = mLoad.fileSpec;
    if (ComesInSlices(mLoad)) {
        const int sliceRows = mLoad.fileDesc.height;
        const int first = top / sliceRows + std::max(mLoad.slice, 0);
        return mLoad.slices->ReadSlices(mLoad.level, file, first, count / sliceRows, mChannels, mType, out,
                                        mPixelStride);
    }
    if (!(file.depth > 1 ? mRows->ReadAll(out) : mRows->Read(top, count, out))) {
        mLoad.errors = mRows->Errors();
        return false;
    }
    // The library's DDS reader says only here that the file ended early; others deliver a partial picture on purpose.
    if (!mLoad.input->has_error()) return true;
    mLoad.isCut = mLoad.isCut || SpeaksOfTheEnd(mLoad.input->geterror());
    return !mLoad.IsDds();
}

/// A file whose luminance is its alpha everywhere is an inverted mask: opaque, and dark where the mask is full.
bool TexturePixels::ReadLuminanceAlpha(int top, int count, unsigned char* out) {
    const bool isWhole = count == RowCount();
    if (!mIsMask && !isWhole) {
        mIsMask = IsMaskFile(mLoad);
        if (!mIsMask) return false;
    }
    if (!ReadChannels(top, count, out)) return false;
    if (!mIsMask) mIsMask = IsMask(reinterpret_cast<const Rgba8*>(out), PixelsIn(count));
    if (*mIsMask) mLoad.desc.hasAlpha = false;
    SpreadLuminanceAlpha(out, PixelsIn(count), *mIsMask);
    return true;
}

bool TexturePixels::ReadSingleChannel(int top, int count, unsigned char* out) {
    const int colour = ColourOfName(mLoad.fileSpec.channel_name(0));
    const std::size_t from = PlaceOfChannel(colour);
    if (!ReadChannels(top, count, out + from * mType.size())) return false;
    if (mType == OIIO::TypeHalf) {
        SpreadChannel<std::uint16_t>(out, PixelsIn(count), from, colour < 0, 0x3C00);
    } else {
        SpreadChannel<std::uint32_t>(out, PixelsIn(count), from, colour < 0, 0x3F800000);
    }
    return true;
}

/// A band at a time: a file may have many channels between those that are wanted.
bool TexturePixels::ReadChosen(int top, int count, unsigned char* out) {
    const std::size_t outRowBytes = PixelsIn(1) * mLoad.nativeSpec.pixel_bytes(false);
    Pixels rows;
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(count));
    for (int done = 0, part = 0; done < count; done += part, out += static_cast<std::size_t>(part) * outRowBytes) {
        part = std::min(BandFrom(top + done), count - done);
        meter.Expect(static_cast<unsigned>(part));
        const std::size_t pixels = PixelsIn(part);
        if (rows.bytes < pixels * mPixelStride) rows = NewZeroedPixels(pixels * mPixelStride);
        if (!ReadChannels(top + done, part, rows.block.get())) return false;
        GatherChannels(*mLoad.chosen, mFirst, mChannels, rows.block.get(), pixels, out);
        meter.Advance(static_cast<unsigned>(part));
    }
    return true;
}

/// Rows in the layout of `nativeSpec`, where that is not simply how they are read.
bool TexturePixels::ReadNative(int top, int count, unsigned char* out) {
    if (mKind == Kind::kLuminanceAlpha) return ReadLuminanceAlpha(top, count, out);
    if (mKind == Kind::kSingleChannel) return ReadSingleChannel(top, count, out);
    if (mKind == Kind::kChosen) return ReadChosen(top, count, out);
    return ReadHostLevel(mLoad, out);
}

/// Brings rows of the layout of `nativeSpec` to another one, as if they had been read so.
bool TexturePixels::Recast(const unsigned char* native, int count, unsigned char* out) const {
    const OIIO::ImageSpec& from = mLoad.nativeSpec;
    const std::size_t inBytes = from.pixel_bytes(false), outBytes = mAs.pixel_bytes(false);
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(count));
    const int band = meter.IsWatched() ? kWatchedRows : count;
    for (int y = 0, rows = 0; y < count; y += rows) {
        rows = std::min(band, count - y);
        const bool done = OIIO::parallel_convert_image(
            std::min(from.nchannels, mAs.nchannels), mAs.width, rows, 1, native + PixelsIn(y) * inBytes, from.format,
            static_cast<OIIO::stride_t>(inBytes), OIIO::AutoStride, OIIO::AutoStride, out + PixelsIn(y) * outBytes,
            mAs.format, static_cast<OIIO::stride_t>(outBytes), OIIO::AutoStride, OIIO::AutoStride);
        if (!done) return false;
        meter.Advance(static_cast<unsigned>(rows));
    }
    return true;
}

bool TexturePixels::Read(int top, int count, unsigned char* out) {
    bool done = false;
    if (mKind == Kind::kOrdinary) {
        done = ReadChannels(top, count, out);
    } else if (IsNativeLayout()) {
        done = ReadNative(top, count, out);
    } else {
        const Pixels native = NewPixels(PixelsIn(count) * mLoad.nativeSpec.pixel_bytes(false));
        done = ReadNative(top, count, native.block.get()) && Recast(native.block.get(), count, out);
    }
    // After the read, not before: the read leaves the alpha channel alone, and a file that lies about its size fails
    // before all of the block is touched.
    if (done && mLacksAlpha && !mAddsAlpha) SetToOpaque(out, PixelsIn(count) * mAs.pixel_bytes(false), mAs);
    return done;
}

}  // namespace Kavra::Devices
