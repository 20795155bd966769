/// A file that one of OpenImageIO's writers fills.
#pragma once

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <memory>
#include <optional>

#include "output/WatchedFile.h"
#include "output/WatchedStream.h"

namespace Kavra::Devices {

/// Stands between the module and a writer: never lets it do what it crashes on, and notices what it does not notice
/// itself. What it writes goes to the disk as it comes. Raises no message.
class LibraryFile {
public:
    /// Finds the writer that the path's extension names. `path` must outlive the object.
    explicit LibraryFile(const KString& path);
    /// Closes the file, whatever is in it.
    ~LibraryFile();
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    /// Whether there is a writer. Without one nothing else may be called.
    bool HasWriter() const { return mWriter != nullptr; }

    /// Opens the file for a picture; false when the writer does not take it, or would mishandle it, or when what is
    /// there is no file. A file that did not open must not be written to: some writers crash then.
    bool Open(const OIIO::ImageSpec& spec);
    OIIO::ImageOutput& Writer() { return *mWriter; }

    /// Closes the open file: whether all that was written is there.
    bool Close();

private:
    bool SetProxy();

    const KString& mPath;
    // Both outlive the writer, which may use them to its end.
    WatchedFile mWatched;
    std::optional<WatchedStream> mStream;
    std::unique_ptr<OIIO::ImageOutput> mWriter;  // null where the extension names none
    bool mIsWatched = false;
    bool mIsOpen = false;
};

}  // namespace Kavra::Devices
