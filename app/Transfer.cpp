#include "Transfer.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr float kKnee = 0.0031308F;  // of light: a straight line below

/// The curve between its knee and 1: 256 steps for each doubling of light, which the bits of a float count.
class CurveTable {
public:
    CurveTable() {
        for (std::uint32_t i = 0; i < mValues.size(); ++i) {
            const double light = std::bit_cast<float>(kFirst + (i << kShift));
            mValues[i] = static_cast<float>(1.055 * std::pow(light, 1 / 2.4) - 0.055);
        }
    }

    /// `light` is from 2^-9 to below 1. A straight line lies within 0.0000005 of the curve over each step.
    float At(float light) const {
        const std::uint32_t bits = std::bit_cast<std::uint32_t>(light) - kFirst;
        const std::uint32_t step = bits >> kShift;
        const float part = static_cast<float>(bits & ((1U << kShift) - 1)) / (1U << kShift);
        return mValues[step] + part * (mValues[step + 1] - mValues[step]);
    }

private:
    static constexpr std::uint32_t kFirst = std::bit_cast<std::uint32_t>(0x1p-9F);
    static constexpr std::uint32_t kShift = 15;

    std::array<float, 9 * 256 + 1> mValues{};
};
static_assert(kKnee >= 0x1p-9F);

}  // namespace

bool Transfer::IsForDisplay() const {
    constexpr double kNear = 0.05;
    return kind == kTransferSrgb || (kind == kTransferGamma && std::abs(gamma - 2.2) < kNear);
}

float EncodeSrgb(float light) {
    static const CurveTable table;
    if (!(light > 0)) return 0;
    if (light <= kKnee) return 12.92F * light;
    return light < 1 ? table.At(light) : 1;
}

float DecodeSrgb(float value) {
    if (!(value > 0.04045F)) return value / 12.92F;
    return static_cast<float>(std::pow((value + 0.055) / 1.055, 2.4));
}

float Decode(const Transfer& transfer, float value) {
    switch (transfer.kind) {
        case kTransferSrgb:
            return DecodeSrgb(value);
        case kTransferGamma:
            return value > 0 ? static_cast<float>(std::pow(static_cast<double>(value), transfer.gamma)) : value;
        case kTransferUnknown:
        case kTransferLinear:
            break;
    }
    return value;
}

}  // namespace Kavra::App
