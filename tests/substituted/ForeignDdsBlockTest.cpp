// Blocks of a host's DDS reader that remember their data by themselves: who frees what, and when.

#include "common/PixelBlock.h"
#include "load/DdsFile.h"
#include "load/TextureFiles.h"
#include "substituted/SubstituteDdsReader.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Objects::ObjModel;
using Bytes = std::vector<unsigned char>;

/// Frees the data that it was made with, whatever its pointer shows by then.
class RememberingBlock final : public IMemoryWrapper<void> {
public:
    explicit RememberingBlock(void* data) : IMemoryWrapper<void>(data), mRemembered(data) {}
    ~RememberingBlock() override {
        Objects::KavraDelete(mRemembered);
        ++deleted;
    }
    void Forget() { mRemembered = nullptr; }

    static inline int deleted = 0;

private:
    void* mRemembered;
};

class ForeignDdsBlock : public testing::Test {
protected:
    ForeignDdsBlock() : mBlocks(ObjModel::BlockCounters().liveBlocks), mObjects(ObjModel::ObjectCounters().liveBlocks) {
        Substitute() = {};
        Substitute().format = kR16G16B16A16;
        Substitute().load = [this](ImageDescription& desc) {
            return Give(desc, {1, 0, 2, 0, 3, 0, 4, 0}, kR16G16B16A16);
        };
        RememberingBlock::deleted = 0;
    }
    ~ForeignDdsBlock() override {
        Substitute() = {};
        EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, mBlocks);
        EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, mObjects);
    }

    IMemoryWrapper<void>* Give(ImageDescription& desc, const Bytes& pixel, EFormat format) {
        desc.width = desc.height = desc.depth = 1;
        desc.format = format;
        desc.rowPitch = static_cast<int>(pixel.size());
        desc.dataSize = pixel.size();
        desc.textureType = kTexture2D;
        Common::PixelBlock data = Common::NewBlock(pixel.size());
        std::ranges::copy(pixel, data.get());
        given = new RememberingBlock(data.release());
        return given;
    }

    /// A layout that the image library does not read, so that the host's reader is asked.
    IMemoryWrapper<void>* Load(EFormat format) {
        DdsFile file{.data = Bytes(8)};
        file.Masks(4, 0, 0).fourCC = 36;
        return handler.LoadTexture(desc, Wide(folder.Write("x.dds", file.Bytes())), 0, 0, 1, format, 0, kTopLeft,
                                   nullptr);
    }

    TemporaryFolder folder;
    OIIOImageHandler handler;
    ImageDescription desc;
    RememberingBlock* given = nullptr;

private:
    std::size_t mBlocks, mObjects;
};

TEST_F(ForeignDdsBlock, IsReturnedAsItIsWhereItsFormatIsTheWantedOne) {
    IMemoryWrapper<void>* const block = Load(kR16G16B16A16);
    ASSERT_EQ(block, given);
    EXPECT_EQ(RememberingBlock::deleted, 0);
    block->Delete();
    EXPECT_EQ(RememberingBlock::deleted, 1);
}

TEST_F(ForeignDdsBlock, HandsItsDataOnAndIsNotDeletedWhereNothingIsConverted) {
    for (const EFormat format : {kUnknown, kA8}) {  // none is asked for; none can be had
        IMemoryWrapper<void>* const block = Load(format);
        ASSERT_NE(block, nullptr);
        ASSERT_NE(block, given);
        EXPECT_EQ(block->mData, given->mData) << "the wrapper stays as it is";
        EXPECT_EQ(static_cast<unsigned char*>(block->mData)[4], 3);
        EXPECT_EQ(desc.format, kR16G16B16A16);
        block->Delete();
        EXPECT_EQ(RememberingBlock::deleted, 0);
        given->Forget();  // the data is gone with the other block
        given->Delete();
        RememberingBlock::deleted = 0;
    }
}

TEST_F(ForeignDdsBlock, IsDeletedOnceItsDataIsConverted) {
    IMemoryWrapper<void>* const block = Load(kR32G32B32A32F);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(RememberingBlock::deleted, 1);
    EXPECT_EQ(desc.format, kR32G32B32A32F);
    EXPECT_EQ(static_cast<float*>(block->mData)[1], 2 / 65535.0F);
    block->Delete();
}

TEST_F(ForeignDdsBlock, WithoutDataIsDeleted) {
    Substitute().load = [](ImageDescription&) { return new RememberingBlock(nullptr); };
    EXPECT_EQ(Load(kUnknown), nullptr);
    EXPECT_EQ(RememberingBlock::deleted, 1);
}

TEST_F(ForeignDdsBlock, OfTheHostsPlainKindLosesNothing) {
    Substitute().load = [this](ImageDescription& level) -> IMemoryWrapper<void>* {
        RememberingBlock* const block = static_cast<RememberingBlock*>(Give(level, Bytes(8, 5), kR16G16B16A16));
        auto* const plain = new MemoryArrayWrapper<void, unsigned char>(block->mData);
        block->Forget();
        block->Delete();
        return plain;
    };
    IMemoryWrapper<void>* const block = Load(kUnknown);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(static_cast<unsigned char*>(block->mData)[7], 5);
    block->Delete();
}

TEST_F(ForeignDdsBlock, IsCopiedWhereItStandsInForTheLibrary) {
    Substitute().format = kL16;
    Substitute().load = [this](ImageDescription& level) { return Give(level, {0x34, 0x12}, kL16); };
    const auto path = folder.Write("grey.dds", DdsFile{.data = {0x34, 0x12}}.Luminance16().Bytes());
    IMemoryWrapper<void>* const block = handler.LoadTexture(desc, Wide(path), 0, 0, 1, kUnknown, 0, kTopLeft, nullptr);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(RememberingBlock::deleted, 1);
    EXPECT_EQ(desc.format, kR16);
    EXPECT_EQ(*static_cast<std::uint16_t*>(block->mData), 0x1234);
    block->Delete();
}

}  // namespace
}  // namespace Kavra::Tests
