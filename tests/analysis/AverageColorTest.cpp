#include "support/MessageRecorder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Tests::MessageRecorder;

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

TEST(AverageColor, TakesEveryFormatInItsOwnOrderAndRange) {
    const unsigned char bytes[] = {255, 0, 51, 102};
    ImageDescription desc = TwoPixels(kTexture2D);
    desc.width = 1;
    desc.rowPitch = 4;
    desc.format = kB8G8R8A8;
    OIIOImageHandler handler;
    const auto colour = handler.GetAverageColor(desc, bytes, true);
    EXPECT_FLOAT_EQ(colour.x, 0.2F);
    EXPECT_FLOAT_EQ(colour.y, 0);
    EXPECT_FLOAT_EQ(colour.z, 1);
    EXPECT_FLOAT_EQ(colour.w, 0.4F);
}

TEST(AverageColor, WithoutPixelsItIsZero) {
    OIIOImageHandler handler;
    const auto colour = handler.GetAverageColor(TwoPixels(kTexture2D), nullptr, false);
    EXPECT_TRUE(colour.x == 0 && colour.y == 0 && colour.z == 0 && colour.w == 0);
}

}  // namespace
