/// Which of the library's readers a file can be for, by its first bytes.
///
/// A file that the reader of its extension refuses is offered to all the others, and some of them look for their format
/// through the whole of it: for minutes, in a file of gigabytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Kavra::Devices {

/// As many bytes as are ever looked at.
inline constexpr std::size_t kSignatureBytes = 134;

/// Whether the library's reader of this name may accept a file that starts so; `start` is shorter than
/// `kSignatureBytes` only when the file is. Always true of a reader whose format starts with no fixed bytes, or that is
/// not known here: they refuse soon enough.
bool MayBeOfFormat(std::string_view format, std::span<const unsigned char> start);

}  // namespace Kavra::Devices
