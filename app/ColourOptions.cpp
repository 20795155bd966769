#include "ColourOptions.h"

namespace Kavra::App {

void ColourOptions::AddTo(CLI::App& /*command*/) {}

LoadedImage ColourOptions::Apply(Report& /*report*/, LoadedImage image, Source& /*source*/,
                                 std::string_view /*extension*/) const {
    return image;
}

}  // namespace Kavra::App
