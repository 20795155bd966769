#include "readers/spot/SpotReader.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>

namespace {

using namespace Kavra::Devices;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

/// "q.bil" with the four pixels that "q.hdr" describes.
class SpotProbe : public testing::Test {
protected:
    SpotProbe() {
        mFolder.Write("q.bil", "abcd");
        mFolder.Write("q.hdr", "NCOLS 2\nNROWS 2\n");
    }
    bool Accepts(const char* name) {
        auto files = OpenSpotFiles(Wide(mFolder / name));
        return files && IsSpot(*files);
    }

    TemporaryFolder mFolder;
};

TEST_F(SpotProbe, AnyExtensionLeadsToTheRaster) {
    EXPECT_TRUE(Accepts("q.bil"));
    EXPECT_TRUE(Accepts("q.xyz"));
    EXPECT_TRUE(Accepts("q."));
}

TEST_F(SpotProbe, APathWithoutExtensionDoesNot) {
    EXPECT_FALSE(Accepts("q"));
    EXPECT_FALSE(Accepts("other.bil"));
}

TEST_F(SpotProbe, BothFilesMustBeThere) {
    std::filesystem::remove(mFolder / "q.hdr");
    EXPECT_FALSE(Accepts("q.bil"));
    mFolder.Write("p.hdr", "NCOLS 2\nNROWS 2\n");
    EXPECT_FALSE(Accepts("p.bil"));
}

TEST_F(SpotProbe, TheDataMustNotBeEmptyOrTooShort) {
    mFolder.Write("q.bil", "abc");
    EXPECT_FALSE(Accepts("q.bil"));
    mFolder.Write("q.hdr", "NCOLS 2\nNROWS 2\nTOTALROWBYTES 0\n");
    EXPECT_TRUE(Accepts("q.bil")) << "no bytes needed";
    mFolder.Write("q.bil", "");
    EXPECT_FALSE(Accepts("q.bil")) << "but some must be there";
}

TEST_F(SpotProbe, AHeaderThatIsNotAcceptedMakesNoRaster) {
    mFolder.Write("q.hdr", "NCOLS 2\nNROWS 2\nBYTEORDER MOTOROLA\n");
    EXPECT_FALSE(Accepts("q.bil"));
}

TEST_F(SpotProbe, PipesAmongTheFilesDoNotBlock) {
    std::filesystem::remove(mFolder / "q.hdr");
    ASSERT_EQ(mkfifo((mFolder / "q.hdr").c_str(), 0600), 0);
    EXPECT_FALSE(Accepts("q.bil"));
}

TEST_F(SpotProbe, DataOfMoreThan4GiBIsTaken) {
    std::filesystem::resize_file(mFolder / "q.bil", std::uintmax_t{5} << 30);
    mFolder.Write("q.hdr", "NCOLS 65536\nNROWS 81920\n");
    EXPECT_TRUE(Accepts("q.bil"));
    mFolder.Write("q.hdr", "NCOLS 65536\nNROWS 81921\n");
    EXPECT_FALSE(Accepts("q.bil"));
}

}  // namespace
