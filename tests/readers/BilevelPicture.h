/// Decoded bilevel images as letters.
#pragma once

#include "readers/Decode.h"

#include <gtest/gtest.h>

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

/// Decodes one file after another, each twice with the same outcome. Files keep their names to themselves: writing over
/// one would wait for the disk.
template <class Reader>
class Twice {
public:
    Decoded Decode(const ByteBuilder& file) {
        const auto path = mFolder.Write(std::to_string(mFiles++), file.Bytes());
        const Decoded first = DecodeFile<Reader>(path);
        const Decoded second = DecodeFile<Reader>(path);
        EXPECT_EQ(first.opened, second.opened);
        EXPECT_EQ(first.block, second.block) << "file " << mFiles;
        EXPECT_EQ(first.messages, second.messages) << "file " << mFiles;
        return first;
    }

private:
    TemporaryFolder mFolder;
    int mFiles = 0;
};

}  // namespace Kavra::Tests
