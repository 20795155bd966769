// PICT pictures: any bytes, opened and drawn.

#include "LegacyLoadFuzz.h"
#include "readers/ImageFileType.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Kavra::Fuzz::CheckLegacyFile(data, size, ".pict", Kavra::Devices::PICT);
    return 0;
}
