/// What blocks of BC7 are made of.
///
/// Khronos Data Format Specification 1.3, chapter 20.1 (the same as Microsoft, "BC7 Format Mode Reference"). The lowest bit
/// that is set in a block's first byte is the number of its mode. Then follow, from low bits to high ones: the number of
/// the partition, the rotation, the index selection; for red of all ends, then green, then blue, then alpha, their bits,
/// the ends of each subset one behind the other; the bits that all channels of an end share below their own; the indices,
/// pixel by pixel, the highest bit of each subset's first pixel left out as 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Kavra::Common {

enum class LowBits : std::uint8_t {
    kNone,
    kPerEnd,     ///< one below all channels of an end
    kPerSubset,  ///< one for both ends
};

struct Bc7Mode {
    int subsets;
    int partitionBits;
    int rotationBits;   ///< which channel the alpha indices stand for, where there are two sets of indices
    int selectionBits;  ///< whether colours have the longer indices
    int colourBits;
    int alphaBits;  ///< 0: opaque
    LowBits lowBits;
    int indexBits;
    int alphaIndexBits;  ///< of a second set of indices, 0 where all channels share one

    constexpr int Partitions() const { return 1 << partitionBits; }
    constexpr std::size_t Ends() const { return 2 * static_cast<std::size_t>(subsets); }
};

inline constexpr std::array<Bc7Mode, 8> kBc7Modes = {{
    {3, 4, 0, 0, 4, 0, LowBits::kPerEnd, 3, 0},
    {2, 6, 0, 0, 6, 0, LowBits::kPerSubset, 3, 0},
    {3, 6, 0, 0, 5, 0, LowBits::kNone, 2, 0},
    {2, 6, 0, 0, 7, 0, LowBits::kPerEnd, 2, 0},
    {1, 0, 2, 1, 5, 6, LowBits::kNone, 2, 3},
    {1, 0, 2, 0, 7, 8, LowBits::kNone, 2, 2},
    {1, 0, 0, 0, 7, 7, LowBits::kPerEnd, 4, 0},
    {2, 6, 0, 0, 5, 5, LowBits::kPerEnd, 2, 0},
}};

/// How 16 pixels are divided into subsets: two bits a pixel, the first pixel lowest.
using Partition = std::uint32_t;

constexpr std::size_t SubsetOf(Partition partition, std::size_t pixel) {
    return partition >> 2 * pixel & 3;
}

/// Two subsets. BC6H has the first 32 of them.
inline constexpr std::array<Partition, 64> kPartitionsOfTwo = {
    0x50505050, 0x40404040, 0x54545454, 0x54505040, 0x50404000, 0x55545450, 0x55545040, 0x54504000,
    0x50400000, 0x55555450, 0x55544000, 0x54400000, 0x55555440, 0x55550000, 0x55555500, 0x55000000,
    0x55150100, 0x00004054, 0x15010000, 0x00405054, 0x00004050, 0x15050100, 0x05010000, 0x40505054,
    0x00404050, 0x05010100, 0x14141414, 0x05141450, 0x01155440, 0x00555500, 0x15014054, 0x05414150,
    0x44444444, 0x55005500, 0x11441144, 0x05055050, 0x05500550, 0x11114444, 0x41144114, 0x44111144,
    0x15055054, 0x01055040, 0x05041050, 0x05455150, 0x14414114, 0x50050550, 0x41411414, 0x00141400,
    0x00041504, 0x00105410, 0x10541000, 0x04150400, 0x50410514, 0x41051450, 0x05415014, 0x14054150,
    0x41050514, 0x41505014, 0x40011554, 0x54150140, 0x50505500, 0x00555050, 0x15151010, 0x54540404,
};

