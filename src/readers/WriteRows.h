/// Filling a sink row by row.
#pragma once

#include "common/RowSink.h"

#include <cstddef>
#include <span>

namespace Kavra::Devices {

/// Calls `write(row)` for each of the `count` rows of `rowBytes` bytes that the sink is to get, in order.
template <class Write>
void WriteRows(Common::RowSink& sink, std::size_t count, std::size_t rowBytes, const Write& write) {
    while (count > 0) {
        const std::span<unsigned char> rows = sink.NextRows(count);
        for (std::size_t at = 0; at < rows.size(); at += rowBytes)
            write(rows.subspan(at, rowBytes));
        count -= rows.size() / rowBytes;
    }
}

}  // namespace Kavra::Devices
