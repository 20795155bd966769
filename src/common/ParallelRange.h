/// Splitting a loop over all cores: the one place that knows how.
#pragma once

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_reduce.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <thread>

#if defined(__SANITIZE_THREAD__)
#define KAVRA_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KAVRA_TSAN 1
#endif
#endif
#ifdef KAVRA_TSAN
#include <exception>
#include <mutex>
#include <vector>
#endif

namespace Kavra::Common {

/// One hardware thread's share of `count`, at least 1: the starting grain of every loop. The quotient is taken in
/// single precision and the number of threads asked for at every call.
inline std::size_t Grain(std::size_t count) {
    const unsigned threads = std::thread::hardware_concurrency();
    const float share = static_cast<float>(count) / static_cast<float>(threads == 0 ? 1 : threads);
    const auto grain = static_cast<std::uint64_t>(std::ceil(share));
    return grain == 0 ? 1 : static_cast<std::size_t>(grain);
}

/// Threads that `ForEachRange` takes for `count` items at most.
inline std::size_t ThreadsFor(std::size_t count, std::size_t serialCount) {
    if (count <= serialCount) return 1;
    return std::min<std::size_t>(std::max(std::thread::hardware_concurrency(), 1U), count);
}

#ifdef KAVRA_TSAN

// ThreadSanitizer cannot see how the thread library, which is not built with it, orders memory, and would take every
// loop for a race. Under it a range is split over plain threads: the loops' bodies run side by side as ever, and are
// watched.
namespace Plain {

template <class Body>
void ForEachPart(std::size_t count, const Body& body) {
    std::exception_ptr failure;
    std::mutex mutex;
    {
        std::vector<std::jthread> threads;
        const std::size_t grain = Grain(count);
        for (std::size_t begin = 0; begin < count; begin += grain) {
            threads.emplace_back([&, begin, end = std::min(count, begin + grain)] {
                try {
                    body(begin, end);
                } catch (...) {
                    const std::lock_guard lock(mutex);
                    failure = std::current_exception();
                }
            });
        }
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace Plain

#endif

/// Calls `body(begin, end)` for disjoint parts that together are [0, count), on the caller's thread and the worker
/// pool, and returns when all are done. Isolated: the caller picks up no other work while it waits. Up to `serialCount`
/// items are one call on the caller's thread, since waking a worker would take longer. An exception of a body
/// reaches the caller once the others have ended.
template <class Body>
void ForEachRange(std::size_t count, std::size_t serialCount, const Body& body) {
    if (count == 0) return;
    if (count <= serialCount) return body(std::size_t{0}, count);
#ifdef KAVRA_TSAN
    Plain::ForEachPart(count, body);
#else
    tbb::this_task_arena::isolate([&] {
        tbb::task_group_context context;
        tbb::parallel_for(
            tbb::blocked_range<std::size_t>(0, count, Grain(count)),
            [&](const tbb::blocked_range<std::size_t>& range) { body(range.begin(), range.end()); },
            tbb::auto_partitioner(), context);
    });
#endif
}

/// Folds disjoint parts of [0, count): `body(begin, end, value)` goes on from `value`, `join(a, b)` brings two parts
/// together. No task is started for `count` 0.
template <class Value, class Body, class Join>
Value ReduceRange(std::size_t count, std::size_t serialCount, const Value& identity, const Body& body,
                  const Join& join) {
    if (count == 0) return identity;
    if (count <= serialCount) return body(std::size_t{0}, count, identity);
    Value result = identity;
#ifdef KAVRA_TSAN
    std::mutex mutex;
    Plain::ForEachPart(count, [&](std::size_t begin, std::size_t end) {
        const Value part = body(begin, end, identity);
        const std::lock_guard lock(mutex);
        result = join(result, part);
    });
#else
    tbb::this_task_arena::isolate([&] {
        tbb::task_group_context context;
        result = tbb::parallel_reduce(
            tbb::blocked_range<std::size_t>(0, count, Grain(count)), identity,
            [&](const tbb::blocked_range<std::size_t>& range, const Value& value) {
                return body(range.begin(), range.end(), value);
            },
            join, tbb::auto_partitioner(), context);
    });
#endif
    return result;
}

}  // namespace Kavra::Common
