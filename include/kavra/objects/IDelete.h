/// An object that its holder can destroy without knowing its class.
#pragma once

#include <kavra/objects/HeapOperators.h>

namespace Kavra::Objects {

/// Slots: 0 destructor, 1 `Delete`.
class KAVRA_OBJECTS_API IDelete : public HeapOperators {
public:
    virtual ~IDelete();

    /// Destroys the object through its virtual destructor and frees it with the heap operators.
    virtual void Delete();
};

}  // namespace Kavra::Objects
