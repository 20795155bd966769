/// What every reader of a legacy raster format offers.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>

#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

/// Drives a reader without knowing its format: `Open` once, then the describing operations and `ReadImage`. Readers are
/// made by `CreateImageReader` and owned by its caller. One thread at a time.
class ImageReaderInterface {
public:
    virtual ~ImageReaderInterface() = default;

    /// Opens the file and parses its header. False when it is not accepted; never throws for what a file holds.
    virtual bool Open(const KString& path) = 0;

    /// Decodes frame `frame` (0 and up) into `buffer`: exactly `GetHeight()` x `GetRowPitch()` bytes, which the caller
    /// has allocated. False on corrupt or short data; what was decoded by then stays in the buffer.
    virtual bool ReadImage(unsigned char* buffer, int frame) = 0;

    // Valid once `Open` returned true.
    virtual int GetWidth() = 0;     ///< pixel columns
    virtual int GetHeight() = 0;    ///< pixel rows
    virtual int GetRowPitch() = 0;  ///< bytes from one row to the next
    virtual EFormat GetFormat() { return kR8G8B8A8; }
    virtual int GetFrameCount() { return 1; }
    virtual EDataOrientation GetOrientation() { return kTopLeft; }
    /// Bytes that the reader holds while `ReadImage` runs, beside the buffer and a few rows.
    virtual std::uint64_t GetWorkingBytes() { return 0; }

    /// Readers live in blocks of the default allocator. Null when there is no memory.
    static void* operator new(std::size_t bytes) noexcept;
    static void operator delete(void* block) noexcept;
};

}  // namespace Kavra::Devices
