// The writer of animations against the reader: what goes in comes out, frame by frame.

#include "legacy/FlicFile.h"
#include "readers/flic/FlicReader.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using Kavra::Legacy::FlicCoding;
using Kavra::Legacy::FlicMovie;
using Kavra::Legacy::MakeFlic;

/// Runs and noise, of which a part changes from frame to frame; the last two frames are alike.
FlicMovie Movie(int width, int height) {
    FlicMovie movie{.width = width, .height = height};
    for (std::size_t i = 0; i < 256; ++i)
        movie.palette[i] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i), 7};
    unsigned random = 1;
    std::vector<unsigned char> frame(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < frame.size(); ++i)
        frame[i] = static_cast<unsigned char>(i % 50 < 30 ? i / 50 : (random = random * 1664525 + 1013904223) >> 24);
    for (int number = 0; number < 6; ++number) {
        movie.frames.push_back(frame);
        for (std::size_t i = static_cast<std::size_t>(number); i < frame.size(); i += frame.size() / 3 + 1)
            frame[i] = static_cast<unsigned char>((random = random * 1664525 + 1013904223) >> 24);
    }
    movie.frames.push_back(movie.frames.back());
    return movie;
}

/// All chunks up to those of a frame, however many there are.
std::vector<unsigned char> Played(const Kavra::Legacy::ByteBuilder& file, int wanted, FlicPalette& palette) {
    ByteSource source = file.Source();
    FlicHeader header = ReadFlicHeader(source).value();
    header.frames = 65535;
    FlicFrame frame(header.width, header.height);
    PlayFlic(source, header, wanted, frame, palette);
    return {frame.Indices().begin(), frame.Indices().end()};
}

TEST(FlicFile, EveryFrameComesBackFromEveryCoding) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {2, 3}, {37, 23}, {127, 2}, {300, 5}, {700, 4}}) {
        const FlicMovie movie = Movie(width, height);
        for (const FlicCoding coding : {FlicCoding::kChanges, FlicCoding::kWhole, FlicCoding::kCopies}) {
            const Kavra::Legacy::ByteBuilder file = MakeFlic(movie, coding);
            for (std::size_t frame = 0; frame < movie.frames.size(); ++frame) {
                FlicPalette palette{};
                ASSERT_EQ(Played(file, static_cast<int>(frame), palette), movie.frames[frame])
                    << width << " " << height << " " << frame;
                ASSERT_EQ(palette[3 * 255], 255);
                ASSERT_EQ(palette[3 * 255 + 1], 0);
            }
        }
    }
}

TEST(FlicFile, TheHeaderTellsTheFilesLengthAndItsFrames) {
    const Kavra::Legacy::ByteBuilder file = MakeFlic(Movie(37, 23));
    ByteSource source = file.Source();
    EXPECT_EQ(source.Little<std::uint32_t>(), file.Size());
    EXPECT_EQ(ReadFlicHeader(source)->frames, 7);
}

TEST(FlicFile, ChangesTakeLessThanWholeFrames) {
    const FlicMovie movie = Movie(300, 100);
    EXPECT_LT(MakeFlic(movie).Size(), MakeFlic(movie, FlicCoding::kWhole).Size() / 2);
    EXPECT_LT(MakeFlic(movie, FlicCoding::kWhole).Size(), MakeFlic(movie, FlicCoding::kCopies).Size());
}

}  // namespace
