/// \file
/// A prototype that the class factory can hold.
#pragma once

#include <kavra/objects/Export.h>

namespace Kavra::Objects {

/// An object that others can be had from. A module registers one in the `ClassFactory`, and hosts ask the factory for
/// clones of it.
///
/// Vtable slots: 0 destructor, 1 `Clone`.
class KAVRA_OBJECTS_API IClone {
public:
    virtual ~IClone();

    /// Returns an object made after this one. A class without state may return the object itself, so destroy a clone
    /// only where its class says that clones are the caller's.
    ///
    /// The usual next step is to ask for the interface that is wanted:
    ///
    ///     IClone* clone = ObjModel::Factory().CloneObject(Intern(L"ImageHandlerOIIO"));
    ///     auto* handler = dynamic_cast<Devices::IImageHandler*>(clone);   // null when it is something else
    virtual IClone* Clone() = 0;
};

}  // namespace Kavra::Objects
