// Pictures pasted onto one.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;

namespace {

const Colour kNothing = {0, 0, 0, 0};

/// A place in a composed picture: the piece's file and a text such as "@3,2".
std::string At(const std::filesystem::path& file, const std::string& place) {
    return file.string() + "@" + place;
}

}  // namespace

TEST(ComposeCommand, APieceLandsWithItsTopLeftCornerInItsPlace) {
    const TemporaryFolder folder;
    const auto piece = WritePicture(folder / "piece.png", 5, 4, PlaceColour);
    ExpectDone({"compose", folder / "out.png", "--size", "16x12", At(piece, "8,6")});
    const PictureFile out(folder / "out.png");
    ASSERT_EQ(out.Size(), "16x12");
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 16; ++x) {
            const bool isInside = x >= 8 && x < 13 && y >= 6 && y < 10;
            EXPECT_EQ(out.At(x, y), isInside ? PlaceColour(x - 8, y - 6) : kNothing) << x << "," << y;
        }
    }
}

TEST(ComposeCommand, WhatLiesOutsideIsLeftOutWithANote) {
    const TemporaryFolder folder;
    const auto piece = WritePicture(folder / "piece.png", 5, 4, PlaceColour);
    struct Case {
        std::string place;
        int x, y;
        std::string inside;
    };
    const std::vector<Case> cases = {
        {"-2,-1", -2, -1, "3 x 3"}, {"8,-3", 8, -3, "2 x 1"}, {"-4,5", -4, 5, "1 x 3"}, {"9,7", 9, 7, "1 x 1"}};
    for (const Case& row : cases) {
        ExpectDone({"compose", folder / "out.png", "--size", "10x8", At(piece, row.place)},
                   NoteLine(piece, "only the " + row.inside + " pixels inside the picture were pasted"));
        const PictureFile out(folder / "out.png");
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < 10; ++x) {
                const int fromX = x - row.x;
                const int fromY = y - row.y;
                const bool isInside = fromX >= 0 && fromX < 5 && fromY >= 0 && fromY < 4;
                EXPECT_EQ(out.At(x, y), isInside ? PlaceColour(fromX, fromY) : kNothing) << row.place;
            }
        }
    }
}

TEST(ComposeCommand, APieceThatIsWhollyOutsideIsAFailureOfItsOwn) {
    const TemporaryFolder folder;
    const auto piece = WritePicture(folder / "piece.png", 5, 4, PlaceColour);
    Words line = {"compose", folder / "out.png", "--size", "10x8"};
    std::string errors;
    for (const std::string place : {"10,0", "0,8", "-5,0", "0,-4", "2147483647,0", "-2147483648,-2147483648"}) {
        line.push_back(At(piece, place));
        errors += ErrorLine(piece, "lies outside the picture: 5 x 4 pixels at " + place);
    }
    line.push_back(At(piece, "5,4"));
    ExpectFailed(line, errors);
    const PictureFile out(folder / "out.png");
    EXPECT_EQ(out.At(0, 0), kNothing);
    EXPECT_EQ(out.At(4, 4), kNothing);
    EXPECT_EQ(out.At(9, 7), PlaceColour(4, 3));
}

TEST(ComposeCommand, LaterPiecesReplaceEarlierOnesHoweverManyJobs) {
    const TemporaryFolder folder;
    Words line = {"compose", folder / "out.png", "--size", "40x1", "--jobs", "8"};
    std::string notes;
    for (int i = 0; i < 30; ++i) {
        const int width = 10 + i % 7 * 30;
        const auto piece = WritePicture(folder / ("piece" + std::to_string(i) + ".png"), width, 1,
                                        [&](int, int) { return Colour{i, 0, 0, 40}; });
        line.push_back(At(piece, std::to_string(i) + ",0"));
        const std::string inside = std::to_string(40 - i) + " x 1";
        if (i + width > 40) notes += NoteLine(piece, "only the " + inside + " pixels inside the picture were pasted");
    }
    ExpectDone(line, notes);
    const PictureFile out(folder / "out.png");
    for (int x = 0; x < 39; ++x)
        EXPECT_EQ(out.At(x, 0), (Colour{std::min(x, 29), 0, 0, 40}));
}

