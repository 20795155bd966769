/// Splitting a loop over all cores: the one place that knows how.
#pragma once

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_reduce.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <thread>

// The thread library is not built with ThreadSanitizer, which therefore cannot see that a loop's end orders the
// workers' writes before the caller's reads; these two calls say so.
#if defined(__SANITIZE_THREAD__) || (defined(__has_feature) && __has_feature(thread_sanitizer))
#define KAVRA_TSAN 1
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace Kavra::Common {

/// Hands the order of memory from one side of a fork or join to the other, for ThreadSanitizer only.
struct Fence {
    void Release() {
#ifdef KAVRA_TSAN
        __tsan_release(this);
#endif
    }
    void Acquire() {
#ifdef KAVRA_TSAN
        __tsan_acquire(this);
#endif
    }
};

/// One hardware thread's share of `count`, at least 1: the starting grain of every loop. The quotient is taken in single
/// precision and the number of threads asked for at every call.
inline std::size_t Grain(std::size_t count) {
    const unsigned threads = std::thread::hardware_concurrency();
    const float share = static_cast<float>(count) / static_cast<float>(threads == 0 ? 1 : threads);
    const auto grain = static_cast<std::uint64_t>(std::ceil(share));
    return grain == 0 ? 1 : static_cast<std::size_t>(grain);
}

/// Calls `body(begin, end)` for disjoint parts that together are [0, count), on the caller's thread and the worker pool,
/// and returns when all are done. Isolated: the caller picks up no other work while it waits. Up to `serialCount`
/// items are one call on the caller's thread, since waking a worker would take longer. An exception of a body
/// reaches the caller once the others have ended.
template <class Body>
void ForEachRange(std::size_t count, std::size_t serialCount, const Body& body) {
    if (count == 0) return;
    if (count <= serialCount) return body(std::size_t{0}, count);
    Fence start, end;
    start.Release();
    tbb::this_task_arena::isolate([&] {
        tbb::task_group_context context;
        tbb::parallel_for(
            tbb::blocked_range<std::size_t>(0, count, Grain(count)),
            [&](const tbb::blocked_range<std::size_t>& range) {
                start.Acquire();
                body(range.begin(), range.end());
                end.Release();
            },
            tbb::auto_partitioner(), context);
    });
    end.Acquire();
}

/// Folds disjoint parts of [0, count): `body(begin, end, value)` goes on from `value`, `join(a, b)` brings two parts
/// together. No task is started for `count` 0.
template <class Value, class Body, class Join>
Value ReduceRange(std::size_t count, std::size_t serialCount, const Value& identity, const Body& body,
                  const Join& join) {
    if (count == 0) return identity;
    if (count <= serialCount) return body(std::size_t{0}, count, identity);
    Value result = identity;
    Fence start, end;
    start.Release();
    tbb::this_task_arena::isolate([&] {
        tbb::task_group_context context;
        result = tbb::parallel_reduce(
            tbb::blocked_range<std::size_t>(0, count, Grain(count)), identity,
            [&](const tbb::blocked_range<std::size_t>& range, const Value& value) {
                start.Acquire();
                Value folded = body(range.begin(), range.end(), value);
                end.Release();
                return folded;
            },
            join, tbb::auto_partitioner(), context);
    });
    end.Acquire();
    return result;
}

}  // namespace Kavra::Common
