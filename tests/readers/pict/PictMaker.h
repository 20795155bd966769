/// Writing pictures down opcode by opcode, right or wrong.
#pragma once

#include "readers/ByteBuilder.h"

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace Kavra::Tests {

using Bytes = std::vector<unsigned char>;

struct Box {
    int top, left, bottom, right;
};

struct PictEntry {
    unsigned number, red, green, blue;
};

/// A bitmap or pixel map, field by field. `data` is what follows the mode: rows as they are stored.
struct PictMap {
    Box bounds;
    std::optional<Box> source = {};       ///< the bounds unless said
    std::optional<Box> destination = {};  ///< the bounds unless said
    unsigned mode = 0;
    unsigned rowBytes = 0;  ///< the field as it is, its high bit included
    unsigned bits = 8;
    unsigned components = 1;
    unsigned tableFlags = 0;
    std::vector<PictEntry> colours = {};
    Bytes data = {};
};

class PictMaker {
public:
    explicit PictMaker(Box frame, int version = 2) : mVersion(version), mFile(512) {
        mFile.At(512).Big16(0);
        Rect(frame);
        mFile.Append(version == 1 ? Bytes{0x11, 0x01} : Bytes{0x00, 0x11, 0x02, 0xFF});
    }

    PictMaker& Op(unsigned opcode) {
        if (mVersion == 1) {
            mFile.Byte(opcode);
        } else {
            mFile.Fill(mFile.Size() % 2, 0xEE).Big16(opcode);  // no zero, which would be an opcode without operands
        }
        return *this;
    }
    PictMaker& Add(const Bytes& bytes) {
        mFile.Append(bytes);
        return *this;
    }
    PictMaker& Word(unsigned value) {
        mFile.Big16(value);
        return *this;
    }
    PictMaker& Rect(const Box& box) {
        for (const int side : {box.top, box.left, box.bottom, box.right})
            Word(static_cast<unsigned>(side) & 0xFFFF);
        return *this;
    }
    PictMaker& Colour(unsigned opcode, unsigned red, unsigned green, unsigned blue) {
        return Op(opcode).Word(red).Word(green).Word(blue);
    }

    /// A one-bit bitmap; a region goes before the rows where there is one.
    PictMaker& Bitmap(const PictMap& map, unsigned opcode = 0x90, const Bytes& region = {}) {
        return Op(opcode).Word(map.rowBytes).Rect(map.bounds).Placement(map).Add(region).Add(map.data);
    }
    PictMaker& Indexed(const PictMap& map, unsigned opcode = 0x98, const Bytes& region = {}) {
        return Op(opcode).Header(map).Table(map).Placement(map).Add(region).Add(map.data);
    }
    PictMaker& Direct(const PictMap& map) {
        return Op(0x9A).Add({0x12, 0x34, 0x56, 0x78}).Header(map).Placement(map).Add(map.data);
    }

    /// Row bytes and what follows up to a colour table. What no reader needs is not zero.
    PictMaker& Header(const PictMap& map) {
        Word(map.rowBytes).Rect(map.bounds).Word(0x0101).Word(0x0202).Word(0x0303).Word(0x0404);
        Word(0x0505).Word(0x0606).Word(0x0707).Word(0x0808).Word(0x0909);
        return Word(map.bits).Word(map.components).Word(0x0A0A).Add(Bytes(12, 0xBB));
    }
    PictMaker& Table(const PictMap& map) {
        Add({0xAA, 0xAA, 0xAA, 0xAA}).Word(map.tableFlags).Word(static_cast<unsigned>(map.colours.size() - 1) & 0xFFFF);
        for (const PictEntry& entry : map.colours)
            Word(entry.number).Word(entry.red).Word(entry.green).Word(entry.blue);
        return *this;
    }
    PictMaker& Placement(const PictMap& map) {
        return Rect(map.source.value_or(map.bounds)).Rect(map.destination.value_or(map.bounds)).Word(map.mode);
    }

    /// The file so far, without the opcode that ends a picture.
    const ByteBuilder& File() const { return mFile; }
    std::size_t Size() const { return mFile.Size(); }

    ByteBuilder End() {
        Op(0x00FF);
        return mFile;
    }

private:
    int mVersion;
    ByteBuilder mFile;
};

/// A table in which colour i is grey with the high byte `greys[i]`.
inline std::vector<PictEntry> Greys(const std::vector<unsigned>& greys) {
    std::vector<PictEntry> table;
    for (unsigned i = 0; i < greys.size(); ++i)
        table.push_back({i, greys[i] * 257, greys[i] * 257, greys[i] * 257});
    return table;
}

/// A pixel map of 32 bits, one pixel wide, whose rows are too short to be packed: `pixels` from the top, each with an
/// unused byte in front.
inline PictMap Column(int left, int top, const std::vector<std::array<unsigned char, 3>>& pixels, unsigned mode = 0) {
    PictMap map{.bounds = {top, left, top + static_cast<int>(pixels.size()), left + 1}, .mode = mode, .rowBytes = 4};
    map.bits = 32;
    map.components = 3;
    for (const auto& pixel : pixels)
        map.data.insert(map.data.end(), {0x99, pixel[0], pixel[1], pixel[2]});
    return map;
}

/// Two rows of three pixels: indices 0 1 2 and 2 1 0.
inline PictMap SixPixels() {
    return {
        .bounds = {0, 0, 2, 3}, .rowBytes = 0x8004, .colours = Greys({10, 20, 30}), .data = {0, 1, 2, 9, 2, 1, 0, 9}};
}

}  // namespace Kavra::Tests
