#include "load/geometry/NewImage.h"

#include "common/HostExtras.h"
#include "common/PixelFormats.h"
#include "formats/PixelFormatMapping.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

namespace Kavra::Devices {
namespace {

/// Asks the system for large pages in the part of a block that could hold them. Only a wish: a refusal changes nothing.
void PreferLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#ifdef __linux__
    constexpr std::size_t page = std::size_t{2} << 20;
    std::size_t capacity = bytes;
    void* begin = block;
    if (std::align(page, page, begin, capacity) != nullptr) madvise(begin, capacity / page * page, MADV_HUGEPAGE);
#endif
}

}  // namespace

bool CanAllocate(std::size_t bytes) {
    if (bytes > Common::HostBlockCeiling()) return false;
    // By ways that the compiler cannot see through: it leaves out memory that nobody uses, and then there is always
    // some.
    void* (*volatile allocate)(std::size_t) = std::malloc;
    void* const block = allocate(bytes);
    std::free(block);
    return block != nullptr;
}

std::size_t PixelBytes(const OIIO::ImageSpec& spec) {
    if (spec.width <= 0 || spec.height <= 0 || spec.depth < 0 || spec.nchannels <= 0) return 0;
    const OIIO::imagesize_t bytes = spec.image_bytes();
    return bytes == std::numeric_limits<OIIO::imagesize_t>::max() ? 0 : static_cast<std::size_t>(bytes);
}

OIIO::ImageBuf NewImage(const OIIO::ImageSpec& spec) {
    const std::size_t bytes = PixelBytes(spec);
    if (bytes == 0 || !CanAllocate(bytes)) return {};
    OIIO::ImageBuf image(spec, OIIO::InitializePixels::No);
    if (image.localpixels() == nullptr) return {};
    PreferLargePages(image.localpixels(), bytes);
    return image;
}

OIIO::ImageBuf WrapImage(const Raster& raster) {
    if (!raster.HoldsItsRows()) return {};
    const Common::PixelFormat& facts = Common::FactsOf(raster.format);
    OIIO::ImageSpec spec(LibraryType(facts.element));
    spec.nchannels = facts.channels;
    spec.width = spec.full_width = raster.width;
    spec.height = raster.faces * raster.height;
    spec.full_height = raster.height;
    spec.depth = spec.full_depth = raster.slices;
    const auto pitch = static_cast<OIIO::stride_t>(raster.pitch);
    // Over pixels that are not to be written to nobody makes an image but to read.
    return OIIO::ImageBuf(spec, const_cast<unsigned char*>(raster.first), OIIO::AutoStride, pitch, pitch * spec.height);
}

}  // namespace Kavra::Devices
