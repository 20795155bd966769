#include "common/Limits.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/ImageLimits.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace {

using namespace Kavra::Common;
using Kavra::Devices::SetImageLimits;
using Kavra::Objects::ObjModel;
using Kavra::Tests::TemporaryFolder;

constexpr std::uint64_t kMax64 = ~std::uint64_t{0};
constexpr std::int64_t kMaxSigned = 0x7FFFFFFFFFFFFFFF;
constexpr std::uint64_t kGiB = std::uint64_t{1} << 30;

TEST(Sizes, SumsAndProductsStopAtTheLargestNumber) {
    EXPECT_EQ(Sum(2, 3), 5);
    EXPECT_EQ(Sum(kMaxSigned, 0), kMaxSigned);
    EXPECT_EQ(Sum(kMaxSigned, 1), kMaxSigned);
    EXPECT_EQ(Sum<std::uint64_t>(kMax64 - 1, 1), kMax64);
    EXPECT_EQ(Sum<std::uint64_t>(kMax64 - 1, 2), kMax64);
    EXPECT_EQ(Product(0x7FFFFFFF, 0x7FFFFFFF), 0x3FFFFFFF00000001) << "in 64 bits, whatever the numbers are";
    EXPECT_EQ(Product(0, kMaxSigned), 0);
    EXPECT_EQ(Product(kMaxSigned, 0), 0);
    EXPECT_EQ(Product(kMaxSigned / 2, 2), kMaxSigned - 1);
    EXPECT_EQ(Product(kMaxSigned / 2 + 1, 2), kMaxSigned);
    EXPECT_EQ(Product<std::uint64_t>(std::uint64_t{1} << 32, std::uint64_t{1} << 32), kMax64);
}

TEST(Sizes, AFileHoldsPartsThatItIsLongEnoughFor) {
    EXPECT_TRUE(CanHold(20, 10, 2));
    EXPECT_FALSE(CanHold(19, 10, 2));
    EXPECT_FALSE(CanHold(1000, kMax64 / 2 + 1, 2)) << "a product that would wrap around";
}

class Bounds : public testing::Test {
protected:
    Bounds() { ObjModel::SetBlockCeiling(std::size_t{1} << 50); }
    ~Bounds() override {
        SetImageLimits({});
        ObjModel::SetBlockCeiling(0);
    }

    static void Set(std::uint64_t maxBytes, std::uint64_t maxPixels) {
        SetImageLimits({.maxBytes = maxBytes, .maxPixels = maxPixels});
    }
    static bool HostHolds(std::uint64_t pixels, std::uint64_t bytes) {
        return HostBounds().Hold({.pixels = pixels, .blockBytes = bytes});
    }
};

TEST_F(Bounds, AHostThatSaysNothingBindsNothing) {
    EXPECT_TRUE(HostHolds(kMax64, kMax64));
}

TEST_F(Bounds, WhatAHostSaysHoldsToTheByteAndThePixel) {
    Set(1000, 0);
    EXPECT_TRUE(HostHolds(kMax64, 1000));
    EXPECT_FALSE(HostHolds(1, 1001));
    Set(0, 50);
    EXPECT_TRUE(HostHolds(50, kMax64));
    EXPECT_FALSE(HostHolds(51, 1));
    Set(1000, 50);
    EXPECT_TRUE(HostHolds(50, 1000));
    EXPECT_FALSE(HostHolds(51, 1000));
    EXPECT_FALSE(HostHolds(50, 1001));
}

TEST_F(Bounds, WhatDecodingNeedsCountsBesideTheBlock) {
    Set(1000, 0);
    EXPECT_TRUE(HostBounds().Hold({.pixels = 1, .blockBytes = 600, .workingBytes = 400}));
    EXPECT_FALSE(HostBounds().Hold({.pixels = 1, .blockBytes = 600, .workingBytes = 401}));
    EXPECT_FALSE(HostBounds().Hold({.pixels = 1, .blockBytes = 600, .workingBytes = kMax64})) << "no sum wraps around";
}

