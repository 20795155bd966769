/// The fixed part of KTX2 files (https://registry.khronos.org/KTX/specs/2.0/ktxspec.v2.html): header, index, and where
/// each level lies.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace Kavra::Devices::Ktx {

inline constexpr std::array<unsigned char, 12> kIdentifier = {0xAB, 'K',  'T',  'X',  ' ',  '2',
                                                              '0',  0xBB, '\r', '\n', 0x1A, '\n'};

inline constexpr std::size_t kHeaderBytes = 80;
inline constexpr std::size_t kPlaceBytes = 24;  ///< of a level in the index

/// How levels are packed.
enum Supercompression : std::uint32_t {
    kSchemeNone = 0,
    kSchemeBasisLZ = 1,
    kSchemeZstandard = 2,
    kSchemeZlib = 3,
};

/// All fields as they are stored.
struct Header {
    std::uint32_t vkFormat = 0;
    std::uint32_t typeSize = 1;  ///< bytes of the numbers that pixels consist of; 1 for blocks
    std::uint32_t width = 0;
    std::uint32_t height = 0;  ///< 0: one row, of a texture with one dimension
    std::uint32_t depth = 0;   ///< 0: no volume
    std::uint32_t layers = 0;  ///< 0: no array
    std::uint32_t faces = 1;
    std::uint32_t levels = 1;  ///< 0: one, from which others may be made
    std::uint32_t scheme = kSchemeNone;
    std::uint32_t descriptorOffset = 0;
    std::uint32_t descriptorBytes = 0;
    std::uint32_t textsOffset = 0;  ///< of the pairs of keys and values
    std::uint32_t textsBytes = 0;
    std::uint64_t globalsOffset = 0;  ///< of what a supercompression shares between levels
    std::uint64_t globalsBytes = 0;
};

/// Where a level lies, all its elements and faces together.
struct LevelPlace {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;          ///< as they are stored
    std::uint64_t unpackedBytes = 0;  ///< the same without a supercompression
};

/// Nothing where the bytes are too few or do not begin with the identifier.
std::optional<Header> ParseHeader(std::span<const unsigned char> file);
std::vector<unsigned char> ComposeHeader(const Header& header);

/// The index of levels; `bytes` holds `kPlaceBytes` for each.
std::vector<LevelPlace> ParsePlaces(std::span<const unsigned char> bytes);

/// What files say in words.
struct Texts {
    std::string_view orientation;   ///< like "rd": columns to the right, rows down
    std::string_view swizzle;       ///< like "rgb1": what each channel is taken from
    std::uint32_t facesInFile = 0;  ///< of cubes without all faces, whose faces are layers: bit i for face i
};

/// The texts in the pairs of keys and values; other keys mean nothing here. Nothing where lengths contradict each other.
std::optional<Texts> ParseTexts(std::span<const unsigned char> pairs);

/// The pairs of what is said, with the writer's name, in the order of their keys.
std::vector<unsigned char> ComposeTexts(const Texts& texts);

}  // namespace Kavra::Devices::Ktx
