/// Block-compressed pixels, decoded block by block into rows of the caller's
/// (https://learn.microsoft.com/windows/win32/direct3d11/texture-block-compression-in-direct3d-11).
///
/// Colours and unsigned channels come out as the image library has them: ends widened exactly, steps between them
/// rounded by (a + b + 1) / n.
#pragma once

#include <cstddef>
#include <span>

namespace Kavra::Common {

inline constexpr int kBlockSide = 4;

/// Decodes a block to `out`: four rows of four pixels, `pitch` bytes from a row to the next.
using DecodeBlock = void (*)(const unsigned char* block, unsigned char* out, std::size_t pitch);

// Red, green, blue, alpha of 8 bits, from 8 bytes (BC1) or 16.
void DecodeBc1(const unsigned char* block, unsigned char* out, std::size_t pitch);
void DecodeBc2(const unsigned char* block, unsigned char* out, std::size_t pitch);
void DecodeBc3(const unsigned char* block, unsigned char* out, std::size_t pitch);
void DecodeBc5(const unsigned char* block, unsigned char* out, std::size_t pitch);   ///< blue 0, opaque
void DecodeAti2(const unsigned char* block, unsigned char* out, std::size_t pitch);  ///< BC5, green stored first
void DecodeRxgb(const unsigned char* block, unsigned char* out, std::size_t pitch);  ///< BC3, alpha is red; opaque
/// Blocks of the reserved mode are transparent black.
void DecodeBc7(const unsigned char* block, unsigned char* out, std::size_t pitch);

// One channel of 8 bits, from 8 bytes.
void DecodeBc4(const unsigned char* block, unsigned char* out, std::size_t pitch);

// Signed channels as colours around a middle, rounded half up: -1 is 0, 0 is 128, 1 is 255. One of 8 bits, from 8 bytes;
// red, green, blue 128, alpha 255, from 16.
void DecodeBc4Signed(const unsigned char* block, unsigned char* out, std::size_t pitch);
void DecodeBc5Signed(const unsigned char* block, unsigned char* out, std::size_t pitch);

// The same as halves of -1 to 1: one channel, and two.
void DecodeBc4AsHalfs(const unsigned char* block, unsigned char* out, std::size_t pitch);
void DecodeBc5AsHalfs(const unsigned char* block, unsigned char* out, std::size_t pitch);

// Four halves, alpha 1, from 16 bytes. Blocks of reserved modes are black.
void DecodeBc6h(const unsigned char* block, unsigned char* out, std::size_t pitch);
void DecodeBc6hSigned(const unsigned char* block, unsigned char* out, std::size_t pitch);

/// Decodes the blocks of one row of blocks to `out`: the first `rows` (1 to 4) rows of `width` pixels of `pixelBytes`
/// (1 to 8) bytes. `blocks` holds `blockBytes` for each four columns that were begun.
void DecodeBlockRow(DecodeBlock decode, std::span<const unsigned char> blocks, std::size_t blockBytes,
                    std::size_t width, int rows, std::size_t pixelBytes, unsigned char* out, std::size_t pitch);

}  // namespace Kavra::Common
