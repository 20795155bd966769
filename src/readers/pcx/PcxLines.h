/// The lines of a PCX file, run-length coded or raw.
#pragma once

#include "readers/pcx/PcxHeader.h"
#include "readers/pcx/PcxRuns.h"

#include <cstddef>
#include <optional>
#include <span>

namespace Kavra::Devices {

/// Reads lines, each the bytes of one row of one plane. Warns of each run-length coded line that the data end in.
class PcxLines {
public:
    /// Lines from the end of the header on, read into `room` bytes each: what a row needs of a line, which may be more
    /// or less than the file's own length of a line. The source is this reader's alone as long as it lives.
    PcxLines(Common::ByteSource& source, const PcxHeader& header, std::size_t room);

    std::size_t Room() const { return mRoom; }

    /// Reads the next line into the first `Room()` bytes of `out` and tells how many bytes came. The others stay as
    /// they are.
    std::size_t Read(std::span<unsigned char> out);

    /// Forgets what is left of a run that did not fit into the last line.
    void DropRun();

private:
    std::size_t ReadRaw(std::span<unsigned char> out);

    Common::ByteSource& mSource;
    std::size_t mRoom;
    std::size_t mLineBytes;
    std::optional<PcxRuns> mRuns;  // nothing for raw lines
};

}  // namespace Kavra::Devices
