#include "load/AlphaAnalysis.h"

#include "common/WatchedRange.h"

#include <Imath/half.h>
#include <hwy/highway.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace Kavra::Devices {
namespace {

constexpr std::size_t kChannels = 4;

// Up to so many bytes one thread is done before another could help.
constexpr std::size_t kSerialBytes = std::size_t{1} << 17;

// A scan asks whether it is done after so many bytes.
constexpr std::size_t kChunkBytes = std::size_t{1} << 13;

// One register of every machine: memory is the limit, so wider ones gain nothing and no target has to be chosen at run
// time.
namespace hn = hwy::HWY_NAMESPACE;
constexpr std::size_t kVectorBytes = 16;

struct AlphaResult {
    bool hasTransparentPixels = false;
    bool hasTranslucentPixels = false;

    bool IsComplete() const { return hasTransparentPixels && hasTranslucentPixels; }
    friend AlphaResult operator|(const AlphaResult& a, const AlphaResult& b) {
        return {a.hasTransparentPixels || b.hasTransparentPixels, a.hasTranslucentPixels || b.hasTranslucentPixels};
    }
};

/// How an element is looked at: itself, but for half floats as the integer of its bits.
template <class T>
struct Element {
    using type = T;
};
template <>
struct Element<half> {
    using type = std::int16_t;
};
template <class T>
using ElementOf = typename Element<T>::type;

template <class T>
using Tag = hn::FixedTag<ElementOf<T>, kVectorBytes / sizeof(T)>;
template <class T>
using Vector = hn::Vec<Tag<T>>;
template <class T>
using Mask = hn::Mask<Tag<T>>;

/// Which elements are zero.
template <class T>
Mask<T> IsZero(const Vector<T>& v) {
    const Tag<T> tag;
    if constexpr (std::is_same_v<T, half>) {
        return hn::Eq(hn::And(v, hn::Set(tag, 0x7FFF)), hn::Zero(tag));
    } else {
        return hn::Eq(v, hn::Zero(tag));
    }
}

/// A half as a number in the order of the values: the bits of the magnitude, with the sign. NaN comes beyond the
/// infinities.
std::int16_t OrderOfHalf(std::int16_t bits) {
    const auto sign = static_cast<std::int16_t>(bits >> 15);
    return static_cast<std::int16_t>(((bits & 0x7FFF) ^ sign) - sign);
}
Vector<half> OrderOfHalf(const Vector<half>& bits) {
    const Vector<half> sign = hn::ShiftRight<15>(bits);
    return hn::Sub(hn::Xor(hn::And(bits, hn::Set(Tag<half>(), 0x7FFF)), sign), sign);
}

/// Which elements lie between: not zero, and below `opaque`.
template <class T>
Mask<T> IsBetween(const Vector<T>& v, T opaque) {
    const Tag<T> tag;
    if constexpr (std::is_same_v<T, half>) {
        constexpr std::int16_t infinity = 0x7C00;
        const Vector<T> order = OrderOfHalf(v);
        const std::int16_t bound =
            opaque.isNan() ? std::int16_t{-infinity} : OrderOfHalf(static_cast<std::int16_t>(opaque.bits()));
        const Mask<T> isNumber =
            hn::And(hn::Ne(order, hn::Zero(tag)), hn::Ge(order, hn::Set(tag, std::int16_t{-infinity})));
        return hn::And(isNumber, hn::Lt(order, hn::Set(tag, bound)));
    } else {
        return hn::And(hn::Ne(v, hn::Zero(tag)), hn::Lt(v, hn::Set(tag, opaque)));
    }
}

/// What a part of the image has shown, for the other parts to see that they need not go on. Only a hint: each part
/// keeps a result of its own.
class SharedResult {
public:
    void Add(const AlphaResult& result) {
        if (result.hasTransparentPixels) Raise(mHasTransparentPixels);
        if (result.hasTranslucentPixels) Raise(mHasTranslucentPixels);
    }
    bool IsComplete() const {
        return mHasTransparentPixels.load(std::memory_order_relaxed) &&
               mHasTranslucentPixels.load(std::memory_order_relaxed);
    }

private:
    static void Raise(std::atomic<bool>& flag) {
        // A store takes the cache line from all other threads, so only the first one is made.
        if (!flag.load(std::memory_order_relaxed)) flag.store(true, std::memory_order_relaxed);
    }

    std::atomic<bool> mHasTransparentPixels = false;
    std::atomic<bool> mHasTranslucentPixels = false;
};

/// Looks at all four channels, since that takes no longer, and in the end at the alpha's results alone.
template <class T>
class ChunkScan {
public:
    static constexpr std::size_t kPixelBytes = kChannels * sizeof(T);
    static constexpr std::size_t kVectorPixels = kVectorBytes / kPixelBytes;

    explicit ChunkScan(T opaque) : mOpaque(opaque) {}

    void AddPixels(const unsigned char* pixels, std::size_t count) {
        for (; count >= kVectorPixels; count -= kVectorPixels, pixels += kVectorBytes)
            AddVector(pixels);
        if (count == 0) return;
        // The rest fills a vector by being repeated, which changes no flag.
        unsigned char rest[kVectorBytes];
        for (std::size_t i = 0; i < kVectorPixels; ++i) {
            std::memcpy(rest + i * kPixelBytes, pixels + std::min(i, count - 1) * kPixelBytes, kPixelBytes);
        }
        AddVector(rest);
    }

