// Textures of pictures: what is chosen, kept, refused and told.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <OpenImageIO/imagebuf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>

using namespace Kavra::Tests;

namespace {

using Bytes = std::vector<unsigned char>;

/// A picture that changes slowly from left to right and from top to bottom.
std::filesystem::path Ramp(const std::filesystem::path& path, int width, int height, std::size_t channels = 3) {
    return WritePicture(path, width, height, [=](int x, int y) {
        Colour colour = {x * 255 / width, y * 255 / height, 128, 255 - x * 255 / width};
        colour.resize(channels);
        return colour;
    });
}

/// What `texture --inspect` says of a file.
Json Inspected(const std::filesystem::path& file) {
    return Json::parse(ExpectDone({"texture", "--inspect", file, "--json"})).at(0);
}

/// What `texture --json` says of a texture that it makes.
Json Made(const Words& line) {
    return Json::parse(ExpectDone(Joined({{"texture"}, line, {"--json"}}))).at(0);
}

std::uint32_t Word(const Bytes& file, std::size_t at) {
    std::uint32_t word = 0;
    std::memcpy(&word, file.data() + at, sizeof word);
    return word;
}

/// DXGI_FORMAT and the alpha mode of a file's DX10 header.
std::pair<std::uint32_t, std::uint32_t> HeaderOf(const std::filesystem::path& file) {
    const Bytes bytes = ReadAll(file);
    EXPECT_GE(bytes.size(), 148U);
    return {Word(bytes, 128), Word(bytes, 144) & 7};
}

std::filesystem::path FloatPicture(const std::filesystem::path& path, float value) {
    OIIO::ImageBuf image(OIIO::ImageSpec(8, 8, 3, OIIO::TypeDesc::FLOAT));
    for (OIIO::ImageBuf::Iterator<float> pixel(image); !pixel.done(); ++pixel)
        for (int c = 0; c < 3; ++c)
            pixel[c] = value * static_cast<float>(pixel.x() + 1) / 8;
    image.write(path.string());
    return path;
}

}  // namespace

// --- What is chosen --------------------------------------------------------------------------------------------------

TEST(TextureCommand, APictureBecomesBc7WithAllLevelsInItsCurve) {
    const TemporaryFolder folder;
    const auto out = folder / "out.dds";
    const Json made = Made({Ramp(folder / "in.png", 40, 20), out});
    EXPECT_EQ(made["formatName"], "kBC7Srgb");
    EXPECT_EQ(made["levels"], 6);
    EXPECT_EQ(made["alpha"], "none");
    EXPECT_GT(made["psnr"]["R"].get<double>(), 40);
    EXPECT_FALSE(made["psnr"].contains("A"));
    EXPECT_EQ(HeaderOf(out), std::pair(99U, 3U));
    EXPECT_EQ(ReadAll(out).size(), 148 + 16 * (10 * 5 + 5 * 3 + 3 * 2 + 2 + 1 + 1U));
}

TEST(TextureCommand, FloatsBecomeBc6h) {
    const TemporaryFolder folder;
    const Json made = Made({FloatPicture(folder / "in.exr", 20), folder / "out.dds"});
    EXPECT_EQ(made["formatName"], "kBC6H");
    EXPECT_EQ(made["srgb"], false);
    const PictureFile shown(folder / "out.dds");
    EXPECT_EQ(shown.Size(), "8x8");
}

TEST(TextureCommand, VectorsBecomeBc5) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 4, 4, [](int, int) { return Colour{200, 90, 230}; });
    EXPECT_EQ(Made({in, folder / "out.dds", "--normal-map"})["formatName"], "kBC5");
    const PictureFile shown(folder / "out.dds");
    EXPECT_EQ(shown.At(1, 1), (Colour{200, 90}));
    ExpectDone({"texture", in, folder / "green.dds", "--normal-map", "--invert-green"});
    EXPECT_EQ(PictureFile(folder / "green.dds").At(1, 1), (Colour{200, 165}));
}

