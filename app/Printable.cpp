#include "Printable.h"

#include <kavra/objects/OS.h>

#include <format>

namespace Kavra::App {
namespace {

/// Characters that turn the direction of text or have no width, by which a name may look like another one.
bool IsHidden(char32_t code) {
    return (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF;
}

bool IsControl(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code <= 0x9F);
}

/// A byte that is part of no UTF-8, as `OS::FromUtf8` keeps it.
bool IsByte(char32_t code) {
    return code >= 0xDC80 && code <= 0xDCFF;
}

std::string Escaped(char32_t code) {
    if (code == '\n') return "\\n";
    if (code == '\r') return "\\r";
    if (code == '\t') return "\\t";
    if (IsByte(code)) return std::format("\\x{:02X}", static_cast<unsigned>(code & 0xFF));
    if (IsControl(code)) return std::format("\\x{:02X}", static_cast<unsigned>(code));
    return std::format("\\u{:04X}", static_cast<unsigned>(code));
}

/// All but those that `isPlain` takes for that is escaped.
template <class IsPlain>
std::string Escaped(std::string_view text, const IsPlain& isPlain) {
    std::string result;
    for (const wchar_t character : OS::FromUtf8(std::string(text).c_str())) {
        const auto code = static_cast<char32_t>(character);
        result += isPlain(code) ? OS::ToUtf8(std::wstring(1, character).c_str()) : Escaped(code);
    }
    return result;
}

}  // namespace

std::string Printable(std::string_view text) {
    return Escaped(text, [](char32_t code) { return !IsControl(code) && !IsHidden(code) && !IsByte(code); });
}

std::string PrintableName(std::string_view name) {
    return Escaped(name, [](char32_t code) { return !IsControl(code) && !IsHidden(code); });
}

std::string Printable(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) return Printable(text);
    while (maxBytes > 0 && (static_cast<unsigned char>(text[maxBytes]) & 0xC0) == 0x80)
        --maxBytes;
    return Printable(text.substr(0, maxBytes)) + "...";
}

}  // namespace Kavra::App
