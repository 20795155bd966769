/// \file
/// The rows of a picture that never exists as a whole.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// Produces the rows of `IImageHandler::writeImageOneLineAtATime`. Implemented by the host and borrowed for that call
/// only.
///
///     class Gradient : public IWriteImageLineProvider {
///         void FillLine(void* line) override {
///             auto* pixel = static_cast<unsigned char*>(line);
///             for (int x = 0; x < mWidth; ++x, pixel += 4) pixel[0] = pixel[1] = pixel[2] = mRow & 255;
///             ++mRow;
///         }
///         int mWidth = 1024, mRow = 0;
///     };
///
/// It is asked for every row, once each, from the top to the bottom, on the thread of the call. It is not told of
/// failures: also when the file could not be opened or a row could not be written it is asked for all the rest. It is
/// not asked at all when the path is wrong, its folder cannot be made or no writer knows its extension.
///
/// Vtable slots: 0 destructor, 1 `FillLine`.
class KAVRA_DEVICES_API IWriteImageLineProvider {
public:
    virtual ~IWriteImageLineProvider();

    /// Fills the next row. `line` holds width x 4 bytes, four bytes a pixel whatever the file's channel count: red,
    /// green, blue, alpha, of which a file with fewer channels takes the first ones. It holds the row before, or zeros
    /// at the first call, and is valid for the call only. An exception ends the writing; the operation then returns
    /// false and leaves what was written.
    virtual void FillLine(void* line) = 0;
};

}  // namespace Kavra::Devices
