/// Results that are computed on all cores and taken in order.
#pragma once

#include "common/Progress.h"
#include "common/WatchedRange.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Kavra::Common {

/// Calls `take(make(i))` for every i of [0, count), in the order of i and on the caller's thread; the parts are made on
/// all cores where there are more than `serialCount`. Sums that are taken this way come out the same on any number of
/// threads. A few thousand parts are held at a time, however many there are. Exceptions as in `ForEachRange`.
template <class Part, class Make, class Take>
void ForEachInOrder(std::size_t count, std::size_t serialCount, const Make& make, const Take& take) {
    constexpr std::size_t kMaxParts = 8192;
    std::vector<Part> parts(std::min(count, kMaxParts));
    for (std::size_t first = 0; first < count; first += parts.size()) {
        const std::size_t size = std::min(parts.size(), count - first);
        ForEachRange(size, serialCount, [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i)
                parts[i] = make(first + i);
        });
        for (std::size_t i = 0; i < size; ++i)
            take(parts[i]);
    }
}

/// The same as a stage of an operation that can be stopped. Throws `Cancelled`.
template <class Part, class Make, class Take>
void ForEachInOrderOf(Devices::EProgressStage stage, std::size_t count, std::size_t serialCount, const Make& make,
                      const Take& take) {
    ProgressMeter meter(stage, count);
    if (!meter.IsWatched()) return ForEachInOrder<Part>(count, serialCount, make, take);
    PartSize parts = FirstParts(serialCount);
    for (std::size_t done = 0, size = 0; done < count; done += size) {
        size = parts.Next(count - done);
        ForEachInOrder<Part>(size, serialCount, [&](std::size_t i) { return make(done + i); }, take);
        parts.Done();
        meter.Advance(size);
    }
}

}  // namespace Kavra::Common
