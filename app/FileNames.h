/// What the names of files tell, and where the outputs of several inputs go.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// ".png" of "photo.PNG".
std::string LowerExtension(const std::filesystem::path& path);

/// Whether a list of words, with a space around each, has a word, such as an extension.
bool HasWord(std::string_view words, std::string_view word);

/// Whether a file is one of OpenEXR, by its name. Its rows come as displayed whatever its description says, and its
/// colours are multiplied by its alpha.
bool IsOpenExr(const std::filesystem::path& path);

/// Whether a file is a texture, by its name: DDS or KTX2, whose frames are mip levels.
bool IsTextureName(const std::filesystem::path& path);

/// Whether `out` stands for a folder: there are several inputs, it is one already, or it ends in a slash.
bool IsFolder(const std::filesystem::path& out, std::size_t inputs);

/// The input's name in a folder with the extension `to`, given with or without its dot.
std::filesystem::path InFolder(const std::filesystem::path& folder, const std::string& input, const std::string& to);

/// Two inputs that would make one output; empty when there are none.
std::string Clash(const std::vector<std::string>& inputs, const std::vector<std::filesystem::path>& outputs);

}  // namespace Kavra::App