TEST(TextureCommand, TheHeaderSaysWhatTheValuesAre) {
    const TemporaryFolder folder;
    const auto in = Ramp(folder / "in.png", 8, 8), out = folder / "out.dds";
    ExpectDone({"texture", in, out, "--linear"});
    EXPECT_EQ(HeaderOf(out).first, 98U);
    ExpectDone({"texture", in, out, "--format", "bc3"});
    EXPECT_EQ(HeaderOf(out).first, 78U);
    ExpectDone({"texture", in, out, "--format", "rgba8"});
    EXPECT_EQ(HeaderOf(out).first, 29U);
    const auto grey =
        WritePicture(folder / "grey.png", 8, 8, [](int x, int) { return Colour{20 * x, 20 * x, 20 * x}; });
    ExpectDone({"texture", grey, out, "--format", "bc4"});
    EXPECT_EQ(Inspected(out)["srgb"], false);
    ExpectFailed({"texture", in, out, "--format", "bc5", "--srgb"},
                 ErrorLine(in, "cannot be made: bc5 has no form that is sRGB; bc7 has"));
}

TEST(TextureCommand, ColoursThatAFormatLeavesOutAreNamed) {
    const TemporaryFolder folder;
    const auto picture = [&](const char* name, const std::function<Colour(int)>& of) {
        return WritePicture(folder / name, 8, 8, [&](int x, int y) { return of(x + 8 * y); });
    };
    const auto out = folder / "out.dds";
    const auto errorOf = [&](const std::string& in, const Words& more) {
        const ProgramResult result = RunKavra(Joined({{"texture", in, out}, more}));
        EXPECT_EQ(result.status, 0);
        return result.error;
    };
    const auto note = [](const std::string& in, const std::string& text) { return "kavra: " + in + ": note: " + text; };
    const Words bc4 = {"--format", "bc4"}, bc5 = {"--format", "bc5"};
    const auto colours = picture("colours.png", [](int i) { return Colour{i, 2 * i, 3 * i}; });
    EXPECT_EQ(errorOf(colours, bc4), note(colours, "bc4 holds red alone: green and blue are left out\n"));
    EXPECT_EQ(errorOf(colours, bc5), note(colours, "bc5 holds red and green: blue is left out\n"));
    EXPECT_EQ(errorOf(colours, {"--normal-map"}), "");
    const auto greys = picture("greys.png", [](int i) { return Colour{i, i, i}; });
    EXPECT_EQ(errorOf(greys, bc4), "");
    EXPECT_EQ(errorOf(greys, bc5), "");
    const auto twoOfThem = picture("two.png", [](int i) { return Colour{i, 255 - i, 7}; });
    EXPECT_EQ(errorOf(twoOfThem, bc4), note(twoOfThem, "bc4 holds red alone: green is left out\n"));
    EXPECT_EQ(errorOf(twoOfThem, bc5), "") << "blue is the same everywhere";
}

// --- Alpha -----------------------------------------------------------------------------------------------------------

TEST(TextureCommand, AlphaIsStraightUnlessSaid) {
    const TemporaryFolder folder;
    const auto in = Ramp(folder / "in.png", 16, 16, 4), out = folder / "out.dds";
    EXPECT_EQ(Made({in, out})["alpha"], "straight");
    EXPECT_EQ(Made({in, out, "--alpha", "none"})["alpha"], "none");
    EXPECT_EQ(PictureFile(out).At(15, 3)[3], 255);
    EXPECT_EQ(Made({in, out, "--alpha", "premultiplied", "--format", "rgba8"})["alpha"], "premultiplied");
    EXPECT_EQ(HeaderOf(out).second, 2U);
    const Bytes pixels = ReadAll(out);
    const std::size_t last = 148 + 15 * 4;  // red 239 and alpha 16, as stored numbers
    EXPECT_EQ(pixels[last + 3], 16);
    EXPECT_EQ(pixels[last], 15);
}

