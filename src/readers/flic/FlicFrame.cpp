#include "readers/flic/FlicFrame.h"

#include <algorithm>
#include <bit>

namespace Kavra::Devices {

namespace {

/// Indices whose writing is kept track of together.
constexpr std::size_t kStretch = 1024;
constexpr std::size_t kBits = 64;

/// For a bit for each stretch.
constexpr std::size_t Words(std::size_t indices) {
    return indices / kStretch / kBits + 1;
}

}  // namespace

FlicFrame::FlicFrame(std::uint32_t width, std::uint32_t height)
    : mWidth(width),
      mHeight(height),
      mSize(std::size_t{width} * height),
      mIndices(Common::NewZeroedBlock(mSize)),
      mWritten(Words(mSize)) {}

std::uint64_t FlicFrame::BytesOf(std::uint32_t width, std::uint32_t height) {
    const std::size_t indices = std::size_t{width} * height;
    return indices + Words(indices) * sizeof(std::uint64_t);
}

std::span<unsigned char> FlicFrame::At(std::uint64_t offset, std::uint64_t count) {
    if (offset >= mSize || count == 0) return {};
    const auto first = static_cast<std::size_t>(offset);
    const auto inside = static_cast<std::size_t>(std::min<std::uint64_t>(count, mSize - first));
    for (std::size_t stretch = first / kStretch; stretch <= (first + inside - 1) / kStretch; ++stretch)
        mWritten[stretch / kBits] |= std::uint64_t{1} << stretch % kBits;
    return std::span(mIndices.get(), mSize).subspan(first, inside);
}

void FlicFrame::Clear() {
    const std::span<unsigned char> indices(mIndices.get(), mSize);
    for (std::size_t word = 0; word < mWritten.size(); ++word) {
        for (; mWritten[word] != 0; mWritten[word] &= mWritten[word] - 1) {
            const auto bit = static_cast<std::size_t>(std::countr_zero(mWritten[word]));
            const std::size_t first = (word * kBits + bit) * kStretch;
            std::ranges::fill(indices.subspan(first, std::min(kStretch, mSize - first)), 0);
        }
    }
}

}  // namespace Kavra::Devices
