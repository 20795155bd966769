// The palette beside a Spot raster.

#include "readers/spot/SpotHeader.h"

#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Kavra::Devices;
    const auto palette = ParseSpotPalette(std::string(data, data + size));
    if (palette && palette->front() != SpotColour{}) std::abort();
    return 0;
}
