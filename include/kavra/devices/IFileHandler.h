/// \file
/// The host's view of the file system, as far as savers need it.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// What a module asks before it writes a file. A host may put its own in place with `Sys::SetFileHandler`; the built-in
/// one asks the operating system.
///
/// `SaveTexture`, `SaveTarget`, `writeImageOneLineAtATime` and `IImage::Save` go through the same steps before they
/// open a file: `PreparePath`, then `DirectoryExists` with its folder, then, if that says no, `CreateDirectory`. Loads
/// ask nothing. The file itself is then opened by its path, not through this interface.
///
/// Threads: called on the thread that saves, so from several at once. An exception makes the save fail.
class KAVRA_DEVICES_API IFileHandler {
public:
    virtual ~IFileHandler();

    /// Called with the whole path before a file is written, for hosts that map or check out files. The answer is not
    /// looked at: a save goes on also after false. The built-in handler does nothing and returns true.
    virtual bool PreparePath(const wchar_t* path) = 0;

    /// Whether `directory` exists: the path's folder with its trailing separator, at most 259 characters, or "" for the
    /// current folder, which does. A wrong yes makes the save fail when the file is opened; a wrong no costs a
    /// `CreateDirectory`.
    virtual bool DirectoryExists(const wchar_t* directory) = 0;

    /// Creates `directory` and the folders above it that are missing. True when it exists afterwards, whoever made it.
    /// After false the save fails with the warning "fail to create specified folder". A folder that was created stays,
    /// also when the save fails later.
    virtual bool CreateDirectory(const wchar_t* directory) = 0;
};

}  // namespace Kavra::Devices
