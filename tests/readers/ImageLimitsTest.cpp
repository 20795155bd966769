#include "readers/ImageLimits.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;

constexpr std::uint64_t kLargeFile = std::uint64_t{1} << 40;
constexpr int kMost = std::numeric_limits<int>::max();

/// The machine that runs the tests may have less memory than the sizes here.
class ImageLimits : public testing::Test {
protected:
    ImageLimits() { ObjModel::SetBlockCeiling(std::size_t{1} << 50); }
    ~ImageLimits() override { ObjModel::SetBlockCeiling(0); }
};

TEST_F(ImageLimits, ASideIsFromOneToAMillion) {
    EXPECT_TRUE(WithinLimits(1, 1, 1, 0));
    EXPECT_FALSE(WithinLimits(0, 1, 4, kLargeFile));
    EXPECT_FALSE(WithinLimits(1, 0, 4, kLargeFile));
    EXPECT_FALSE(WithinLimits(-1, 1, 4, kLargeFile));
    EXPECT_FALSE(WithinLimits(1, -1, 4, kLargeFile));
    EXPECT_TRUE(WithinLimits(1'000'000, 1, 4'000'000, kLargeFile));
    EXPECT_FALSE(WithinLimits(1'000'001, 1, 4'000'004, kLargeFile));
    EXPECT_TRUE(WithinLimits(1, 1'000'000, 4, kLargeFile));
    EXPECT_FALSE(WithinLimits(1, 1'000'001, 4, kLargeFile));
    EXPECT_FALSE(WithinLimits(kMost, kMost, kMost, kLargeFile));
    EXPECT_FALSE(WithinLimits(1, 1, 0, kLargeFile));
    EXPECT_FALSE(WithinLimits(1, 1, -4, kLargeFile));
}

TEST_F(ImageLimits, UpTo256MiBAreForAnyFile) {
    EXPECT_TRUE(WithinLimits(8192, 8192, 32768, 0));
    EXPECT_FALSE(WithinLimits(8192, 8193, 32768, 0));
    EXPECT_FALSE(WithinLimits(8192, 8193, 32768, 2048)) << "a small file";
}

TEST_F(ImageLimits, MoreIsForAtMost32768TimesTheFile) {
    // 19,866 x 28,087 pixels of 4 bytes are 2,231,905,368 bytes; divided by 32,768 that is a little above 68,112.
    EXPECT_TRUE(WithinLimits(19'866, 28'087, 79'464, 68'113));
    EXPECT_FALSE(WithinLimits(19'866, 28'087, 79'464, 68'112));
    EXPECT_TRUE(WithinLimits(32'768, 32'768, 131'072, 131'072)) << "exactly 32,768 times";
    EXPECT_FALSE(WithinLimits(32'768, 32'768, 131'072, 131'071));
}

TEST_F(ImageLimits, TheAllocatorsCeilingHoldsForAllFiles) {
    ObjModel::SetBlockCeiling(4000);
    EXPECT_TRUE(WithinLimits(10, 100, 40, kLargeFile));
    EXPECT_FALSE(WithinLimits(10, 101, 40, kLargeFile));
}

}  // namespace
