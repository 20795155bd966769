/// File types by their first bytes.
#pragma once

#include <string>
#include <string_view>

namespace Kavra::App {

/// ".png" and the like, for a file that begins like that; empty where it does not show.
std::string ExtensionOf(std::string_view begin);

}  // namespace Kavra::App
