#include <kavra/objects/Toolkit.h>

#include <tuple>

namespace Kavra::Objects {
namespace {

constinit Version gHost{17, 1, 2, 0};

}  // namespace

DLLVersionCheck::DLLVersionCheck(int major, int minor, int patch, int build) : mVersion{major, minor, patch, build} {}

bool Toolkit::CheckCompatibleVersion(int major, int minor, int patch, int build) {
    return major == gHost.major && minor == gHost.minor &&
           std::tuple(patch, build) <= std::tuple(gHost.patch, gHost.build);
}

Version Toolkit::HostVersion() {
    return gHost;
}

void Toolkit::SetHostVersion(const Version& version) {
    gHost = version;
}

}  // namespace Kavra::Objects
