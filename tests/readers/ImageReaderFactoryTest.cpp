#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/ImageReaderInterface.h"
#include "readers/cals/CalsReader.h"
#include "readers/flic/FlicReader.h"
#include "readers/pcx/PcxReader.h"
#include "readers/pict/PictReader.h"
#include "readers/rlc/RlcReader.h"
#include "readers/spot/SpotReader.h"
#include "support/CallSlot.h"
#include "support/TemporaryFolder.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <memory>
#include <span>
#include <utility>

namespace {

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;

class PlainReader : public ImageReaderInterface {
public:
    PlainReader() { ++mConstructed; }
    void Close() override {}
    Kavra::Common::Result<> OpenFiles(PictureFiles) override { return {}; }
    Kavra::Common::Result<> ReadFrame(Kavra::Common::RowSink&, int) override { return {}; }
    int GetWidth() override { return 0; }
    int GetHeight() override { return 0; }
    int GetRowPitch() override { return 0; }

    static inline int mConstructed = 0;
};

TEST(ImageReaderFactory, CodesOfFilesThatOthersReadHaveNoReader) {
    for (const int code : {None, DDS, OpenEXR, Other})
        EXPECT_EQ(CreateImageReader(code), nullptr) << code;
    for (const int code : {-1, 10, 1 << 30})
        EXPECT_EQ(CreateImageReader(code), nullptr) << code;
}

// Of the type, not open yet: without a size, and without pixels.
template <class Reader>
void ExpectMade(int fileType) {
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(fileType));
    ASSERT_NE(dynamic_cast<Reader*>(reader.get()), nullptr) << fileType;
    EXPECT_EQ(reader->GetWidth(), 0) << fileType;
    EXPECT_EQ(reader->GetHeight(), 0) << fileType;
    EXPECT_EQ(reader->GetRowPitch(), 0) << fileType;
    EXPECT_FALSE(reader->ReadImage(nullptr, 0)) << fileType;
}

TEST(ImageReaderFactory, EveryLegacyTypeHasItsReader) {
    ExpectMade<CALSReader>(CALS);
    ExpectMade<FLICReader>(FLIC);
    ExpectMade<PCXReader>(PCX);
    ExpectMade<PictReader>(PICT);
    ExpectMade<RlcReader>(RLC);
    ExpectMade<SpotReader>(Spot);
}

TEST(ImageReaderFactory, AReaderThatRefusesAFileHasForgottenTheOneBefore) {
    for (const auto& [type, sample] :
         {std::pair(CALS, "drawing.cal"), std::pair(FLIC, "balloon.flc"), std::pair(PCX, "photo.pcx"),
          std::pair(PICT, "photo.pict"), std::pair(RLC, "engraving.rlc"), std::pair(Spot, "bands/photo.bil")}) {
        const auto folder = std::filesystem::path(KAVRA_SOURCE_DIR) / "examples";
        const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(type));
        EXPECT_TRUE(reader->Open(Kavra::Tests::Wide(folder / sample))) << sample;
        EXPECT_GT(reader->GetRowPitch(), 0) << sample;
        EXPECT_FALSE(reader->Open(Kavra::Tests::Wide(folder / "missing.x"))) << sample;
        EXPECT_EQ(reader->GetWidth(), 0) << sample;
        EXPECT_EQ(reader->GetHeight(), 0) << sample;
        EXPECT_EQ(reader->GetRowPitch(), 0) << sample;
        EXPECT_FALSE(reader->ReadImage(nullptr, 0)) << sample;
    }
}

TEST(ImageReaderInterface, DescribesOneUprightFrameOfEightBitColourUnlessAReaderSaysOtherwise) {
    PlainReader reader;
    EXPECT_EQ(reader.GetFormat(), 46);
    EXPECT_EQ(reader.GetFrameCount(), 1);
    EXPECT_EQ(reader.GetOrientation(), 0);
}

/// Says a number of its own in each slot.
class NumberedReader : public ImageReaderInterface {
public:
    int GetWidth() override { return 3; }
    int GetHeight() override { return 4; }
    int GetRowPitch() override { return 5; }
    EFormat GetFormat() override { return kL16; }
    int GetFrameCount() override { return 7; }
    EDataOrientation GetOrientation() override { return kLeftTop; }
    void Close() override { opened = 0; }
    Kavra::Common::Result<> OpenFiles(PictureFiles files) override {
        opened = files.source.Size();
        return {};
    }
    Kavra::Common::Result<> ReadFrame(Kavra::Common::RowSink& rows, int frame) override {
        const std::span<unsigned char> pixels = rows.NextRows(4);
        read = pixels.size();
        pixels[0] = static_cast<unsigned char>(frame);
        return {};
    }

    std::uint64_t opened = 0;
    std::size_t read = 0;
};

TEST(ImageReaderInterface, IsDrivenBySlots) {
    const Kavra::Tests::TemporaryFolder folder;
    const KString path = Kavra::Tests::Wide(folder.Write("file", "12345"));
    const KString missing = Kavra::Tests::Wide(folder / "missing");
    NumberedReader reader;
    EXPECT_TRUE(Kavra::Tests::CallSlot<bool>(&reader, 1, &path));
    EXPECT_EQ(reader.opened, 5U);
    std::array<unsigned char, 20> pixels{};
    EXPECT_TRUE(Kavra::Tests::CallSlot<bool>(&reader, 2, pixels.data(), 9));
    EXPECT_EQ(reader.read, 20U) << "rows x pitch";
    EXPECT_EQ(pixels[0], 9);
    EXPECT_EQ(Kavra::Tests::CallSlot<int>(&reader, 3), 3);
    EXPECT_EQ(Kavra::Tests::CallSlot<int>(&reader, 4), 4);
    EXPECT_EQ(Kavra::Tests::CallSlot<int>(&reader, 5), 5);
    EXPECT_EQ(Kavra::Tests::CallSlot<EFormat>(&reader, 6), kL16);
    EXPECT_EQ(Kavra::Tests::CallSlot<int>(&reader, 7), 7);
    EXPECT_EQ(Kavra::Tests::CallSlot<EDataOrientation>(&reader, 8), kLeftTop);
    EXPECT_FALSE(Kavra::Tests::CallSlot<bool>(&reader, 1, &missing));
    EXPECT_EQ(reader.opened, 0U) << "the file before is forgotten";
}

TEST(ImageReaderInterface, ReadersLiveInTheDefaultAllocatorsMemory) {
    const std::size_t before = ObjModel::BlockCounters().liveBlocks;
    std::unique_ptr<ImageReaderInterface> reader(new PlainReader);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before + 1);
    reader.reset();
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, before);
}

TEST(ImageReaderInterface, WithoutMemoryThereIsNullAndNoConstruction) {
    const int before = PlainReader::mConstructed;
    ObjModel::SetBlockCeiling(1);
    const std::unique_ptr<ImageReaderInterface> reader(new PlainReader);
    ObjModel::SetBlockCeiling(0);
    EXPECT_EQ(reader, nullptr);
    EXPECT_EQ(PlainReader::mConstructed, before);
}

}  // namespace