TEST(TextureCommand, AFormatWithoutRoomForAlphaIsRefused) {
    const TemporaryFolder folder;
    const auto in = Ramp(folder / "in.png", 16, 16, 4), out = folder / "out.dds";
    ExpectFailed({"texture", in, out, "--format", "bc5"},
                 ErrorLine(in,
                           "cannot be made: it has alpha, which bc5 does not hold; bc7, bc3 and rgba8 do, and --alpha "
                           "none leaves it out"));
    ExpectFailed({"texture", in, out, "--format", "bc1"},
                 ErrorLine(in,
                           "cannot be made: bc1 holds pixels that are opaque or transparent, and some are between; bc7 "
                           "and bc3 hold them, --alpha coverage cuts them out, --alpha none leaves alpha out"));
    EXPECT_FALSE(std::filesystem::exists(out));
    ExpectDone({"texture", in, out, "--format", "bc1", "--alpha", "coverage", "--mips", "none"});
    const PictureFile cut(out);
    EXPECT_EQ(cut.At(0, 0)[3], 255);
    EXPECT_EQ(cut.At(15, 0)[3], 0);
}

TEST(TextureCommand, LightBeyondWhiteIsRefusedWhereTheFormatEndsThere) {
    const TemporaryFolder folder;
    const auto bright = FloatPicture(folder / "bright.exr", 4), dim = FloatPicture(folder / "dim.exr", 1);
    ExpectFailed({"texture", bright, folder / "out.dds", "--format", "bc1"},
                 ErrorLine(bright,
                           "cannot be made: 75.0 % of its pixels are brighter than white, which bc1 does not hold; "
                           "bc6h and rgba16f do, and --tonemap brings them into it"));
    ExpectDone({"texture", bright, folder / "out.dds", "--format", "bc1", "--tonemap", "reinhard"});
    ExpectDone({"texture", dim, folder / "out.dds", "--format", "bc7"});
    EXPECT_NEAR(PictureFile(folder / "out.dds").At(3, 0)[0], 188, 2) << "half of white";
}

// --- Levels and sizes ------------------------------------------------------------------------------------------------

TEST(TextureCommand, LevelsAreAsMany) {
    const TemporaryFolder folder;
    const auto in = Ramp(folder / "in.png", 16, 8), out = folder / "out.dds";
    EXPECT_EQ(Made({in, out, "--mips", "none"})["levels"], 1);
    EXPECT_EQ(Made({in, out, "--mips", "3"})["levels"], 3);
    EXPECT_EQ(Made({in, out, "--mips", "99"})["levels"], 5);
    ExpectWrongUsage({"texture", in, out, "--mips", "0"},
                     "texture: error: --mips: 0 is neither all, none nor a number of levels, 1 or more");
}

TEST(TextureCommand, LevelsOfColoursAreMeansOfLight) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 2, 2, [](int x, int) { return Colour(3, x * 255); });
    ExpectDone({"texture", in, folder / "out.dds", "--format", "rgba8"});
    EXPECT_EQ(ReadAll(folder / "out.dds")[148 + 16], 188);
    ExpectDone({"texture", in, folder / "out.dds", "--format", "rgba8", "--linear"});
    const Bytes plain = ReadAll(folder / "out.dds");
    EXPECT_NEAR(plain[plain.size() - 4], 128, 1);
}

TEST(TextureCommand, SizesArePowersOfTwoWhereWanted) {
    const TemporaryFolder folder;
    const auto in = Ramp(folder / "in.png", 100, 48), out = folder / "out.dds";
    const auto size = [&](const Words& more) {
        const Json made = Made(Joined({{in, out}, more}));
        return std::pair(made["width"].get<int>(), made["height"].get<int>());
    };
    EXPECT_EQ(size({"--power-of-two", "nearest"}), std::pair(128, 64));
    EXPECT_EQ(size({"--power-of-two", "down"}), std::pair(64, 32));
    EXPECT_EQ(size({"--size", "70x30"}), std::pair(70, 30));
    EXPECT_EQ(size({"--fit", "50x50"}), std::pair(50, 24));
    EXPECT_EQ(size({"--fit", "50x50", "--power-of-two", "up"}), std::pair(64, 32));
}

