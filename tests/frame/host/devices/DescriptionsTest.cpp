#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <new>

using Kavra::Devices::IDelete;
using Kavra::Devices::ImageDesc;
using Kavra::Devices::ImageDescription;
using Kavra::Objects::ObjModel;

namespace {

TEST(ImageDescription, EveryFieldStartsAtZeroWhateverWasThereBefore) {
    alignas(ImageDescription) unsigned char place[sizeof(ImageDescription)];
    std::memset(place, 0xA5, sizeof place);
    const auto* desc = new (place) ImageDescription;
    EXPECT_EQ(desc->width, 0);
    EXPECT_EQ(desc->height, 0);
    EXPECT_EQ(desc->depth, 0);
    EXPECT_EQ(desc->format, Kavra::Devices::kUnknown);
    EXPECT_EQ(desc->rowPitch, 0);
    EXPECT_EQ(desc->dataSize, 0U);
    EXPECT_EQ(desc->textureType, Kavra::Devices::kTextureUnknown);
    EXPECT_FALSE(desc->hasTransparentPixels);
    EXPECT_FALSE(desc->hasTranslucentPixels);
    EXPECT_FALSE(desc->hasAlpha);
    EXPECT_FALSE(desc->defaultOrientation);
    EXPECT_EQ(desc->orientation, Kavra::Devices::kTopLeft);
    EXPECT_EQ(desc->gamma, 0.0);
}

TEST(ImageDescription, TheFieldsLieInTheContractsOrder) {
    EXPECT_EQ(offsetof(ImageDescription, width), 0U);
    EXPECT_EQ(offsetof(ImageDescription, height), 4U);
    EXPECT_EQ(offsetof(ImageDescription, depth), 8U);
    EXPECT_EQ(offsetof(ImageDescription, format), 12U);
    EXPECT_EQ(offsetof(ImageDescription, rowPitch), 16U);
    EXPECT_EQ(offsetof(ImageDescription, dataSize), 24U);
    EXPECT_EQ(offsetof(ImageDescription, textureType), 32U);
    EXPECT_EQ(offsetof(ImageDescription, hasTransparentPixels), 36U);
    EXPECT_EQ(offsetof(ImageDescription, hasTranslucentPixels), 37U);
    EXPECT_EQ(offsetof(ImageDescription, hasAlpha), 38U);
    EXPECT_EQ(offsetof(ImageDescription, defaultOrientation), 39U);
    EXPECT_EQ(offsetof(ImageDescription, orientation), 40U);
    EXPECT_EQ(offsetof(ImageDescription, gamma), 48U);
    EXPECT_EQ(sizeof(ImageDescription), 56U);
}

TEST(ImageDesc, EveryFieldStartsAtZeroWhateverWasThereBefore) {
    alignas(ImageDesc) unsigned char place[sizeof(ImageDesc)];
    std::memset(place, 0xA5, sizeof place);
    auto* desc = ::new (static_cast<void*>(place)) ImageDesc;
    EXPECT_EQ(desc->width, 0);
    EXPECT_EQ(desc->height, 0);
    EXPECT_EQ(desc->depth, 0);
    EXPECT_EQ(desc->format, Kavra::Devices::kUnknown);
    EXPECT_EQ(desc->textureType, Kavra::Devices::kTextureUnknown);
    EXPECT_EQ(desc->frameCount, 0);
    EXPECT_EQ(desc->orientation, Kavra::Devices::kTopLeft);
    EXPECT_EQ(desc->gamma, 0.0);
    desc->~ImageDesc();
}

TEST(ImageDesc, DeleteThroughTheBaseGivesTheObjectBackToTheHostsHeap) {
    const std::size_t before = ObjModel::ObjectCounters().liveBlocks;
    IDelete* desc = new ImageDesc;
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before + 1);
    desc->Delete();
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, before);
}

}  // namespace
