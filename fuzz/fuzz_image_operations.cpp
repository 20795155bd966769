// A random sequence of operations on small images and blocks, with numbers of every kind: rectangles, sizes, formats
// and pitches may be negative, zero or next to the largest int. Pastes and crops are checked against plain loops.
//
// An input is a list of steps: a byte that says which, then its numbers, each a byte that says what kind and one or two
// that say which.

#include "LegacyLoadFuzz.h"
#include "common/HostObject.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/ATarget.h>
#include <kavra/oiio/OIIOImage.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <span>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;
using Bytes = std::vector<unsigned char>;
using Size = vec2<int>;
using Block = Common::HostObject<IMemoryWrapper<void>>;

constexpr std::size_t kMaxSteps = 30;
constexpr std::size_t kMaxBytes = 256 << 10;  // of a block: beyond it there is no memory

void Require(bool holds) {
    if (!holds) std::abort();
}

int PixelBytes(EFormat format) {
    return Utilities::AFormatConvertor::BytesPerPixel(format);
}

/// What is left of the input; zeros once it has ended.
class Numbers {
public:
    explicit Numbers(std::span<const unsigned char> bytes) : mBytes(bytes) {}

    bool HasEnded() const { return mBytes.empty(); }
    unsigned Byte() {
        if (mBytes.empty()) return 0;
        const unsigned byte = mBytes.front();
        mBytes = mBytes.subspan(1);
        return byte;
    }
    int Any() {
        const unsigned kind = Byte(), value = Byte();
        switch (kind % 8) {
            case 4:
                return -static_cast<int>(value % 20);
            case 5:
                return INT_MAX - static_cast<int>(value);
            case 6:
                return INT_MIN + static_cast<int>(value);
            case 7:
                return static_cast<std::int16_t>(value << 8 | Byte());
            default:
                return static_cast<int>(value % 20);
        }
    }
    EFormat Format() {
        constexpr std::array kFormats = {
            kL8,       kR8G8B8A8, kB8G8R8A8,      kA8,      kR16,           kR16F,         kR32F,
            kR16G16,   kR16G16F,  kR32G32F,       kR8,      kR16G16B16A16F, kR16G16B16A16, kB8G8R8X8,
            kR8G8B8X8, kL16,      kR32G32B32A32F, kUnknown, kR32G32B32F,    kBC3,          kR8G8B8A8};
        const unsigned byte = Byte();
        return byte < 200 ? kFormats[byte % kFormats.size()] : static_cast<EFormat>(byte - 200);
    }

private:
    std::span<const unsigned char> mBytes;
};

/// A target that holds as much as its size and pitch promise, and not a byte more. Where they promise too much it holds
/// nothing, and cannot be mapped.
class FuzzTarget final : public ATarget, public IMappedMemory {
public:
    FuzzTarget(int width, int height, EFormat format, int pitch)
        : mWidth(width), mHeight(height), mFormat(format), mPitch(pitch) {
        const std::int64_t row = std::int64_t{PixelBytes(format)} * width;
        const bool isReadable = width > 0 && height > 0 && pitch > 0;
        const std::int64_t bytes =
            isReadable ? std::int64_t{pitch} * (height - 1) + std::min<std::int64_t>(pitch, row) : 1;
        if (bytes <= static_cast<std::int64_t>(kMaxBytes)) mBytes.resize(static_cast<std::size_t>(bytes));
        std::iota(mBytes.begin(), mBytes.end(), static_cast<unsigned char>(width));
    }
    ~FuzzTarget() override { Require(mWrappers == mMaps); }

    int Width() const override { return mWidth; }
    int Height() const override { return mHeight; }
    EFormat Format() const override { return mFormat; }
    IMappedMemory* MemoryWrapper(int) override { return ++mWrappers, this; }
    void* Map(int, int& pitch) override {
        if (mBytes.empty()) return nullptr;
        ++mMaps;
        pitch = mPitch;
        return mBytes.data();
    }
    void Unmap() override {
        Require(mMaps > 0);
        --mMaps;
    }
    void Release() override {
        Require(mWrappers > 0 && mMaps == 0);
        --mWrappers;
    }
    /// The pixels as an image has them: packed, red first.
    Bytes Packed() const {
        Bytes packed;
        const std::size_t row = static_cast<std::size_t>(PixelBytes(mFormat) * mWidth);
        for (std::size_t y = 0; y < static_cast<std::size_t>(mHeight); ++y) {
            const auto first = mBytes.begin() + static_cast<std::ptrdiff_t>(y * static_cast<std::size_t>(mPitch));
            packed.insert(packed.end(), first, first + static_cast<std::ptrdiff_t>(row));
        }
        if (mFormat != kB8G8R8A8 && mFormat != kB8G8R8X8) return packed;
        for (std::size_t i = 0; i < packed.size(); i += 4)
            std::swap(packed[i], packed[i + 2]);
        return packed;
    }

private:
    int mWidth, mHeight;
    EFormat mFormat;
    int mPitch;
    Bytes mBytes;
    int mWrappers = 0, mMaps = 0;
};

