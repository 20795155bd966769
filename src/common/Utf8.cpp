#include "common/Utf8.h"

#include <string_view>

namespace Kavra::Common {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kByteEscape = 0xDC00;  // plus a byte from 80 on

bool IsLead(char32_t code) {
    return code >= 0xD800 && code <= 0xDBFF;
}
bool IsTrail(char32_t code) {
    return code >= 0xDC00 && code <= 0xDFFF;
}
bool IsEscapedByte(char32_t code) {
    return code >= kByteEscape + 0x80 && code <= kByteEscape + 0xFF;
}

/// The code point at the front of `rest`, or an escaped byte; `rest` moves past it.
char32_t NextWide(std::wstring_view& rest) {
    const auto code = static_cast<char32_t>(rest.front());
    rest.remove_prefix(1);
    if (IsEscapedByte(code)) return code;
    if (code > 0x10FFFF || IsTrail(code)) return kReplacement;
    if (!IsLead(code)) return code;
    if (rest.empty() || !IsTrail(static_cast<char32_t>(rest.front()))) return kReplacement;
    const auto trail = static_cast<char32_t>(rest.front());
    rest.remove_prefix(1);
    return 0x10000 + ((code - 0xD800) << 10) + (trail - 0xDC00);
}

void AppendUtf8(std::string& text, char32_t code) {
    const auto put = [&](char32_t bits) { text += static_cast<char>(bits); };
    const auto tail = [&](int shift) { put(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) return put(code);
    if (IsEscapedByte(code)) return put(code - kByteEscape);
    if (code < 0x800) return put(0xC0 | code >> 6), tail(0);
    if (code < 0x10000) return put(0xE0 | code >> 12), tail(6), tail(0);
    put(0xF0 | code >> 18), tail(12), tail(6), tail(0);
}

/// What a lead byte says of its sequence: how many bytes follow, and between which bounds the first of them lies
/// (Unicode, "Well-Formed UTF-8 Byte Sequences"). No bytes follow one that is ASCII or no lead byte.
struct Sequence {
    std::size_t followers = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
};

Sequence SequenceOf(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {1};
    if (lead == 0xE0) return {2, 0xA0};
    if (lead == 0xED) return {2, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {2};
    if (lead == 0xF0) return {3, 0x90};
    if (lead >= 0xF1 && lead <= 0xF3) return {3};
    if (lead == 0xF4) return {3, 0x80, 0x8F};
    return {};
}

/// The code point at the front of `rest`, which moves past it, or the first byte escaped where no sequence is whole.
char32_t NextUtf8(std::string_view& rest) {
    const auto lead = static_cast<unsigned char>(rest.front());
    Sequence sequence = SequenceOf(lead);
    char32_t code = lead < 0x80 ? lead : lead & (0x3FU >> sequence.followers);
    std::size_t length = 1;
    for (; length <= sequence.followers; ++length) {
        const unsigned char next = length < rest.size() ? static_cast<unsigned char>(rest[length]) : 0;
        if (next < sequence.low || next > sequence.high) break;
        code = code << 6 | (next & 0x3F);
        sequence.low = 0x80;
        sequence.high = 0xBF;
    }
    const bool whole = lead < 0x80 || (sequence.followers > 0 && length > sequence.followers);
    rest.remove_prefix(whole ? length : 1);
    return whole ? code : kByteEscape + lead;
}

}  // namespace

std::string ToUtf8(const wchar_t* text) {
    std::string result;
    if (text == nullptr) return result;
    for (std::wstring_view rest = text; !rest.empty();)
        AppendUtf8(result, NextWide(rest));
    return result;
}

std::wstring FromUtf8(const char* bytes) {
    std::wstring result;
    if (bytes == nullptr) return result;
    for (std::string_view rest = bytes; !rest.empty();)
        result += static_cast<wchar_t>(NextUtf8(rest));
    return result;
}

}  // namespace Kavra::Common
