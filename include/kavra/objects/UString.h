/// Interned names.
#pragma once

#include <kavra/objects/Export.h>

#include <string>

namespace Kavra::Objects {

/// One object per distinct text, so names compare by pointer. Interned names live as long as the process.
class KAVRA_OBJECTS_API UString {
public:
    UString(const UString&) = delete;
    UString& operator=(const UString&) = delete;

    const wchar_t* ToChars() const { return mText.c_str(); }

private:
    friend UString* Intern(const wchar_t* text);
    explicit UString(std::wstring text);

    std::wstring mText;
};

/// The one name for `text`: equal texts give the same pointer, whoever asks, from any thread. Null text is
/// the empty name. Never null; throws `std::bad_alloc`.
KAVRA_OBJECTS_API UString* Intern(const wchar_t* text);

}  // namespace Kavra::Objects
