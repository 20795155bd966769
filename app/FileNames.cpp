#include "FileNames.h"

#include <algorithm>
#include <format>
#include <map>

namespace Kavra::App {

std::string LowerExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension;
}

bool HasWord(std::string_view words, std::string_view word) {
    return !word.empty() && !word.contains(' ') && words.contains(std::format(" {} ", word));
}

bool IsOpenExr(const std::filesystem::path& path) {
    return LowerExtension(path) == ".exr";
}

bool IsTextureName(const std::filesystem::path& path) {
    const std::string extension = LowerExtension(path);
    return extension == ".dds" || extension == ".ktx2";
}

bool IsFolder(const std::filesystem::path& out, std::size_t inputs) {
    std::error_code ignored;
    return inputs > 1 || std::filesystem::is_directory(out, ignored) || !out.has_filename();
}

std::filesystem::path InFolder(const std::filesystem::path& folder, const std::string& input, const std::string& to) {
    const std::string extension = to.starts_with('.') ? to : "." + to;
    return folder / std::filesystem::path(input).stem().concat(extension);
}

std::string Clash(const std::vector<std::string>& inputs, const std::vector<std::filesystem::path>& outputs) {
    std::map<std::filesystem::path, std::string> makers;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const auto [place, isNew] = makers.emplace(outputs[i].lexically_normal(), inputs[i]);
        if (!isNew) {
            return std::format("{} and {} would both become {}", place->second, inputs[i], outputs[i].string());
        }
    }
    return {};
}

}  // namespace Kavra::App
