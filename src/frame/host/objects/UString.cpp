#include "frame/host/objects/Immortal.h"

#include <kavra/objects/UString.h>

#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Kavra::Objects {
namespace {

struct Names {
    std::mutex mutex;
    /// Each name by its own text.
    std::unordered_map<std::wstring_view, std::unique_ptr<UString>> byText;
};

Names& AllNames() {
    static Immortal<Names> names;
    return names.value;
}

}  // namespace

UString::UString(std::wstring text) : mText(std::move(text)) {}

UString* Intern(const wchar_t* text) {
    const std::wstring_view wanted = text != nullptr ? text : L"";
    Names& names = AllNames();
    const std::lock_guard lock(names.mutex);
    const auto found = names.byText.find(wanted);
    if (found != names.byText.end()) return found->second.get();
    std::unique_ptr<UString> made(new UString(std::wstring(wanted)));
    const std::wstring_view key = made->mText;
    return names.byText.emplace(key, std::move(made)).first->second.get();
}

}  // namespace Kavra::Objects
