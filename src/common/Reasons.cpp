#include "common/Reasons.h"

#include "common/Progress.h"
#include "common/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <new>

namespace Kavra::Common {

namespace {

using Devices::EFailureKind;
using Devices::FailureReport;

constexpr std::size_t kTextBytes = 1024;  ///< of a report's text, which is cut after them

void SayReport(FailureReport report, std::string_view text) noexcept {
    std::array<char, kTextBytes> bytes{};
    std::ranges::copy(text.substr(0, bytes.size() - 1), bytes.begin());
    report.text = bytes.data();
    SetFailure(report);
}

EFailureKind KindOf(Failure::Kind kind) {
    switch (kind) {
        case Failure::kCannotOpen:
        case Failure::kUnreadable:
            return Devices::kFailureCannotRead;
        case Failure::kTruncated:
            return Devices::kFailureEndsEarly;
        case Failure::kMalformed:
            return Devices::kFailureDamaged;
        case Failure::kUnsupported:
            return Devices::kFailureUnsupported;
        case Failure::kTooLarge:
            return Devices::kFailureTooLarge;
        case Failure::kOutOfRange:
            return Devices::kFailureOutOfRange;
    }
    return Devices::kFailureOther;
}

std::string_view WordsFor(Failure::Kind kind) {
    switch (kind) {
        case Failure::kCannotOpen:
            return "it cannot be opened";
        case Failure::kUnreadable:
            return "the system did not deliver its bytes";
        case Failure::kTruncated:
            return "ends early";
        case Failure::kMalformed:
            return "damaged";
        case Failure::kUnsupported:
            return "a variety of its format that is not read";
        case Failure::kTooLarge:
            return "the picture is larger than the limits allow";
        case Failure::kOutOfRange:
            return "there is no such frame";
    }
    return "";
}

std::string TextOf(const Failure& failure) {
    std::string text(WordsFor(failure.kind));
    if (failure.kind == Failure::kTruncated && failure.goodRows >= 0 && failure.rows >= 0)
        return std::format("{}: {} of {} rows are there", text, failure.goodRows, failure.rows);
    const bool hasPlace = failure.kind == Failure::kTruncated || failure.kind == Failure::kMalformed ||
                          failure.kind == Failure::kUnreadable;
    if (hasPlace && failure.position >= 0) text += std::format(" at byte {}", failure.position);
    return text;
}

bool IsControl(wchar_t character) {
    constexpr wchar_t kDelete = 0x7F, kLastControl = 0x9F;
    return character < L' ' || (character >= kDelete && character <= kLastControl);
}

/// The byte that a character of wide text stands for, where it is no part of a text (`FromUtf8`); else 0.
unsigned StrayByte(wchar_t character) {
    constexpr wchar_t kFirst = 0xDC80, kLast = 0xDCFF;
    constexpr unsigned kByte = 0xFF;
    return character >= kFirst && character <= kLast ? static_cast<unsigned>(character) & kByte : 0;
}

std::string Without(std::string_view text, std::string_view part) {
    std::string rest(text);
    if (part.empty()) return rest;
    for (const std::string& quoted :
         {"\"" + std::string(part) + "\"", "'" + std::string(part) + "'", std::string(part)}) {
        for (std::size_t at = rest.find(quoted); at != std::string::npos; at = rest.find(quoted, at))
            rest.erase(at, quoted.size());
    }
    return rest;
}

/// Blanks and punctuation that joined something to a text stand at its ends.
void Trim(std::string& text) {
    constexpr std::string_view kBefore = " :;,.", kBehind = " :;,.";
    text.erase(0, std::min(text.find_first_not_of(kBefore), text.size()));
    text.erase(text.find_last_not_of(kBehind) + 1);
}

}  // namespace

void Say(EFailureKind kind, std::string_view text) noexcept {
    FailureReport report;
    report.kind = kind;
    SayReport(report, text);
}

void Say(const Failure& failure) noexcept {
    FailureReport report;
    report.kind = KindOf(failure.kind);
    report.position = failure.position;
    report.goodRows = failure.goodRows;
    report.rows = failure.rows;
    try {
        SayReport(report, TextOf(failure));
    } catch (...) {
        SayReport(report, WordsFor(failure.kind));  // no memory for the numbers
    }
}

void SayEndsEarly(std::int64_t good, std::int64_t rows, std::uint64_t fileBytes) noexcept {
    if (good >= rows) return;
    Failure failure(Failure::kTruncated, static_cast<std::int64_t>(fileBytes));
    failure.goodRows = static_cast<std::int32_t>(good);
    failure.rows = static_cast<std::int32_t>(rows);
    Say(failure);
}

void SayCaught() noexcept {
    try {
        throw;
    } catch (const Cancelled&) {
        ClearFailure();  // what was said of ways that were tried before is not why
        Say(Devices::kFailureCancelled, "stopped");
    } catch (const std::bad_alloc&) {
        Say(Devices::kFailureOutOfMemory, "out of memory");
    } catch (const std::exception& error) {
        try {
            Say(Devices::kFailureOther, std::string_view(OneLine(error.what())));
        } catch (...) {
            Say(Devices::kFailureOutOfMemory, "out of memory");
        }
    } catch (...) {
        Say(Devices::kFailureOther, "it failed in a way that nobody describes");
    }
}

std::string OneLine(std::string_view text, std::string_view path) {
    std::string line;
    for (const wchar_t character : FromUtf8(Without(text, path).c_str())) {
        const bool isBlank = character == L' ' || (character >= L'\t' && character <= L'\r');
        if (isBlank) {
            if (!line.ends_with(' ')) line += ' ';
        } else if (const unsigned stray = StrayByte(character); stray != 0 || IsControl(character)) {
            line += std::format("\\x{:02X}", stray != 0 ? stray : static_cast<unsigned>(character));
        } else {
            const std::array<wchar_t, 2> one = {character, L'\0'};
            line += ToUtf8(one.data());
        }
    }
    Trim(line);
    return line;
}

}  // namespace Kavra::Common
