// A host calls images by slot. These tests take the function out of the table and call it.

#include "output/ImageFixture.h"
#include "support/CallSlot.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace Kavra::Devices;
using Kavra::Tests::CallSlot;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

namespace {

struct ImageSlots : Kavra::Tests::Images {
    IImage* const image = Host().CreateImage(5, 3, kL8);
    void* const view = image;
};

TEST_F(ImageSlots, OneAndTwoNameTheImage) {
    EXPECT_EQ((CallSlot<void*>(view, 1, OIIOImage::InterfaceID())), view);
    EXPECT_EQ(CallSlot<void*>(view, 2), OIIOImage::InterfaceID());
    CallSlot<void>(view, 3);
}

TEST_F(ImageSlots, ThreeToEightCountAndDelete) {
    const int alive = OIIOImage::NetObjectCount();
    CallSlot<void>(view, 4);
    CallSlot<void>(view, 6, 2);
    EXPECT_EQ(CallSlot<int>(view, 7), 2);
    CallSlot<void>(view, 5);
    EXPECT_EQ(CallSlot<int>(view, 7), 1);
    EXPECT_EQ(CallSlot<int>(view, 8), alive);
    CallSlot<void>(view, 3);
    EXPECT_EQ(OIIOImage::NetObjectCount(), alive - 1);
}

TEST_F(ImageSlots, NineToThirteenTellWhatItIs) {
    EXPECT_EQ(CallSlot<int>(view, 9), 5);
    EXPECT_EQ(CallSlot<int>(view, 10), 3);
    EXPECT_EQ(CallSlot<EFormat>(view, 11), kL8);
    EXPECT_EQ(CallSlot<const wchar_t*>(view, 12), nullptr);
    ImageDescription desc;
    EXPECT_EQ(CallSlot<void*>(view, 13, &desc), nullptr);
    CallSlot<void>(view, 3);
}

TEST_F(ImageSlots, FourteenPastesFifteenSavesSixteenReads) {
    const TemporaryFolder folder;
    const void* const source = image;
    EXPECT_TRUE((CallSlot<bool, const void*, int, int, int, int, int, int>(view, 14, source, 0, 0, 1, 1, 4, 2)));
    EXPECT_FALSE((CallSlot<bool, const void*, int, int, int, int, int, int>(view, 14, source, 0, 0, 1, 1, 5, 2)));
    const KString path = Wide(folder / "x.png");
    EXPECT_TRUE((CallSlot<bool, const KString*>(view, 15, &path)));
    EXPECT_TRUE(std::filesystem::exists(folder / "x.png"));

    using Size = Kavra::vec2<int>;
    ImageDescription desc;
    auto* const block = CallSlot<IMemoryWrapper<void>*, ImageDescription*, Size, Size, Size, EFormat, EDataOrientation>(
        view, 16, &desc, {1, 1}, {2, 2}, {2, 2}, kL8, kTopLeft);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.dataSize, 4U);
    block->Delete();
    CallSlot<void>(view, 3);
}

}  // namespace
