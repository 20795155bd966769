/// Calling as a host does that was compiled from another declaration of an interface.
#pragma once

namespace Kavra::Tests {

/// Calls entry `slot` of the table of the view at `view`. A virtual destructor, slot 0, has two entries of the table
/// (https://itanium-cxx-abi.github.io/cxx-abi/abi.html#vtable-components), so slot n is entry n + 1.
template <class Result, class... Arguments>
Result CallSlot(void* view, int slot, Arguments... arguments) {
    void** const table = *static_cast<void***>(view);
    const auto function = reinterpret_cast<Result (*)(void*, Arguments...)>(table[slot + 1]);
    return function(view, arguments...);
}

}  // namespace Kavra::Tests
