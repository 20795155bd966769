/// A prototype that the class factory can hold.
#pragma once

#include <kavra/objects/Export.h>

namespace Kavra::Objects {

/// Slots: 0 destructor, 1 `Clone`.
class KAVRA_OBJECTS_API IClone {
public:
    virtual ~IClone();

    /// An object made after this one. A stateless class may answer with the object itself, so the caller
    /// must not destroy a clone unless its class says that clones are its caller's.
    virtual IClone* Clone() = 0;
};

}  // namespace Kavra::Objects
