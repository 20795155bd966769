#include <kavra/devices/MemoryTarget.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;

namespace {

TEST(MemoryTarget, ThePixelsStartAtZeroInPackedRows) {
    MemoryTarget target(3, 2, kR16G16B16A16);
    EXPECT_EQ(target.Width(), 3);
    EXPECT_EQ(target.Height(), 2);
    EXPECT_EQ(target.Format(), kR16G16B16A16);
    EXPECT_EQ(target.Pitch(), 24);
    EXPECT_TRUE(std::all_of(target.Pixels(), target.Pixels() + 48, [](unsigned char byte) { return byte == 0; }));
}

TEST(MemoryTarget, APitchOfItsOwnIsKeptAndBacked) {
    MemoryTarget target(3, 2, kR8G8B8A8, 20);
    EXPECT_EQ(target.Pitch(), 20);
    target.Pixels()[39] = 7;  // the last byte of the last row's gap
    int pitch = 0;
    IMappedMemory* const wrapper = target.MemoryWrapper(0);
    EXPECT_EQ(static_cast<unsigned char*>(wrapper->Map(kMapRead, pitch))[39], 7);
    EXPECT_EQ(pitch, 20);
    wrapper->Unmap();
    wrapper->Release();
}

TEST(MemoryTarget, WhatIsWrittenThroughTheWindowIsInThePixels) {
    MemoryTarget target(2, 1, kL8);
    IMappedMemory* const wrapper = target.MemoryWrapper(0);
    int pitch = 0;
    static_cast<unsigned char*>(wrapper->Map(kMapRead | kMapWrite, pitch))[1] = 42;
    wrapper->Unmap();
    wrapper->Release();
    EXPECT_EQ(target.Pixels()[1], 42);
}

TEST(MemoryTarget, MapsAndWrappersAreCounted) {
    MemoryTarget target(1, 1, kL8);
    int pitch = 0;
    IMappedMemory* const first = target.MemoryWrapper(0);
    IMappedMemory* const second = target.MemoryWrapper(0);
    EXPECT_EQ(target.WrapperCount(), 2);
    first->Map(kMapRead, pitch);
    second->Map(kMapWrite, pitch);
    EXPECT_EQ(target.MapCount(), 2);
    first->Unmap();
    first->Release();
    EXPECT_EQ(target.MapCount(), 1);
    EXPECT_EQ(target.WrapperCount(), 1);
    second->Unmap();
    second->Release();
    EXPECT_EQ(target.MapCount(), 0);
    EXPECT_EQ(target.WrapperCount(), 0);
}

TEST(MemoryTarget, AWindowThatIsNeverReleasedLeaksNothing) {
    const std::size_t objects = ObjModel::ObjectCounters().liveBlocks;
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    {
        MemoryTarget target(4, 4, kR32F);
        int pitch = 0;
        EXPECT_NE(target.MemoryWrapper(0)->Map(kMapRead, pitch), nullptr);
        EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks + 1);
    }
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objects);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
}

TEST(MemoryTarget, AFlatTargetHasLayerZeroOnly) {
    MemoryTarget target(1, 1, kL8);
    EXPECT_EQ(target.MemoryWrapper(1), nullptr);
    EXPECT_EQ(target.MemoryWrapper(-1), nullptr);
    EXPECT_EQ(target.WrapperCount(), 0);
}

TEST(MemoryTarget, AnUnknownModeMapsNothing) {
    MemoryTarget target(1, 1, kL8);
    IMappedMemory* const wrapper = target.MemoryWrapper(0);
    int pitch = 99;
    EXPECT_EQ(wrapper->Map(0, pitch), nullptr);
    EXPECT_EQ(wrapper->Map(4, pitch), nullptr);
    EXPECT_EQ(pitch, 99);
    EXPECT_EQ(target.MapCount(), 0);
    wrapper->Release();
}

TEST(MemoryTarget, ImpossiblePicturesAreRefused) {
    EXPECT_THROW(MemoryTarget(0, 1, kL8), std::invalid_argument);
    EXPECT_THROW(MemoryTarget(1, 0, kL8), std::invalid_argument);
    EXPECT_THROW(MemoryTarget(-1, 1, kL8), std::invalid_argument);
    EXPECT_THROW(MemoryTarget(1, 1, kUnknown), std::invalid_argument);
    EXPECT_THROW(MemoryTarget(4, 4, kBC1), std::invalid_argument);
    EXPECT_THROW(MemoryTarget(2, 1, kR8G8B8A8, 7), std::invalid_argument);
    EXPECT_THROW(MemoryTarget(2, 1, kR8G8B8A8, -8), std::invalid_argument);
    EXPECT_THROW(MemoryTarget(std::numeric_limits<int>::max(), 1, kR8G8B8A8), std::invalid_argument);
}

TEST(MemoryTarget, WithoutMemoryTheConstructorThrows) {
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    ObjModel::SetBlockCeiling(1000);
    EXPECT_THROW(MemoryTarget(1001, 1, kL8), std::bad_alloc);
    ObjModel::SetBlockCeiling(0);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
}

}  // namespace
