/// The line that no exception crosses.
#pragma once

#include <utility>

namespace Kavra::Common {

/// What `body` returns, or `failure` when anything at all is thrown inside it. Every operation that a host can call
/// runs in one of these, since the host may have been built by another compiler or be unable to catch:
///
///     return Common::AtBoundary(false, [&] { return WriteFile(path, data); });
///     return Common::AtBoundary<IImage*>(nullptr, [&] { return NewImage(width, height); });
///
/// Raises no message. What `body` held by then is freed by its own scopes.
template <class Result, class Body>
Result AtBoundary(Result failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return failure;
    }
}

}  // namespace Kavra::Common
