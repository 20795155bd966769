#include "readers/pcx/PcxRows.h"

#include "readers/SampleTables.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace Kavra::Devices {

using Common::ByteSource;

namespace {

constexpr std::size_t kBitsOfByte = 8;
constexpr std::size_t kColours = 3;
constexpr unsigned char kOpaque = 255;

/// Eight pixels as one number, so that they are worked on together.
using EightPixels = std::uint64_t;

/// For each byte its bits, the highest first in memory, as a byte 0 or 1 each.
constexpr auto kBits = [] {
    std::array<EightPixels, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        std::array<unsigned char, kBitsOfByte> bits{};
        for (std::size_t bit = 0; bit < kBitsOfByte; ++bit)
            bits[bit] = static_cast<unsigned char>(byte >> (kBitsOfByte - 1 - bit) & 1U);
        table[byte] = std::bit_cast<EightPixels>(bits);
    }
    return table;
}();

constexpr std::size_t BytesOfBits(std::size_t width) {
    return (width + kBitsOfByte - 1) / kBitsOfByte;
}

std::size_t Width(const PcxHeader& header) {
    return static_cast<std::size_t>(header.Width());
}

/// How many bytes a row takes of a line.
std::size_t Room(const PcxHeader& header) {
    if (header.IsPlanar() || header.Bits() == 24) return header.bytesPerLine;
    return header.Bits() == 1 ? BytesOfBits(Width(header)) : Width(header);
}

/// How many bytes of a plane lie ready for a row: a line, or what the width takes where that is more.
std::size_t PlaneBytes(const PcxHeader& header) {
    const std::size_t needed = header.Bits() == 24 ? Width(header) : BytesOfBits(Width(header));
    return std::max(Room(header), needed);
}

/// Sets bit `plane` (0 to 7) of each index where the packed bit, after `flip`, is set.
void AddPlane(std::span<const unsigned char> packed, unsigned flip, unsigned plane, std::span<unsigned char> indices) {
    unsigned char* eight = indices.first(packed.size() * kBitsOfByte).data();
    for (const unsigned char byte : packed) {
        EightPixels pixels = 0;
        std::memcpy(&pixels, eight, sizeof pixels);
        pixels |= kBits[byte ^ flip] << plane;  // which stays inside each byte
        std::memcpy(eight, &pixels, sizeof pixels);
        eight += sizeof pixels;
    }
}

}  // namespace

PcxIndexRows::PcxIndexRows(ByteSource& source, const PcxHeader& header)
    : mLines(source, header, Room(header)),
      mWidth(Width(header)),
      mPlanes(header.planes),
      mPlaneBytes(PlaneBytes(header)),
      mIndices(BytesOfBits(mWidth) * kBitsOfByte),
      mNibbles(CurrentPcxNibbles()) {
    if (header.IsPlanar()) {
        mNext = &PcxIndexRows::NextFromPlanes;
        mPacked.resize(mPlanes * mPlaneBytes);
    } else if (header.Bits() == 1) {
        mNext = &PcxIndexRows::NextFromBits;
        mPacked.resize(mPlaneBytes);
    } else {
        mNext = header.Bits() == 4 ? &PcxIndexRows::NextFromNibbles : &PcxIndexRows::NextFromBytes;
    }
}

std::span<const unsigned char> PcxIndexRows::Next() {
    (this->*mNext)();
    return std::span(mIndices).first(mWidth);
}

/// Every plane counts one bit a pixel, whatever the header says.
void PcxIndexRows::NextFromPlanes() {
    std::ranges::fill(mIndices, 0);
    for (std::size_t plane = 0; plane < mPlanes; ++plane) {
        const std::span<unsigned char> packed = std::span(mPacked).subspan(plane * mPlaneBytes, mPlaneBytes);
        (void)mLines.Read(packed);
        AddPlane(packed.first(BytesOfBits(mWidth)), 0x00, static_cast<unsigned>(plane), mIndices);
    }
}

/// A set bit is the first colour.
void PcxIndexRows::NextFromBits() {
    const std::size_t count = mLines.Read(mPacked);
    std::ranges::fill(std::span(mPacked).subspan(count), 0);
    std::ranges::fill(mIndices, 0);
    AddPlane(mPacked, 0xFF, 0, mIndices);
}

/// The packed bytes are read into the row and spread from its end, so that none is overwritten before its turn.
void PcxIndexRows::NextFromNibbles() {
    (void)mLines.Read(mIndices);
    for (std::size_t x = mWidth; x-- > 0;) {
        const unsigned char packed = mIndices[x / 2];
        mIndices[x] = mNibbles[x % 2 == 0 ? packed >> 4 : packed & 0xF];
    }
}

void PcxIndexRows::NextFromBytes() {
    (void)mLines.Read(mIndices);
}

PcxColourRows::PcxColourRows(ByteSource& source, const PcxHeader& header)
    : mLines(source, header, Room(header)), mPlaneBytes(PlaneBytes(header)), mPlanes(kColours * mPlaneBytes) {}

void PcxColourRows::Next(std::span<unsigned char> pixels) {
    mLines.DropRun();
    const unsigned char* red = ReadPlane(0);
    const unsigned char* green = ReadPlane(1);
    const unsigned char* blue = ReadPlane(2);
    unsigned char* out = pixels.data();
    const std::size_t width = pixels.size() / sizeof(std::uint32_t);
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint32_t pixel = PackedPixel(red[x], green[x], blue[x], kOpaque);
        std::memcpy(out + sizeof pixel * x, &pixel, sizeof pixel);
    }
}

const unsigned char* PcxColourRows::ReadPlane(std::size_t plane) {
    const std::span<unsigned char> bytes = std::span(mPlanes).subspan(plane * mPlaneBytes, mPlaneBytes);
    const std::size_t count = mLines.Read(bytes);
    // What was clear stays clear: once the data have ended, a line costs its warning and no more.
    if (mFilled[plane] > count) std::ranges::fill(bytes.first(mFilled[plane]).subspan(count), 0);
    mFilled[plane] = count;
    return bytes.data();
}

}  // namespace Kavra::Devices
