/// What the progress of a thread has to know of operations.
#pragma once

namespace Kavra::Devices {

/// An operation begins that is part of no other: nothing is stopped, and every stage is at its start.
void ForgetProgress() noexcept;

/// Whether whoever watches has stopped the operation that is under way.
bool IsStopped() noexcept;

}  // namespace Kavra::Devices
