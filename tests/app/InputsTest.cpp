// Inputs beyond the words of the command line: lists of names and folders.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <format>
#include <string>

using namespace Kavra::Tests;

namespace {

void Copy(const std::string& sample, const std::filesystem::path& to) {
    std::filesystem::create_directories(to.parent_path());
    std::filesystem::copy_file(Sample(sample), to);
}

/// The files that `info --json` tells of, in its order.
Words FilesOf(const std::string& json) {
    Words files;
    for (const Json& file : Json::parse(json))
        files.push_back(file["file"]);
    return files;
}

/// Folders in one another until no name can reach the last one.
void MakeTooDeep(const std::filesystem::path& folder) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    const std::string name(200, 'd');
    for (int i = 0; i < 25; ++i) {
        ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
        ASSERT_EQ(chdir(name.c_str()), 0);
    }
    std::filesystem::current_path(before);
}

}  // namespace

TEST(Inputs, AListHasANameALineAndEmptyLinesAreNone) {
    const TemporaryFolder folder;
    const std::string a = Sample("grey.png"), b = Sample("photo.tga");
    const auto list = folder.Write("list", a + "\n\n" + b);
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", "@" + list.string()})), (Words{a, b}));
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", "--from", list})), (Words{a, b}));
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", b, "--from", list})), (Words{b, a, b}));
}

TEST(Inputs, WithZeroBytesBetweenThemNamesMayHaveLineEnds) {
    const TemporaryFolder folder;
    const std::string odd = folder / "one\ntwo.png";
    Copy("grey.png", odd);
    const auto list = folder.Write("list", odd + std::string(2, '\0') + Sample("photo.tga").string() + '\0');
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", "--from", list, "-0"})), (Words{odd, Sample("photo.tga")}));
    ExpectFailed({"info", "--from", list}, ErrorLine(list, "holds a zero byte, and names that end in one go with -0"));
}

TEST(Inputs, ANameThatBeginsWithAnAtIsReachedByItsFolder) {
    const TemporaryFolder folder;
    Copy("grey.png", folder / "@a.png");
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", folder / "@a.png"})), Words{folder / "@a.png"});
    ExpectFailed({"info", "@nothing.png"}, ErrorLine("nothing.png", "cannot be read: No such file or directory"));
}

TEST(Inputs, NamesInListsAreNamesWhateverTheyBeginWith) {
    const TemporaryFolder folder;
    const auto list = folder.Write("list", "@x\n-\n--json\n");
    ExpectFailed({"info", "--from", list}, ErrorLine("@x", "there is no such file") +
                                               ErrorLine("-", "there is no such file") +
                                               ErrorLine("--json", "there is no such file"));
}

TEST(Inputs, AnEmptyListIsNoMistake) {
    const TemporaryFolder folder;
    const auto list = folder.Write("list", "\n\n");
    EXPECT_EQ(Json::parse(ExpectDone({"info", "--json", "--from", list})), Json::array());
    ExpectDone({"convert", "--from", list, folder / "out", "--to", "png"});
    EXPECT_EQ(NamesIn(folder.Path()), Words{"list"});
}

