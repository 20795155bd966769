/// A file that one of OpenImageIO's writers fills.
#pragma once

#include "common/Progress.h"
#include "output/FilePlace.h"
#include "output/WatchedFile.h"
#include "output/WatchedStream.h"

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <memory>
#include <optional>
#include <span>

namespace Kavra::Devices {

/// Stands between the module and a writer: never lets it do what it crashes on, and notices what it does not notice
/// itself. What it writes goes to the disk as it comes; an old file is replaced only by a whole one. An exception of
/// the writer is a failure. Raises no message.
///
/// Whoever watches hears of the rows. What opens, writes and closes throws `Common::Cancelled` where it is to stop; then
/// nothing of the file is left.
class LibraryFile {
public:
    /// Finds the writer that the path's extension names. `path` must outlive the object.
    explicit LibraryFile(const KString& path);
    /// Closes the file, whatever is in it.
    ~LibraryFile();
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    /// Whether there is a writer; says why not. Without one nothing else may be called.
    bool HasWriter() const;

    /// Whether half floats come out wrong and must be handed on as floats.
    bool WantsFloatsForHalves() const;

    /// The library's name for the writer's format: "png".
    const char* Format() const { return mWriter->format_name(); }

    /// Opens the file for a picture; false when the writer does not take it, or would mishandle it, or when what is
    /// there is no file. A file that did not open must not be written to: some writers crash then.
    bool Open(const OIIO::ImageSpec& spec) { return Open(std::span(&spec, 1)); }
    /// The same for several pictures, of which the first is written next; `OpenNext` goes on to each of the others.
    bool Open(std::span<const OIIO::ImageSpec> specs);
    bool OpenNext(const OIIO::ImageSpec& spec);

    /// Hands the pixels of the whole picture on, of the type and channels of the open file; strides are in bytes.
    bool WriteImage(const void* pixels, OIIO::stride_t pixelStride, OIIO::stride_t rowStride);
    /// Hands row `y` on, of bytes.
    bool WriteRow(int y, const unsigned char* row, OIIO::stride_t pixelStride);

    /// Closes the open file: whether every call succeeded and all that was written is there.
    bool Close();

private:
    bool WriteTiles(const unsigned char* pixels, OIIO::stride_t pixelStride, OIIO::stride_t rowStride);
    bool WriteRows(const unsigned char* pixels, OIIO::stride_t pixelStride, OIIO::stride_t rowStride);
    void Advance(int rows);
    bool SetProxy();
    void SayWhy();
    bool IsThere();
    template <class Action>
    bool Try(const Action& action);

    const KString& mPath;
    std::optional<Common::ProgressMeter> mMeter;  // from the opening on, as the next
    std::optional<FilePlace> mPlace;
    // Both outlive the writer, which may use them to its end.
    std::optional<WatchedFile> mWatched;
    std::optional<WatchedStream> mStream;
    std::unique_ptr<OIIO::ImageOutput> mWriter;  // null where the extension names none
    OIIO::TypeDesc mElement;
    OIIO::imagesize_t mBytes = 0;
    bool mIsWatched = false;
    bool mIsOpen = false;
    bool mHasFailed = false, mHasThrown = false, mIsCancelled = false;
};

}  // namespace Kavra::Devices
