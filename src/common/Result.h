/// An answer, or why there is none.
#pragma once

#include <cstdint>
#include <expected>

namespace Kavra::Common {

/// Why something could not be done, by whose fault it is. Few kinds, which travel unchanged from where the failure is
/// found to the boundary, where it becomes a no-answer.
enum class Failure : std::uint8_t {
    kCannotOpen,     ///< there is no such regular file, or no right to read it
    kUnreadable,     ///< the system did not deliver bytes that belong to the file
    kNotThisFormat,  ///< the file is of another kind
    kUnsupported,    ///< of this kind, but a variant that is not read, or not in what was asked for
    kTruncated,      ///< the file ends before what its header promises
    kMalformed,      ///< the file contradicts itself
    kTooLarge,       ///< beyond a limit
    kOutOfRange,     ///< there is no such frame or level
    kNoMemory,       ///< memory that an image library did not get; our own throws `std::bad_alloc`
};

/// What was asked for, or why not:
///
///     const Result<Header> header = ReadHeader(source);
///     if (!header) return Fail(header.error());
template <class T>
using Result = std::expected<T, Failure>;

constexpr std::unexpected<Failure> Fail(Failure failure) {
    return std::unexpected(failure);
}

}  // namespace Kavra::Common
