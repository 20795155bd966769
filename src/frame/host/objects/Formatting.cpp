#include <kavra/objects/OS.h>

#include <locale.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <cwchar>
#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace Kavra::OS {
namespace {

/// Where this C library's wide formatting takes "%s" and "%c" as narrow, the convention here is wide unless "h" says
/// narrow. Nothing for a format that writes through its arguments or ends inside a conversion.
std::optional<std::wstring> Translate(std::wstring_view format) {
    std::wstring result;
    while (!format.empty()) {
        const std::size_t plain = std::min(format.find(L'%'), format.size());
        result += format.substr(0, plain);
        format.remove_prefix(plain);
        if (format.empty()) break;
        const std::size_t end = format.find_first_not_of(L"0123456789$#-+ '*.", 1);
        if (end == std::wstring_view::npos) return std::nullopt;
        result += format.substr(0, end);
        if (format[end] == L's' || format[end] == L'c') result += L'l';
        const std::size_t length = format.find_first_not_of(L"hlLjztq", end);
        if (length == std::wstring_view::npos || format[length] == L'n') return std::nullopt;
        result += format.substr(end, length + 1 - end);
        format.remove_prefix(length + 1);
    }
    return result;
}

/// Narrow text is UTF-8 and numbers have a decimal point, whatever the program's locale, for as long as this lives.
class PlainLocale {
public:
    PlainLocale() : mBefore(uselocale(Utf8())) {}
    ~PlainLocale() { uselocale(mBefore); }
    PlainLocale(const PlainLocale&) = delete;
    PlainLocale& operator=(const PlainLocale&) = delete;

private:
    /// Null, which changes nothing, where the system has no such locale.
    static locale_t Utf8() {
        static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
        return locale;
    }

    locale_t mBefore;
};

int Format(wchar_t* buffer, std::size_t size, const wchar_t* format, std::va_list arguments) {
    try {
        const std::optional<std::wstring> translated = Translate(format);
        if (!translated) return -1;
        const PlainLocale locale;
        return std::vswprintf(buffer, size, translated->c_str(), arguments);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

}  // namespace

int swprintf_s(wchar_t* buffer, std::size_t size, const wchar_t* format, ...) {
    if (buffer == nullptr || size == 0) return -1;
    buffer[0] = L'\0';
    if (format == nullptr) return -1;
    std::va_list arguments;
    va_start(arguments, format);
    const int written = Format(buffer, size, format, arguments);
    va_end(arguments);
    if (written < 0) buffer[0] = L'\0';
    return written < 0 ? -1 : written;
}

int strncpy_s(char* dest, std::size_t size, const char* src, std::size_t count) {
    if (dest == nullptr || size == 0) return EINVAL;
    dest[0] = '\0';
    if (src == nullptr) return EINVAL;
    const std::size_t length = strnlen(src, std::min(count, size));
    if (length >= size) return ERANGE;
    std::memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}

}  // namespace Kavra::OS
