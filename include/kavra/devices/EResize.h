/// Ways to bring a pixel block to another size.
#pragma once

namespace Kavra::Devices {

enum EResizeMethod : int {
    kResizeCopy = 0,       ///< the block as it is
    kResizeFilter = 1,     ///< resampled with an `EImageFilterType`
    kResizeCropOrPad = 2,  ///< pixels keep their size; the block is cut or filled up with zeros
};

enum EImageFilterType : int {
    kFilterNearest = 0,
    kFilterMitchell = 1,
    kFilterBilinear = 2,
};

}  // namespace Kavra::Devices
