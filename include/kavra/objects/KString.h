/// \file
/// The host's wide-character string.
#pragma once

#include <kavra/objects/Export.h>

#include <cstddef>
#include <string>

namespace Kavra::Objects {

/// Wide text with value semantics. Paths arrive as such strings. On this platform a `wchar_t` holds a whole code point
/// (UTF-32); `OS::FromUtf8` and `OS::ToUtf8` lead from and to the file system's names:
///
///     const KString path(OS::FromUtf8(argv[1]).c_str());
///
/// Lengths and positions count characters, not bytes. Operations that copy text throw `std::bad_alloc`.
///
/// Threads: like a `std::wstring`; const operations of one string may run side by side.
class KAVRA_OBJECTS_API KString {
public:
    /// The empty string.
    KString();
    /// A copy of NUL-terminated text; null is the empty string.
    KString(const wchar_t* text);
    KString(const KString&);                 ///< Copies the text.
    KString(KString&&) noexcept;             ///< Takes the text over.
    KString& operator=(const KString&);      ///< Copies the text.
    KString& operator=(KString&&) noexcept;  ///< Takes the text over.
    ~KString();

    /// The characters, NUL-terminated, never null. The string keeps them; they are valid until it changes or goes, and
    /// must not be written to.
    wchar_t* ToChars() const;
    /// The same characters, for calls that take wide text.
    operator const wchar_t*() const;

    /// Number of characters before the NUL.
    std::size_t GetLen() const;

    /// Returns 0 when equal ignoring case (character by character, the C library's `towlower`), else -1 or 1, the sign
    /// of the first difference. Null compares as the empty string.
    int CompareNoCase(const wchar_t* other) const;

    /// Returns the last `count` characters, or all of them when there are fewer:
    ///
    ///     const bool isDds = path.Right(4).CompareNoCase(L".dds") == 0;
    KString Right(std::size_t count) const;

    /// Replaces every occurrence of `find` from position `start` on, left to right, without looking again at what it
    /// put there. True when something was replaced; an empty or null `find` and a `start` beyond the end replace
    /// nothing, a null `replace` is the empty text.
    bool FindAndReplace(const wchar_t* find, const wchar_t* replace, std::size_t start);

private:
    std::wstring mText;
};

}  // namespace Kavra::Objects
