/// Running the same work on several threads at once.
#pragma once

#include <latch>
#include <thread>
#include <vector>

namespace Kavra::Tests {

/// Calls `work(index)` on `count` threads, which start together, and returns when all have ended.
template <class Work>
void OnThreads(int count, const Work& work) {
    std::latch start(count);
    std::vector<std::jthread> threads;
    threads.reserve(count);
    for (int index = 0; index < count; ++index) {
        threads.emplace_back([&, index] {
            start.arrive_and_wait();
            work(index);
        });
    }
}

}  // namespace Kavra::Tests
