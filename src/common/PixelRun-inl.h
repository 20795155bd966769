// How a kernel walks over its run. Compiled once per vector width: no include guard of the usual kind.
#if defined(KAVRA_PIXEL_RUN_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KAVRA_PIXEL_RUN_INL
#undef KAVRA_PIXEL_RUN_INL
#else
#define KAVRA_PIXEL_RUN_INL
#endif

#include "common/PixelRun.h"

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Common::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// The two ways to write a vector of results.
struct ThroughCache {
    template <class D, class V>
    HWY_INLINE void operator()(D d, V v, unsigned char* out) const {
        hn::StoreU(v, d, reinterpret_cast<hn::TFromD<D>*>(out));
    }
};
struct AroundCache {
    template <class D, class V>
    HWY_INLINE void operator()(D d, V v, unsigned char* out) const {
        hn::Stream(v, d, reinterpret_cast<hn::TFromD<D>*>(out));
    }
};

/// Loads a vector from bytes of any alignment.
template <class D>
HWY_INLINE hn::VFromD<D> LoadBytes(D d, const unsigned char* in) {
    return hn::LoadU(d, reinterpret_cast<const hn::TFromD<D>*>(in));
}

constexpr std::size_t kVectorBytes = HWY_MAX_BYTES;

/// Asks for `bytes` bytes one memory page further on: the processor's own reading ahead stops at the end of a page,
/// which slows down most the kernels that write little. Asking for what lies past the end of the source is harmless.
HWY_INLINE void ReadAhead(const unsigned char* in, std::size_t bytes) {
    // By number: a pointer must not leave its block, not even one that is only a hint.
    const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(in) + 4096;
    for (std::size_t line = 0; line < bytes; line += 64)
        hwy::Prefetch(reinterpret_cast<const unsigned char*>(ahead + line));  // NOLINT(performance-no-int-to-ptr)
}

/// Units that lie before the first vector boundary of `out`, or `count` when no unit starts at one.
template <class Kernel>
std::size_t UnitsBeforeAlignment(const unsigned char* out, std::size_t vectorBytes, std::size_t count) {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(out) % vectorBytes;
    for (std::size_t units = 0; units < std::min(count, vectorBytes); ++units) {
        if ((offset + units * Kernel::kOutBytes) % vectorBytes == 0) return units;
    }
    return count;
}

/// Fewer units than a step, by way of buffers that hold a whole one.
template <class Kernel>
void RunPart(const Kernel& kernel, unsigned char* out, const unsigned char* in, std::size_t count) {
    HWY_ALIGN unsigned char from[Kernel::kMaxStep * Kernel::kInBytes] = {};
    HWY_ALIGN unsigned char to[Kernel::kMaxStep * Kernel::kOutBytes];
    std::memcpy(from, in, count * Kernel::kInBytes);
    kernel.Step(from, to, ThroughCache{});
    std::memcpy(out, to, count * Kernel::kOutBytes);
}

template <class Kernel, class Store>
void RunSteps(const Kernel& kernel, unsigned char* out, const unsigned char* in, std::size_t steps, Store store) {
    for (const std::size_t units = kernel.StepUnits(); steps > 0; --steps) {
        if constexpr (std::is_same_v<Store, AroundCache>) ReadAhead(in, units * Kernel::kInBytes);
        kernel.Step(in, out, store);
        in += units * Kernel::kInBytes;
        out += units * Kernel::kOutBytes;
    }
}

/// Converts `run` step by step, which reads ahead best where a step loads in the order of addresses. A kernel has
/// `kInBytes` and `kOutBytes` of one unit, `StepUnits()` (at most `kMaxStep`) and `Step(in, out, store)`, which writes
/// whole vectors only.
template <class Kernel>
void Convert(const Kernel& kernel, const PixelRun& run) {
    const auto out = [&run](std::size_t unit) { return run.out.data() + unit * Kernel::kOutBytes; };
    const auto in = [&run](std::size_t unit) { return run.in.data() + unit * Kernel::kInBytes; };
    const std::size_t count = run.in.size() / Kernel::kInBytes, step = kernel.StepUnits();

    const std::size_t aligned =
        UnitsBeforeAlignment<Kernel>(run.out.data(), hn::Lanes(hn::ScalableTag<std::uint8_t>()), count);
    const bool bypassCache = run.bypassCache && aligned < count;
    const std::size_t head = bypassCache ? aligned : 0;
    for (std::size_t at = 0; at < head; at += step)
        RunPart(kernel, out(at), in(at), std::min(step, head - at));

    const std::size_t steps = (count - head) / step;
    if (bypassCache) {
        RunSteps(kernel, out(head), in(head), steps, AroundCache{});
        hwy::FlushStream();
    } else {
        RunSteps(kernel, out(head), in(head), steps, ThroughCache{});
    }
    const std::size_t done = head + steps * step;
    if (done < count) RunPart(kernel, out(done), in(done), count - done);
}

}  // namespace Kavra::Common::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
