#include <kavra/objects/KString.h>

#include <cwchar>
#include <string_view>
#include <utility>

namespace Kavra::Objects {
namespace {

const wchar_t* OrEmpty(const wchar_t* text) {
    return text != nullptr ? text : L"";
}

}  // namespace

KString::KString() = default;
KString::KString(const wchar_t* text) : mText(OrEmpty(text)) {}
KString::KString(const KString&) = default;
KString::KString(KString&&) noexcept = default;
KString& KString::operator=(const KString&) = default;
KString& KString::operator=(KString&&) noexcept = default;
KString::~KString() = default;

wchar_t* KString::ToChars() const {
    return const_cast<wchar_t*>(mText.c_str());
}

KString::operator const wchar_t*() const {
    return mText.c_str();
}

std::size_t KString::GetLen() const {
    return mText.size();
}

int KString::CompareNoCase(const wchar_t* other) const {
    const int order = wcscasecmp(mText.c_str(), OrEmpty(other));
    return (order > 0) - (order < 0);
}

KString KString::Right(std::size_t count) const {
    return KString(mText.c_str() + (count < mText.size() ? mText.size() - count : 0));
}

bool KString::FindAndReplace(const wchar_t* find, const wchar_t* replace, std::size_t start) {
    const std::wstring_view wanted = OrEmpty(find);
    const std::wstring_view with = OrEmpty(replace);
    if (wanted.empty() || start > mText.size()) return false;
    // Built beside the old text, which `find` and `replace` may be part of.
    std::wstring result;
    std::size_t done = 0;
    for (std::size_t at = mText.find(wanted, start); at != std::wstring::npos; at = mText.find(wanted, done)) {
        result.append(mText, done, at - done).append(with);
        done = at + wanted.size();
    }
    if (done == 0) return false;
    result.append(mText, done);
    mText = std::move(result);
    return true;
}

}  // namespace Kavra::Objects
