/// \file
/// Versions of the host object library.
#pragma once

#include <kavra/objects/Export.h>

namespace Kavra::Objects {

/// A version, written major.minor.patch.build.
struct Version {
    int major = 0;  ///< other numbers are incompatible
    int minor = 0;  ///< other numbers are incompatible
    int patch = 0;  ///< larger numbers run what was built against smaller ones
    int build = 0;  ///< the same, among equal patches
};

/// The version of the host that a module was built against. A module holds one such object at namespace scope, so that
/// it exists before either entry point is called. Constant after construction, so any thread may read it.
class KAVRA_OBJECTS_API DLLVersionCheck {
public:
    /// Keeps the four numbers.
    DLLVersionCheck(int major, int minor, int patch, int build);
    /// The numbers, for as long as the object lives.
    const Version& BuiltAgainst() const { return mVersion; }

private:
    Version mVersion;
};

/// Whether module and host fit together. A module asks once, in `KavraInitialize`, and refuses to start in a host that
/// answers no:
///
///     if (!Toolkit::CheckCompatibleVersion(17, 1, 2, 0)) return false;   // after "Dll version conflict!"
///
/// Static operations only. Threads: the version is a plain value; set it before other threads or modules ask.
class KAVRA_OBJECTS_API Toolkit {
public:
    /// Whether a module built against this version may run in this host: the same major and minor numbers, and a
    /// patch and build that are not newer than the host's. 17.1.1.9 may run in 17.1.2.0; 17.1.2.1 and 17.0.2.0 may not.
    static bool CheckCompatibleVersion(int major, int minor, int patch, int build);

    /// The version of the running host; 17.1.2.0 unless an embedding program says otherwise.
    static Version HostVersion();
    /// Sets the version, for programs that embed the library under one of their own. Call it before modules are loaded.
    static void SetHostVersion(const Version& version);
};

}  // namespace Kavra::Objects
