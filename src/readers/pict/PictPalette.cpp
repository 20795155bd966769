#include "readers/pict/PictPalette.h"

#include "readers/pict/PictPixels.h"

#include <algorithm>
#include <cstring>

namespace Kavra::Devices {

namespace {

constexpr auto kGreys = [] {
    std::array<PictColour, 256> greys{};
    for (unsigned i = 0; i < greys.size(); ++i)
        greys[i].fill(static_cast<std::uint16_t>(i * 257));
    return greys;
}();

}  // namespace

std::span<const PictColour> PictColourTable(const PictRecord& record) {
    if (record.colours.empty()) return kGreys;
    return record.colours;
}

PictPalette::PictPalette(std::span<const PictColour> colours) : mCount(std::min(colours.size(), mPixels.size())) {
    for (std::size_t i = 0; i < mCount; ++i) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            mPixels[i][channel] = static_cast<unsigned char>(colours[i][channel] >> 8);
        mPixels[i][3] = 0xFF;
    }
}

void PictPalette::ToRgba(std::span<const unsigned char> indices, std::span<unsigned char> out) const {
    unsigned char* to = out.first(4 * indices.size()).data();
    if (LargestIndex(indices) < mCount) {
        for (std::size_t i = 0; i < indices.size(); ++i)
            std::memcpy(to + 4 * i, mPixels[indices[i]].data(), 4);
        return;
    }
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (indices[i] < mCount) std::memcpy(to + 4 * i, mPixels[indices[i]].data(), 4);
    }
}

}  // namespace Kavra::Devices
