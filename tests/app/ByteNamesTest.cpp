// File names are bytes. These are no UTF-8: Latin-1 letters, and bytes that no encoding has.

#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

using namespace Kavra::Tests;
using Json = nlohmann::json;

namespace {

const std::string kStem = "caf\xE9 \xFF\xC0\xAF";

/// A copy of a sample under a name that is no text.
std::filesystem::path Renamed(const TemporaryFolder& folder, const std::filesystem::path& sample) {
    return folder.Write(kStem + sample.extension().string(), ReadAll(sample));
}

}  // namespace

TEST(ByteNames, FilesOfEveryKindAreDescribedAndLoaded) {
    const TemporaryFolder folder;
    (void)Renamed(folder, Sample("bands/height.hdr"));  // until the environment map takes its name
    for (const std::string name : {"bands/height.bil", "photo.jpg", "photo-16bit.png", "float.tif", "rgba.exr",
                                   "spinner.gif", "cube.dds", "bc1.dds", "photo.pcx", "photo.pict", "studio.hdr"}) {
        const auto path = Renamed(folder, Sample(name));
        const ProgramResult described = RunKavra({"info", path});
        EXPECT_EQ(described.status, 0) << name << described.error;
        EXPECT_TRUE(described.out.starts_with(path.string() + ": ")) << described.out;
        const ProgramResult loaded = RunKavra({"dump", path, "--out", folder / (kStem + ".block")});
        EXPECT_EQ(loaded.status, 0) << name << loaded.error;
        EXPECT_FALSE(ReadAll(folder / (kStem + ".block")).empty()) << name;
    }
}

TEST(ByteNames, FilesOfEveryKindAreWrittenIntoSuchFolders) {
    const TemporaryFolder folder;
    for (const std::string extension : {".png", ".tif", ".jpg", ".webp", ".exr", ".dds", ".bmp"}) {
        const auto out = folder / (kStem + extension) / (kStem + extension);
        const ProgramResult result = RunKavra({"convert", Sample("photo.jpg"), out});
        EXPECT_EQ(result.status, 0) << extension << result.error;
        EXPECT_EQ(RunKavra({"info", out}).status, 0) << extension;
    }
}

TEST(ByteNames, JsonOfThemIsValidAndHasAReplacementForEachLostByte) {
    const TemporaryFolder folder;
    const auto path = Renamed(folder, Sample("grey.png"));
    const ProgramResult result = RunKavra({"info", path, folder / "none\xE9.png", "--json"});
    EXPECT_EQ(result.status, 1);
    const Json json = Json::parse(result.out);  // throws when it is not valid
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["width"], 480);
    EXPECT_EQ(json[0]["file"], (folder / "caf\xEF\xBF\xBD \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD.png").string());
    EXPECT_EQ(json[1]["file"], (folder / "none\xEF\xBF\xBD.png").string());
}

TEST(ByteNames, MessagesHaveTheBytesThemselves) {
    const TemporaryFolder folder;
    const auto path = folder / (kStem + ".png");
    EXPECT_EQ(RunKavra({"info", path}).error, "kavra: " + path.string() + ": error: cannot be read\n");
}
