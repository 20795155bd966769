/// A watched file for writers that want a C stream.
#pragma once

#include "common/FileHandle.h"
#include "output/WatchedFile.h"

#include <OpenImageIO/filesystem.h>

namespace Kavra::Devices {

/// The library's own kind of file over a watched one, as the JPEG writer wants it: for any other proxy that writer
/// collects the whole compressed picture first, and over a real stream the JPEG library ends the process when the disk
/// is full. Like every write to the watched file, one to this stream succeeds.
///
/// `proxytype()` is "file". Throws `std::bad_alloc`.
class WatchedStream final : private Common::FileHandle, public OIIO::Filesystem::IOFile {
public:
    /// `file` outlives the stream.
    explicit WatchedStream(WatchedFile& file);

    /// Hands on what is still in the stream's own buffer.
    void HandOn();
};

}  // namespace Kavra::Devices
