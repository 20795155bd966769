#include "app/PictureFiles.h"
#include "support/Program.h"
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
    ASSERT_EQ(RunKavra({"compose", folder / "out.png", "--size", "16x12", At(piece, "8,6")}).status, 0);
    const PictureFile out(folder / "out.png");
    ASSERT_EQ(out.Width(), 16);
    ASSERT_EQ(out.Height(), 12);
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
        const ProgramResult result = RunKavra({"compose", folder / "out.png", "--size", "10x8", At(piece, row.place)});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.error, "kavra: " + piece.string() + ": note: only the " + row.inside +
                                    " pixels inside the picture were pasted\n");
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
    std::vector<std::string> arguments = {"compose", folder / "out.png", "--size", "10x8"};
    std::string errors;
    for (const std::string place : {"10,0", "0,8", "-5,0", "0,-4", "2147483647,0", "-2147483648,-2147483648"}) {
        arguments.push_back(At(piece, place));
        errors += "kavra: " + piece.string() + ": error: lies outside the picture: 5 x 4 pixels at " + place + "\n";
    }
    arguments.push_back(At(piece, "5,4"));
    const ProgramResult result = RunKavra(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, errors);
    const PictureFile out(folder / "out.png");
    EXPECT_EQ(out.At(0, 0), kNothing);
    EXPECT_EQ(out.At(4, 4), kNothing);
    EXPECT_EQ(out.At(9, 7), PlaceColour(4, 3));
}

TEST(ComposeCommand, LaterPiecesReplaceEarlierOnesHoweverManyJobs) {
    const TemporaryFolder folder;
    std::vector<std::string> arguments = {"compose", folder / "out.png", "--size", "40x1", "--jobs", "8"};
    for (int i = 0; i < 30; ++i) {
        const auto piece = WritePicture(folder / ("piece" + std::to_string(i) + ".png"), 10 + i % 7 * 30, 1,
                                        [&](int, int) { return Colour{i, 0, 0, 40}; });
        arguments.push_back(At(piece, std::to_string(i) + ",0"));
    }
    EXPECT_EQ(RunKavra(arguments).status, 0);
    const PictureFile out(folder / "out.png");
    for (int x = 0; x < 39; ++x)
        EXPECT_EQ(out.At(x, 0), (Colour{std::min(x, 29), 0, 0, 40}));
}

TEST(ComposeCommand, NamesMayHaveAtSignsAndCommas) {
    const TemporaryFolder folder;
    for (const std::string name : {"a@2x.png", "a@1,2.png", "a,b@3,4@5,6.png", "a b ü.png"}) {
        const auto piece = WritePicture(folder / name, 2, 2, PlaceColour);
        const ProgramResult result = RunKavra({"compose", folder / "out.png", "--size", "4x4", At(piece, "2,2")});
        EXPECT_EQ(result.status, 0) << result.error;
        EXPECT_EQ(PictureFile(folder / "out.png").At(3, 3), PlaceColour(1, 1));
    }
}

TEST(ComposeCommand, PiecesOfAnyFormatTakeThatOfTheWhole) {
    const TemporaryFolder folder;
    const auto grey = WritePicture(folder / "grey.png", 1, 1, [](int, int) { return Colour{123}; });
    const auto floats = WriteFloats(folder / "floats.tif", 1, 1, 4, {1, 0.5F, 0.25F, 1});
    const auto compose = [&](const std::string& format) {
        const std::vector<std::string> arguments = {"compose", folder / "out.tif", "--size",         "2x1", "--format",
                                                    format,    At(grey, "0,0"),    At(floats, "1,0")};
        const ProgramResult result = RunKavra(arguments);
        EXPECT_EQ(result.status, 0) << result.error;
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

TEST(ComposeCommand, PiecesAreUpright) {
    const TemporaryFolder folder;
    ASSERT_EQ(RunKavra({"convert", Sample("photo-orientation-6.jpg"), folder / "upright.png"}).status, 0);
    ASSERT_EQ(RunKavra({"compose", folder / "out.png", "--size", "40x60", At(Sample("photo-orientation-6.jpg"), "0,0")})
                  .error,
              "");
    const PictureFile out(folder / "out.png");
    const PictureFile upright(folder / "upright.png");
    for (const int x : {0, 17, 39}) {
        Colour expected = upright.At(x, 50);
        expected.resize(4, 255);
        EXPECT_EQ(out.At(x, 50), expected);
    }
}

TEST(ComposeCommand, OneBadPieceStopsNoOtherAndGivesStatusOne) {
    const TemporaryFolder folder;
    const auto piece = WritePicture(folder / "piece.png", 2, 2, PlaceColour);
    const auto bad = folder.Write("bad.png", "no picture");
    const ProgramResult result =
        RunKavra({"compose", folder / "out.png", "--size", "4x4", At(bad, "0,0"), At(piece, "1,1")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "kavra: " + bad.string() + ": warning: format is not supported\n");
    EXPECT_EQ(PictureFile(folder / "out.png").At(2, 2), PlaceColour(1, 1));
}

TEST(ComposeCommand, WithoutAnyPieceAnOldFileStays) {
    const TemporaryFolder folder;
    folder.Write("out.png", "old");
    EXPECT_EQ(RunKavra({"compose", folder / "out.png", "--size", "4x4", "/nonexistent/x.png@0,0"}).status, 1);
    EXPECT_EQ(ReadAll(folder / "out.png"), (std::vector<unsigned char>{'o', 'l', 'd'}));
    EXPECT_EQ(CountFiles(folder.Path()), 1U);
}

TEST(ComposeCommand, TheOutputMayBeOneOfThePieces) {
    const TemporaryFolder folder;
    const auto file = WritePicture(folder / "file.png", 3, 3, PlaceColour);
    EXPECT_EQ(RunKavra({"compose", file, "--size", "6x3", At(file, "0,0"), At(file, "3,0")}).status, 0);
    EXPECT_EQ(PictureFile(file).At(5, 2), PlaceColour(2, 2));
    EXPECT_EQ(CountFiles(folder.Path()), 1U);
}

TEST(ComposeCommand, WhatCannotBeMadeIsSaidBeforeAnyWork) {
    const TemporaryFolder folder;
    struct Case {
        std::vector<std::string> options;
        std::string name;
        std::string text;
    };
    const std::vector<Case> cases = {
        {{"--size", "1000000x1000000"},
         "x.png",
         "error: cannot be written: 1000000 x 1000000 pixels are more than the memory of this machine holds"},
        {{"--size", "4x4"},
         "x.ppm",
         "error: cannot be written: .ppm files hold one or three channels, and kR8G8B8A8 has 4"},
        {{"--size", "4x4", "--format", "bc1"}, "x.dds", "error: cannot be written: kBC1 has no pixels"},
        {{"--size", "4x4", "--format", "rgb32f"}, "x.exr", "warning: Unsupported target type"},
    };
    for (const Case& row : cases) {
        const auto out = folder / row.name;
        std::vector<std::string> arguments = {"compose", out, "/nonexistent/x.png@0,0"};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        const ProgramResult result = RunKavra(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.error, "kavra: " + out.string() + ": " + row.text + "\n");
    }
    EXPECT_EQ(CountFiles(folder.Path()), 0U);
}
