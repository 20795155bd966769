#include "readers/pcx/PcxReader.h"

#include "readers/pcx/PcxNibbles.h"
#include "readers/pcx/PcxRows.h"

#include <cstddef>
#include <span>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

namespace {

constexpr std::uint16_t kGreyPalette = 2;

}  // namespace

bool PCXReader::Open(const KString& path) {
    mSource.reset();
    mPalette.reset();
    Result<ByteSource> source = ByteSource::Open(path);
    if (!source) return false;
    const std::optional<PcxHeader> header = ReadPcxHeader(*source);
    if (!header || header->Width() < 1 || header->Height() < 1) return false;
    if (header->Bits() != 24) {
        mPalette = PcxPalette::Read(*source, *header);
        if (!mPalette) return false;
    }
    if (header->Bits() == 4) SetPcxNibbles(header->paletteInfo == kGreyPalette || mPalette->IsGreyRamp());
    mHeader = *header;
    mSource = std::move(*source);
    return true;
}

bool PCXReader::ReadImage(unsigned char* buffer, int /*frame*/) {
    if (!mSource) return false;
    const auto pitch = static_cast<std::size_t>(GetRowPitch());
    const std::span<unsigned char> image(buffer, pitch * static_cast<std::size_t>(GetHeight()));
    if (mPalette) {
        PcxIndexRows rows(*mSource, mHeader);
        for (std::size_t at = 0; at < image.size(); at += pitch)
            mPalette->Colour(rows.Next(), image.subspan(at, pitch));
    } else {
        PcxColourRows rows(*mSource, mHeader);
        for (std::size_t at = 0; at < image.size(); at += pitch)
            rows.Next(image.subspan(at, pitch));
    }
    return true;
}

}  // namespace Kavra::Devices
