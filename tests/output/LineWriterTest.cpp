#include "output/CountingAllocator.h"
#include "output/SavingFixture.h"
#include "output/SmallDisk.h"

#include <kavra/devices/IWriteImageLineProvider.h>
#include <kavra/objects/ObjModel.h>

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;
using Kavra::Tests::CountingAllocator;
using Kavra::Tests::FilePicture;
using Kavra::Tests::ReadAll;
using Kavra::Tests::SmallDisk;
using Kavra::Tests::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Fills line y by `fill(y, line)` and remembers the buffers.
struct Lines final : IWriteImageLineProvider {
    using Fill = std::function<void(int y, unsigned char* line)>;

    explicit Lines(Fill filler = [](int, unsigned char*) {}) : fill(std::move(filler)) {}
    void FillLine(void* line) override {
        buffers.insert(line);
        fill(asked++, static_cast<unsigned char*>(line));
    }

    Fill fill;
    int asked = 0;
    std::set<void*> buffers;
};

/// Line y of `bytes` bytes counts up from 10 y.
Lines Counting(std::size_t bytes) {
    return Lines([bytes](int y, unsigned char* line) {
        for (std::size_t i = 0; i < bytes; ++i)
            line[i] = static_cast<unsigned char>(10 * static_cast<std::size_t>(y) + i);
    });
}

/// Lines that no writer can make smaller.
Lines Noise(int width) {
    return Lines([width, state = 1U](int, unsigned char* line) mutable {
        for (int i = 0; i < width * 4; ++i)
            line[i] = static_cast<unsigned char>((state = state * 1664525U + 1013904223U) >> 24);
    });
}

struct LineWriter : Kavra::Tests::Saving {
    bool Write(std::string_view name, IWriteImageLineProvider* lines, int width, int height, int channels,
               double resolution = 72) {
        const IImageHandler& host = handler;
        return host.writeImageOneLineAtATime(Wide(folder / name), resolution, lines, width, height, channels);
    }
};

TEST_F(LineWriter, WritesTheLinesFromTopToBottom) {
    for (const char* name : {"x.tif", "x.png", "x.tga", "x.sgi"}) {
        Lines lines = Counting(8);
        ASSERT_TRUE(Write(name, &lines, 2, 3, 4)) << name;
        EXPECT_EQ(lines.asked, 3);
        const FilePicture picture = Read(name);
        EXPECT_EQ(picture.width, 2);
        EXPECT_EQ(picture.height, 3);
        EXPECT_EQ(picture.type, OIIO::TypeUInt8);
        EXPECT_THAT(picture.pixels,
                    ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 10, 11, 12, 13, 14, 15, 16, 17, 20, 21, 22, 23, 24, 25, 26, 27))
            << name;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LineWriter, ALineHasFourBytesAPixelWhateverTheFileHas) {
    Lines three = Counting(8);
    ASSERT_TRUE(Write("3.tif", &three, 2, 1, 3));
    EXPECT_THAT(Read("3.tif").pixels, ElementsAre(0, 1, 2, 4, 5, 6));
    Lines two = Counting(8);
    ASSERT_TRUE(Write("2.tif", &two, 2, 1, 2));
    EXPECT_THAT(Read("2.tif").pixels, ElementsAre(0, 1, 4, 5));
    Lines one = Counting(8);
    ASSERT_TRUE(Write("1.tif", &one, 2, 1, 1));
    EXPECT_THAT(Read("1.tif").pixels, ElementsAre(0, 4));
}

TEST_F(LineWriter, WhatAWriterWouldCrashOverIsAskedForAndNotWritten) {
    for (const int channels : {2, 5, 6, 7, 8, 9, 64, 65535}) {
        Lines lines;
        EXPECT_FALSE(Write("x.dpx", &lines, 40, 3, channels)) << channels;
        EXPECT_EQ(lines.asked, 3);
    }
    EXPECT_FALSE(Exists("x.dpx"));
}

TEST_F(LineWriter, MoreChannelsAreReadFromTheNextPixelAndTheLastOnesAreZero) {
    Lines lines = Counting(8);
    ASSERT_TRUE(Write("x.tif", &lines, 2, 1, 6));
    EXPECT_THAT(Read("x.tif").pixels, ElementsAre(0, 1, 2, 3, 4, 5, 4, 5, 6, 7, 0, 0));
}

TEST_F(LineWriter, TheBufferIsOneAndZeroOnlyAtFirst) {
    std::vector<unsigned char> seen;
    Lines lines([&](int y, unsigned char* line) {
        seen.insert(seen.end(), line, line + 8);
        std::memset(line, 7 + y, 8);
    });
    ASSERT_TRUE(Write("x.tif", &lines, 2, 2, 4));
    EXPECT_EQ(lines.buffers.size(), 1U);
    EXPECT_THAT(seen, ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 7, 7, 7, 7, 7, 7, 7, 7));
}

