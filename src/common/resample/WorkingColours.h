/// The numbers that colours are filtered as: elements as floats, and what options ask for beyond that.
#pragma once

#include "common/resample/ResampleMethod.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Kavra::Common {

/// Units are those of the pixels throughout: 0 to 255 for 8 bits, 0 to 65535 for 16, 0 to 1 of light for halves and
/// floats.
class WorkingColours {
public:
    WorkingColours(const ResamplePixels& pixels, const ResampleOptions& options);

    /// Whether colours so described are weighted by alpha on their way, and whether a curve is undone: asked without
    /// the tables of one that works.
    static bool Weights(const ResamplePixels& pixels, const ResampleOptions& options);
    static bool UndoesCurve(const ResamplePixels& pixels, const ResampleOptions& options);

    bool IsWeighted() const { return mIsWeighted; }
    /// Whether elements become floats and nothing else happens to them.
    bool IsPlain() const { return !mIsWeighted && mDecoded.empty(); }

    /// `count` elements of whole pixels as floats, linear where that is asked for.
    void Decode(const unsigned char* in, std::size_t count, float* out) const;
    /// Multiplies the colours of `count` floats of whole pixels by their alpha.
    void Weight(float* values, std::size_t count) const;
    /// Divides them by it again.
    void Unweight(float* values, std::size_t count) const;
    /// Linear colours to those that are stored.
    void Encode(float* values, std::size_t count) const;

private:
    template <class T>
    void DecodeCurve(const unsigned char* in, std::size_t count, float* out) const;
    float EncodedColour(float value) const;

    Devices::ElementType mElement;
    std::size_t mChannels;
    std::size_t mAlpha;  ///< the channel, or one that there is not
    bool mIsWeighted;
    float mFull;                  ///< the largest value of an integer, else 1
    float mNothing;               ///< so much do colours weigh that are transparent
    std::vector<float> mDecoded;  ///< the linear value of each integer; empty: no curve is undone
};

}  // namespace Kavra::Common
