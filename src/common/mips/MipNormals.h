/// Vectors of length 1, as normal maps hold them.
#pragma once

#include "common/mips/MipColours.h"

namespace Kavra::Common {

/// The vectors themselves are filtered, not yet made unit again: where they differ, their mean is short and counts less
/// in the levels to come, as it should. What follows them is data, as it is stored.
class MipNormals final : public MipColours {
public:
    /// Of two channels or more. `derivesThird`: only the first two are looked at.
    MipNormals(const PixelFormat& format, bool derivesThird);

    int Channels() const override { return static_cast<int>(mStored == 2 ? 3 : mStored); }
    void Decode(const unsigned char* in, std::size_t pixels, float* out) const override;

protected:
    void Straighten(float* values, std::size_t pixels) const override;
    void Finish(float* values, std::size_t pixels) const override;

private:
    void ToVector(float* pixel) const;
    void ToUnit(float* pixel) const;

    bool mDerivesThird;
    std::size_t mX, mZ;  ///< the channels of red and blue
    float mNothing;      ///< a vector that is no longer has no direction
};

}  // namespace Kavra::Common
