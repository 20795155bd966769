/// Sizes on the command line.
#pragma once

#include <string>
#include <utility>

namespace Kavra::App {

/// "640x480" as width and height, each `smallest` or more; throws `CLI::ValidationError` for anything else.
std::pair<int, int> ParseSize(const std::string& text, int smallest);

}  // namespace Kavra::App
