#include <kavra/oiio/OIIOImageHandler.h>

#include "support/MessageRecorder.h"

#include <gtest/gtest.h>
#include <kavra/objects/ObjModel.h>

#include <type_traits>

namespace {

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;
using Kavra::Tests::MessageRecorder;

int Count() {
    return OIIOImageHandler::NetObjectCount();
}

TEST(Handler, CountsOneForEachConstruction) {
    const int before = Count();
    {
        const OIIOImageHandler handler;
        EXPECT_EQ(Count(), before + 1);
        const OIIOImageHandler copy(handler);
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

TEST(Handler, HoldsNothingButItsTwoViews) {
    EXPECT_EQ(sizeof(OIIOImageHandler), 2 * sizeof(void*));
    EXPECT_EQ(sizeof(OIIOImageHandler), sizeof(IImageHandler));
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

ImageDescription TwoPixels(ETextureType type) {
    ImageDescription desc;
    desc.width = 2;
    desc.height = 1;
    desc.depth = 1;
    desc.format = kR32G32B32A32F;
    desc.rowPitch = 32;
    desc.dataSize = 32;
    desc.textureType = type;
    return desc;
}

TEST(AverageColor, IsTheMeanOfATwoDimensionalTexture) {
    const float pixels[] = {1, 2, 3, 1, 3, 6, 9, 0};
    OIIOImageHandler handler;
    const auto colour = handler.GetAverageColor(TwoPixels(kTexture2D), pixels, false);
    EXPECT_EQ(colour.x, 2);
    EXPECT_EQ(colour.y, 4);
    EXPECT_EQ(colour.z, 6);
    EXPECT_EQ(colour.w, 0.5F);
}

TEST(AverageColor, IsZeroForCubesVolumesAndEverythingElse) {
    const float pixels[8 * 6] = {1, 2, 3, 1, 3, 6, 9, 1};
    OIIOImageHandler handler;
    for (const ETextureType type : {kTextureUnknown, kTexture1D, kTextureCube, kTextureVolume}) {
        const auto colour = handler.GetAverageColor(TwoPixels(type), pixels, false);
        EXPECT_TRUE(colour.x == 0 && colour.y == 0 && colour.z == 0 && colour.w == 0) << type;
    }
}

TEST(AverageColor, OfAPathIsNotHiddenByTheOneOfPixels) {
    OIIOImageHandler handler;
    const MessageRecorder messages;
    const auto colour = handler.GetAverageColor(KString(L"missing.xyz"), false);
    EXPECT_EQ(colour.x + colour.y + colour.z + colour.w, 0);
}

TEST(UnofferedOperations, AnswerWithTheirNoAnswerInSilence) {
    OIIOImageHandler handler;
    const MessageRecorder messages;
    const ImageDescription desc = TwoPixels(kTexture2D);
    const float pixels[8] = {};
    Kavra::vec3<float> average{7, 7, 7};

    const auto intensity = handler.GetIBLIntensity(desc, pixels, false, &average);
    EXPECT_EQ(intensity.x, -999);
    EXPECT_EQ(intensity.y, -999);
    EXPECT_EQ(intensity.z, -999);
    EXPECT_EQ(average.x, 7);
    EXPECT_EQ(handler.FindIBLLightDirections(desc, pixels, &average, &average, 1), 0U);
    EXPECT_EQ(handler.CreateImage(4, 4, kR8G8B8A8), nullptr);
    EXPECT_EQ(handler.CreateImage(static_cast<ATarget*>(nullptr)), nullptr);
    EXPECT_EQ(handler.CreateImage(static_cast<ASimpleTexture*>(nullptr)), nullptr);
    EXPECT_TRUE(messages.Texts().empty());
}

}  // namespace