TEST(TextureCommand, RowsAreTurnedWhereWanted) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 4, 3, [](int, int y) { return Colour(3, y * 100); });
    ExpectDone({"texture", in, folder / "out.dds", "--format", "rgba8", "--mips", "none", "--flip"});
    const PictureFile out(folder / "out.dds");
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(out.At(2, y)[0], (2 - y) * 100);
}

// --- Cubes, volumes, arrays ------------------------------------------------------------------------------------------

TEST(TextureCommand, SixFilesAreACube) {
    const TemporaryFolder folder;
    Words line = {"texture"};
    for (int face = 0; face < 6; ++face)
        line.push_back(WritePicture(folder / ("face" + std::to_string(face) + ".png"), 4, 4,
                                    [=](int, int) { return Colour(3, face * 40); }));
    line.insert(line.end(), {folder / "cube.dds", "--cube", "--format", "rgba8"});
    ExpectDone(line);
    const Json cube = Inspected(folder / "cube.dds");
    EXPECT_EQ(cube["type"], "cube map");
    EXPECT_EQ(cube["levels"], 3);
    const Bytes file = ReadAll(folder / "cube.dds");
    for (std::size_t face = 0; face < 6; ++face)
        EXPECT_EQ(file[148 + face * (64 + 16 + 4)], face * 40);
}

TEST(TextureCommand, OnePictureIsACubeByItsProportions) {
    const TemporaryFolder folder;
    for (const auto& [name, width, height] :
         {std::tuple("cross.png", 32, 24), {"tall.png", 24, 32}, {"strip.png", 48, 8}, {"map.png", 32, 16}}) {
        const Json cube = Made({Ramp(folder / name, width, height), folder / "cube.dds", "--cube"});
        EXPECT_EQ(cube["type"], "cube map") << name;
        EXPECT_EQ(cube["width"], 8) << name;
        EXPECT_EQ(cube["levels"], 4) << name;
    }
    const auto square = Ramp(folder / "square.png", 10, 10);
    ExpectFailed({"texture", square, folder / "no.dds", "--cube"},
                 ErrorLine(square,
                           "10 x 10 pixels, which is no cross (4 x 3 or 3 x 4 squares), no strip (6 x 1 or 1 x 6) "
                           "and no equirectangular map (2 x 1)"));
    ExpectWrongUsage({"texture", square, square, folder / "no.dds", "--cube"},
                     "texture: error: --cube takes six files or one, and these are 2");
}

TEST(TextureCommand, FilesAreTheSlicesOfAVolumeOrTheElementsOfAnArray) {
    const TemporaryFolder folder;
    Words files;
    for (int i = 0; i < 3; ++i)
        files.push_back(WritePicture(folder / ("slice" + std::to_string(i) + ".png"), 4, 4,
                                     [=](int, int) { return Colour(3, i * 100); }));
    ExpectDone(Joined({{"texture"}, files, {folder / "v.dds", "--volume", "--format", "rgba8"}}));
    const Json volume = Inspected(folder / "v.dds");
    EXPECT_EQ(volume["type"], "volume");
    EXPECT_EQ(volume["depth"], 3);
    EXPECT_EQ(volume["levels"], 3);
    ExpectDone(Joined({{"texture"}, files, {folder / "a.dds", "--array", "--format", "rgba8"}}));
    const Json array = Inspected(folder / "a.dds");
    EXPECT_EQ(array["elements"], 3);
    EXPECT_EQ(array["depth"], 1);
    const Bytes file = ReadAll(folder / "a.dds");
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(file[148 + i * (64 + 16 + 4)], i * 100);
    const auto other = Ramp(folder / "other.png", 5, 4);
    ExpectFailed(Joined({{"texture"}, files, {other, folder / "n.dds", "--array"}}),
                 ErrorLine(files[0], "pictures of 4 x 4 and of 5 x 4 pixels make no texture together"));
}

