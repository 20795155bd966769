/// Where a file is written until it is whole.
#pragma once

#include <kavra/devices/Export.h>

#include <string>

namespace Kavra::Devices {

/// The name a file is written under. Where nothing has the file's own name yet, that is it. Where an old file has it,
/// the new one is written beside it, and takes its place and its permissions only when it is whole: whatever happens
/// in between - memory that fails inside the library may even end the process - the old one stays.
///
/// An old file that cannot be given away is written over from the start: a symbolic or hard link, a file of another
/// user, or one in a folder that takes no new file.
class FilePlace {
public:
    /// Prepares the place for a regular file or a free name. Throws `std::bad_alloc`.
    explicit FilePlace(const KString& path);
    /// Removes what was not committed, unless it stands under the file's own name.
    ~FilePlace();
    FilePlace(const FilePlace&) = delete;
    FilePlace& operator=(const FilePlace&) = delete;

    /// The path to write to. Its extension is the file's own, by which some writers go.
    const wchar_t* Path() const { return mPath.c_str(); }

    /// Gives the finished and closed file its own name; whether that succeeded. Needs no memory.
    bool Commit();

    /// Removes what was written, also under the file's own name, if there was nothing: whoever stops a save wants none of
    /// it. To be called once the file is closed.
    void Discard();

private:
    std::wstring mPath;
    bool mWasFree;
    // Where an old file waits to be replaced, else both empty: the path in the system's terms, and the file's own.
    std::string mBeside, mOwn;
};

}  // namespace Kavra::Devices