    AlphaResult Result(std::size_t alphaChannel) const {
        AlphaResult result;
        for (std::size_t i = alphaChannel; i < kVectorPixels * kChannels; i += kChannels) {
            result = result | AlphaResult{IsSet(mZero, i), IsSet(mBetween, i)};
        }
        return result;
    }

private:
    void AddVector(const unsigned char* pixels) {
        const auto elements = hn::LoadU(Tag<T>(), reinterpret_cast<const ElementOf<T>*>(pixels));
        mZero = hn::Or(mZero, hn::VecFromMask(Tag<T>(), IsZero<T>(elements)));
        mBetween = hn::Or(mBetween, hn::VecFromMask(Tag<T>(), IsBetween<T>(elements, mOpaque)));
    }

    /// Whether an element has bits: those of a mask that was set for it.
    static bool IsSet(const Vector<T>& flags, std::size_t element) {
        unsigned char bytes[kVectorBytes];
        hn::StoreU(flags, Tag<T>(), reinterpret_cast<ElementOf<T>*>(bytes));
        return bytes[element * sizeof(T)] != 0;
    }

    T mOpaque;
    Vector<T> mZero = hn::Zero(Tag<T>()), mBetween = hn::Zero(Tag<T>());
};

/// Goes on from `result` until both flags are set, here or in all parts together.
template <class T>
AlphaResult ScanRange(const unsigned char* data, std::size_t begin, std::size_t end, int alphaChannel, T opaque,
                      AlphaResult result, SharedResult& shared) {
    constexpr std::size_t pixelBytes = kChannels * sizeof(T);
    constexpr std::size_t chunk = kChunkBytes / pixelBytes;
    for (std::size_t i = begin; i < end && !result.IsComplete() && !shared.IsComplete(); i += chunk) {
        ChunkScan<T> scan(opaque);
        scan.AddPixels(data + i * pixelBytes, std::min(chunk, end - i));
        result = result | scan.Result(static_cast<std::size_t>(alphaChannel));
        shared.Add(result);
    }
    return result;
}

/// Calls `action` with the opaque value of the element type, where the pixels of `spec` have an alpha that can be
/// worked on.
template <class Action>
void ForAlphaType(const OIIO::ImageSpec& spec, const Action& action) {
    if (spec.nchannels != static_cast<int>(kChannels)) return;
    if (spec.alpha_channel < 0 || spec.alpha_channel >= static_cast<int>(kChannels)) return;
    switch (spec.format.basetype) {
        case OIIO::TypeDesc::UINT8:
            return action(std::numeric_limits<unsigned char>::max());
        case OIIO::TypeDesc::UINT16:
            return action(std::numeric_limits<unsigned short>::max());
        case OIIO::TypeDesc::HALF:
            return action(half(1.0F));
        case OIIO::TypeDesc::FLOAT:
            return action(1.0F);
        default:
            return;
    }
}

}  // namespace

template <class T>
void GetAlphaPropertyforRGBA(unsigned char* data, std::size_t pixelCount, int alphaChannel, T opaque,
                             bool& hasTransparentPixels, bool& hasTranslucentPixels) {
    SharedResult shared;
    const AlphaResult result = Common::ReduceRangeOf(
        kProgressAnalysing, pixelCount, kSerialBytes / (kChannels * sizeof(T)), AlphaResult{},
        [&](std::size_t begin, std::size_t end, const AlphaResult& inherited) {
            return ScanRange(data, begin, end, alphaChannel, opaque, inherited, shared);
        },
        [](const AlphaResult& a, const AlphaResult& b) { return a | b; });
    hasTransparentPixels = result.hasTransparentPixels;
    hasTranslucentPixels = result.hasTranslucentPixels;
}

template <class T>
void FillAlphaforRGBA(unsigned char* data, std::size_t pixelCount, int alphaChannel, T opaque) {
    constexpr std::size_t pixelBytes = kChannels * sizeof(T);
    unsigned char* alpha = data + static_cast<std::size_t>(alphaChannel) * sizeof(T);
    const std::size_t serial = kSerialBytes / pixelBytes;
    Common::ForEachRangeOf(kProgressReading, pixelCount, serial, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            std::memcpy(alpha + i * pixelBytes, &opaque, sizeof opaque);
    });
}

template void GetAlphaPropertyforRGBA(unsigned char*, std::size_t, int, unsigned char, bool&, bool&);
template void GetAlphaPropertyforRGBA(unsigned char*, std::size_t, int, unsigned short, bool&, bool&);
template void GetAlphaPropertyforRGBA(unsigned char*, std::size_t, int, half, bool&, bool&);
template void GetAlphaPropertyforRGBA(unsigned char*, std::size_t, int, float, bool&, bool&);
template void FillAlphaforRGBA(unsigned char*, std::size_t, int, unsigned char);
template void FillAlphaforRGBA(unsigned char*, std::size_t, int, unsigned short);
template void FillAlphaforRGBA(unsigned char*, std::size_t, int, half);
template void FillAlphaforRGBA(unsigned char*, std::size_t, int, float);

void GetAlphaProperty(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec, bool& hasTransparentPixels,
                      bool& hasTranslucentPixels) {
    hasTransparentPixels = false;
    hasTranslucentPixels = false;
    if (!data) return;
    ForAlphaType(spec, [&](auto opaque) {
        GetAlphaPropertyforRGBA(data, size / (kChannels * sizeof opaque), spec.alpha_channel, opaque,
                                hasTransparentPixels, hasTranslucentPixels);
    });
}

void SetToOpaque(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec) {
    if (!data) return;
    ForAlphaType(spec, [&](auto opaque) {
        FillAlphaforRGBA(data, size / (kChannels * sizeof opaque), spec.alpha_channel, opaque);
    });
}

}  // namespace Kavra::Devices
