/// What is answered by whatever can fail for a reason that lies in a file or in the system.
///
/// A failure travels up as it is, from the byte that was not there to the operation that a host called, and becomes
/// that operation's no-answer there, and what the thread's failure says. `std::optional` is for what may rightly be
/// absent; where memory fails, `std::bad_alloc` is thrown.
#pragma once

#include <cstdint>
#include <expected>

namespace Kavra::Common {

/// Why there is no answer, and as far as that is known where the file shows it. Failures of one kind are equal. A kind
/// alone is one: `std::unexpected(Failure::kTruncated)`.
struct Failure {
    enum Kind : std::uint8_t {
        kCannotOpen,   ///< no such regular file, or no right to read it; or none was opened
        kTruncated,    ///< the file ends before something that it must hold
        kUnreadable,   ///< the system did not deliver bytes that belong to the file
        kMalformed,    ///< the file is not of the format, or contradicts itself
        kUnsupported,  ///< the file is of the format, in a variety that is not read
        kTooLarge,     ///< what the file describes is beyond the limits, or beyond what a description can hold
        kOutOfRange,   ///< the file has no such frame
    };

    // NOLINTNEXTLINE(google-explicit-constructor): a kind alone is a failure
    constexpr Failure(Kind what, std::int64_t where = -1) : kind(what), position(where) {}

    friend constexpr bool operator==(const Failure& a, const Failure& b) { return a.kind == b.kind; }

    Kind kind;
    std::int32_t goodRows = -1;  ///< that the file holds whole, from the first on; negative: not known
    std::int32_t rows = -1;      ///< that it promises; negative: not known
    std::int64_t position;  ///< in the file, from 0: of what is wrong or the first byte that is missing, or negative
};

template <class T = void>
using Result = std::expected<T, Failure>;

}  // namespace Kavra::Common