TEST_F(LineWriter, AlphaIsNotMultipliedIntoTheColours) {
    Lines lines([](int, unsigned char* line) {
        const unsigned char pixel[] = {100, 50, 25, 128};
        std::memcpy(line, pixel, 4);
    });
    for (const char* name : {"x.tif", "x.png", "x.tga"}) {
        ASSERT_TRUE(Write(name, &lines, 1, 1, 4));
        EXPECT_THAT(Read(name).pixels, ElementsAre(100, 50, 25, 128)) << name;
    }
}

TEST_F(LineWriter, TheResolutionIsInDotsPerInch) {
    for (const char* name : {"x.tif", "x.jpg", "x.exr"}) {
        Lines lines;
        ASSERT_TRUE(Write(name, &lines, 40, 40, 3, 300));
        const auto input = OIIO::ImageInput::open((folder / name).string());
        ASSERT_TRUE(input);
        EXPECT_EQ(input->spec().get_float_attribute("XResolution"), 300.0F) << name;
        EXPECT_EQ(input->spec().get_float_attribute("YResolution"), 300.0F) << name;
        EXPECT_EQ(input->spec().get_string_attribute("ResolutionUnit"), "in") << name;
    }
}

TEST_F(LineWriter, ResolutionsThatNoFileCanHoldEndInAnAnswer) {
    for (const double resolution :
         {0.0, -72.0, 1e300, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        for (const char* name : {"x.exr", "x.tif", "x.jpg", "x.png", "x.bmp"}) {
            Lines lines;
            (void)Write(name, &lines, 4, 4, 4, resolution);
            EXPECT_EQ(lines.asked, 4);
        }
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LineWriter, TheFileGrowsAsTheLinesCome) {
    constexpr int kWidth = 256, kHeight = 1024;
    for (const char* name : {"x.tif", "x.png", "x.jpg", "x.bmp", "x.tga", "x.sgi", "x.exr"}) {
        std::uintmax_t halfway = 0;
        Lines noise = Noise(kWidth);
        Lines lines([&](int y, unsigned char* line) {
            noise.FillLine(line);
            if (y == kHeight / 2 && Exists(name)) halfway = std::filesystem::file_size(folder / name);
        });
        ASSERT_TRUE(Write(name, &lines, kWidth, kHeight, 4)) << name;
        // Some make the file as long as all lines with the first.
        EXPECT_GT(halfway, std::filesystem::file_size(folder / name) * 2 / 5) << name;
    }
}

TEST_F(LineWriter, ThePathIsPreparedAsForATexture) {
    Lines lines;
    EXPECT_TRUE(Write("a/b/x.tif", &lines, 1, 1, 4));
    EXPECT_TRUE(Exists("a/b/x.tif"));
    EXPECT_FALSE(handler.writeImageOneLineAtATime(L"", 72, &lines, 1, 1, 4));
    folder.Write("file", "text");
    EXPECT_FALSE(Write("file/x.tif", &lines, 1, 1, 4));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"wrong file path", L"fail to create specified folder"));
    EXPECT_EQ(lines.asked, 1);
}