/// Reads all that it is given to save.
class FuzzHandler final : public OIIOImageHandler {
public:
    using OIIOImageHandler::SaveTexture;
    bool SaveTexture(const KString&, const ImageDescription& desc, const void* data) override {
        if (desc.width < 1 || desc.height < 1 || desc.rowPitch < 1) return false;
        const auto* const first = static_cast<const unsigned char*>(data);
        const std::int64_t row = std::int64_t{PixelBytes(desc.format)} * desc.width;
        const auto pitch = static_cast<std::size_t>(desc.rowPitch);
        for (std::size_t y = 0; y < static_cast<std::size_t>(desc.height); ++y)
            Read({first + y * pitch, std::min(pitch, static_cast<std::size_t>(row))});
        return true;
    }
    void Read(std::span<const unsigned char> bytes) { mSum = std::accumulate(bytes.begin(), bytes.end(), mSum); }

private:
    std::uint64_t mSum = 0;
};

/// An image and what its pixels must be; nothing of one without buffer.
struct Shown {
    IImage* image = nullptr;
    std::optional<Bytes> pixels;

    ~Shown() {
        if (image != nullptr) image->ReleaseRef();
    }
    void Set(IImage* made) {
        if (image != nullptr) image->ReleaseRef();
        image = made;
        pixels.reset();
        if (image != nullptr) image->AddRef();
    }
};

class Session {
public:
    explicit Session(std::span<const unsigned char> input) : mNumbers(input) {}

    void Step() {
        switch (mNumbers.Byte() % 8) {
            case 0:
                return MakeBlank();
            case 1:
                return MakeFromTarget();
            case 2:
            case 3:
                return Paste();
            case 4:
                return LoadRect();
            case 5:
                return SaveTarget();
            case 6:
                return CropOrPad();
            default:
                return Filter();
        }
    }
    bool HasEnded() const { return mNumbers.HasEnded(); }

private:
    Shown& Pick() { return mImages[mNumbers.Byte() % mImages.size()]; }

    void MakeBlank() {
        Shown& shown = Pick();
        const int width = mNumbers.Any(), height = mNumbers.Any();
        shown.Set(Host().CreateImage(width, height, mNumbers.Format()));
        Remember(shown);
        if (shown.pixels) Require(std::ranges::all_of(*shown.pixels, [](unsigned char byte) { return byte == 0; }));
    }

    void MakeFromTarget() {
        Shown& shown = Pick();
        const int width = mNumbers.Any(), height = mNumbers.Any();
        const EFormat format = mNumbers.Format();
        const int gap = mNumbers.Any();
        const std::int64_t pitch = std::int64_t{PixelBytes(format)} * width + gap;
        FuzzTarget target(width, height, format, static_cast<int>(std::clamp<std::int64_t>(pitch, INT_MIN, INT_MAX)));
        shown.Set(Host().CreateImage(&target));
        Remember(shown);
        if (shown.pixels) Require(*shown.pixels == target.Packed());
    }

    /// What an image holds is asked of the image itself once, and kept up to date by hand from then on.
    void Remember(Shown& shown) {
        if (shown.image == nullptr) return;
        const Size size{shown.image->Width(), shown.image->Height()};
        shown.pixels = Load(*shown.image, {0, 0}, size, size, shown.image->Format(), kTopLeft);
    }

    std::optional<Bytes> Load(IImage& image, Size origin, Size size, Size outSize, EFormat format,
                              EDataOrientation orientation) {
        ImageDescription desc;
        const Block block(image.LoadRect(desc, origin, size, outSize, format, orientation));
        if (!block) return std::nullopt;
        Require(desc.format == format && desc.depth == 1 && desc.rowPitch == PixelBytes(format) * desc.width);
        Require(desc.dataSize == static_cast<std::uint64_t>(desc.rowPitch) * static_cast<std::uint64_t>(desc.height));
        const auto* const first = static_cast<const unsigned char*>(block->mData);
        return Bytes(first, first + desc.dataSize);
    }

