/// \file
/// Reading OpenEXR files through the format's reference library.
#pragma once

#include <kavra/devices/Export.h>

#include <cstddef>

namespace Kavra::Devices {

class ExrStream;

/// Reads the first part of an OpenEXR file (https://openexr.com/en/latest/OpenEXRFileLayout.html) as 32-bit floats:
/// scanline, tiled (level 0) and multi-part files. The picture is the data window. Which channels become colours, the
/// first rule that fits:
///
/// 1. R, G, B by name; those that are missing are 0;
/// 2. luminance with chroma (Y, RY, BY), at half precision, which is what the chroma filters have;
/// 3. Y alone, as grey;
/// 4. R, G, B of the first layer that has any ("name.R");
/// 5. the first channel there is, whatever it means, as grey.
///
/// Alpha is A of the same layer. Colours are premultiplied by it as the format has it, and linear; nothing is
/// converted.
///
///     EXRHandler exr(true);
///     if (EXRHandler::IsPreferedHandler(path) && exr.ReadFromFile(path)) Use(exr.internalBuffer(), exr.width());
///
/// One object holds one picture, on one thread at a time; different objects are independent. No message is raised and
/// nothing thrown.
class KAVRA_DEVICES_API EXRHandler {
public:
    /// Makes an empty handler. `flag` is for hosts that choose between readers; it changes nothing here.
    explicit EXRHandler(bool flag);
    virtual ~EXRHandler();
    EXRHandler(const EXRHandler&) = delete;
    EXRHandler& operator=(const EXRHandler&) = delete;

    /// Whether the file begins with the OpenEXR magic number (76 2F 31 01). Cheap: reads four bytes. False for null and
    /// for what is no regular file.
    static bool IsPreferedHandler(const wchar_t* path);

    /// The same of a file whose first bytes are known: `bytes` of them, of which four are looked at.
    static bool IsPreferedHandler(const unsigned char* start, std::size_t bytes);

    /// Reads the whole image in place of the one before. False, and the handler is empty, when the file is not there,
    /// is damaged or cut short, holds deep data or subsampled colours, or claims a size that no file of its length
    /// could hold or that passes `ObjModel::BlockCeiling`.
    bool ReadFromFile(const wchar_t* path);

    /// The same of a file's `size` bytes in memory.
    bool ReadMemory(const void* bytes, std::size_t size);

    int width() const;           ///< pixels; 0 while empty
    int height() const;          ///< rows; 0 while empty
    bool supportsAlpha() const;  ///< whether pixels have four channels; false while empty

    /// width x height pixels of 32-bit floats, packed, top row first, 4 channels when `supportsAlpha()`, else 3. Owned
    /// by the handler and valid until it reads another file or goes; null while it is empty.
    const float* internalBuffer() const;

private:
    void Clear();
    void Take(ExrStream& stream);

    int mWidth = 0;
    int mHeight = 0;
    bool mAlpha = false;
    float* mPixels = nullptr;
};

}  // namespace Kavra::Devices
