/// What every reader of a legacy raster format offers.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"
#include "common/RowSink.h"

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Kavra::Devices {

/// The open files that a picture stands in.
struct PictureFiles {
    std::wstring path;                         ///< that the host named
    Common::ByteSource source;                 ///< of the file with the pixels
    std::optional<Common::ByteSource> header;  ///< of the file beside it that describes them, where the format has one
};

/// Drives a reader without knowing its format: `Open` once, then the describing operations and `ReadImage`. Readers are
/// made by `CreateImageReader` and owned by its caller. One thread at a time.
///
/// A reader holds an open source, which is nothing while no file is open, and the header that was read from it, which
/// then is that of a picture without pixels. Messages are raised in `OpenFiles`, `SelectFrame` and `ReadFrame` alone, not
/// by the decoders that they ask.
class ImageReaderInterface {
public:
    virtual ~ImageReaderInterface() = default;

    /// Opens the file and parses its header. False when it is not accepted; never throws for what a file holds.
    virtual bool Open(const KString& path);

    /// Decodes frame `frame` (0 and up) into `buffer`: exactly `GetHeight()` x `GetRowPitch()` bytes, which the caller
    /// has allocated. False on corrupt or short data; what was decoded by then stays in the buffer.
    virtual bool ReadImage(unsigned char* buffer, int frame);

    // Valid once `Open` returned true.
    virtual int GetWidth() = 0;     ///< pixel columns
    virtual int GetHeight() = 0;    ///< pixel rows
    virtual int GetRowPitch() = 0;  ///< bytes from one row to the next
    virtual EFormat GetFormat() { return kR8G8B8A8; }
    virtual int GetFrameCount() { return 1; }
    virtual EDataOrientation GetOrientation() { return kTopLeft; }
    /// Chooses the frame (0 and up) that the describing operations and `ReadFrame` are about, for formats whose frames
    /// have sizes of their own: called between them and `Open`, before which it is the first. False where there is no
    /// such frame.
    virtual bool SelectFrame(int /*frame*/) { return true; }
    /// Bytes that the reader holds while `ReadFrame` runs, beside what the sink holds and a few rows.
    virtual std::uint64_t GetWorkingBytes() { return 0; }
    /// Has the reader find out what `GetDifference` tells, also where that takes work. Asked before `Open`.
    virtual void LookForDifferences() {}
    /// What the contract's reading did so far that the common one does otherwise (`Reading::Difference`), or null.
    virtual const char* GetDifference() { return nullptr; }

    /// Opens the files of the picture that a path leads to: the file itself, unless the format has others.
    [[nodiscard]] virtual Common::Result<PictureFiles> FindFiles(const KString& path);
    /// Forgets the file that is open.
    virtual void Close() = 0;
    /// Takes over open files and parses the header. For a reader that is closed, and stays so where that fails.
    [[nodiscard]] virtual Common::Result<> OpenFiles(PictureFiles files) = 0;
    /// What `ReadImage` does, into rows as the sink hands them out, and with the reason where it fails. Asks for
    /// `GetHeight()` rows of `GetRowPitch()` bytes at most, in order, and never looks back at one. Pixels that the
    /// format leaves undefined keep what they held.
    [[nodiscard]] virtual Common::Result<> ReadFrame(Common::RowSink& rows, int frame) = 0;

    /// What `Open` does for files that are open already, with the reason where it fails.
    [[nodiscard]] Common::Result<> Open(PictureFiles files);

    /// Readers live in blocks of the default allocator. Null when there is no memory.
    static void* operator new(std::size_t bytes) noexcept;
    static void operator delete(void* block) noexcept;
};

}  // namespace Kavra::Devices
