// RLC run-length rasters.

#include "LegacyLoadFuzz.h"
#include "readers/ImageFileType.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Kavra::Fuzz::CheckLegacyFile(data, size, ".rlc", Kavra::Devices::RLC);
    return 0;
}
