#include "readers/pcx/PcxLines.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <cstdint>

namespace Kavra::Devices {

using Common::ByteSource;

PcxLines::PcxLines(ByteSource& source, const PcxHeader& header, std::size_t room)
    : mSource(source), mRoom(room), mLineBytes(header.bytesPerLine) {
    (void)mSource.Seek(kPcxHeaderBytes);  // which a file with a header has
    if (header.encoding == 1) mRuns.emplace(source, mRoom, mLineBytes);
}

std::size_t PcxLines::Read(std::span<unsigned char> out) {
    if (!mRuns) return ReadRaw(out.first(mRoom));
    const std::span<const unsigned char> line = mRuns->NextLine();
    std::ranges::copy(line, out.begin());
    if (mRuns->IsOutOfData()) Sys::Warning(L"PCXReader::Invalid Frame -- out of data", nullptr);
    return line.size();
}

/// Fills the room and then goes to where the next line starts, seen from where reading stopped: back when a line is
/// shorter than the room, even where the file ended before. There is nothing to go to before the file's first byte.
std::size_t PcxLines::ReadRaw(std::span<unsigned char> out) {
    const std::size_t count = mSource.ReadSome(out);
    const std::uint64_t next = mSource.Position() + mLineBytes;
    if (next >= mRoom) (void)mSource.Seek(std::min(next - mRoom, mSource.Size()));
    return count;
}

void PcxLines::DropRun() {
    if (mRuns) mRuns->DropRun();
}

}  // namespace Kavra::Devices
