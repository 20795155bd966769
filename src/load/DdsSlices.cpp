#include "load/DdsSlices.h"

#include "formats/Attributes.h"
#include "load/FileDescription.h"

#include <kavra/objects/OS.h>

#include <OpenImageIO/filesystem.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace Kavra::Devices {

namespace {

// Offsets of the header's fields, from the start of the file.
enum Field : std::size_t {
    kMagic = 0,
    kFlags = 8,
    kHeight = 12,
    kWidth = 16,
    kDepth = 24,
    kMipCount = 28,
    kPixelFlags = 80,
    kFourCC = 84,
    kBitCount = 88,
    kCaps1 = 108,
    kCaps2 = 112,
    kDxgiFormat = 128,
    kDimension = 132,
    kMiscFlags = 136,
    kArraySize = 140,
};

constexpr std::size_t kLegacyHeaderBytes = 128;
constexpr std::uint32_t kMagicNumber = 0x20534444;  // "DDS "
constexpr std::uint32_t kHasMipCount = 0x00020000;
constexpr std::uint32_t kHasDepth = 0x00800000;
constexpr std::uint32_t kPixelFourCC = 0x00000004;
constexpr std::uint32_t kCapsTexture = 0x00001000;
constexpr std::uint32_t kCapsCube = 0x00000200;
constexpr std::uint32_t kCapsVolume = 0x00200000;
constexpr int kFirstFaceBit = 10;  // of the second capabilities word: +x, then -x +y -y +z -z
constexpr int kFaces = 6;
constexpr std::uint32_t kDimension2D = 3;
constexpr std::uint32_t kMiscCube = 4;
constexpr std::uint32_t kMostPixels = 32768;  // along any edge; the library opens nothing larger

constexpr std::uint32_t FourCC(const char (&code)[5]) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(code[i]);
    return value;
}

std::uint32_t Load32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | bytes[offset + i];
    return value;
}

