/// The registry through which a host finds what its modules offer.
#pragma once

#include <kavra/objects/Export.h>
#include <kavra/objects/IClone.h>
#include <kavra/objects/UString.h>

#include <memory>

namespace Kavra::Objects {

/// Prototypes by interned key. Threads: every operation may be called from any thread.
class KAVRA_OBJECTS_API ClassFactory {
public:
    ClassFactory();
    ~ClassFactory();
    ClassFactory(const ClassFactory&) = delete;
    ClassFactory& operator=(const ClassFactory&) = delete;

    /// Registers `prototype` under `key`; the factory holds it from then on and disposes of it when the key is
    /// removed. False, and the prototype stays its caller's, when either is null or the key is taken.
    bool AddObject(UString* key, IClone* prototype);

    /// Unregisters and destroys the prototype. False when there is none under `key`.
    bool RemoveObject(UString* key);

    bool Contains(UString* key) const;

    /// `Clone()` of the prototype under `key`, or null. Whether the caller owns it is the prototype's rule.
    IClone* CloneObject(UString* key) const;

private:
    struct Registry;
    std::unique_ptr<Registry> mRegistry;
};

}  // namespace Kavra::Objects
