/// The host's view of the file system, as far as savers need it.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// A host may put its own in place with `Sys::SetFileHandler`. Threads: called from any thread.
class KAVRA_DEVICES_API IFileHandler {
public:
    virtual ~IFileHandler();

    /// Called with the whole path before a file is written, for hosts that map or check out files.
    /// The built-in handler does nothing and returns true.
    virtual bool PreparePath(const wchar_t* path) = 0;

    /// Whether `directory` (with or without a trailing separator) exists; "" is the current folder, which does.
    virtual bool DirectoryExists(const wchar_t* directory) = 0;

    /// Creates `directory` and the folders above it that are missing. True when it exists afterwards.
    virtual bool CreateDirectory(const wchar_t* directory) = 0;
};

}  // namespace Kavra::Devices
