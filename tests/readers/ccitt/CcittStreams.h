/// Fax data and images for the tests.
#pragma once

#include "legacy/Bitmap.h"
#include "readers/ccitt/CcittRows.h"

#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

using Bytes = std::vector<unsigned char>;

/// Codes written as '0' and '1', anything else ignored, as bytes with the first bit highest; zeros fill the last one.
inline Bytes Codes(std::string_view text) {
    Bytes bytes;
    std::size_t count = 0;
    for (const char bit : text) {
        if (bit != '0' && bit != '1') continue;
        if (count % 8 == 0) bytes.push_back(0);
        if (bit == '1') bytes.back() |= static_cast<unsigned char>(0x80 >> count % 8);
        ++count;
    }
    return bytes;
}

inline Bytes WithBitsReversed(Bytes bytes) {
    for (unsigned char& byte : bytes) {
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < 8; ++bit)
            reversed |= (byte >> bit & 1U) << (7 - bit);
        byte = static_cast<unsigned char>(reversed);
    }
    return bytes;
}

/// What became of each row.
struct DecodedRows {
    std::vector<std::string> rows;  ///< one letter a pixel: '.' white, '#' black; all '?' where nothing was written
    std::vector<Devices::Ccitt::Outcome> results;
    std::vector<std::wstring> messages;  ///< of the bad codes
};

/// Decodes `height` rows one by one, each into a buffer of its own.
inline DecodedRows DecodeByRow(const Bytes& data, int width, int height,
                               Devices::Ccitt::Mode mode = Devices::Ccitt::Mode::kGroup4,
                               Devices::Ccitt::BitOrder order = Devices::Ccitt::BitOrder::kMostSignificantFirst) {
    Common::ByteSource source{std::span<const unsigned char>(data)};
    Devices::Ccitt::Decoder decoder(source, width, mode, order);
    DecodedRows decoded;
    for (int y = 0; y < height; ++y) {
        Bytes packed((static_cast<std::size_t>(width) + 7) / 8, 0x5A);
        decoded.results.push_back(decoder.DecodeRows(packed));
        if (decoded.results.back() == Devices::Ccitt::Outcome::kBadCode)
            decoded.messages.emplace_back(decoder.LastBadCode().Message().data());
        std::string row(static_cast<std::size_t>(width), '?');
        for (std::size_t x = 0; decoded.results.back() != Devices::Ccitt::Outcome::kBadCode && x < row.size(); ++x)
            row[x] = (packed[x / 8] >> (7 - x % 8) & 1) != 0 ? '#' : '.';
        decoded.rows.push_back(row);
    }
    return decoded;
}

/// Lines, specks and noise, as seldom or dense as `random` makes them.
inline Legacy::Bitmap RandomBitmap(std::mt19937& random, int width, int height) {
    Legacy::Bitmap image(width, height);
    const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const int shapes = below(12);
    for (int shape = 0; shape < shapes; ++shape) {
        const int left = below(width);
        const int right = std::min(width, left + 1 + below(width));
        const int slope = below(7) - 3;
        const int top = below(height);
        for (int y = top; y < std::min(height, top + 1 + below(height)); ++y) {
            for (int x = left; x < right; ++x) {
                const int at = x + slope * (y - top);
                if (at >= 0 && at < width) image.Set(at, y);
            }
        }
    }
    for (int specks = below(4) == 0 ? width * height / 4 : below(6); specks > 0; --specks)
        image.Set(below(width), below(height));
    return image;
}

}  // namespace Kavra::Tests
