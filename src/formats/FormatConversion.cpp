#include "formats/FormatConversion.h"

#include "common/HostExtras.h"
#include "common/PixelBlock.h"
#include "common/PixelRun.h"
#include "common/WatchedRange.h"
#include "formats/BlueFirst.h"
#include "formats/Luminance.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/ImageHandlerHelper.h>
#include <kavra/devices/Sys.h>

#include <Imath/half.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

namespace Kavra::Devices {

using Common::PixelBlock;
using Utilities::AFormatConvertor;
using Utilities::ImageHandlerHelper;

namespace {

/// A new block and the bytes that its owner is told of.
struct Pixels {
    PixelBlock block;
    std::size_t bytes = 0;

    /// Takes over what a routine of the helper has returned.
    Pixels(void* made, std::size_t size) : block(static_cast<unsigned char*>(made)), bytes(size) {}
};

/// Packed source pixels.
struct Source {
    unsigned char* data;
    std::size_t bytes;

    unsigned short* Words() const { return reinterpret_cast<unsigned short*>(data); }
    half* Halves() const { return reinterpret_cast<half*>(data); }
    float* Floats() const { return reinterpret_cast<float*>(data); }
};

constexpr float kPerByte = 1.0F / 255.0F;
constexpr float kPerWord = 1.0F / 65535.0F;
constexpr float kByteOfWord = 1.0F / 257.0F;

/// Pixels of `inUnit` bytes to pixels of `outUnit`, in a new block of `bytes` bytes, a part of it on each core. Bytes
/// behind the last whole pixel are zero. `kernel` takes a `PixelRun`.
template <class Kernel>
Pixels InOnePass(const Source& source, std::size_t inUnit, std::size_t outUnit, std::size_t bytes,
                 const Kernel& kernel) {
    const std::size_t count = source.bytes / inUnit;
    Pixels result(Common::NewBlock(bytes).release(), bytes);
    std::memset(result.block.get() + count * outUnit, 0, bytes - count * outUnit);
    const std::span out(reinterpret_cast<unsigned char*>(result.block.get()), count * outUnit);
    const std::span in(reinterpret_cast<const unsigned char*>(source.data), count * inUnit);
    const std::size_t serial = Common::kSerialBytes / (inUnit + outUnit);
    Common::ForEachRangeOf(kProgressConverting, count, serial, [&](std::size_t begin, std::size_t end) {
        kernel(Common::PixelRun{.out = out.subspan(begin * outUnit, (end - begin) * outUnit),
                                .in = in.subspan(begin * inUnit, (end - begin) * inUnit),
                                .bypassCache = Common::OutgrowsCaches(out.size())});
    });
    return result;
}

Pixels GreyFromColours(const Source& source, Formats::ColourOrder order) {
    return InOnePass(source, 4, 1, source.bytes / 4,
                     [order](const Common::PixelRun& run) { Formats::GreyFromColours(run, order); });
}

/// A target of 12 bytes a pixel gets as many bytes as the source has. What no pixel fills is zero, so that the same
/// pixels always give the same block.
std::optional<Pixels> PackedFromFloatColours(const Source& source, EFormat to) {
    const auto pixelBytes = static_cast<std::size_t>(AFormatConvertor::BytesPerPixel(to));
    if (pixelBytes == 0 || pixelBytes > 16) return std::nullopt;
    const std::size_t bytes = source.bytes / (16 / pixelBytes);
    Pixels packed(Common::NewBlock(bytes).release(), bytes);
    const std::size_t filled = std::min(bytes, source.bytes / 16 * pixelBytes);
    std::memset(packed.block.get() + filled, 0, bytes - filled);
    const std::size_t serial = Common::kSerialBytes / 16;
    Common::ForEachRangeOf(kProgressConverting, source.bytes / 16, serial, [&](std::size_t begin, std::size_t end) {
        Common::PackFloats(source.Floats() + 4 * begin, end - begin, to,
                           reinterpret_cast<char*>(packed.block.get() + begin * pixelBytes),
                           bytes - begin * pixelBytes);
    });
    return packed;
}

// --- One function a kind of conversion, named for what it gives and what it takes
// -------------------------------------

using Helper = ImageHandlerHelper;

Pixels WordsFromBytes(const Source& source) {
    return {Helper().GrayToR16(source.data, source.bytes), source.bytes * 2};
}
Pixels WordPairsFromGrey8(const Source& source) {
    return {Helper().GrayToR16G16(source.data, source.bytes), source.bytes * 4};
}
Pixels ColoursFromGrey8(const Source& source) {
    return {Helper().GrayToRGB(source.data, source.bytes), source.bytes * 4};
}

Pixels WordPairsFromGrey16(const Source& source) {
    return {Helper().R16ToR16G16(source.Words(), source.bytes), source.bytes * 2};
}
Pixels ColoursFromGrey16(const Source& source) {
    return {Helper().Gray16ToRGB(source.Words(), source.bytes), source.bytes * 2};
}
Pixels WordColoursFromGrey16(const Source& source) {
    return {Helper().ExpandGrayToRGBA<unsigned short>(source.Words(), source.bytes, 65535, true), source.bytes * 4};
}
/// Opaque black: the routine is given no source, which is kept because callers have come to see what it yields.
Pixels HalfColoursFromGrey16(const Source& source) {
    Helper helper;
    unsigned short* const nothing = nullptr;
    const Pixels halves(helper.TypeInToTypeOut<unsigned short, half>(nothing, source.bytes, kPerWord), source.bytes);
    auto* const grey = reinterpret_cast<half*>(halves.block.get());
    return {helper.ExpandGrayToRGBA<half>(grey, source.bytes, half(1.0F), true), source.bytes * 4};
}

Pixels HalfColoursFromHalfGrey(const Source& source) {
    return {Helper().ExpandGrayToRGBA<half>(source.Halves(), source.bytes, half(1.0F), true), source.bytes * 4};
}
Pixels ThreeFloatsFromFloatGrey(const Source& source) {
    return {Helper().ExpandGrayToRGBA<float>(source.Floats(), source.bytes, 1.0F, false), source.bytes * 3};
}
Pixels FloatColoursFromFloatGrey(const Source& source) {
    return {Helper().ExpandGrayToRGBA<float>(source.Floats(), source.bytes, 1.0F, true), source.bytes * 4};
}

Pixels GreyFromRedFirst(const Source& source) {
    return GreyFromColours(source, Formats::ColourOrder::kRedFirst);
}
Pixels GreyFromBlueFirst(const Source& source) {
    return GreyFromColours(source, Formats::ColourOrder::kBlueFirst);
}
Pixels RedAndBlueSwapped(const Source& source) {
    return {Helper().BGRAToRGBA(source.data, source.bytes), source.bytes};
}
Pixels HalfColoursFromBytes(const Source& source) {
    return {Helper().TypeInToTypeOut<unsigned char, half>(source.data, source.bytes, kPerByte), source.bytes * 2};
}
Pixels FloatColoursFromBytes(const Source& source) {
    return {Helper().TypeInToTypeOut<unsigned char, float>(source.data, source.bytes, kPerByte), source.bytes * 4};
}

// Swapping into an intermediate and widening that would move nearly twice the bytes.
Pixels HalfColoursFromBlueFirst(const Source& source) {
    return InOnePass(source, 4, 8, source.bytes * 2, Formats::HalvesFromBlueFirst);
}
Pixels WordColoursFromBlueFirst(const Source& source) {
    return InOnePass(source, 4, 8, source.bytes * 2, Formats::WordsFromBlueFirst);
}
Pixels FloatColoursFromBlueFirst(const Source& source) {
    return InOnePass(source, 4, 16, source.bytes * 4, Formats::FloatsFromBlueFirst);
}

Pixels FloatColoursFromHalves(const Source& source) {
    return {Helper().TypeInToTypeOut<half, float>(source.Halves(), source.bytes, 1.0F), source.bytes * 2};
}

Pixels RedFirstFromWords(const Source& source) {
    return {Helper().TypeInToTypeOut<unsigned short, unsigned char>(source.Words(), source.bytes, kByteOfWord),
            source.bytes / 2};
}
Pixels BlueFirstFromWords(const Source& source) {
    return InOnePass(source, 8, 4, source.bytes / 2, Formats::BlueFirstFromWords);
}
Pixels HalfColoursFromWords(const Source& source) {
    return {Helper().TypeInToTypeOut<unsigned short, half>(source.Words(), source.bytes, kPerWord), source.bytes};
}
Pixels FloatColoursFromWords(const Source& source) {
    return {Helper().TypeInToTypeOut<unsigned short, float>(source.Words(), source.bytes, kPerWord), source.bytes * 2};
}

// --- The conversions that there are
// -----------------------------------------------------------------------------------

struct Conversion {
    EFormat from;
    EFormat to;
    Pixels (*convert)(const Source& source);
};

/// Every pair but those from `kR32G32B32A32F`, which is packed into any target. Formats whose bytes are in the right
/// order already (`kR8G8B8A8` and `kR8G8B8X8`) need none.
constexpr Conversion kConversions[] = {
    {kR8, kR16, WordsFromBytes},
    {kR8, kR16G16, WordPairsFromGrey8},
    {kR8, kR8G8B8A8, ColoursFromGrey8},
    {kR8, kB8G8R8A8, ColoursFromGrey8},
    {kR8, kB8G8R8X8, ColoursFromGrey8},
    {kR8, kR8G8B8X8, ColoursFromGrey8},

    {kL8, kR16, WordsFromBytes},
    {kL8, kR16G16, WordPairsFromGrey8},
    {kL8, kR8G8B8A8, ColoursFromGrey8},
    {kL8, kB8G8R8A8, ColoursFromGrey8},
    {kL8, kB8G8R8X8, ColoursFromGrey8},
    {kL8, kR8G8B8X8, ColoursFromGrey8},

    {kR16F, kR16G16B16A16F, HalfColoursFromHalfGrey},

    {kR16, kR16G16, WordPairsFromGrey16},
    {kR16, kR8G8B8A8, ColoursFromGrey16},
    {kR16, kB8G8R8A8, ColoursFromGrey16},
    {kR16, kB8G8R8X8, ColoursFromGrey16},
    {kR16, kR8G8B8X8, ColoursFromGrey16},
    {kR16, kR16G16B16A16F, HalfColoursFromGrey16},
    {kR16, kR16G16B16A16, WordColoursFromGrey16},

    {kL16, kR16G16, WordPairsFromGrey16},
    {kL16, kR8G8B8A8, ColoursFromGrey16},
    {kL16, kB8G8R8A8, ColoursFromGrey16},
    {kL16, kB8G8R8X8, ColoursFromGrey16},
    {kL16, kR8G8B8X8, ColoursFromGrey16},
    {kL16, kR16G16B16A16F, HalfColoursFromGrey16},
    {kL16, kR16G16B16A16, WordColoursFromGrey16},

    {kR32F, kR32G32B32F, ThreeFloatsFromFloatGrey},
    {kR32F, kR32G32B32A32F, FloatColoursFromFloatGrey},

    {kR8G8B8A8, kR8, GreyFromRedFirst},
    {kR8G8B8A8, kL8, GreyFromRedFirst},
    {kR8G8B8A8, kB8G8R8A8, RedAndBlueSwapped},
    {kR8G8B8A8, kB8G8R8X8, RedAndBlueSwapped},
    {kR8G8B8A8, kR16G16B16A16F, HalfColoursFromBytes},
    {kR8G8B8A8, kR16G16B16A16, WordsFromBytes},
    {kR8G8B8A8, kR32G32B32A32F, FloatColoursFromBytes},

    {kB8G8R8A8, kR8, GreyFromBlueFirst},
    {kB8G8R8A8, kL8, GreyFromBlueFirst},
    {kB8G8R8A8, kR8G8B8A8, RedAndBlueSwapped},
    {kB8G8R8A8, kR8G8B8X8, RedAndBlueSwapped},
    {kB8G8R8A8, kR16G16B16A16F, HalfColoursFromBlueFirst},
    {kB8G8R8A8, kR16G16B16A16, WordColoursFromBlueFirst},
    {kB8G8R8A8, kR32G32B32A32F, FloatColoursFromBlueFirst},

    {kR16G16B16A16F, kR32G32B32A32F, FloatColoursFromHalves},

    {kR16G16B16A16, kR8G8B8A8, RedFirstFromWords},
    {kR16G16B16A16, kB8G8R8A8, BlueFirstFromWords},
    {kR16G16B16A16, kB8G8R8X8, BlueFirstFromWords},
    {kR16G16B16A16, kR8G8B8X8, RedFirstFromWords},
    {kR16G16B16A16, kR16G16B16A16F, HalfColoursFromWords},
    {kR16G16B16A16, kR32G32B32A32F, FloatColoursFromWords},
};

const Conversion* FindConversion(EFormat from, EFormat to) {
    const auto* const found = std::ranges::find_if(
        kConversions, [&](const Conversion& conversion) { return conversion.from == from && conversion.to == to; });
    return found == std::end(kConversions) ? nullptr : found;
}

std::optional<Pixels> Convert(EFormat from, const Source& source, EFormat to) {
    if (from == kR32G32B32A32F) return PackedFromFloatColours(source, to);
    const Conversion* const conversion = FindConversion(from, to);
    if (conversion == nullptr) return std::nullopt;
    return conversion->convert(source);
}

}  // namespace

bool CanConvertTo(EFormat from, EFormat to) {
    return from == kR32G32B32A32F || FindConversion(from, to) != nullptr;
}

bool FormatConversion(EFormat from, std::size_t srcBytes, void* src, EFormat to, void*& dst, std::size_t& dstBytes) {
    const bool isReadable = src != nullptr || srcBytes == 0;
    std::optional<Pixels> converted;
    if (isReadable) converted = Convert(from, {static_cast<unsigned char*>(src), srcBytes}, to);
    if (!converted) {
        Sys::Error(L"Currently not supported", nullptr);
        dst = nullptr;
        return true;
    }
    dstBytes = converted->bytes;
    dst = converted->block.release();
    return true;
}

}  // namespace Kavra::Devices
