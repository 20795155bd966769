/// Reading OpenEXR files through the format's reference library.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// Reads the first part of an OpenEXR file (https://openexr.com/en/latest/OpenEXRFileLayout.html) as 32-bit floats:
/// channels R, G, B, A by name, or Y, or luminance-chroma, whatever other channels there are; scanline, tiled and
/// multi-part files. The picture is the data window. One object holds one picture, on one thread at a time.
class KAVRA_DEVICES_API EXRHandler {
public:
    /// `flag` is for hosts that choose between readers; it changes nothing here.
    explicit EXRHandler(bool flag);
    virtual ~EXRHandler();
    EXRHandler(const EXRHandler&) = delete;
    EXRHandler& operator=(const EXRHandler&) = delete;

    /// True when the file begins with the OpenEXR magic number (76 2F 31 01). Cheap: reads four bytes.
    static bool IsPreferedHandler(const wchar_t* path);

    /// Reads the whole image; false on failure, and the handler is empty then.
    bool ReadFromFile(const wchar_t* path);

    int width() const;   ///< pixels
    int height() const;  ///< rows
    bool supportsAlpha() const;

    /// width x height pixels of 32-bit floats, top row first, 4 channels when `supportsAlpha()`, else 3. Owned by the
    /// handler; null while it is empty.
    const float* internalBuffer() const;

private:
    int mWidth = 0;
    int mHeight = 0;
    bool mAlpha = false;
    float* mPixels = nullptr;
};

}  // namespace Kavra::Devices
