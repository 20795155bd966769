/// \file
/// The registry through which a host finds what its modules offer.
#pragma once

#include <kavra/objects/Export.h>
#include <kavra/objects/IClone.h>
#include <kavra/objects/UString.h>

#include <memory>

namespace Kavra::Objects {

/// Prototypes by interned key. A module adds its prototype when it starts and removes it when it stops; a host asks for
/// clones in between. The process-wide one is `ObjModel::Factory()`.
///
///     auto& factory = ObjModel::Factory();
///     UString* key = Intern(L"ImageHandlerOIIO");
///     factory.AddObject(key, new OIIOImageHandler);     // the module, in KavraInitialize
///     IClone* clone = factory.CloneObject(key);         // the host
///     factory.RemoveObject(key);                        // the module, in KavraShutdown
///
/// Threads: every operation may be called from any thread. Whoever removes an object waits for clones of it that are
/// under way, so a module's code may go right after; do not remove a key from inside its own `Clone`.
class KAVRA_OBJECTS_API ClassFactory {
public:
    /// Makes an empty factory.
    ClassFactory();
    /// Destroys the prototypes that are still registered.
    ~ClassFactory();
    ClassFactory(const ClassFactory&) = delete;
    ClassFactory& operator=(const ClassFactory&) = delete;

    /// Registers `prototype` under `key`; the factory owns it from then on and destroys it when the key is removed.
    /// False, and the prototype stays its caller's, when either is null or the key is taken.
    bool AddObject(UString* key, IClone* prototype);

    /// Unregisters and destroys the prototype. False when there is none under `key`.
    bool RemoveObject(UString* key);

    /// Whether there is a prototype under `key`. Another thread may have changed that by the time the answer is looked
    /// at: `AddObject` tells by itself when a key is taken.
    bool Contains(UString* key) const;

    /// Returns `Clone()` of the prototype under `key`, or null when there is none. Whether the caller owns it is the
    /// prototype's rule: the image handler returns itself, which the caller must not destroy.
    IClone* CloneObject(UString* key) const;

private:
    struct Registry;
    std::unique_ptr<Registry> mRegistry;
};

}  // namespace Kavra::Objects
