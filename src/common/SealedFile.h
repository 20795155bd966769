/// Bytes as a file of the system that has no name.
#pragma once

#include <span>

namespace Kavra::Common {

/// An open file of a copy of the bytes, which never changes and goes with its last descriptor. The caller closes it.
/// Negative where the system makes none.
int NewSealedFile(std::span<const unsigned char> bytes);

}  // namespace Kavra::Common
