/// Decoded bilevel images as letters.
#pragma once

#include "readers/Decode.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// One letter a pixel: '#' opaque white, '.' opaque black, '-' unwritten, '?' anything else. Rows end with '|'.
inline std::string BilevelPicture(const Decoded& decoded) {
    std::string letters;
    for (int y = 0; y < decoded.height; ++y) {
        for (int x = 0; x < decoded.width; ++x) {
            const std::vector<unsigned char> pixel = PixelAt(decoded, x, y);
            char letter = '?';
            if (pixel == std::vector<unsigned char>{0, 0, 0, 255}) letter = '.';
            if (pixel == std::vector<unsigned char>(4, 255)) letter = '#';
            if (pixel == std::vector<unsigned char>(4, kUnwritten)) letter = '-';
            letters += letter;
        }
        letters += '|';
    }
    return letters;
}

/// Whether every pixel is opaque white or opaque black.
inline bool IsBilevel(const Decoded& decoded) {
    for (std::size_t at = 0; at < decoded.block.size(); at += 4) {
        const auto pixel = std::span(decoded.block).subspan(at, 4);
        const bool grey = pixel[0] == pixel[1] && pixel[1] == pixel[2];
        if (!grey || (pixel[0] != 0 && pixel[0] != 255) || pixel[3] != 255) return false;
    }
    return true;
}

}  // namespace Kavra::Tests
