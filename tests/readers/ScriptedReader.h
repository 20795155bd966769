/// A legacy load through a reader that says what a test wants.
#pragma once

#include "readers/ImageReaderInterface.h"
#include "readers/LegacyLoad.h"
#include "support/HandlerAccess.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

using namespace Devices;
using Common::Failure;
using Common::PixelBlock;
using Common::Result;

using Bytes = std::vector<unsigned char>;

/// A reader that says and delivers what a test wants, and writes down what it was asked.
class ScriptedReader : public ImageReaderInterface {
public:
    int width = 0, height = 0, rowPitch = 0;
    EFormat format = kR8G8B8A8;
    EDataOrientation orientation = kTopLeft;
    bool opens = true, reads = true;
    Bytes pixels;

    std::string calls;
    unsigned char* buffer = nullptr;  ///< the first row
    Bytes before;                     ///< what the rows held when they came
    int frame = -1;

    void Close() override {}
    Result<> OpenFiles(PictureFiles) override {
        calls += "Open ";
        if (!opens) return std::unexpected(Failure::kMalformed);
        return {};
    }
    int GetWidth() override { return calls += "Width ", width; }
    int GetHeight() override { return calls += "Height ", height; }
    int GetRowPitch() override { return calls += "RowPitch ", rowPitch; }
    EFormat GetFormat() override { return calls += "Format ", format; }
    EDataOrientation GetOrientation() override { return calls += "Orientation ", orientation; }

    Result<> ReadFrame(Common::RowSink& rows, int wantedFrame) override {
        calls += "ReadImage ";
        frame = wantedFrame;
        before.clear();
        std::span<const unsigned char> left = pixels;
        for (int rowsLeft = height; rowsLeft > 0;) {
            const std::span<unsigned char> out = rows.NextRows(static_cast<std::size_t>(rowsLeft));
            if (rowsLeft == height) buffer = out.data();
            before.insert(before.end(), out.begin(), out.end());
            const std::span<const unsigned char> part = left.first(std::min(left.size(), out.size()));
            std::ranges::copy(part, out.begin());
            left = left.subspan(part.size());
            rowsLeft -= static_cast<int>(out.size()) / rowPitch;
        }
        if (!reads) return std::unexpected(Failure::kTruncated);
        return {};
    }
};

/// Pixels of the colours given by one letter each: the byte of the letter in all four channels.
inline Bytes Colour(std::string_view letters) {
    Bytes pixels;
    for (const char letter : letters)
        pixels.insert(pixels.end(), 4, static_cast<unsigned char>(letter));
    return pixels;
}

inline void Script(ScriptedReader& reader, int width, int height, const Bytes& pixels) {
    reader.width = width;
    reader.height = height;
    reader.rowPitch = width * 4;
    reader.pixels = pixels;
}

/// A description with a value of its own in every field.
inline ImageDescription Marked() {
    ImageDescription desc;
    desc.width = 71;
    desc.height = 72;
    desc.depth = 73;
    desc.format = kL16;
    desc.rowPitch = 74;
    desc.dataSize = 75;
    desc.textureType = kTextureCube;
    desc.hasTransparentPixels = desc.hasTranslucentPixels = desc.hasAlpha = desc.defaultOrientation = true;
    desc.orientation = kLeftTop;
    desc.gamma = 7.5;
    return desc;
}

inline void ExpectMarked(const ImageDescription& desc) {
    EXPECT_EQ(desc.width, 71);
    EXPECT_EQ(desc.height, 72);
    EXPECT_EQ(desc.depth, 73);
    EXPECT_EQ(desc.format, kL16);
    EXPECT_EQ(desc.rowPitch, 74);
    EXPECT_EQ(desc.dataSize, 75U);
    EXPECT_EQ(desc.textureType, kTextureCube);
    EXPECT_TRUE(desc.hasAlpha && desc.defaultOrientation);
    EXPECT_EQ(desc.orientation, kLeftTop);
    EXPECT_EQ(desc.gamma, 7.5);
}

/// A file of eight bytes, which the reader does not look at.
class LegacyLoad : public testing::Test {
protected:
    PixelBlock Load(const LoadRequest& request) {
        return LoadThroughReader(reader, desc, path, request).value_or(nullptr);
    }

    /// The block's bytes as `desc` counts them.
    Bytes Pixels(const PixelBlock& block) const { return Bytes(block.get(), block.get() + desc.dataSize); }

    TemporaryFolder folder;
    KString path = Wide(folder.Write("file", "12345678"));
    ScriptedReader reader;
    ImageDescription desc = Marked();
};

}  // namespace Kavra::Tests