void Store32(std::span<std::uint8_t> bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

/// Bytes of a 4 x 4 block of the FourCC codes that the library decodes, 0 for all others.
std::uint32_t BlockBytesOfFourCC(std::uint32_t code) {
    switch (code) {
        case FourCC("DXT1"):
        case FourCC("ATI1"):
        case FourCC("BC4U"):
            return 8;
        case FourCC("DXT2"):
        case FourCC("DXT3"):
        case FourCC("DXT4"):
        case FourCC("DXT5"):
        case FourCC("RXGB"):
        case FourCC("ATI2"):
        case FourCC("BC5U"):
            return 16;
        default:
            return 0;
    }
}

/// The same for the format numbers of a DX10 header.
std::uint32_t BlockBytesOfDxgi(std::uint32_t format) {
    switch (format) {
        case 71:  // BC1
        case 72:
        case 80:
            return 8;  // BC4
        case 74:       // BC2
        case 75:
        case 77:  // BC3
        case 78:
        case 83:  // BC5
        case 95:  // BC6H
        case 96:
        case 98:  // BC7
        case 99:
            return 16;
        default:
            return 0;
    }
}

std::uint32_t PixelBytesOfDxgi(std::uint32_t format) {
    switch (format) {
        case 24:  // 10-10-10-2
        case 28:  // red first
        case 29:
        case 87:  // blue first
        case 88:
        case 91:
        case 93:
            return 4;
        case 56:
            return 2;  // 16 bits of red
        default:
            return 0;
    }
}

/// Whole bytes of a legacy layout's pixel; 0 for bit counts that are none. The library checks them only for some kinds
/// of layouts, and overruns a buffer of its own with more than 32.
std::uint32_t PixelBytesOfBitCount(std::uint32_t bits) {
    return bits == 8 || bits == 16 || bits == 24 || bits == 32 ? bits / 8 : 0;
}

bool HasText(const OIIO::ImageSpec& spec, const char* word) {
    return OIIO::Strutil::contains(TextAttribute(spec, "textureformat").value_or(""), word);
}

int Halved(int size, int times) {
    return std::max(size >> std::min(times, 30), 1);
}

/// Reads the one picture of a DDS file in memory, which must have this size and number of channels.
bool DecodeFlat(std::span<const std::uint8_t> file, int width, int height, int fileChannels, int channels,
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

}  // namespace

OIIO::ImageSpec DdsLevelSpec(const OIIO::ImageSpec& top, int level) {
    OIIO::ImageSpec spec = top;
    const bool cube = HasText(top, "Cube");
    spec.full_width = Halved(cube ? top.full_width : top.width, level);
    spec.full_height = Halved(cube ? top.full_height : top.height, level);
    spec.full_depth = Halved(top.depth, level);
    spec.width = spec.full_width;
    spec.height = cube ? kFaces * spec.full_height : spec.full_height;
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

std::optional<DdsLayout> DdsLayout::Parse(std::span<const std::uint8_t> start) {
    if (start.size() < kLegacyHeaderBytes || Load32(start, kMagic) != kMagicNumber) return std::nullopt;
    const bool dx10 = Load32(start, kFourCC) == FourCC("DX10");
    DdsLayout layout;
    layout.mHeaderBytes = dx10 ? kMostHeaderBytes : kLegacyHeaderBytes;
    if (start.size() < layout.mHeaderBytes) return std::nullopt;
    std::ranges::copy(start.first(layout.mHeaderBytes), layout.mHeader.begin());

    if ((Load32(start, kPixelFlags) & kPixelFourCC) != 0) {
        layout.mBytesPerBlock =
            dx10 ? BlockBytesOfDxgi(Load32(start, kDxgiFormat)) : BlockBytesOfFourCC(Load32(start, kFourCC));
        layout.mBytesPerPixel = dx10 ? PixelBytesOfDxgi(Load32(start, kDxgiFormat)) : 0;
    } else {
        layout.mBytesPerPixel =
            dx10 ? PixelBytesOfDxgi(Load32(start, kDxgiFormat)) : PixelBytesOfBitCount(Load32(start, kBitCount));
    }
    if (layout.mBytesPerBlock == 0 && layout.mBytesPerPixel == 0) return std::nullopt;
    return layout.ParseShape() ? std::optional(layout) : std::nullopt;
}

bool DdsLayout::ParseShape() {
    const std::uint32_t caps = Load32(mHeader, kCaps2);
    const bool volume = (caps & kCapsVolume) != 0;
    mCube = (caps & kCapsCube) != 0;
    mFaces = mCube ? caps >> kFirstFaceBit & 0x3F : 1;
    if ((mCube && volume) || mFaces == 0) return false;

    mWidth = Load32(mHeader, kWidth);
    mHeight = Load32(mHeader, kHeight);
    mDepth = volume ? Load32(mHeader, kDepth) : 1;
    const auto possible = [](std::uint32_t size) { return size >= 1 && size <= kMostPixels; };
    if (!possible(mWidth) || !possible(mHeight) || !possible(mDepth)) return false;

    const std::uint32_t levels = (Load32(mHeader, kFlags) & kHasMipCount) != 0 ? Load32(mHeader, kMipCount) : 1;
    const int chain = FullMipChain(Width(0), Height(0), static_cast<int>(mDepth));
    mLevels = static_cast<int>(std::clamp<std::uint32_t>(levels, 1, static_cast<std::uint32_t>(chain)));
    return true;
}

int DdsLayout::Width(int level) const {
    return Halved(static_cast<int>(mWidth), level);
}

int DdsLayout::Height(int level) const {
    return Halved(static_cast<int>(mHeight), level);
}

int DdsLayout::Slices(int level) const {
    return mCube ? kFaces : Halved(static_cast<int>(mDepth), level);
}

bool DdsLayout::HasSlice(int slice) const {
    return !mCube || (mFaces >> slice & 1) != 0;
}

// Every edge has at most 2^15 pixels, so none of the products below comes near 64 bits.

std::uint64_t DdsLayout::SliceBytes(int level) const {
    const auto width = static_cast<std::uint64_t>(Width(level));
    const auto height = static_cast<std::uint64_t>(Height(level));
    if (mBytesPerBlock == 0) return width * height * mBytesPerPixel;
    return (width + 3) / 4 * ((height + 3) / 4) * mBytesPerBlock;
}

std::uint64_t DdsLayout::LevelBytes(int level) const {
    return SliceBytes(level) * (mCube ? 1 : static_cast<std::uint64_t>(Slices(level)));
}

std::uint64_t DdsLayout::SliceOffset(int level, int slice) const {
    std::uint64_t offset = mHeaderBytes;
    for (int passed = 0; passed < level; ++passed)
        offset += LevelBytes(passed);
    if (!mCube) return offset + SliceBytes(level) * static_cast<std::uint64_t>(slice);

    // All levels of a face, then the next face that is there.
    std::uint64_t faceBytes = 0;
    for (int each = 0; each < mLevels; ++each)
        faceBytes += SliceBytes(each);
    const std::uint32_t before = mFaces & ((1U << slice) - 1);
    return offset + faceBytes * static_cast<std::uint64_t>(std::popcount(before));
}

std::vector<std::uint8_t> DdsLayout::FlatHeader(int level) const {
    std::vector<std::uint8_t> header(mHeader.begin(), mHeader.begin() + static_cast<std::ptrdiff_t>(mHeaderBytes));
    Store32(header, kFlags, Load32(header, kFlags) & ~(kHasMipCount | kHasDepth));
    Store32(header, kWidth, static_cast<std::uint32_t>(Width(level)));
    Store32(header, kHeight, static_cast<std::uint32_t>(Height(level)));
    Store32(header, kDepth, 0);
    Store32(header, kMipCount, 0);
    Store32(header, kCaps1, kCapsTexture);
    Store32(header, kCaps2, 0);
    if (mHeaderBytes == kMostHeaderBytes) {
        Store32(header, kDimension, kDimension2D);
        Store32(header, kMiscFlags, Load32(header, kMiscFlags) & ~kMiscCube);
        Store32(header, kArraySize, 1);
    }
    return header;
}

DdsSlices::DdsSlices(Common::FileHandle file, std::uint64_t fileBytes, const DdsLayout& layout)
    : mFile(std::move(file)), mFileBytes(fileBytes), mLayout(layout) {}

std::optional<DdsSlices> DdsSlices::Open(const KString& path) {
    std::FILE* opened = nullptr;
    const int error = OS::wfopen(&opened, path.ToChars(), L"rb");
    if (error == ENOMEM) throw std::bad_alloc();
    if (error != 0) return std::nullopt;
    Common::FileHandle file(opened);
    std::array<std::uint8_t, DdsLayout::kMostHeaderBytes> start{};
    const std::size_t count = std::fread(start.data(), 1, start.size(), file.get());
    const auto layout = DdsLayout::Parse(std::span(start).first(count));
    const auto fileBytes = Common::FileLength(file.get());
    if (!layout || !fileBytes) return std::nullopt;
    return DdsSlices(std::move(file), *fileBytes, *layout);
}

bool DdsSlices::HasLevel(int level) const {
    if (level < 0 || level >= mLayout.Levels()) return false;
    int last = mLayout.Slices(level) - 1;
    while (!mLayout.HasSlice(last))
        --last;
    return mLayout.SliceOffset(level, last) + mLayout.SliceBytes(level) <= mFileBytes;
}

bool DdsSlices::ReadBytes(std::uint64_t offset, std::span<std::uint8_t> bytes) {
    return fseeko(mFile.get(), static_cast<off_t>(offset), SEEK_SET) == 0 &&
           std::fread(bytes.data(), 1, bytes.size(), mFile.get()) == bytes.size();
}

bool DdsSlices::ReadLevel(int level, const OIIO::ImageSpec& levelSpec, int channels, OIIO::TypeDesc type,
                          unsigned char* out, std::size_t pixelStride) {
    if (!HasLevel(level)) return false;
    const int width = mLayout.Width(level);
    const int height = mLayout.Height(level);
    const int slices = mLayout.Slices(level);
    // A cube's faces stand on one another, a volume's slices behind one another.
    if (levelSpec.width != width || std::int64_t{levelSpec.height} * levelSpec.depth != std::int64_t{height} * slices) {
        return false;
    }

    std::vector<std::uint8_t> flat = mLayout.FlatHeader(level);
    const std::size_t headerBytes = flat.size();
    flat.resize(headerBytes + mLayout.SliceBytes(level));
    const std::size_t sliceStride = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * pixelStride;
    for (int slice = 0; slice < slices; ++slice, out += sliceStride) {
        if (!mLayout.HasSlice(slice)) {
            std::memset(out, 0, sliceStride);
            continue;
        }
        if (!ReadBytes(mLayout.SliceOffset(level, slice), std::span(flat).subspan(headerBytes)) ||
            !DecodeFlat(flat, width, height, levelSpec.nchannels, channels, type, out, pixelStride)) {
            return false;
        }
    }
    return true;
}

}  // namespace Kavra::Devices
