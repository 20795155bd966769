// Every level of a DDS file, face by face and slice by slice, into a buffer of exactly its size.

#include "FuzzFile.h"
#include "load/DdsSlices.h"

#include <algorithm>
#include <vector>

namespace {

using namespace Kavra;

constexpr std::size_t kMaxBytes = 1 << 18;    // of a level; larger ones show nothing new
constexpr std::size_t kGuardBytes = 1 << 12;  // behind the buffer: the library's own writes are not watched
constexpr unsigned char kGuard = 0xA5;

/// Reads one level as `type` into pixels one element wider than the file's, and stops the run if a byte behind them
/// changes.
void ReadLevel(Devices::DdsSlices& slices, int level, const OIIO::ImageSpec& spec, OIIO::TypeDesc type) {
    const std::size_t stride = (static_cast<std::size_t>(spec.nchannels) + 1) * type.size();
    const OIIO::imagesize_t pixels = spec.image_pixels();
    if (pixels > kMaxBytes / stride) return;
    const std::size_t bytes = pixels * stride;
    std::vector<unsigned char> block(bytes + kGuardBytes, kGuard);
    (void)slices.ReadLevel(level, spec, spec.nchannels, type, block.data(), stride);
    const auto isGuard = [](unsigned char byte) { return byte == kGuard; };
    if (!std::all_of(block.begin() + static_cast<std::ptrdiff_t>(bytes), block.end(), isGuard)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Fuzz::FuzzFile file(std::span(data, size), ".dds");
    auto slices = Devices::DdsSlices::Open(Common::ByteSource(std::span(data, size)));
    const auto input = OIIO::ImageInput::create("dds");
    OIIO::ImageSpec top;
    if (!slices || !input || !input->open(file.Path().string(), top)) return 0;
    for (int level = 0; level < slices->Levels(); ++level) {
        if (!input->seek_subimage(0, level)) break;
        const OIIO::ImageSpec spec = Devices::DdsLevelSpec(*input);
        ReadLevel(*slices, level, spec, spec.format);
        ReadLevel(*slices, level, spec, OIIO::TypeFloat);
    }
    return 0;
}
