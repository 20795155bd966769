// Outputs named after their inputs, by fields.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <format>
#include <string>

using namespace Kavra::Tests;

namespace {

/// The outputs that a command line would write.
std::string Planned(const Words& line) {
    return ExpectDone(Joined({line, {"--dry-run", "-q"}}));
}

}  // namespace

TEST(OutputPattern, FieldsStandForPartsOfTheInputsName) {
    const Words in = {"a/one.tga", "b.c/two.x.jpg", "three"};
    const auto planned = [&](const std::string& pattern, const Words& more = {}) {
        return Planned(Joined({{"convert"}, in, {pattern}, more}));
    };
    EXPECT_EQ(planned("{dir}/{stem}.png"),
              "would write a/one.png\nwould write b.c/two.x.png\nwould write ./three.png\n");
    EXPECT_EQ(planned("{name}.png"), "would write one.tga.png\nwould write two.x.jpg.png\nwould write three.png\n");
    EXPECT_EQ(planned("{index}-{ext}.png"), "would write 0-tga.png\nwould write 1-jpg.png\nwould write 2-.png\n");
    EXPECT_EQ(planned("{index:04}.png"), "would write 0000.png\nwould write 0001.png\nwould write 0002.png\n");
    EXPECT_EQ(planned("{stem}.{ext}", {"--to", "bmp"}),
              "would write one.bmp\nwould write two.x.bmp\nwould write three.bmp\n");
    EXPECT_EQ(planned("{{{stem}}}.png"), "would write {one}.png\nwould write {two.x}.png\nwould write {three}.png\n");
}

TEST(OutputPattern, InputsOfOneStemNeedNotBeRefused) {
    const TemporaryFolder folder;
    const std::string grey = Sample("grey.png");
    std::filesystem::copy_file(Sample("photo.tga"), folder / "grey.tga");
    const std::string out = folder / "out/{stem}-{index:02}.bmp";
    ExpectDone({"convert", grey, folder / "grey.tga", out}, "kavra: 2 written\n");
    EXPECT_EQ(NamesIn(folder / "out"), (Words{"grey-00.bmp", "grey-01.bmp"}));
    ExpectDone({"texture", grey, folder / "grey.tga", folder / "out/{name}.{ext}", "--quality", "fast"},
               "kavra: 2 written\n");
    EXPECT_TRUE(std::filesystem::exists(folder / "out/grey.tga.dds"));
}

TEST(OutputPattern, CommandsOfOneInputKnowItsFields) {
    EXPECT_EQ(Planned({"resize", "a/b.png", "{dir}/{stem}-small.{ext}", "--scale", "50%"}),
              "would write a/b-small.png\n");
    EXPECT_EQ(Planned({"crop", "a/b.png", "c/{name}", "--rect", "0,0,1,1"}), "would write c/b.png\n");
    const std::string light = Planned({"light", Sample("studio.hdr"), "--plot", "plots/{stem}-lights.{ext}"});
    EXPECT_TRUE(light.contains("would write plots/studio-lights.png\n")) << light;
}

TEST(OutputPattern, WhatIsNoFieldIsNamedBeforeAnyWork) {
    const std::string list = " is no field: {dir} {stem} {ext} {name} {index} are, and {index:04}; {{ is a brace";
    for (const std::string field : {"{unknown}", "{}", "{stem:04}", "{index:x}", "{index:}", "{index:99}", "{Stem}"})
        ExpectWrongUsage({"convert", "x", field + ".png"}, std::format("convert: error: {}{}", field, list));
    ExpectWrongUsage({"convert", "x", "a{stem"}, "convert: error: {stem" + list);
    ExpectWrongUsage({"convert", "x", "a}.png"}, "convert: error: }" + list);
    ExpectWrongUsage({"resize", "x", "{size}.png", "--scale", "50%"}, "resize: error: {size}" + list);
}

TEST(OutputPattern, TwoOutputsThatAreTheSameAreRefusedBeforeAnyWork) {
    ExpectWrongUsage({"convert", "a/x.tga", "b/x.jpg", "{stem}.png"},
                     "convert: error: a/x.tga and b/x.jpg would both become x.png");
    ExpectWrongUsage({"convert", "a.tga", "b.tga", "./out/../same.{ext}", "--to", "png"},
                     "convert: error: a.tga and b.tga would both become ./out/../same.png");
}

TEST(OutputPattern, AnOutputIsNoOtherInput) {
    ExpectWrongUsage({"convert", "1.png", "0.png", "{index}.png"},
                     "convert: error: 1.png would become 0.png, which is another input");
}

TEST(OutputPattern, NamesDoNotLeadOutOfTheFolderThatThePatternBeginsWith) {
    const TemporaryFolder folder;
    const std::string out = folder / "out";
    ExpectWrongUsage(
        {"convert", "../../etc/x.png", out + "/{dir}/{stem}.png"},
        "convert: error: ../../etc/x.png would become " + out + "/../../etc/x.png, which is not in " + out);
    ExpectWrongUsage({"convert", "../x.tga", "../{dir}/{stem}.png"},
                     "convert: error: ../x.tga would become ../../x.png, which is not in ..");
    EXPECT_EQ(Planned({"convert", "a/../b/x.tga", out + "/{dir}/{stem}.png"}),
              "would write " + out + "/a/../b/x.png\n");
    EXPECT_EQ(Planned({"convert", "/etc/x.tga", out + "/{dir}/{stem}.png"}), "would write " + out + "//etc/x.png\n");
}
