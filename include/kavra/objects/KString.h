/// The host's wide-character string.
#pragma once

#include <kavra/objects/Export.h>

#include <cstddef>
#include <string>

namespace Kavra::Objects {

/// Wide text with value semantics. On this platform a `wchar_t` holds a whole code point (UTF-32).
class KAVRA_OBJECTS_API KString {
public:
    KString();
    /// A copy of NUL-terminated text; null is the empty string.
    KString(const wchar_t* text);
    KString(const KString&);
    KString(KString&&) noexcept;
    KString& operator=(const KString&);
    KString& operator=(KString&&) noexcept;
    ~KString();

    /// The characters, NUL-terminated. The string keeps them; they are valid until it changes or goes.
    wchar_t* ToChars() const;
    operator const wchar_t*() const;

    /// Number of characters before the NUL.
    std::size_t GetLen() const;

    /// 0 when equal ignoring case (character by character, the C library's `towlower`), else the sign of the
    /// first difference. Null compares as the empty string.
    int CompareNoCase(const wchar_t* other) const;

    /// The last `count` characters, or all of them when there are fewer.
    KString Right(std::size_t count) const;

    /// Replaces every occurrence of `find` from position `start` on, left to right, without looking again at
    /// what it put there. True when something was replaced; an empty or null `find` replaces nothing.
    bool FindAndReplace(const wchar_t* find, const wchar_t* replace, std::size_t start);

private:
    std::wstring mText;
};

}  // namespace Kavra::Objects
