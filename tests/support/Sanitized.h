/// What a test may ask of the build.
#pragma once

namespace Kavra::Tests {

/// Whether the tests, and with them all that they test, are built with a sanitizer that makes memory and time another
/// matter.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

}  // namespace Kavra::Tests
