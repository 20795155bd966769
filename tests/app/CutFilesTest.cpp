// Files that end before all of their picture: what commands make of them.

#include "app/Answers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Tests;

namespace {

/// A sample without the last two fifths of its bytes.
std::filesystem::path Cut(const TemporaryFolder& folder, const std::string& sample) {
    std::vector<unsigned char> bytes = ReadAll(Sample(sample));
    bytes.resize(bytes.size() * 3 / 5);
    return folder.Write("cut" + std::filesystem::path(sample).extension().string(), bytes);
}

const std::vector<std::string> kSamples = {"photo.jpg",     "grey.png",  "tiled.tif",
                                           "softboxes.exr", "photo.dds", "photo.pcx"};

}  // namespace

TEST(CutFiles, FailWithTheRowsThatAreThereAndLeaveNothing) {
    for (const std::string& sample : kSamples) {
        const TemporaryFolder folder;
        const auto cut = Cut(folder, sample);
        const ProgramResult result = RunKavra({"convert", cut, folder / "out.png"});
        EXPECT_EQ(result.status, 1) << sample;
        EXPECT_TRUE(result.error.contains(cut.string() + ": error: ends early: ")) << sample << ": " << result.error;
        EXPECT_TRUE(result.error.contains(" rows are there")) << sample << ": " << result.error;
        EXPECT_FALSE(std::filesystem::exists(folder / "out.png")) << sample;
    }
}

TEST(CutFiles, AreTakenAsFarAsTheyGoWhereThatIsAccepted) {
    // What the host is given of these; of the others it is given nothing.
    for (const std::string sample : {"photo.jpg", "photo.pcx"}) {
        const TemporaryFolder folder;
        const auto cut = Cut(folder, sample);
        const ProgramResult result = RunKavra({"convert", cut, folder / "out.png", "--accept-partial"});
        EXPECT_EQ(result.status, 0) << sample << ": " << result.error;
        EXPECT_TRUE(result.error.contains(cut.string() + ": warning: ends early: ")) << sample << ": " << result.error;
        EXPECT_TRUE(result.error.contains("; what is there was taken")) << sample << ": " << result.error;
        EXPECT_EQ(Described(folder / "out.png")["height"], Described(Sample(sample))["height"]) << sample;
    }
}

TEST(CutFiles, AreBadInACheck) {
    const TemporaryFolder folder;
    for (const std::string& sample : kSamples) {
        const auto cut = Cut(folder, sample);
        const ProgramResult result = RunKavra({"check", cut, Sample(sample), "--json"});
        EXPECT_EQ(result.status, 1) << sample;
        const Json files = Json::parse(result.out);
        ASSERT_EQ(files.size(), 2U) << sample;
        EXPECT_EQ(files[0]["status"], "bad") << sample;
        EXPECT_EQ(files[0]["kind"], "endsEarly") << sample << ": " << files[0];
        EXPECT_EQ(files[1]["status"], "ok") << sample << ": " << files[1];
    }
}
