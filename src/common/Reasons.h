/// Saying why an operation fails, in words for people: what is wrong, short, without the name of the file and without a
/// full stop. What is said first stays, so it is said where the cause is known (`SetFailure`).
#pragma once

#include "common/HostExtras.h"
#include "common/Result.h"

#include <cstdint>
#include <format>
#include <string>
#include <string_view>
#include <utility>

namespace Kavra::Common {

/// Says it, in `text` as far as 1,023 bytes of it go.
void Say(Devices::EFailureKind kind, std::string_view text) noexcept;

/// Says it in a text with values in it. Without memory for the text the kind alone is said.
template <class First, class... Rest>
void Say(Devices::EFailureKind kind, std::format_string<First, Rest...> format, First&& first,
         Rest&&... rest) noexcept {
    std::string text;
    try {
        text = std::format(format, std::forward<First>(first), std::forward<Rest>(rest)...);
    } catch (...) {
        text.clear();  // the kind is said all the same
    }
    Say(kind, std::string_view(text));
}

/// The same for a condition that must hold: says it where that does not, and returns whether it does.
inline bool Require(bool holds, Devices::EFailureKind kind, std::string_view text) noexcept {
    if (!holds) Say(kind, text);
    return holds;
}

/// Says what a result says, in the words for its kind.
void Say(const Failure& failure) noexcept;

/// Says that a picture ends early: of `rows` rows the first `good` are there whole. Nothing where all are.
void SayEndsEarly(std::int64_t good, std::int64_t rows, std::uint64_t fileBytes) noexcept;

/// Says of the exception that is being handled what it is.
void SayCaught() noexcept;

/// A text of a library or of a file as one line: each run of blanks and line ends is one space, none at either end; no
/// final full stop; control characters and bytes that are no UTF-8 as "\x1B"; `path`, where it occurs, left out.
/// Throws `std::bad_alloc`.
std::string OneLine(std::string_view text, std::string_view path = {});

}  // namespace Kavra::Common