TEST(TextureCommand, ElementsOfAnArrayMayDifferInSizeWhereTheyAreResized) {
    const TemporaryFolder folder;
    const auto plain = [&](const char* name, int width, int height, int value) {
        return WritePicture(folder / name, width, height, [=](int, int) { return Colour(3, value); });
    };
    const Words files = {plain("a.png", 4, 4, 50), plain("b.png", 8, 8, 100), plain("c.png", 16, 8, 150)};
    const auto out = folder / "a.dds";
    ExpectDone(Joined({{"texture"}, files, {out, "--array", "--format", "rgba8", "--size", "8x8", "--mips", "none"}}));
    const Bytes file = ReadAll(out);
    ASSERT_EQ(file.size(), 148 + 3 * 8 * 8 * 4U);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(file[148 + i * 8 * 8 * 4], 50 * (i + 1));
    ExpectFailed(Joined({{"texture"}, files, {folder / "n.dds", "--array", "--fit", "8x8"}}),
                 ErrorLine(files[0], "pictures of 4 x 4 and of 8 x 8 pixels make no texture together"));
    ExpectFailed(Joined({{"texture"}, files, {folder / "n.dds", "--volume", "--size", "8x8"}}),
                 ErrorLine(files[0], "pictures of 4 x 4 and of 8 x 8 pixels make no texture together"));
}

// --- Texture files ---------------------------------------------------------------------------------------------------

TEST(TextureCommand, ATextureFileKeepsItsBlocksLevelsAndWords) {
    const TemporaryFolder folder;
    const auto in = folder / "in.dds", out = folder / "out.dds", ktx = folder / "out.ktx2", back = folder / "back.dds";
    ExpectDone({"texture", Ramp(folder / "in.png", 20, 12, 4), in, "--format", "bc3", "--quality", "fast"});
    ExpectDone({"texture", in, out});
    EXPECT_EQ(ReadAll(out), ReadAll(in));
    ExpectDone({"texture", in, ktx, "--zstd", "3"});
    ExpectDone({"texture", ktx, back});
    EXPECT_EQ(ReadAll(back), ReadAll(in));
}

TEST(TextureCommand, LevelsThatAreMissingAreAddedBehindThoseThatStay) {
    const TemporaryFolder folder;
    const auto in = folder / "in.dds", out = folder / "out.dds";
    ExpectDone({"texture", Ramp(folder / "in.png", 16, 16), in, "--format", "bc1", "--mips", "none"});
    ExpectDone({"texture", in, out, "--mips", "all"});
    const Bytes few = ReadAll(in), all = ReadAll(out);
    EXPECT_EQ(Inspected(out)["levels"], 5);
    EXPECT_TRUE(std::equal(few.begin() + 148, few.end(), all.begin() + 148));
    ExpectDone({"texture", out, folder / "two.dds", "--mips", "2"});
    EXPECT_EQ(ReadAll(folder / "two.dds").size(), 148 + 8 * (16 + 4U));
}

TEST(TextureCommand, AnotherFormatKeepsLevelsAndTheFlag) {
    const TemporaryFolder folder;
    const auto in = folder / "in.dds", out = folder / "out.dds";
    ExpectDone({"texture", Ramp(folder / "in.png", 16, 16), in, "--mips", "3"});
    const Json made = Made({in, out, "--format", "bc1"});
    EXPECT_EQ(made["formatName"], "kBC1Srgb");
    EXPECT_EQ(made["levels"], 3);
    const Json smaller = Made({in, out, "--fit", "8x8"});
    EXPECT_EQ(smaller["formatName"], "kBC7Srgb");
    EXPECT_EQ(smaller["width"], 8);
}

// --- Several files, and what is told ---------------------------------------------------------------------------------

