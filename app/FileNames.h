/// What the names of files tell.
#pragma once

#include <filesystem>
#include <string>

namespace Kavra::App {

/// ".png" of "photo.PNG".
std::string LowerExtension(const std::filesystem::path& path);

}  // namespace Kavra::App
