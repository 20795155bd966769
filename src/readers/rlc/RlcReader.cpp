#include "readers/rlc/RlcReader.h"

#include "readers/BilevelRow.h"
#include "readers/rlc/RlcDirectory.h"
#include "readers/rlc/RlcMask.h"
#include "readers/rlc/RlcRows.h"
#include "readers/rlc/RlcTrailer.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <cstddef>
#include <span>

namespace Kavra::Devices {

namespace {

constexpr int kPixelBytes = 4;
constexpr std::uint64_t kFirstRowOffset = 4;

}  // namespace

bool RlcReader::Open(const KString& path) {
    mSource.reset();
    ReadResult<ByteSource> source = ByteSource::Open(path);
    if (!source) return false;
    mSource = std::move(*source);
    CountFrames();
    (void)mSource->Seek(0);
    mRows = mSource->Big<std::int16_t>().value_or(0);
    mColumns = mSource->Big<std::int16_t>().value_or(0);
    return true;
}

void RlcReader::CountFrames() {
    const std::optional<RlcTrailer> trailer = ReadRlcTrailer(*mSource);
    if (trailer && HasDirectory(*trailer)) {
        mFrameCount += CountImages(*mSource, *trailer);
    } else {
        mFrameCount = 1;
    }
}

int RlcReader::GetRowPitch() {
    return mColumns * kPixelBytes;
}

bool RlcReader::ReadImage(unsigned char* buffer, int /*frame*/) {
    if (!mSource) return false;
    if (mRows < 1 || mColumns < 1) return true;
    (void)mSource->Seek(std::min(kFirstRowOffset, mSource->Size()));
    RlcRows rows(*mSource);
    RlcMask mask(mColumns);
    const auto pitch = static_cast<std::size_t>(GetRowPitch());
    const std::span<unsigned char> pixels(buffer, pitch * static_cast<std::size_t>(mRows));
    for (int y = 0; y < mRows; ++y) {
        mask.Clear();
        if (!rows.ReadInto(mask, y == mRows - 1)) Sys::Warning(L"Invalid Row -- out of buffer bound", nullptr);
        ExpandBilevelRow(mask.Bytes(), pixels.subspan(static_cast<std::size_t>(y) * pitch, pitch));
    }
    return true;
}

}  // namespace Kavra::Devices