TEST(Inputs, AListOfManyNamesIsReadAtOnce) {
    const TemporaryFolder folder;
    std::string names;
    for (int i = 0; i < 1'000'000; ++i)
        names += std::format("no/such/{}.png\n", i);
    const auto list = folder.Write("list", names);
    const ProgramResult result =
        RunKavra({"convert", "--from", list, folder / "out", "--to", "png", "--dry-run", "-q"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(std::ranges::count(result.out, '\n'), 1'000'000);
}

TEST(Inputs, NamesLongerThanAnySystemTakesFailOneByOne) {
    const TemporaryFolder folder;
    const std::string longName(4096, 'n'), good = Sample("grey.png");
    const auto list = folder.Write("list", longName + "\n" + good + "\n");
    const ProgramResult result = RunKavra({"convert", "--from", list, folder / "out", "--to", "png"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.error.contains("kavra: " + longName + ": ")) << result.error;
    EXPECT_EQ(NamesIn(folder / "out"), Words{"grey.png"});
}

TEST(Inputs, OfFoldersAllThatCanBeReadIsTakenInTheOrderOfNames) {
    const TemporaryFolder folder;
    Copy("grey.png", folder / "in/b/one.png");
    Copy("photo.tga", folder / "in/a/TWO.TGA");
    Copy("grey.png", folder / "in/c.png");
    folder.Write("in/readme.txt", "no picture");
    folder.Write("in/none", "no picture");
    const auto in = folder / "in";
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", "-r", in})),
              (Words{in / "a/TWO.TGA", in / "b/one.png", in / "c.png"}));
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", "-r", in / "b", in / "c.png"})),
              (Words{in / "b/one.png", in / "c.png"}));
    ExpectFailed({"info", in}, ErrorLine(in, "it is a folder"));
}

TEST(Inputs, TheTreeIsKeptBelowTheOutputFolder) {
    const TemporaryFolder folder;
    Copy("grey.png", folder / "in/a/same.png");
    Copy("photo.tga", folder / "in/b/deep/same.tga");
    ExpectDone({"convert", "-r", folder / "in", folder / "out", "--to", "bmp"}, "kavra: 2 written\n");
    EXPECT_TRUE(std::filesystem::exists(folder / "out/a/same.bmp"));
    EXPECT_TRUE(std::filesystem::exists(folder / "out/b/deep/same.bmp"));
    ExpectDone({"texture", "-r", folder / "in", folder / "out", "--quality", "fast"}, "kavra: 2 written\n");
    EXPECT_TRUE(std::filesystem::exists(folder / "out/b/deep/same.dds"));
}

TEST(Inputs, AnOutputFolderAmongTheInputsIsNotReadAgain) {
    const TemporaryFolder folder;
    Copy("grey.png", folder / "in/a.png");
    for (int i = 0; i < 2; ++i)
        ExpectDone({"convert", "-r", folder / "in", folder / "in/out", "--to", "png"});
    EXPECT_EQ(NamesIn(folder / "in/out"), Words{"a.png"});
}

TEST(Inputs, LinksToFoldersLeadNobodyRoundInACircle) {
    const TemporaryFolder folder;
    Copy("grey.png", folder / "in/a/x.png");
    std::filesystem::create_directory_symlink("..", folder / "in/a/round");
    std::filesystem::create_directory_symlink(folder / "in", folder / "in/self");
    std::filesystem::create_symlink("x.png", folder / "in/a/link.png");
    std::filesystem::create_symlink("dangling", folder / "in/a/no.png");
    EXPECT_EQ(FilesOf(ExpectDone({"info", "--json", "-r", folder / "in"})),
              (Words{folder / "in/a/link.png", folder / "in/a/x.png"}));
}

TEST(Inputs, AFolderThatCannotBeReadIsSaidAndStopsNoOther) {
    const TemporaryFolder folder;
    Copy("grey.png", folder / "in/z.png");
    MakeTooDeep(folder / "in");
    const ProgramResult result = RunKavra({"info", "--json", "-r", folder / "in"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.error.ends_with(": error: cannot be read: File name too long\n")) << result.error;
    const Json files = Json::parse(result.out);
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0]["file"], (folder / "in/z.png").string());
    EXPECT_EQ(files[1]["error"], "cannot be read: File name too long");
    EXPECT_EQ(std::system(("rm -r " + (folder / "in").string()).c_str()), 0);
}

TEST(Inputs, AfterTwoDashesNamesMayBeginWithOne) {
    const TemporaryFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    Copy("grey.png", std::filesystem::absolute("-r.png"));
    ExpectDone({"convert", "--", "-r.png", "-q.jpg"});
    std::filesystem::current_path(before);
    EXPECT_EQ(NamesIn(folder.Path()), (Words{"-q.jpg", "-r.png"}));
}
