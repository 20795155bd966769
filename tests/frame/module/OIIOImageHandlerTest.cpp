#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;

int Count() {
    return OIIOImageHandler::NetObjectCount();
}

TEST(Handler, CountsOneForEachConstruction) {
    const int before = Count();
    {
        const OIIOImageHandler handler;
        EXPECT_EQ(Count(), before + 1);
        const OIIOImageHandler copy(handler);  // NOLINT(performance-unnecessary-copy-initialization): it is counted
        EXPECT_EQ(Count(), before + 2);
    }
    EXPECT_EQ(Count(), before);
}

TEST(Handler, AssignmentAndCloneLeaveTheCountAlone) {
    OIIOImageHandler handler, other;
    const int before = Count();
    other = handler;
    EXPECT_EQ(Count(), before);
    (void)handler.Clone();
    EXPECT_EQ(Count(), before);
}

TEST(Handler, IsItsOwnClone) {
    OIIOImageHandler handler;
    EXPECT_EQ(handler.Clone(), static_cast<IClone*>(&handler));
}

TEST(Handler, TellsTheCountInEveryWay) {
    const OIIOImageHandler handler;
    EXPECT_EQ(handler.CurObjectCount(), Count());
    EXPECT_EQ(OIIOImageHandler::mNetObjectCount, Count());
    OIIOImageHandler::IncreaseNetObjectCount();
    EXPECT_EQ(OIIOImageHandler::mNetObjectCount, handler.CurObjectCount());
    OIIOImageHandler::DecreaseNetObjectCount();
    EXPECT_EQ(OIIOImageHandler::mNetObjectCount, handler.CurObjectCount());
}

TEST(Handler, HoldsNothingButItsFourViews) {
    EXPECT_EQ(sizeof(OIIOImageHandler), 4 * sizeof(void*));
    EXPECT_EQ(sizeof(OIIOImageHandler), sizeof(IImageHandler) + sizeof(IImageInspector) + sizeof(IMemoryLoader));
}

TEST(Handler, LivesOnTheHostsHeap) {
    const auto before = ObjModel::ObjectCounters().liveBlocks;
    auto* const handler = new OIIOImageHandler;
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before + 1);
    handler->Delete();
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before);
}

TEST(Handler, SetsTheThreeLibraryAttributesInEveryConstruction) {
    const OIIOImageHandler first;
    for (const char* name : {"openexr:core", "oiio:print_uncaught_errors", "imagebuf:print_uncaught_errors"}) {
        OIIO::attribute(name, 1);
        const OIIOImageHandler second;
        EXPECT_EQ(OIIO::get_int_attribute(name, -1), 0) << name;
    }
}

}  // namespace
