#include "frame/host/devices/HandlerDouble.h"

#include <kavra/devices/MemoryTexture.h>
#include <kavra/devices/Sys.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;

namespace {

/// Notes what it is asked to save.
class SavingDouble final : public Kavra::Tests::HandlerDouble {
public:
    SavingDouble() : mPrevious(Sys::SetImageHandler(this)) {}
    ~SavingDouble() override { Sys::SetImageHandler(mPrevious); }

    bool SaveTexture(const KString& path, const ImageDescription& desc, const void* data) override {
        savedPath = path.ToChars();
        savedDesc = desc;
        savedData = data;
        return answer;
    }

    bool answer = true;
    std::wstring savedPath;
    ImageDescription savedDesc;
    const void* savedData = nullptr;

private:
    IImageHandler* mPrevious;
};

TEST(MemoryTexture, TheLastReferenceDestroysTheTexture) {
    const std::size_t objects = ObjModel::ObjectCounters().liveBlocks;
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    auto* const texture = new MemoryTexture(2, 2, kL8);
    EXPECT_EQ(texture->RefCount(), 0);
    texture->AddRef();
    texture->AddRef();
    EXPECT_EQ(texture->RefCount(), 2);
    texture->ReleaseRef();
    EXPECT_EQ(texture->RefCount(), 1);
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objects + 1);
    texture->ReleaseRef();
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objects);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
}

TEST(MemoryTexture, ThePixelsAreMappedWithTheirPitch) {
    MemoryTexture texture(2, 2, kR8G8B8A8, 12);
    EXPECT_EQ(texture.Width(), 2);
    EXPECT_EQ(texture.Height(), 2);
    EXPECT_EQ(texture.Format(), kR8G8B8A8);
    texture.Pixels()[12] = 5;
    int pitch = 0;
    IMappedMemory* const wrapper = texture.MemoryWrapper(0);
    EXPECT_EQ(static_cast<unsigned char*>(wrapper->Map(kMapRead, pitch))[12], 5);
    EXPECT_EQ(pitch, 12);
    EXPECT_EQ(texture.MapCount(), 1);
    EXPECT_EQ(texture.WrapperCount(), 1);
    wrapper->Unmap();
    wrapper->Release();
    EXPECT_EQ(texture.MapCount(), 0);
    EXPECT_EQ(texture.WrapperCount(), 0);
}

TEST(MemoryTexture, SavingHandsTheWholeDescriptionToTheHostsImageHandler) {
    SavingDouble handler;
    MemoryTexture texture(3, 2, kR16F, 8);
    EXPECT_TRUE(texture.Save(L"folder/name.exr"));
    EXPECT_EQ(handler.savedPath, L"folder/name.exr");
    EXPECT_EQ(handler.savedData, texture.Pixels());
    EXPECT_EQ(handler.savedDesc.width, 3);
    EXPECT_EQ(handler.savedDesc.height, 2);
    EXPECT_EQ(handler.savedDesc.depth, 1);
    EXPECT_EQ(handler.savedDesc.format, kR16F);
    EXPECT_EQ(handler.savedDesc.rowPitch, 8);
    EXPECT_EQ(handler.savedDesc.dataSize, 16U);
    EXPECT_EQ(handler.savedDesc.textureType, kTexture2D);
    EXPECT_TRUE(handler.savedDesc.defaultOrientation);
    EXPECT_EQ(handler.savedDesc.gamma, 2.2);
    handler.answer = false;
    EXPECT_FALSE(texture.Save(L"other.exr"));
}

TEST(MemoryTexture, WithoutAnImageHandlerNothingIsSaved) {
    MemoryTexture texture(1, 1, kL8);
    EXPECT_FALSE(texture.Save(L"name.png"));
}

TEST(MemoryTexture, ImpossiblePicturesAreRefused) {
    EXPECT_THROW(MemoryTexture(0, 1, kL8), std::invalid_argument);
    EXPECT_THROW(MemoryTexture(2, 1, kR32F, 7), std::invalid_argument);
}

}  // namespace
