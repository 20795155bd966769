/// Wide text and the bytes of file names.
#pragma once

#include <string>

namespace Kavra::Common {

/// Wide text (code points; UTF-16 surrogate pairs are understood too) as UTF-8. A lone surrogate U+DC80 to U+DCFF is
/// the byte 80 to FF that it stands for (see `FromUtf8`); what else is no text becomes U+FFFD. Null is the empty text.
std::string ToUtf8(const wchar_t* text);

/// Bytes as code points, losing none: file names are bytes, and not all of them are text. Each byte that is part of no
/// well-formed UTF-8 becomes the surrogate U+DC00 plus its value, which `ToUtf8` takes back. For every `bytes`,
/// `ToUtf8(FromUtf8(bytes))` is `bytes`. Null is the empty text.
std::wstring FromUtf8(const char* bytes);

}  // namespace Kavra::Common
