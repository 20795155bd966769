#include "common/mips/SrgbRounding.h"

#include "common/SrgbCurve.h"

#include <algorithm>
#include <bit>

namespace Kavra::Common {

namespace {

constexpr float kFullByte = 255;
constexpr int kFractionBits = 23;             // of a float
constexpr int kByteBits = 7, kWordBits = 11;  // of these in a key

}  // namespace

std::size_t SrgbRounding::KeyOf(float unit) const {
    return std::bit_cast<std::uint32_t>(unit) >> mShift;
}

SrgbRounding::SrgbRounding(float full)
    : mScale(1 / full), mShift(kFractionBits - (full <= kFullByte ? kByteBits : kWordBits)) {
    const auto count = static_cast<std::size_t>(full) + 1;
    mLimits.resize(count);
    for (std::size_t i = 1; i < count; ++i) {
        const double stored = (static_cast<double>(i) - 0.5) / static_cast<double>(full);
        mLimits[i] = static_cast<float>(LightOfSrgb(stored));
    }
    mFirstKey = KeyOf(mLimits[1]);
    const std::size_t lastKey = KeyOf(mLimits.back());
    for (std::size_t key = mFirstKey; key <= lastKey; ++key) {
        const auto least = std::bit_cast<float>(static_cast<std::uint32_t>(key << mShift));
        const auto above = std::upper_bound(mLimits.begin() + 1, mLimits.end(), least);
        mGuesses.push_back(static_cast<std::uint16_t>(above - mLimits.begin() - 1));
    }
}

}  // namespace Kavra::Common
