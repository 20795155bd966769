#include "Commands.h"
#include "StandardStreams.h"

#include <format>

namespace Kavra::App {

int WrongUsage(std::string_view text) {
    WriteError(std::format("kavra: error: {}\n", text));
    return kWrongUsage;
}

}  // namespace Kavra::App