TEST_F(Bounds, AReaderHas2GiBAndFourBillionPixelsUnlessTheHostSaysOtherwise) {
    EXPECT_EQ(ReaderBounds().bytes, std::min(2 * kGiB, MemoryShare()));
    EXPECT_EQ(ReaderBounds().pixels, 4'000'000'000U);
    Set(3 * kGiB, 0);
    EXPECT_EQ(ReaderBounds().bytes, std::min(3 * kGiB, MemoryShare()));
    EXPECT_EQ(ReaderBounds().pixels, kMax64);
    Set(1000, 0);
    EXPECT_EQ(ReaderBounds().bytes, 1000U);
    Set(0, 1'000'000'000'000);
    EXPECT_EQ(ReaderBounds().bytes, MemoryShare()) << "the host counts pixels instead";
    EXPECT_EQ(ReaderBounds().pixels, 1'000'000'000'000U);
}

TEST_F(Bounds, NobodyHasMoreThanHalfTheMemory) {
    Set(kMax64, kMax64);
    EXPECT_EQ(ReaderBounds().bytes, MemoryShare());
    EXPECT_LT(MemoryShare(), std::uint64_t{1} << 50);
    EXPECT_GT(MemoryShare(), std::uint64_t{1} << 20);
}

TEST_F(Bounds, TheAllocatorsCeilingIsForTheBlockAlone) {
    ObjModel::SetBlockCeiling(4000);
    EXPECT_TRUE(ReaderBounds().Hold({.pixels = 1, .blockBytes = 4000, .workingBytes = 4000}));
    EXPECT_FALSE(ReaderBounds().Hold({.pixels = 1, .blockBytes = 4001}));
}

/// Files as a system shows them about control groups.
class ControlGroups : public testing::Test {
protected:
    void Write(const std::string& path, const std::string& text) {
        std::filesystem::create_directories((folder / path).parent_path());
        std::ofstream(folder / path) << text;
    }
    std::optional<std::uint64_t> Memory() const { return ControlGroupMemory(folder.Path()); }

    TemporaryFolder folder;
};

TEST_F(ControlGroups, WithoutAnyNothingIsBound) {
    EXPECT_EQ(Memory(), std::nullopt);
    Write("proc/self/cgroup", "0::/\n");
    EXPECT_EQ(Memory(), std::nullopt);
}

TEST_F(ControlGroups, TheUnifiedHierarchyIsBoundByTheTightestGroupOnTheWayUp) {
    Write("proc/self/cgroup", "0::/system.slice/host.service\n");
    Write("sys/fs/cgroup/system.slice/host.service/memory.max", "max\n");
    EXPECT_EQ(Memory(), std::nullopt);
    Write("sys/fs/cgroup/system.slice/memory.max", "3000000000\n");
    EXPECT_EQ(Memory(), 3'000'000'000U);
    Write("sys/fs/cgroup/system.slice/host.service/memory.max", "5000000000\n");
    EXPECT_EQ(Memory(), 3'000'000'000U);
    Write("sys/fs/cgroup/system.slice/host.service/memory.max", "1000000\n");
    EXPECT_EQ(Memory(), 1'000'000U);
}

TEST_F(ControlGroups, TheOlderHierarchyOfTheMemoryControllerCounts) {
    Write("proc/self/cgroup", "9:name=systemd:/\n8:cpu,memory:/box/inner\n7:memory2:/other\n");
    Write("sys/fs/cgroup/memory/box/memory.limit_in_bytes", "2000000\n");
    Write("sys/fs/cgroup/memory/other/memory.limit_in_bytes", "5\n");
    EXPECT_EQ(Memory(), 2'000'000U);
    Write("sys/fs/cgroup/memory/memory.limit_in_bytes", "9223372036854771712\n");
    EXPECT_EQ(Memory(), 2'000'000U);
}

TEST_F(ControlGroups, InsideAContainerTheMountItselfIsTheGroup) {
    Write("proc/self/cgroup", "4:memory:/outer/path/of/the/machine\n0::/another\n");
    Write("sys/fs/cgroup/memory/memory.limit_in_bytes", "4000000\n");
    EXPECT_EQ(Memory(), 4'000'000U);
    Write("sys/fs/cgroup/memory.max", "3000000\n");
    EXPECT_EQ(Memory(), 3'000'000U);
}

TEST_F(ControlGroups, WhatCannotBeReadBindsNothing) {
    Write("proc/self/cgroup", "nonsense\n0:\n::\n0::/a\n4:memory\n4:memory:../../b\n\n");
    Write("sys/fs/cgroup/a/memory.max", "12 monkeys");
    EXPECT_EQ(Memory(), 12U) << "the first word counts";
    for (const char* text : {"", "max", "-1", "0", "0x10", "1e9", "99999999999999999999999", "\n\n", "12monkeys"}) {
        Write("sys/fs/cgroup/a/memory.max", text);
        EXPECT_EQ(Memory(), std::nullopt) << text;
    }
    std::filesystem::remove(folder / "sys/fs/cgroup/a/memory.max");
    std::filesystem::create_directories(folder / "sys/fs/cgroup/a/memory.max");
    EXPECT_EQ(Memory(), std::nullopt) << "a folder";
}

}  // namespace
