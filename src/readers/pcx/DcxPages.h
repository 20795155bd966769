/// DCX: several PCX files in one, as fax programs write their pages.
///
///     offset  bytes  field
///          0      4  0x3ADE68B1, the lowest byte first
///          4  4 a page  where it begins; 0 behind the last one, and 1023 of them at most
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"

#include <cstdint>
#include <vector>

namespace Kavra::Devices {

struct DcxPage {
    std::uint64_t start = 0;
    std::uint64_t bytes = 0;
};

/// Whether the file begins as one.
bool IsDcx(Common::ByteSource& source);

/// The pages in the order of the list, each up to the next one in the file. Entries that are no PCX picture which the
/// common reading shows, and those that stand there for a second time, are no pages. Fails where there is none.
[[nodiscard]] Common::Result<std::vector<DcxPage>> FindDcxPages(Common::ByteSource& source);

/// The page as a file of its own.
[[nodiscard]] Common::Result<Common::ByteSource> OpenDcxPage(Common::ByteSource& source, const DcxPage& page);

}  // namespace Kavra::Devices
