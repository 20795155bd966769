#include "frame/host/devices/ZstdLevels.h"

#include <zstd.h>

#include <algorithm>
#include <memory>
#include <new>
#include <thread>

namespace Kavra::Devices {

namespace {

struct ContextDeleter {
    void operator()(ZSTD_CCtx* context) const noexcept { ZSTD_freeCCtx(context); }
};

}  // namespace

bool UnpackZstd(std::span<const unsigned char> from, std::span<unsigned char> to) {
    const std::size_t bytes = ZSTD_decompress(to.data(), to.size(), from.data(), from.size());
    return ZSTD_isError(bytes) == 0 && bytes == to.size();
}

std::vector<unsigned char> PackZstd(std::span<const unsigned char> from, int level) {
    const std::unique_ptr<ZSTD_CCtx, ContextDeleter> context(ZSTD_createCCtx());
    if (!context) throw std::bad_alloc();
    const auto set = [&](ZSTD_cParameter parameter, int value) {
        return ZSTD_isError(ZSTD_CCtx_setParameter(context.get(), parameter, value)) == 0;
    };
    // One worker divides the bytes as many do, while none would pack them as a whole.
    const int workers = std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
    set(ZSTD_c_nbWorkers, workers);  // a library built without threads has none
    if (!set(ZSTD_c_compressionLevel, level) || !set(ZSTD_c_checksumFlag, 1)) throw std::bad_alloc();
    std::vector<unsigned char> packed(ZSTD_compressBound(from.size()));
    const std::size_t bytes = ZSTD_compress2(context.get(), packed.data(), packed.size(), from.data(), from.size());
    if (ZSTD_isError(bytes) != 0) throw std::bad_alloc();
    packed.resize(bytes);
    return packed;
}

}  // namespace Kavra::Devices
