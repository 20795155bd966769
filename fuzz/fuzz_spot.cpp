// A Spot raster with its header and its palette.

#include "LegacyLoadFuzz.h"
#include "readers/ImageFileType.h"

#include <algorithm>
#include <optional>

namespace {

/// Takes the length of a part (two bytes, little-endian) and the part itself, as far as the input goes.
std::span<const unsigned char> TakePart(std::span<const unsigned char>& input) {
    if (input.size() < 2) return {};
    const std::size_t length = std::min<std::size_t>(input[0] + 256U * input[1], input.size() - 2);
    const std::span<const unsigned char> part = input.subspan(2, length);
    input = input.subspan(2 + length);
    return part;
}

}  // namespace

/// The header, the palette, and the samples. The last byte also says which band.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Kavra;
    std::span<const unsigned char> input(data, size);
    const Fuzz::FuzzFile header(TakePart(input), ".hdr");
    const std::span<const unsigned char> colours = TakePart(input);
    std::optional<Fuzz::FuzzFile> palette;
    if (!colours.empty()) palette.emplace(colours, ".clr");
    const Fuzz::FuzzFile samples(input, ".bil");
    Fuzz::CheckLegacyLoad(samples.Name(), Devices::Spot, size == 0 ? 0 : data[size - 1] % 8);
    return 0;
}