TEST(TextureCommand, SeveralFilesGoIntoAFolder) {
    const TemporaryFolder folder;
    const auto a = Ramp(folder / "a.png", 8, 8), b = Ramp(folder / "b.png", 4, 4);
    ExpectDone({"texture", a, b, folder / "out/", "--to", "ktx2"}, "kavra: 2 written\n");
    EXPECT_EQ(NamesIn(folder / "out"), (Words{"a.ktx2", "b.ktx2"}));
    ExpectWrongUsage({"texture", a, folder / "out.png"}, "texture: error: " + (folder / "out.png").string() +
                                                             " is no texture file: .dds and .ktx2 are written");
}

TEST(TextureCommand, AReportNamesWhatWasMade) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 4, 4, [](int, int) { return Colour{255, 0, 255}; });
    const auto out = folder / "out.dds";
    EXPECT_EQ(ExpectDone({"texture", in, out, "--report"}),
              out.string() + ": kBC7Srgb, 4 x 4, 3 levels, alpha none, 48 bytes; R exact, G exact, B exact\n");
    EXPECT_EQ(ExpectDone({"texture", out, folder / "again.dds", "--report"}),
              (folder / "again.dds").string() + ": kBC7Srgb, 4 x 4, 3 levels, alpha none, 48 bytes; copied as it is\n");
}

TEST(TextureCommand, AnInspectionTellsEveryLevel) {
    const TemporaryFolder folder;
    const auto out = folder / "out.dds";
    ExpectDone({"texture", Ramp(folder / "in.png", 8, 4), out, "--mips", "2"});
    EXPECT_EQ(ExpectDone({"texture", "--inspect", out}), out.string() +
                                                             ": DDS, kBC7Srgb, 8 x 4, 2 levels, alpha none, 48 bytes\n"
                                                             "  level 0: 8 x 4, 32 bytes\n"
                                                             "  level 1: 4 x 2, 16 bytes\n");
    const auto text = folder.Write("text.dds", "no texture");
    const ProgramResult result = RunKavra({"texture", "--inspect", text});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.error.contains("cannot be read"));
}