inline constexpr std::array<Partition, 64> kPartitionsOfThree = {
    0xAA685050, 0x6A5A5040, 0x5A5A4200, 0x5450A0A8, 0xA5A50000, 0xA0A05050, 0x5555A0A0, 0x5A5A5050,
    0xAA550000, 0xAA555500, 0xAAAA5500, 0x90909090, 0x94949494, 0xA4A4A4A4, 0xA9A59450, 0x2A0A4250,
    0xA5945040, 0x0A425054, 0xA5A5A500, 0x55A0A0A0, 0xA8A85454, 0x6A6A4040, 0xA4A45000, 0x1A1A0500,
    0x0050A4A4, 0xAAA59090, 0x14696914, 0x69691400, 0xA08585A0, 0xAA821414, 0x50A4A450, 0x6A5A0200,
    0xA9A58000, 0x5090A0A8, 0xA8A09050, 0x24242424, 0x00AA5500, 0x24924924, 0x24499224, 0x50A50A50,
    0x500AA550, 0xAAAA4444, 0x66660000, 0xA5A0A5A0, 0x50A050A0, 0x69286928, 0x44AAAA44, 0x66666600,
    0xAA444444, 0x54A854A8, 0x95809580, 0x96969600, 0xA85454A8, 0x80959580, 0xAA141414, 0x96960000,
    0xAAAA1414, 0xA05050A0, 0xA0A5A5A0, 0x96000000, 0x40804080, 0xA9A8A9A8, 0xAAAAAA44, 0x2A4A5254,
};

/// The pixel of each subset but the first whose index lacks its highest bit. Of the first subset it is pixel 0.
inline constexpr std::array<unsigned char, 64> kAnchorOfTwo = {
    15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15,  //
    15, 2,  8,  2,  2,  8,  8,  15, 2,  8,  2,  2,  8,  8,  2,  2,   //
    15, 15, 6,  8,  2,  8,  15, 15, 2,  8,  2,  2,  2,  15, 15, 6,   //
    6,  2,  6,  8,  15, 15, 2,  2,  15, 15, 15, 15, 15, 2,  2,  15,
};
inline constexpr std::array<unsigned char, 64> kSecondAnchorOfThree = {
    3, 3,  15, 15, 8, 3,  15, 15, 8,  8,  6,  6,  6,  5,  3,  3,   //
    3, 3,  8,  15, 3, 3,  6,  10, 5,  8,  8,  6,  8,  5,  15, 15,  //
    8, 15, 3,  5,  6, 10, 8,  15, 15, 3,  15, 5,  15, 15, 15, 15,  //
    3, 15, 5,  5,  5, 8,  5,  10, 5,  10, 8,  13, 15, 12, 3,  3,
};
inline constexpr std::array<unsigned char, 64> kThirdAnchorOfThree = {
    15, 8, 8,  3,  15, 15, 3,  8,  15, 15, 15, 15, 15, 15, 15, 8,  //
    15, 8, 15, 3,  15, 8,  15, 8,  3,  15, 6,  10, 15, 15, 10, 8,  //
    15, 3, 15, 10, 10, 8,  9,  10, 6,  15, 8,  15, 3,  6,  6,  8,  //
    15, 3, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 3,  15, 15, 8,
};

/// The pixel whose index of `subset` lacks its highest bit.
constexpr std::size_t AnchorOf(int subsets, std::size_t partition, std::size_t subset) {
    if (subset == 0) return 0;
    if (subsets == 2) return kAnchorOfTwo[partition];
    return subset == 1 ? kSecondAnchorOfThree[partition] : kThirdAnchorOfThree[partition];
}

/// All pixels where there is one subset.
constexpr Partition PartitionOf(int subsets, std::size_t number) {
    return subsets == 1 ? 0 : subsets == 2 ? kPartitionsOfTwo[number] : kPartitionsOfThree[number];
}

/// Of 64, how much of the second end an index of this many bits stands for.
constexpr int WeightOf(int index, int indexBits) {
    const int last = (1 << indexBits) - 1;
    return (index * 64 + last / 2) / last;
}

/// A component of an end of `bits` bits, as 8 bits: its high bits once more below its low ones.
constexpr int Widened(int value, int bits) {
    return value << (8 - bits) | value >> (2 * bits - 8);
}

/// A block, before it is packed or after it was unpacked.
struct Bc7Block {
    int mode = 0;
    int partition = 0;
    int rotation = 0;
    int selection = 0;
    std::array<std::array<unsigned char, 4>, 6> ends{};  ///< red, green, blue, alpha: both ends of each subset
    std::array<unsigned char, 6> lowBits{};  ///< of each end; those of a subset are equal where it shares one
    std::array<unsigned char, 16> indices{};
    std::array<unsigned char, 16> alphaIndices{};  ///< of the second set
};

}  // namespace Kavra::Common
