#include <kavra/objects/Toolkit.h>

#include <gtest/gtest.h>

namespace Kavra::Objects {
namespace {

class HostVersion : public testing::Test {
protected:
    ~HostVersion() override { Toolkit::SetHostVersion(mBefore); }

private:
    Version mBefore = Toolkit::HostVersion();
};

TEST_F(HostVersion, Is17_1_2_0UnlessTheProgramSaysOtherwise) {
    const Version host = Toolkit::HostVersion();
    EXPECT_EQ(host.major, 17);
    EXPECT_EQ(host.minor, 1);
    EXPECT_EQ(host.patch, 2);
    EXPECT_EQ(host.build, 0);
    EXPECT_TRUE(Toolkit::CheckCompatibleVersion(17, 1, 2, 0));
}

TEST_F(HostVersion, AModuleForTheSameOrAnOlderPatchMayRun) {
    Toolkit::SetHostVersion({17, 1, 2, 5});
    EXPECT_TRUE(Toolkit::CheckCompatibleVersion(17, 1, 2, 5));
    EXPECT_TRUE(Toolkit::CheckCompatibleVersion(17, 1, 2, 4));
    EXPECT_TRUE(Toolkit::CheckCompatibleVersion(17, 1, 1, 9)) << "a build counts within its patch only";
    EXPECT_TRUE(Toolkit::CheckCompatibleVersion(17, 1, 0, 0));
}

TEST_F(HostVersion, AModuleForANewerPatchOrBuildMayNot) {
    Toolkit::SetHostVersion({17, 1, 2, 5});
    EXPECT_FALSE(Toolkit::CheckCompatibleVersion(17, 1, 2, 6));
    EXPECT_FALSE(Toolkit::CheckCompatibleVersion(17, 1, 3, 0));
}

TEST_F(HostVersion, AModuleForAnotherMajorOrMinorMayNot) {
    EXPECT_FALSE(Toolkit::CheckCompatibleVersion(16, 1, 2, 0));
    EXPECT_FALSE(Toolkit::CheckCompatibleVersion(18, 1, 2, 0));
    EXPECT_FALSE(Toolkit::CheckCompatibleVersion(17, 0, 2, 0));
    EXPECT_FALSE(Toolkit::CheckCompatibleVersion(17, 2, 2, 0));
}

TEST(DLLVersionCheck, RemembersWhatTheModuleWasBuiltAgainst) {
    const DLLVersionCheck check(1, 2, 3, 4);
    EXPECT_EQ(check.BuiltAgainst().major, 1);
    EXPECT_EQ(check.BuiltAgainst().minor, 2);
    EXPECT_EQ(check.BuiltAgainst().patch, 3);
    EXPECT_EQ(check.BuiltAgainst().build, 4);
}

}  // namespace
}  // namespace Kavra::Objects
