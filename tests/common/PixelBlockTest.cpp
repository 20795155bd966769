#include "common/PixelBlock.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Kavra::Common {
namespace {

using Objects::ObjModel;

TEST(PixelBlock, FreesItselfUnlessItIsHandedOn) {
    const std::size_t before = ObjModel::BlockCounters().liveBlocks;
    NewBlock(100).reset();
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
    unsigned char* const handedOn = NewBlock(100).release();
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before + 1);
    Objects::KavraDelete(handedOn);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
}

TEST(PixelBlock, MayBeZeroed) {
    const PixelBlock block = NewZeroedBlock(1000);
    EXPECT_EQ(std::count(block.get(), block.get() + 1000, 0), 1000);
}

TEST(PixelBlock, MayHaveNoBytes) {
    EXPECT_NE(NewBlock(0), nullptr);
}

}  // namespace
}  // namespace Kavra::Common
