// The header of a Spot raster, as text and as a file with a palette beside it.

#include "FuzzFile.h"
#include "readers/spot/SpotCommonHeader.h"

#include <cstdlib>
#include <limits>

namespace {

using namespace Kavra;

/// What every accepted header promises to the reader.
void Check(const Devices::SpotHeader& header) {
    const bool shape = header.columns >= 1 && header.rows >= 1 && header.bits >= 1 &&
                       (header.bands == 1 ? header.bits <= 32 : header.bands == 3);
    const bool placement = header.skipBytes >= 0 && header.recordSkipBytes >= 0 && header.bandRowBytes >= 0 &&
                           header.totalRowBytes >= 0 && header.bandGapBytes >= 0;
    const bool palette = header.palette[0] == Devices::SpotColour{} &&
                         (header.colourEntries == 0 || (header.greyEntries == 0 && header.bands == 1));
    if (!shape || !placement || !palette) std::abort();
}

/// The same of the common reading, with samples of so many bytes.
void CheckCommon(const std::string& text, std::uint64_t dataBytes) {
    const auto parsed = Devices::ParseSpotCommonHeader(text, dataBytes, Devices::SpotName::kOther);
    if (!parsed) return;
    const bool isSequential = parsed->layout == Devices::SpotLayout::kSequential;
    const std::int64_t row = isSequential ? parsed->bandRowBytes : parsed->totalRowBytes;
    const std::int64_t rows = Devices::SpotRowsIn(*parsed, dataBytes);
    const bool shape = parsed->columns >= 1 && parsed->rows >= 1 && parsed->bands >= 1;
    const bool placement = Devices::SpotLineBytes(*parsed) >= 1 && row >= Devices::SpotLineBytes(*parsed) &&
                           parsed->skipBytes >= 0 && parsed->bandGapBytes >= 0 && parsed->recordSkipBytes >= 0;
    if (!shape || !placement || rows < 0 || rows > parsed->rows) std::abort();
    // What is there holds the samples that it is said to hold.
    if (rows > 1 && dataBytes / static_cast<std::uint64_t>(row) + 1 < static_cast<std::uint64_t>(rows)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    constexpr std::uint64_t kAnyLength = std::numeric_limits<std::uint64_t>::max();
    const auto parsed = Devices::ParseSpotHeader(text, kAnyLength);
    if (parsed) Check(*parsed);
    for (const std::uint64_t bytes : {std::uint64_t{0}, std::uint64_t{size}, kAnyLength})
        CheckCommon(text, bytes);
    if (parsed && parsed->totalRowBytes > 0 && Devices::ParseSpotHeader(text, 0)) std::abort();

    const Fuzz::FuzzFile file({data, size}, ".hdr");
    const Fuzz::FuzzFile palette({data, size}, ".clr");
    auto source = Common::ByteSource::Open(file.Name());
    auto read = Devices::ReadSpotHeader(source.value(), kAnyLength);
    if (read.has_value() != (parsed.has_value() && size <= 20480)) std::abort();
    if (!read) return 0;
    Devices::AddSpotPalette(file.Name(), *read);
    Check(*read);
    return 0;
}
