/// File types by their first bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// ".png" and the like, for a file that begins like that; empty where it does not show.
std::string ExtensionOf(std::string_view begin);

/// All that `ExtensionOf` tells, without dots, each once.
std::vector<std::string> TypesOfBytes();

}  // namespace Kavra::App
