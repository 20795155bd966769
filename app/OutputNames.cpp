#include "OutputNames.h"

#include <filesystem>
#include <format>
#include <system_error>

namespace Kavra::App {

std::string OutputNameObstacle(const std::string& out, std::size_t inputs) {
    if (out.empty()) return "the name of the output is empty";
    const std::filesystem::path path = out;
    std::error_code ignored;
    if (inputs < 2 || !path.has_extension() || std::filesystem::is_directory(path, ignored)) return {};
    return std::format("several inputs need a folder, and {} is the name of a file; a new folder is named {}/", out,
                       out);
}

}  // namespace Kavra::App