TEST(TextureCommand, AlphaThatKtx2HasNoWordForIsTold) {
    const TemporaryFolder folder;
    const auto in = folder / "in.dds";
    ExpectDone({"texture", Ramp(folder / "in.png", 8, 8, 4), in, "--format", "bc3"});
    Bytes bytes = ReadAll(in);
    bytes.at(144) = 4;  // DDS_ALPHA_MODE_CUSTOM
    std::ofstream(in, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    EXPECT_EQ(Inspected(in)["alpha"], "custom");
    ExpectDone({"texture", in, folder / "out.ktx2"},
               NoteLine(in, "its alpha is data of its own, which KTX2 cannot say: it is written as straight"));
    ExpectDone({"texture", in, folder / "out.dds"});
    EXPECT_EQ(ReadAll(folder / "out.dds"), bytes);
}

TEST(TextureCommand, OnlyKtx2FilesArePacked) {
    const TemporaryFolder folder;
    const auto in = Ramp(folder / "in.png", 8, 8);
    ExpectWrongUsage({"texture", in, folder / "out.dds", "--zstd", "3"},
                     "texture: error: --zstd packs .ktx2 files, and this is none");
    ExpectDone({"texture", in, folder / "out.ktx2", "--zstd", "3"});
}

TEST(TextureCommand, TheSamplesOfTexturesAreWhatTheyAreSaidToBe) {
    const auto folder = std::filesystem::path(KAVRA_SOURCE_DIR) / "examples" / "textures";
    const Json materials = Inspected(folder / "materials.dds"), leaf = Inspected(folder / "leaf.ktx2"),
               sky = Inspected(folder / "sky.ktx2");
    EXPECT_EQ(materials["formatName"], "kBC7Srgb");
    EXPECT_EQ(materials["elements"], 3);
    EXPECT_EQ(leaf["formatName"], "kBC3Srgb");
    EXPECT_EQ(leaf["alpha"], "straight");
    EXPECT_EQ(sky["formatName"], "kBC6H");
    EXPECT_EQ(sky["faces"].size(), 6U);
}

// --- Other commands --------------------------------------------------------------------------------------------------

TEST(TextureCommand, ConvertKeepsATextureFileAndMakesBlocksOfPictures) {
    const TemporaryFolder folder;
    const auto picture = Ramp(folder / "in.png", 16, 16), in = folder / "in.dds", out = folder / "out.dds";
    ExpectDone({"texture", picture, in, "--format", "bc1"});
    ExpectDone({"convert", in, out});
    EXPECT_EQ(ReadAll(out), ReadAll(in));
    ExpectDone({"convert", in, folder / "out.ktx2"});
    EXPECT_EQ(Inspected(folder / "out.ktx2")["levels"], 5);
    ExpectDone({"convert", in, out, "--fit", "8x8"},
               NoteLine(in, "one of its 5 levels was written; kavra texture writes all"));
    ExpectDone({"convert", picture, out, "--format", "bc7"});
    EXPECT_EQ(Inspected(out)["formatName"], "kBC7Srgb");
    EXPECT_EQ(Inspected(out)["levels"], 1);
}

TEST(TextureCommand, ConvertTakesOfATextureThatIsCutWhatItAlwaysTook) {
    const TemporaryFolder folder;
    ExpectDone({"texture", Ramp(folder / "in.png", 16, 16), folder / "in.dds", "--format", "bc1"});
    Bytes cut = ReadAll(folder / "in.dds");
    cut.resize(cut.size() - 4);
    const auto in = folder.Write("cut.dds", cut);
    const ProgramResult result = RunKavra({"convert", in, folder / "out.dds"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(PictureFile(folder / "out.dds").Size(), "16x16");
}

TEST(TextureCommand, FramesShowEveryElementOfAnArray) {
    const TemporaryFolder folder;
    Words files;
    for (int i = 0; i < 3; ++i)
        files.push_back(WritePicture(folder / ("in" + std::to_string(i) + ".png"), 4, 4,
                                     [=](int, int) { return Colour(3, i * 100); }));
    for (const std::string extension : {"dds", "ktx2"}) {
        const auto array = folder / ("array." + extension);
        ExpectDone(Joined({{"texture"}, files, {array, "--array", "--format", "rgba8"}}));
        ExpectDone({"frames", array, folder / "out%d.png"});
        for (int i = 0; i < 9; ++i)  // three levels each
            EXPECT_EQ(PictureFile(folder / ("out" + std::to_string(i) + ".png")).At(0, 0)[0], i / 3 * 100) << extension;
        EXPECT_EQ(PictureFile(folder / "out1.png").Size(), "2x2");
    }
}

TEST(TextureCommand, Ktx2FilesAreDescribedAndConvertedAsOthers) {
    const TemporaryFolder folder;
    const auto in = folder / "in.ktx2";
    ExpectDone({"texture", Ramp(folder / "in.png", 16, 8), in, "--zstd", "5"});
    const Json described = Described(in);
    EXPECT_EQ(described["width"], 16);
    EXPECT_EQ(described["frameCount"], 5);
    ExpectDone({"convert", in, folder / "out.png", "--level", "1"});
    EXPECT_EQ(PictureFile(folder / "out.png").Size(), "8x4");
}

TEST(TextureCommand, ColoursOfTransparentPixelsDoNotCountInTheError) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 8, 4,
                                 [](int x, int) { return x < 4 ? Colour{255, 0, 255, 255} : Colour{0, 255, 0, 0}; });
    const Json made = Made({in, folder / "out.dds", "--format", "bc1", "--mips", "none"});
    EXPECT_TRUE(made["psnr"]["R"].is_null() || made["psnr"]["R"].get<double>() > 60);
    EXPECT_TRUE(made["psnr"]["A"].is_null()) << "exact";
}
