#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/host/devices/PixelKernels.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/PixelScaling-inl.h"
#include "frame/host/devices/PixelKernelExpand-inl.h"
#include "frame/host/devices/PixelKernelPack-inl.h"
#include "frame/host/devices/PixelKernels.h"

#include <bit>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Devices::HWY_NAMESPACE {

template <class Kernel>
void Run(const PixelRun& run) {
    Convert(Kernel{}, run);
}
template <class Kernel>
void RunScaled(const PixelRun& run, float factor) {
    Convert(Kernel{{factor}}, run);
}

using std::uint16_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;

void FourFrom16(const PixelRun& run, unsigned short alpha) {
    Convert(LaneKernel<uint16_t, uint64_t, ThriceAndAlpha>{{uint64_t{alpha} << 48}}, run);
}
void FourFrom32(const PixelRun& run, float alpha) {
    Convert(Repeat32Kernel<4>(std::bit_cast<uint32_t>(alpha)), run);
}
void ThreeFrom32(const PixelRun& run) {
    Convert(Repeat32Kernel<3>(0), run);
}

const PixelKernels& Table() {
    static constexpr PixelKernels kTable = {
        .swapRedBlueOf4U8 = Run<SwapRedBlueKernel>,
        .opaque4U8FromU8 = Run<LaneKernel<uint8_t, uint32_t, OpaqueGrey>>,
        .u16FromU8 = Run<LaneKernel<uint8_t, uint16_t, Twice>>,
        .twoU16FromU8 = Run<LaneKernel<uint8_t, uint32_t, FourTimes>>,
        .opaque4U8FromU16 = Run<LaneKernel<uint16_t, uint32_t, OpaqueGreyOf16>>,
        .twoU16FromU16 = Run<LaneKernel<uint16_t, uint32_t, Twice>>,
        .fourFrom16 = FourFrom16,
        .fourFrom32 = FourFrom32,
        .threeFrom16 = Run<Three16Kernel>,
        .threeFrom32 = ThreeFrom32,
        .floatFromU8 = RunScaled<FloatKernel<uint8_t>>,
        .floatFromU16 = RunScaled<FloatKernel<uint16_t>>,
        .floatFromHalf = RunScaled<FloatKernel<hwy::float16_t>>,
        .halfFromU8 = RunScaled<HalfKernel<uint8_t>>,
        .halfFromU16 = RunScaled<HalfKernel<uint16_t>>,
        .u8FromU16 = RunScaled<ByteFromWordKernel<>>,
        .oneU8From4Float = Run<PackBytes<1>>,
        .fourU8From4Float = Run<PackBytes<4>>,
        .fourU8BlueFirstFrom4Float = Run<PackBytes<4, true>>,
        .oneU16From4Float = Run<PackWords<1>>,
        .twoU16From4Float = Run<PackWords<2>>,
        .fourU16From4Float = Run<PackWords<4>>,
        .oneHalfFrom4Float = Run<PackHalves<1>>,
        .twoHalfFrom4Float = Run<PackHalves<2>>,
        .fourHalfFrom4Float = Run<PackHalves<4>>,
        .oneFloatFrom4Float = Run<PackFloats<1>>,
        .twoFloatFrom4Float = Run<PackFloats<2>>,
        .threeFloatFrom4Float = Run<DropAlpha>,
        .fourFloatFrom4Float = Run<PackFloats<4>>,
    };
    return kTable;
}

}  // namespace Kavra::Devices::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Devices {

HWY_EXPORT(Table);

const PixelKernels& Kernels() {
    return HWY_DYNAMIC_DISPATCH(Table)();
}

}  // namespace Kavra::Devices
#endif
