// File names are bytes. These are no UTF-8: Latin-1 letters, and bytes that no encoding has.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;

namespace {

const std::string kStem = "caf\xE9 \xFF\xC0\xAF";

/// A copy of a sample under a name that is no text.
std::filesystem::path Renamed(const TemporaryFolder& folder, const std::filesystem::path& sample) {
    return folder.Write(kStem + sample.extension().string(), ReadAll(sample));
}

}  // namespace

TEST(ByteNames, FilesOfEveryKindAreDescribedAndLoadedAsUnderOtherNames) {
    const TemporaryFolder folder;
    (void)Renamed(folder, Sample("bands/height.hdr"));  // until the environment map takes its name
    for (const std::string name : {"bands/height.bil", "photo.jpg", "photo-16bit.png", "float.tif", "rgba.exr",
                                   "spinner.gif", "cube.dds", "bc1.dds", "photo.pcx", "photo.pict", "studio.hdr"}) {
        const auto path = Renamed(folder, Sample(name));
        std::string described = ExpectDone({"info", Sample(name)});
        described.replace(0, Sample(name).string().size(), path.string());
        EXPECT_EQ(ExpectDone({"info", path}), described);
        EXPECT_EQ(Dumped(path), Dumped(Sample(name))) << name;
    }
}

TEST(ByteNames, FilesOfEveryKindAreWrittenIntoSuchFolders) {
    const TemporaryFolder folder;
    for (const std::string extension : {".png", ".tif", ".jpg", ".webp", ".exr", ".dds", ".bmp"}) {
        const auto out = folder / (kStem + extension) / (kStem + extension);
        ExpectDone({"convert", Sample("photo.jpg"), out});
        ExpectDone({"info", out});
    }
}

TEST(ByteNames, JsonOfThemIsValidAndHasAReplacementForEachLostByte) {
    const TemporaryFolder folder;
    const auto path = Renamed(folder, Sample("grey.png"));
    const auto missing = folder / "none\xE9.png";
    const Json json =
        Json::parse(ExpectFailed({"info", path, missing, "--json"}, ErrorLine(missing, "there is no such file")));
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["width"], 480);
    EXPECT_EQ(json[0]["file"], (folder / "caf\xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD.png").string());
    EXPECT_EQ(json[1]["file"], (folder / "none\xEF\xBF\xBD.png").string());
}

TEST(ByteNames, MessagesHaveTheBytesThemselves) {
    const TemporaryFolder folder;
    const auto path = folder / (kStem + ".png");
    ExpectFailed({"info", path}, ErrorLine(path, "there is no such file"));
}

TEST(ByteNames, WhatATerminalWouldObeyIsWrittenOut) {
    const TemporaryFolder folder;
    const std::string name = "a\nkavra: b\x1B[2J\xE9.png", shown = (folder / "a\\nkavra: b\\x1B[2J\xE9.png").string();
    const auto missing = folder / ("no" + name), there = folder.Write(name, ReadAll(Sample("grey.png")));
    ExpectFailed({"info", missing}, ErrorLine(folder / "noa\\nkavra: b\\x1B[2J\xE9.png", "there is no such file"));
    EXPECT_TRUE(ExpectDone({"info", there}).starts_with(shown + ": 480 x 320"));
    EXPECT_EQ(ExpectDone({"check", there}), shown + ": ok (480 x 320, png)\n");
    EXPECT_TRUE(ExpectDone({"compare", there, there}).starts_with(shown + " and " + shown + ": all"));
}
