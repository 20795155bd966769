// The two functions through which a host starts and stops the module.

#include "common/Boundary.h"

#include <kavra/objects/ObjModel.h>
#include <kavra/objects/Toolkit.h>
#include <kavra/oiio/OIIOImageHandler.h>

namespace {

using Kavra::Devices::OIIOImageHandler;
using Kavra::Objects::ObjModel;
using Kavra::Objects::UString;

// At namespace scope, so that it exists before either entry point can be called.
const Kavra::Objects::DLLVersionCheck hostVersion(17, 1, 2, 0);

UString* handlerKey = nullptr;  // stays the host's, which never frees names

UString* HandlerKey() {
    if (handlerKey == nullptr) handlerKey = Kavra::Objects::Intern(L"ImageHandlerOIIO");
    return handlerKey;
}

bool HostIsCompatible() {
    const auto& version = hostVersion.BuiltAgainst();
    return Kavra::Objects::Toolkit::CheckCompatibleVersion(version.major, version.minor, version.patch, version.build);
}

}  // namespace

/// Registers the image handler in the host's class factory. True when it is registered, now or earlier; false when
/// the host is of another version or refuses the handler.
extern "C" KAVRA_OIIO_API bool KavraInitialize() {
    return Kavra::Common::AtBoundary(false, [] {
        if (!HostIsCompatible()) {
            ObjModel::Error(L"Dll version conflict!", nullptr, nullptr, nullptr, 0);
            return false;
        }
        UString* const key = HandlerKey();
        auto& factory = ObjModel::Factory();
        if (factory.Contains(key)) return true;
        // The host's from here on, whatever it answers: the module never deletes the handler.
        return factory.AddObject(key, new OIIOImageHandler);
    });
}

/// Takes the image handler out of the host's class factory, which destroys it. False when it was not there.
extern "C" KAVRA_OIIO_API bool KavraShutdown() {
    return Kavra::Common::AtBoundary(false, [] { return ObjModel::Factory().RemoveObject(HandlerKey()); });
}
