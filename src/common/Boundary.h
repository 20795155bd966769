/// The line that no exception crosses.
#pragma once

#include "common/HostExtras.h"
#include "common/Progress.h"
#include "common/Reasons.h"

#include <concepts>
#include <type_traits>
#include <utility>

namespace Kavra::Common {

/// What `body` returns, or `failure` when anything at all is thrown inside it, of which the thread's failure then tells.
/// For callbacks, and for what is tried within an operation:
///
///     return Common::AtBoundary(false, [&] { return writer.Close(); });
///
/// Raises no message. What `body` held by then is freed by its own scopes.
template <class Result, class Body>
Result AtBoundary(Result failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        SayCaught();
        return failure;
    }
}

/// Whether an operation that ends with this result has answered.
template <class Result>
bool HasAnswered(const Result& result) noexcept {
    if constexpr (std::same_as<Result, bool> || std::is_pointer_v<Result>) {
        return static_cast<bool>(result);
    } else {
        return HostsFailure().kind == Devices::kFailureNone;
    }
}

/// The same for an operation that a host can call; each runs in one of these, since the host may have been built by
/// another compiler or be unable to catch:
///
///     return Common::AsOperation<IImage*>(nullptr, [&] { return NewImage(width, height); });
///
/// The thread's failure is cleared as it begins and there is one when it ends without an answer, which is null or false;
/// an operation of another type has answered where nothing was said. One that runs within another, on either side of
/// the line between host and module, adds to what that one says.
template <class Result, class Body>
Result AsOperation(Result noAnswer, Body&& body) noexcept {
    BeginOperation();
    Result result = AtBoundary<Result>(std::move(noAnswer), std::forward<Body>(body));
    EndOperation(HasAnswered(result));
    return result;
}

/// The same for one whose callers know what it throws. One that is stopped gives its no-answer, false or null.
template <class Body>
auto InOperation(Body&& body) -> decltype(std::forward<Body>(body)()) {
    BeginOperation();
    try {
        auto result = std::forward<Body>(body)();
        EndOperation(HasAnswered(result));
        return result;
    } catch (const Cancelled&) {
        SayCaught();
        EndOperation(false);
        return {};
    } catch (...) {
        SayCaught();
        EndOperation(false);
        throw;
    }
}

}  // namespace Kavra::Common