TEST_F(LineWriter, WithoutAWriterNothingIsAskedFor) {
    Lines lines;
    for (const char* name : {"x.xyz", "x", "x.dds"}) {
        EXPECT_FALSE(Write(name, &lines, 1, 1, 4));
        EXPECT_FALSE(Write(name, &lines, 1, 0, 4));
    }
    EXPECT_EQ(lines.asked, 0);
    EXPECT_EQ(OIIO::geterror(), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LineWriter, NoLinesAreWrittenSuccessfully) {
    Lines lines;
    for (const int height : {0, -1, INT_MIN}) {
        EXPECT_TRUE(Write("a/x.tif", &lines, 4, height, 4));
        EXPECT_TRUE(Write("x.hdr", nullptr, 0, height, 0));
    }
    EXPECT_EQ(lines.asked, 0);
    EXPECT_TRUE(Exists("a"));
    EXPECT_FALSE(Exists("a/x.tif"));
}

TEST_F(LineWriter, AFileThatDoesNotOpenIsNeverWrittenToButEveryLineIsAskedFor) {
    struct Case {
        const char* name;
        int channels;
    };
    for (const auto& [name, channels] : {Case{"x.hdr", 4},
                                         {"x.hdr", 1},
                                         {"x.gif", 1},
                                         {"x.bmp", 2},
                                         {"x.ppm", 4},
                                         {"x.webp", 1},
                                         {"x.jp2", 2},
                                         {"x.heic", 4},
                                         {"x.png", 5}}) {
        Lines lines;
        EXPECT_FALSE(Write(name, &lines, 40, 40, channels)) << name << channels;
        EXPECT_TRUE(lines.asked == 40 || !OIIO::ImageOutput::create(name)) << name << channels;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LineWriter, PicturesThatWritersMishandleCountAsNotOpened) {
    struct Case {
        const char* name;
        int size, channels;
    };
    for (const auto& [name, size, channels] :
         {Case{"x.dpx", 40, 2}, Case{"x.jxl", 40, 2}, Case{"x.jp2", 31, 4}, Case{"x.term", 4, 4}}) {
        Lines lines;
        EXPECT_FALSE(Write(name, &lines, size, size, channels)) << name;
        EXPECT_EQ(lines.asked, size) << name;
        EXPECT_FALSE(Exists(name));
    }
}

TEST_F(LineWriter, SizesAndChannelsBelowOneCountAsNotOpened) {
    struct Case {
        int width, channels;
    };
    for (const auto& [width, channels] :
         {Case{0, 4}, Case{-1, 4}, Case{INT_MIN, 4}, Case{4, 0}, Case{4, -1}, Case{4, INT_MIN}, Case{4, INT_MAX}}) {
        for (const char* name : {"x.tif", "x.jpg"}) {
            Lines lines;
            EXPECT_FALSE(Write(name, &lines, width, 3, channels)) << width << " " << channels;
            EXPECT_EQ(lines.asked, 3);
            EXPECT_FALSE(Exists(name));
        }
    }
}

TEST_F(LineWriter, WithoutAProviderAnOldFileStaysAsItIs) {
    folder.Write("x.tif", "old");
    EXPECT_FALSE(Write("x.tif", nullptr, 4, 4, 4));
    EXPECT_THAT(ReadAll(folder / "x.tif"), ElementsAre('o', 'l', 'd'));
}

TEST_F(LineWriter, AProviderThatThrowsEndsThePicture) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator);
    for (const char* name : {"x.tif", "x.png", "x.jpg", "x.exr", "x.bmp", "x.tga", "x.sgi", "x.gif", "x.webp"}) {
        Lines lines([](int y, unsigned char*) {
            if (y == 2) throw std::runtime_error("no line");
        });
        EXPECT_FALSE(Write(name, &lines, 40, 40, 4)) << name;
        EXPECT_EQ(lines.asked, 3);
    }
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
}

TEST_F(LineWriter, WithoutMemoryForALineTheAnswerIsFalse) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator);
    blocks.Grant(0);
    Lines lines;
    EXPECT_FALSE(Write("x.tif", &lines, 4, 4, 4));
    EXPECT_EQ(lines.asked, 0);
    blocks.GrantAll();
    EXPECT_TRUE(Write("x.tif", &lines, 4, 4, 4));
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
}

TEST_F(LineWriter, AFullDiskIsAFailureAfterAllLinesWereAskedFor) {
    const SmallDisk disk(3000);
    for (const char* name : {"x.tif", "x.png", "x.jpg", "x.exr", "x.bmp", "x.tga", "x.sgi", "x.webp", "x.jp2"}) {
        Lines lines = Noise(64);
        EXPECT_FALSE(Write(name, &lines, 64, 256, 4)) << name;
        EXPECT_EQ(lines.asked, 256) << name;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LineWriter, TheLastBytesOfAJpegAreMissedToo) {
    Lines whole = Noise(64);
    ASSERT_TRUE(Write("whole.jpg", &whole, 64, 64, 3));
    const auto size = std::filesystem::file_size(folder / "whole.jpg");
    for (const std::uintmax_t missing : {1, 2, 100}) {
        const SmallDisk disk(size - missing);
        Lines lines = Noise(64);
        EXPECT_FALSE(Write("x.jpg", &lines, 64, 64, 3)) << missing;
    }
    const SmallDisk disk(size);
    Lines lines = Noise(64);
    EXPECT_TRUE(Write("x.jpg", &lines, 64, 64, 3));
}

TEST_F(LineWriter, WhatIsNoFileIsNeverWrittenTo) {
    ASSERT_EQ(mkfifo((folder / "pipe.tif").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/full", folder / "device.tif");
    for (const char* name : {"pipe.tif", "device.tif"}) {
        Lines lines;
        EXPECT_FALSE(Write(name, &lines, 4, 4, 4)) << name;
        EXPECT_EQ(lines.asked, 4);
    }
}

TEST_F(LineWriter, NamesBeyondAsciiAreWritten) {
    Lines lines = Counting(4);
    for (const char* name : {"\xc3\xbc\xe4\xb8\xad.png", "\xc3\xbc.jpg"}) {
        ASSERT_TRUE(Write(name, &lines, 1, 1, 4));
        EXPECT_EQ(Read(name).width, 1);
    }
}

}  // namespace
