/// Versions of the host object library.
#pragma once

#include <kavra/objects/Export.h>

namespace Kavra::Objects {

/// major.minor.patch.build
struct Version {
    int major = 0;
    int minor = 0;
    int patch = 0;
    int build = 0;
};

/// A module holds one such object at namespace scope, with the version of the host it was built against.
class KAVRA_OBJECTS_API DLLVersionCheck {
public:
    DLLVersionCheck(int major, int minor, int patch, int build);
    const Version& BuiltAgainst() const { return mVersion; }

private:
    Version mVersion;
};

class KAVRA_OBJECTS_API Toolkit {
public:
    /// Whether a module built against this version may run in this host: the same major and minor numbers, and a
    /// patch and build that are not newer than the host's.
    static bool CheckCompatibleVersion(int major, int minor, int patch, int build);

    /// The version of the running host; 17.1.2.0 unless an embedding program says otherwise.
    static Version HostVersion();
    /// For programs that embed the library under a version of their own. Call it before modules are loaded.
    static void SetHostVersion(const Version& version);
};

}  // namespace Kavra::Objects
