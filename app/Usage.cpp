#include "Commands.h"

#include <cstdio>
#include <format>

namespace Kavra::App {

int WrongUsage(std::string_view text) {
    std::fputs(std::format("kavra: error: {}\n", text).c_str(), stderr);
    return kWrongUsage;
}

}  // namespace Kavra::App
