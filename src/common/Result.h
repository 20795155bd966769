/// What is answered by whatever can fail for a reason that lies in a file or in the system.
///
/// A failure travels up as it is, from the byte that was not there to the operation that a host called, and becomes
/// that operation's no-answer there. `std::optional` is for what may rightly be absent; where memory fails,
/// `std::bad_alloc` is thrown.
#pragma once

#include <expected>

namespace Kavra::Common {

/// Why there is no answer.
enum class Failure {
    kCannotOpen,   ///< no such regular file, or no right to read it; or none was opened
    kTruncated,    ///< the file ends before something that it must hold
    kUnreadable,   ///< the system did not deliver bytes that belong to the file
    kMalformed,    ///< the file is not of the format, or contradicts itself
    kUnsupported,  ///< the file is of the format, in a variety that is not read
    kTooLarge,     ///< what the file describes is beyond the limits, or beyond what a description can hold
};

template <class T = void>
using Result = std::expected<T, Failure>;

}  // namespace Kavra::Common
