/// Loops over all cores that whoever watches hears of and can stop.
#pragma once

#include "common/ParallelRange.h"
#include "common/Progress.h"

#include <algorithm>
#include <cstddef>
#include <thread>

namespace Kavra::Common {

/// Where the first part of a loop begins that takes nobody knows how long.
inline PartSize FirstParts(std::size_t serialCount) {
    const std::size_t threads = std::max(std::thread::hardware_concurrency(), 1U);
    return PartSize(std::max(serialCount + 1, threads), threads);
}

/// `ForEachRange` in parts, told of by a meter of as many units as there are items.
template <class Body>
void ForEachRangeOf(ProgressMeter& meter, std::size_t count, std::size_t serialCount, const Body& body) {
    if (!meter.IsWatched()) return ForEachRange(count, serialCount, body);
    PartSize parts = FirstParts(serialCount);
    for (std::size_t done = 0, size = 0; done < count; done += size) {
        size = parts.Next(count - done);
        ForEachRange(size, serialCount, [&](std::size_t begin, std::size_t end) { body(done + begin, done + end); });
        parts.Done();
        meter.Advance(size);
    }
}

/// The same as a stage of its own.
template <class Body>
void ForEachRangeOf(Devices::EProgressStage stage, std::size_t count, std::size_t serialCount, const Body& body) {
    ProgressMeter meter(stage, count);
    ForEachRangeOf(meter, count, serialCount, body);
}

/// `ReduceRange` likewise, as a stage of its own.
template <class Value, class Body, class Join>
Value ReduceRangeOf(Devices::EProgressStage stage, std::size_t count, std::size_t serialCount, const Value& identity,
                    const Body& body, const Join& join) {
    ProgressMeter meter(stage, count);
    if (!meter.IsWatched()) return ReduceRange(count, serialCount, identity, body, join);
    PartSize parts = FirstParts(serialCount);
    Value result = identity;
    for (std::size_t done = 0, size = 0; done < count; done += size) {
        size = parts.Next(count - done);
        const auto part = [&](std::size_t begin, std::size_t end, const Value& value) {
            return body(done + begin, done + end, value);
        };
        result = join(result, ReduceRange(size, serialCount, identity, part, join));
        parts.Done();
        meter.Advance(size);
    }
    return result;
}

}  // namespace Kavra::Common
