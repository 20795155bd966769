/// The rows of a picture that never exists as a whole.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// Implemented by the host, borrowed by a module for one call. Slots: 0 destructor, 1 `FillLine`.
class KAVRA_DEVICES_API IWriteImageLineProvider {
public:
    virtual ~IWriteImageLineProvider();

    /// Fills the next row, top row first: width x 4 bytes, four bytes a pixel whatever the file's channel count.
    /// The buffer holds the row before, or zeros at the first call.
    virtual void FillLine(void* line) = 0;
};

}  // namespace Kavra::Devices