    void Paste() {
        Shown& to = Pick();
        Shown& from = Pick();
        const int srcX = mNumbers.Any(), srcY = mNumbers.Any(), width = mNumbers.Any(), height = mNumbers.Any();
        const int dstX = mNumbers.Any(), dstY = mNumbers.Any();
        if (to.image == nullptr) return;
        if (!to.image->Paste(from.image, srcX, srcY, width, height, dstX, dstY)) return;
        Require(to.pixels && from.pixels);
        const Bytes source = *from.pixels;
        const int bytes = PixelBytes(to.image->Format());
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const int toX = x + dstX - srcX, toY = y + dstY - srcY;
                if (toX < 0 || toY < 0) continue;
                const int first = ((srcY + y) * from.image->Width() + srcX + x) * bytes;
                std::copy_n(source.begin() + first, bytes,
                            to.pixels->begin() + (toY * to.image->Width() + toX) * bytes);
            }
        }
        const Bytes expected = *to.pixels;
        Remember(to);
        Require(*to.pixels == expected);
    }

    void LoadRect() {
        Shown& shown = Pick();
        const Size origin{mNumbers.Any(), mNumbers.Any()}, size{mNumbers.Any(), mNumbers.Any()};
        const bool scaled = mNumbers.Byte() % 2 != 0;
        const Size outSize = scaled ? Size{mNumbers.Any(), mNumbers.Any()} : size;
        const EFormat format = mNumbers.Format();
        const auto orientation = static_cast<EDataOrientation>(static_cast<int>(mNumbers.Byte() % 10) - 1);
        if (shown.image == nullptr) return;
        if (const auto bytes = Load(*shown.image, origin, size, outSize, format, orientation)) mHandler.Read(*bytes);
    }

    void SaveTarget() {
        const int width = mNumbers.Any(), height = mNumbers.Any();
        const EFormat format = mNumbers.Format();
        // Formats that are refused stay mapped.
        if (format != kR32F && format != kR32G32F && format != kR32G32B32A32F && format != kR8G8B8A8 &&
            format != kB8G8R8A8)
            return;
        const std::int64_t pitch = std::int64_t{PixelBytes(format)} * width + mNumbers.Any();
        FuzzTarget target(width, height, format, static_cast<int>(std::clamp<std::int64_t>(pitch, INT_MIN, INT_MAX)));
        (void)Host().SaveTarget(L"x.png", &target, mNumbers.Byte() % 2 != 0);
    }

    /// A source of its own for each call, so that a byte read too far shows.
    Bytes SourceBytes() {
        Bytes bytes(mNumbers.Byte() * 16 + mNumbers.Byte() % 16);
        std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
        return bytes;
    }

    void CropOrPad() {
        const Bytes source = SourceBytes();
        const int srcPitch = mNumbers.Any();
        const EFormat format = mNumbers.Format();
        const vec3<int> size{mNumbers.Any(), mNumbers.Any(), mNumbers.Any()};
        int pitch = 0;
        const Block block(Host().Resize(kResizeCropOrPad, source.data(), source.size(), srcPitch, {}, format,
                                        kTexture2D, size, pitch, kFilterNearest));
        if (!block) return;
        Require(pitch == PixelBytes(format) * size.x);
        Bytes expected(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(size.y));
        const std::size_t srcRow = srcPitch > 0 ? static_cast<std::size_t>(srcPitch) : 0;
        const std::size_t srcRows = srcRow > 0 ? source.size() / srcRow : 0;
        const std::size_t dstRow = static_cast<std::size_t>(pitch), dstRows = dstRow > 0 ? expected.size() / dstRow : 0;
        for (std::size_t row = 0; row < std::min(srcRows, dstRows); ++row) {
            const std::size_t count = dstRows < srcRows ? dstRow : srcRow;
            for (std::size_t i = 0; i < count; ++i) {
                if (row * srcRow + i < source.size() && row * dstRow + i < expected.size())
                    expected[row * dstRow + i] = source[row * srcRow + i];
            }
        }
        Require(
            std::ranges::equal(std::span(static_cast<const unsigned char*>(block->mData), expected.size()), expected));
    }

    void Filter() {
        const Bytes source = SourceBytes();
        const EFormat format = mNumbers.Format();
        const vec3<int> srcSize{mNumbers.Any(), mNumbers.Any(), mNumbers.Any()};
        const vec3<int> dstSize{mNumbers.Any(), mNumbers.Any(), mNumbers.Any()};
        const unsigned choice = mNumbers.Byte();
        int pitch = 0;
        const Block block(Host().Resize(choice % 8 == 7 ? kResizeCopy : kResizeFilter, source.data(), source.size(),
                                        mNumbers.Any(), srcSize, format, choice % 16 == 0 ? kTextureCube : kTexture2D,
                                        dstSize, pitch, static_cast<EImageFilterType>(choice / 16 % 4)));
        if (!block) return;
        const std::size_t bytes =
            choice % 8 == 7 ? source.size() : static_cast<std::size_t>(pitch) * static_cast<std::size_t>(dstSize.y);
        mHandler.Read({static_cast<const unsigned char*>(block->mData), bytes});
    }

    IImageHandler& Host() { return mHandler; }

    Numbers mNumbers;
    FuzzHandler mHandler;
    std::array<Shown, 3> mImages;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::SilentSink::Install();
    Objects::ObjModel::SetBlockCeiling(kMaxBytes);
    Session session({data, size});
    for (std::size_t step = 0; step < kMaxSteps && !session.HasEnded(); ++step)
        session.Step();
    return 0;
}
