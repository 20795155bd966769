/// What is wrong with the name of an output, before anything is made.
#pragma once

#include <cstddef>
#include <string>

namespace Kavra::App {

/// What is said of an output for so many inputs that has no name, or that of a file where a folder is needed: it has an
/// extension and is no folder that is there. Empty where nothing is wrong.
std::string OutputNameObstacle(const std::string& out, std::size_t inputs);

}  // namespace Kavra::App
