#include "BatchLines.h"

#include "Printable.h"
#include "Usage.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <format>
#include <set>
#include <system_error>

namespace Kavra::App {
namespace {

using Json = nlohmann::json;

[[noreturn]] void ThrowUnreadable() {
    throw ListError("cannot be read: " + std::generic_category().message(errno));
}

/// The name whose bytes are written as `%E9` where they are no letters, digits or -._~/; nothing where they are not so.
std::optional<std::string> NameOf(const std::string& bytes) {
    constexpr int kHexadecimal = 16;
    constexpr std::size_t kDigits = 2;
    std::string name;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto c = static_cast<unsigned char>(bytes[i]);
        if (c == '%') {
            unsigned value = 0;
            const char* const first = bytes.data() + i + 1;
            const char* const last = first + std::min(kDigits, bytes.size() - i - 1);
            const auto [end, error] = std::from_chars(first, last, value, kHexadecimal);
            if (error != std::errc() || end != first + kDigits) return std::nullopt;
            name += static_cast<char>(value);
            i += kDigits;
        } else if (c >= 0x80 || (std::isalnum(c) == 0 && !std::string_view("-._~/").contains(bytes[i]))) {
            return std::nullopt;
        } else {
            name += bytes[i];
        }
    }
    return name;
}

/// Takes the fields of a line as the parser meets them, and ends it at the first thing that does not belong there: no
/// tree is made, however deep a line is nested.
class Fields final : public nlohmann::json_sax<Json> {
public:
    explicit Fields(BatchLine& line) : mLine(line) {}

    // NOLINTBEGIN(readability-identifier-naming): the names are the library's
    bool null() override { return NoText(); }
    bool boolean(bool /*value*/) override { return NoText(); }
    bool number_integer(number_integer_t /*value*/) override { return NoText(); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return NoText(); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return NoText(); }
    bool binary(binary_t& /*value*/) override { return NoText(); }
    bool start_array(std::size_t /*size*/) override { return NoText(); }
    bool end_array() override { return true; }
    bool end_object() override { return true; }
    bool start_object(std::size_t /*size*/) override {
        if (mIsOpen) return NoText();
        mIsOpen = true;
        return true;
    }
    bool key(string_t& name) override;
    bool string(string_t& value) override;
    bool parse_error(std::size_t position, const std::string& /*token*/, const Json::exception& /*error*/) override {
        return Refuse(std::format("is no JSON: it is wrong at its byte {}", position));
    }
    // NOLINTEND(readability-identifier-naming)

private:
    bool Refuse(std::string why) {
        if (mLine.wrong.empty()) mLine.wrong = std::move(why);
        return false;
    }
    bool NoText() { return Refuse(mIsOpen ? mKey + " is no text" : "is no JSON object"); }

    BatchLine& mLine;
    bool mIsOpen = false;
    std::string mKey;
    std::set<std::string> mKeys;
};

bool Fields::key(string_t& name) {
    static const std::array<std::string, 5> kKeys = {"input", "inputBytes", "output", "outputBytes", "do"};
    constexpr std::size_t kMaxShown = 60;
    if (!std::ranges::contains(kKeys, name))
        return Refuse("the key " + NoneOf(name.size() > kMaxShown ? Printable(name, kMaxShown) : name, kKeys));
    if (!mKeys.insert(name).second) return Refuse(name + " stands there twice");
    mKey = name;
    return true;
}

bool Fields::string(string_t& value) {
    if (!mIsOpen) return NoText();
    if (value.empty()) return Refuse(mKey + " is empty");
    const bool isBytes = mKey.ends_with("Bytes");
    std::optional<std::string> text = isBytes ? NameOf(value) : value;
    if (!text) return Refuse(mKey + " is no name with its bytes as %E9");
    if (text->contains('\0')) return Refuse(mKey + " holds a zero byte");
    std::string& field = mKey.starts_with("in") ? mLine.input : mKey == "do" ? mLine.work : mLine.output;
    // The bytes are the name, whichever of the two comes first.
    if (isBytes || !mKeys.contains(mKey + "Bytes")) field = std::move(*text);
    return true;
}

void ReadManifestLine(BatchLine& line) {
    Fields fields(line);
    const bool isGood = Json::sax_parse(line.text, &fields);
    if (!isGood && line.wrong.empty()) line.wrong = "is no JSON";
    if (line.wrong.empty() && line.input.empty()) line.wrong = "input is missing";
}

}  // namespace

BatchLines::BatchLines(const std::string& name, Form form)
    : mName(name), mForm(form), mFile(name == "-" ? stdin : std::fopen(name.c_str(), "rbe")) {
    if (mFile == nullptr) ThrowUnreadable();
}

BatchLines::~BatchLines() {
    if (mFile != stdin) (void)std::fclose(mFile);
}

/// False at the end. Of a line that is too long its beginning.
bool BatchLines::ReadLine(std::string& line, bool& isWhole) {
    const auto end = static_cast<unsigned char>(mForm == Form::kNamesEndingInNul ? '\0' : '\n');
    line.clear();
    isWhole = true;
    errno = 0;
    int c = getc_unlocked(mFile);
    if (c == EOF && std::ferror(mFile) != 0) ThrowUnreadable();
    if (c == EOF) return false;
    for (; c != EOF && c != end; c = getc_unlocked(mFile)) {
        isWhole = line.size() < kMaxLine;
        if (isWhole) line += static_cast<char>(c);
    }
    if (std::ferror(mFile) != 0) ThrowUnreadable();
    return true;
}

std::optional<BatchLine> BatchLines::Next() {
    constexpr std::string_view kBlanks = " \t\r";
    BatchLine line;
    bool isWhole = true;
    while (ReadLine(line.text, isWhole)) {
        ++mNumber;
        const bool isManifest = mForm == Form::kManifest;
        const bool isBlank = isManifest && line.text.find_first_not_of(kBlanks) == std::string::npos;
        if (line.text.empty() || (isBlank && isWhole)) continue;
        line.place = std::format("{}:{}", mName, mNumber);
        if (!isWhole) {
            line.wrong = std::format("is longer than {} bytes", kMaxLine);
        } else if (isManifest) {
            ReadManifestLine(line);
        } else if (line.text.contains('\0')) {
            throw ListError("holds a zero byte, and names that end in one go with -0");
        } else {
            line.input = line.text;
        }
        if (line.input.starts_with('@') || line.input == "-") line.input.insert(0, "./");
        return line;
    }
    return std::nullopt;
}

}  // namespace Kavra::App
