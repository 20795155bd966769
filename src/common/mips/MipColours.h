/// What the values of a texture's pixels are while they are filtered.
#pragma once

#include "common/PixelFormats.h"

#include <kavra/devices/MipChain.h>

#include <cstddef>
#include <memory>

namespace Kavra::Common {

/// Between pixels as they are stored and the floats that are filtered. Buffers of floats have `kSlack` more than their
/// pixels take. Any number of threads may use one side by side.
class MipColours {
public:
    virtual ~MipColours() = default;

    /// Floats of a pixel.
    virtual int Channels() const = 0;
    /// Bytes of a pixel as it is stored.
    std::size_t PixelBytes() const { return mPixelBytes; }
    bool HasAlpha() const { return mHasAlpha; }
    /// The float that is alpha, as it is stored: 0 to `Full()`.
    std::size_t Alpha() const { return static_cast<std::size_t>(Channels()) - 1; }
    /// What stands for 1.
    float Full() const { return mFull; }
    bool IsOfIntegers() const { return mIsInteger; }
    ElementType Element() const { return mElement; }

    virtual void Decode(const unsigned char* in, std::size_t pixels, float* out) const = 0;
    /// Changes the floats on the way. Alpha, if there is one, is multiplied by `alphaScale`.
    void Encode(float* values, std::size_t pixels, float alphaScale, unsigned char* out) const;

protected:
    explicit MipColours(const PixelFormat& format);

    /// From the floats that are filtered to straight colours, and from these to what is stored, before it is rounded.
    virtual void Straighten(float* values, std::size_t pixels) const = 0;
    virtual void Finish(float* values, std::size_t pixels) const = 0;

    ElementType mElement;
    std::size_t mStored;  ///< channels

private:
    void ScaleAlpha(float* values, std::size_t pixels, float scale) const;

    std::size_t mPixelBytes;
    float mFull;
    bool mIsInteger, mHasAlpha;
};

/// Null where such pixels can have no such content. Throws `std::bad_alloc`.
std::unique_ptr<MipColours> NewMipColours(const PixelFormat& format, const Devices::MipOptions& options);

}  // namespace Kavra::Common
