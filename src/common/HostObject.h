/// A host object that destroys itself unless it is handed on.
#pragma once

#include <kavra/objects/IDelete.h>

#include <memory>

namespace Kavra::Common {

struct HostObjectDeleter {
    void operator()(Objects::IDelete* object) const { object->Delete(); }
};

/// Owns a description, a memory wrapper or another object that goes through `Delete`; `release()` hands it on.
template <class T>
using HostObject = std::unique_ptr<T, HostObjectDeleter>;

}  // namespace Kavra::Common