TEST(ComposeCommand, NamesMayHaveAtSignsAndCommas) {
    const TemporaryFolder folder;
    for (const std::string name : {"a@2x.png", "a@1,2.png", "a,b@3,4@5,6.png", "a b ü.png"}) {
        const auto piece = WritePicture(folder / name, 2, 2, PlaceColour);
        ExpectDone({"compose", folder / "out.png", "--size", "4x4", At(piece, "2,2")});
        EXPECT_EQ(PictureFile(folder / "out.png").At(3, 3), PlaceColour(1, 1));
    }
}

TEST(ComposeCommand, PiecesOfAnyFormatTakeThatOfTheWhole) {
    const TemporaryFolder folder;
    const auto grey = WritePicture(folder / "grey.png", 1, 1, [](int, int) { return Colour{123}; });
    const auto floats = WriteFloats(folder / "floats.tif", 1, 1, 4, {1, 0.5F, 0.25F, 1});
    const auto compose = [&](const std::string& format) {
        ExpectDone({"compose", folder / "out.tif", "--size", "2x1", "--raw", "--format", format, At(grey, "0,0"),
                    At(floats, "1,0")});
        return PictureFile(folder / "out.tif");
    };
    for (const std::string format : {"rgba8", "bgra8", "rgba16", "rgba32f"}) {
        const PictureFile out = compose(format);
        EXPECT_EQ(out.At(0, 0), (Colour{123, 123, 123, 255})) << format;
        EXPECT_EQ(out.At(1, 0), (Colour{255, 128, 64, 255})) << format;
    }
    // 0.299 + 0.587 x 0.5 + 0.114 x 0.25 = 0.621
    EXPECT_EQ(compose("l8").Bytes(), (std::vector<unsigned char>{123, 158}));
}

TEST(ComposeCommand, LightAndDisplayValuesBecomeWhatTheWholeHolds) {
    const TemporaryFolder folder;
    const auto picture =
        WritePicture(folder / "picture.png", 1, 1, [](int, int) { return Colour{188, 188, 188, 128}; });
    const auto light = WriteFloats(folder / "light.exr", 1, 1, 4, {0.25F, 0.125F, 0, 0.5F});
    ExpectDone({"compose", folder / "out.png", "--size", "2x1", At(picture, "0,0"), At(light, "1,0")});
    EXPECT_EQ(PictureFile(folder / "out.png").Bytes(),
              (std::vector<unsigned char>{188, 188, 188, 128, 188, 137, 0, 128}));
    ExpectDone({"compose", folder / "out.exr", "--size", "2x1", At(picture, "0,0"), At(light, "1,0")});
    EXPECT_EQ(Described(folder / "out.exr")["formatName"], "kR16G16B16A16F");
    ExpectDone({"convert", folder / "out.exr", folder / "back.png"});
    EXPECT_EQ(PictureFile(folder / "back.png").Bytes(), PictureFile(folder / "out.png").Bytes());
}

TEST(ComposeCommand, TheOutputMayBeOneOfThePieces) {
    const TemporaryFolder folder;
    const auto file = WritePicture(folder / "file.png", 3, 3, PlaceColour);
    ExpectDone({"compose", file, "--size", "6x3", At(file, "0,0"), At(file, "3,0")});
    EXPECT_EQ(PictureFile(file).At(5, 2), PlaceColour(2, 2));
    EXPECT_EQ(NamesIn(folder.Path()), Words{"file.png"});
}

TEST(ComposeCommand, WhatCannotBeMadeIsSaidBeforeAnyWork) {
    const TemporaryFolder folder;
    const auto compose = [](const std::string& out, const std::string& size, const std::string& format) {
        return Words{"compose", out, "/nonexistent/x.png@0,0", "--size", size, "--format", format};
    };
    const auto png = folder / "x.png", ppm = folder / "x.ppm", dds = folder / "x.dds", exr = folder / "x.exr";
    ExpectFailed(compose(png, "1000000x1000000", "rgba8"),
                 ErrorLine(png,
                           "cannot be written: 1000000 x 1000000 pixels are more than the memory of this machine "
                           "holds"));
    ExpectFailed(compose(ppm, "4x4", "rgba8"),
                 ErrorLine(ppm, "cannot be written: .ppm files hold one or three channels, and kR8G8B8A8 has 4"));
    ExpectFailed(compose(dds, "4x4", "bc1"), ErrorLine(dds, "cannot be written: kBC1 has no pixels"));
    ExpectFailed(compose(exr, "4x4", "rgb32f"),
                 WarningLine(exr, "Unsupported target type") +
                     ErrorLine(exr, "cannot be written: pictures are not made in the format kR32G32B32F"));
    EXPECT_EQ(NamesIn(folder.Path()), Words());
}
