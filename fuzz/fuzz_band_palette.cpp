// The palette beside a band raster.

#include "readers/spot/BandPalette.h"

#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Kavra::Devices;
    const auto palette = ParseBandPalette(std::string(data, data + size));
    if (palette && palette->front() != BandColour{}) std::abort();
    return 0;
}
