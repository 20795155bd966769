#include "OutputPattern.h"

#include "FileNames.h"
#include "StreamFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <format>
#include <map>
#include <stdexcept>
#include <utility>

namespace Kavra::App {
namespace {

constexpr std::array kFields = {"dir", "stem", "ext", "name", "index"};
constexpr std::size_t kMaxDigits = 20;

[[noreturn]] void Refuse(std::string_view field) {
    throw std::runtime_error(std::format(
        "{} is no field: {{dir}} {{stem}} {{ext}} {{name}} {{index}} are, and {{index:04}}; {{{{ is a brace", field));
}

/// How many digits a number has at least: of ":04" four.
std::size_t DigitsOf(std::string_view text, std::string_view field) {
    std::size_t digits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), digits);
    if (error != std::errc() || end != text.data() + text.size() || digits > kMaxDigits) Refuse(field);
    return digits;
}

/// Whether a path stays below the folder that it begins with.
bool IsBelow(const std::filesystem::path& path, const std::filesystem::path& folder) {
    const std::filesystem::path rest = path.lexically_normal().lexically_relative(folder.lexically_normal());
    return !rest.empty() && *rest.begin() != "..";
}

std::string ClashWithInput(const std::vector<Input>& inputs, const std::vector<std::filesystem::path>& outputs) {
    std::map<std::filesystem::path, std::size_t> names;
    for (std::size_t i = 0; i < inputs.size(); ++i)
        names.emplace(std::filesystem::path(inputs[i].file).lexically_normal(), i);
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const auto found = names.find(outputs[i].lexically_normal());
        if (found == names.end() || found->second == i) continue;
        return std::format("{} would become {}, which is another input", inputs[i].file, outputs[i].string());
    }
    return {};
}

}  // namespace

bool OutputPattern::IsPattern(std::string_view text) {
    return text.contains('{') || text.contains('}');
}

OutputPattern::OutputPattern(std::string_view text) {
    Piece piece;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if ((c == '{' || c == '}') && text.substr(i + 1).starts_with(c)) {
            piece.text += text[i++];
        } else if (c == '{') {
            const std::size_t end = text.find('}', i);
            if (end == std::string_view::npos) Refuse(text.substr(i));
            const std::string_view field = text.substr(i, end + 1 - i);
            const std::string_view inside = field.substr(1, field.size() - 2);
            piece.field = inside.substr(0, inside.find(':'));
            const bool hasDigits = inside.contains(':');
            if (!std::ranges::contains(kFields, piece.field) || (hasDigits && piece.field != "index")) Refuse(field);
            if (hasDigits) piece.digits = DigitsOf(inside.substr(inside.find(':') + 1), field);
            mPieces.push_back(std::exchange(piece, {}));
            i = end;
        } else if (c == '}') {
            Refuse("}");
        } else {
            piece.text += c;
        }
    }
    mPieces.push_back(piece);
}

std::filesystem::path OutputPattern::Name(const std::string& input, std::size_t index, const std::string& to) const {
    const std::filesystem::path path = input;
    const std::string own = path.extension().string();
    const auto value = [&](const Piece& piece) -> std::string {
        if (piece.field == "dir") return path.has_parent_path() ? path.parent_path().string() : ".";
        if (piece.field == "stem") return path.stem().string();
        if (piece.field == "name") return path.filename().string();
        if (piece.field == "ext")
            return to.empty() ? own.substr(own.empty() ? 0 : 1) : to.substr(to.starts_with('.') ? 1 : 0);
        return piece.field.empty() ? std::string() : std::format("{:0{}}", index, piece.digits);
    };
    std::string name;
    for (const Piece& piece : mPieces)
        name += piece.text + value(piece);
    const std::filesystem::path folder = std::filesystem::path(mPieces.front().text + "x").parent_path();
    if (!folder.empty() && !IsBelow(name, folder))
        throw std::runtime_error(std::format("{} would become {}, which is not in {}", input, name, folder.string()));
    return name;
}

std::string PlanOutputs(const std::vector<Input>& inputs, const OutputWish& wish,
                        std::vector<std::filesystem::path>& outputs) try {
    if (wish.given != nullptr) {
        outputs = *wish.given;
        return {};
    }
    const bool isPattern = OutputPattern::IsPattern(wish.out);
    if (isPattern || wish.toFolder) {
        for (const Input& input : inputs)
            if (input.isStream) return input.file + " has no name to make that of its output of";
    }
    outputs.reserve(inputs.size());
    if (isPattern) {
        const OutputPattern pattern(wish.out);
        for (std::size_t i = 0; i < inputs.size(); ++i)
            outputs.push_back(pattern.Name(inputs[i].file, i, wish.to));
    } else {
        for (const Input& input : inputs) {
            const std::filesystem::path folder = std::filesystem::path(wish.out) / input.below;
            outputs.push_back(wish.toFolder ? InFolder(folder, input.file, wish.to) : std::filesystem::path(wish.out));
        }
    }
    const std::string clash = Clash(FileNamesOf(inputs), outputs);
    return clash.empty() && isPattern ? ClashWithInput(inputs, outputs) : clash;
} catch (const std::runtime_error& error) {
    return error.what();
}

}  // namespace Kavra::App
