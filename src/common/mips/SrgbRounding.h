/// Light to integers under the curve of sRGB, rounded to the nearest, by table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kavra::Common {

/// Knows from which light on each integer is the nearest one. A first guess by the leading bits of the light is never
/// above it and a few below it at most. No power is computed, so every machine gives the same integers.
class SrgbRounding {
public:
    /// Of 0 to `full`, 255 or 65,535. Throws `std::bad_alloc`.
    explicit SrgbRounding(float full);

    /// The integer that stands for `light`, which is 0 to `full` too. What is no number is 0.
    float Nearest(float light) const {
        const float unit = light * mScale;
        if (!(unit > mLimits[1])) return unit == mLimits[1] ? 1.0F : 0.0F;
        if (unit >= mLimits.back()) return static_cast<float>(mLimits.size() - 1);
        std::size_t integer = mGuesses[KeyOf(unit) - mFirstKey];
        while (unit >= mLimits[integer + 1])
            ++integer;
        return static_cast<float>(integer);
    }

private:
    std::size_t KeyOf(float unit) const;

    float mScale;
    int mShift;  ///< of a float's bits: those that are left are the key
    std::size_t mFirstKey;
    std::vector<float> mLimits;  ///< the least light of each integer, of 0 to 1; the first means nothing
    std::vector<std::uint16_t> mGuesses;
};

}  // namespace Kavra::Common
