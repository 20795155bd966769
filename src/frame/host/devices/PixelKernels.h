/// The inner loops of the pixel converters, one per pair, in the widest vectors that the machine has.
#pragma once

#include "common/PixelRun.h"

namespace Kavra::Devices {

using Common::PixelRun;

/// Named destination first, then source: U8 and U16 are integers, Half and Float floating point, the number in
/// front of a name is the channels of a pixel. A kernel without a number works on elements, whatever the channels.
struct PixelKernels {
    using Kernel = void (*)(const PixelRun&);
    using ScalingKernel = void (*)(const PixelRun&, float factor);
    template <class T>
    using ExpandingKernel = void (*)(const PixelRun&, T alpha);

    Kernel swapRedBlueOf4U8;
    Kernel opaque4U8FromU8;
    Kernel u16FromU8;     ///< v x 257
    Kernel twoU16FromU8;  ///< v x 257, twice
    Kernel opaque4U8FromU16;
    Kernel twoU16FromU16;

    /// The bits of one channel three times, alone or with an alpha; floating-point bits as they are.
    ExpandingKernel<unsigned short> fourFrom16;
    ExpandingKernel<float> fourFrom32;
    Kernel threeFrom16;
    Kernel threeFrom32;

    /// Products in single precision, rounded as `ImageHandlerHelper::TypeInToTypeOut` says.
    ScalingKernel floatFromU8;
    ScalingKernel floatFromU16;
    ScalingKernel floatFromHalf;
    ScalingKernel halfFromU8;
    ScalingKernel halfFromU16;
    ScalingKernel u8FromU16;

    /// From pixels of four floats, rounded as `AFormatConvertor::FloatToFormat` says; the first channels are taken.
    Kernel oneU8From4Float, fourU8From4Float, fourU8BlueFirstFrom4Float;
    Kernel oneU16From4Float, twoU16From4Float, fourU16From4Float;
    Kernel oneHalfFrom4Float, twoHalfFrom4Float, fourHalfFrom4Float;
    Kernel oneFloatFrom4Float, twoFloatFrom4Float, threeFloatFrom4Float, fourFloatFrom4Float;
};

/// The kernels for this machine. The vector width is chosen when it is first asked for.
const PixelKernels& Kernels();

}  // namespace Kavra::Devices
