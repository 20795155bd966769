/// \file
/// Interned names.
#pragma once

#include <kavra/objects/Export.h>

#include <string>

namespace Kavra::Objects {

/// A name of which there is one object per distinct text, so names compare by pointer. Keys of the class factory and
/// interface identifiers are such names. They are made by `Intern` only, live as long as the process and are never
/// freed; nobody destroys one. A name of `char` text does not exist: everything is wide.
///
///     UString* const key = Intern(L"ImageHandlerOIIO");
///     if (object->ClassName() == key) ...   // no comparison of characters
///
/// Threads: a name never changes, so any thread may read it.
class KAVRA_OBJECTS_API UString {
public:
    UString(const UString&) = delete;
    UString& operator=(const UString&) = delete;

    /// The characters, NUL-terminated; valid for ever, and never changed.
    const wchar_t* ToChars() const { return mText.c_str(); }

private:
    friend UString* Intern(const wchar_t* text);
    /// For `Intern`, which keeps what it made.
    explicit UString(std::wstring text);

    std::wstring mText;  ///< never changes: the table of all names finds it by its characters
};

/// Returns the one name for `text`: equal texts (case counts) give the same pointer, whoever asks. Null text is the
/// empty name. Never null; throws `std::bad_alloc`. Threads: any. It takes a lock, so keep the pointer where a name is
/// needed often.
KAVRA_OBJECTS_API UString* Intern(const wchar_t* text);

}  // namespace Kavra::Objects
