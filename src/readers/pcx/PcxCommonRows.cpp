#include "readers/pcx/PcxCommonRows.h"

#include "readers/pcx/PcxSamples.h"

#include <algorithm>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;

// --- Bytes -----------------------------------------------------------------------------------------------------------

namespace {

std::size_t RowBytes(const PcxHeader& header) {
    return std::size_t{header.planes} * header.bytesPerLine;
}

/// The part of the file with the rows. Both ends lie in a file that has a header.
ByteSource DataOf(ByteSource& source, std::uint64_t end) {
    (void)source.Seek(kPcxHeaderBytes);
    auto data = source.Slice(end - kPcxHeaderBytes);
    return data ? *std::move(data) : ByteSource(std::span<const unsigned char>());
}

}  // namespace

PcxRowBytes::PcxRowBytes(ByteSource& source, const PcxHeader& header, std::uint64_t end)
    : mData(DataOf(source, end)), mRow(RowBytes(header)) {
    if (header.encoding == 1) mRuns.emplace(mData, mRow.size(), mRow.size());
}

std::span<const unsigned char> PcxRowBytes::Next() {
    if (!mRuns) return Missing(mData.ReadSome(mRow));
    const std::span<const unsigned char> row = mRuns->NextLine();
    if (row.size() == mRow.size()) return row;
    std::ranges::copy(row, mRow.begin());
    return Missing(row.size());
}

/// The row of which `count` bytes were there.
std::span<const unsigned char> PcxRowBytes::Missing(std::size_t count) {
    mIsOutOfData = mIsOutOfData || count < mRow.size();
    std::ranges::fill(std::span(mRow).subspan(count), 0);
    return mRow;
}

std::uint64_t PcxRowBytes::Position() const {
    return kPcxHeaderBytes + (mRuns ? mRuns->Position() : mData.Position());
}

// --- Pixels ----------------------------------------------------------------------------------------------------------

namespace {

constexpr std::size_t kAlpha = 3;
constexpr unsigned char kOpaque = 255;

std::size_t NeededBytes(const PcxHeader& header) {
    return (static_cast<std::size_t>(header.Width()) * header.bitsPerPlane + 7) / 8;
}

/// Whether the fourth of four planes is more than what fills up a pixel to 32 bits.
bool HasAlpha(ByteSource& source, const PcxHeader& header, std::uint64_t dataEnd) {
    if (header.Bits() <= 8 || header.planes <= kAlpha) return false;
    PcxRowBytes rows(source, header, dataEnd);
    for (int y = 0; y < header.Height() && !rows.IsOutOfData(); ++y) {
        const std::span<const unsigned char> alpha = rows.Next().subspan(kAlpha * header.bytesPerLine);
        const std::size_t needed = std::min(alpha.size(), NeededBytes(header));
        if (std::ranges::any_of(alpha.first(needed), [](unsigned char byte) { return byte != 0; })) return true;
    }
    return false;
}

}  // namespace

PcxCommonRows::PcxCommonRows(ByteSource& source, const PcxHeader& header, const PcxCommonColours& colours)
    : mBytes(source, header, colours.dataEnd),
      mHeader(header),
      mPixels(colours.pixels),
      mWidth(static_cast<std::size_t>(header.Width())),
      mLineBytes(std::min<std::size_t>(header.bytesPerLine, NeededBytes(header))),
      mSamplesOfPlane(NeededBytes(header) * 8 / header.bitsPerPlane),
      mHasAlpha(HasAlpha(source, header, colours.dataEnd)) {
    mSamples.resize(mSamplesOfPlane * (header.Bits() > 8 ? header.planes : 1));
}

void PcxCommonRows::Next(std::span<unsigned char> pixels) {
    mRow = mBytes.Next();
    if (mHeader.Bits() > 8) {
        Colour(pixels);
    } else {
        Index(pixels);
    }
}

/// What the row needs of a plane's line, as far as there is one.
std::span<const unsigned char> PcxCommonRows::Line(std::size_t plane) const {
    return mRow.subspan(plane * mHeader.bytesPerLine, mLineBytes);
}

void PcxCommonRows::Unpack(std::span<const unsigned char> line, unsigned shift,
                           std::span<unsigned char> samples) const {
    switch (mHeader.bitsPerPlane) {
        case 1:
            return AddPcxSamples<1>(line, 0, shift, samples);
        case 2:
            return AddPcxSamples<2>(line, 0, shift, samples);
        case 4:
            return AddPcxSamples<4>(line, 0, shift, samples);
        default:
            std::ranges::copy(line, samples.begin());
    }
}

void PcxCommonRows::Index(std::span<unsigned char> pixels) {
    if (mHeader.bitsPerPlane == 8 && mLineBytes == mWidth) return LookUp(pixels, Line(0), mPixels);
    std::ranges::fill(mSamples, 0);
    for (std::size_t plane = 0; plane < mHeader.planes; ++plane)
        Unpack(Line(plane), static_cast<unsigned>(plane * mHeader.bitsPerPlane), mSamples);
    LookUp(pixels, std::span(mSamples).first(mWidth), mPixels);
}

/// A byte a pixel of one plane of colours.
std::span<const unsigned char> PcxCommonRows::Component(std::size_t plane) {
    if (mHeader.bitsPerPlane == 8 && mLineBytes == mWidth) return Line(plane);
    const std::span<unsigned char> samples = std::span(mSamples).subspan(plane * mSamplesOfPlane, mSamplesOfPlane);
    std::ranges::fill(samples, 0);
    Unpack(Line(plane), 0, samples);
    if (mHeader.bitsPerPlane == 4) {
        for (unsigned char& sample : samples)
            sample = static_cast<unsigned char>(sample * 17);
    }
    return samples;
}

void PcxCommonRows::Colour(std::span<unsigned char> pixels) {
    const unsigned char* red = Component(0).data();
    const unsigned char* green = Component(1).data();
    const unsigned char* blue = Component(2).data();
    // Four plain stores are what the compiler makes vectors of, where the count is no member that they might change.
    const std::size_t width = mWidth;
    for (std::size_t x = 0; x < width; ++x) {
        pixels[4 * x] = red[x];
        pixels[4 * x + 1] = green[x];
        pixels[4 * x + 2] = blue[x];
        pixels[4 * x + 3] = kOpaque;
    }
    if (!mHasAlpha) return;
    const unsigned char* alpha = Component(kAlpha).data();
    for (std::size_t x = 0; x < width; ++x)
        pixels[4 * x + kAlpha] = alpha[x];
}

}  // namespace Kavra::Devices
