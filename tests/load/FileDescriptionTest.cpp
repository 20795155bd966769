#include "load/FileDescription.h"
#include "load/OpenInput.h"
#include "readers/ImageFileType.h"
#include "support/HandlerAccess.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using OIIO::ImageSpec;

ImageSpec Rgba8(int width = 4, int height = 4) {
    return ImageSpec(width, height, 4, OIIO::TypeUInt8);
}

ImageDesc Describe(const ImageSpec& spec, int fileType = Other) {
    return DescribeSpec(spec, false, fileType, false);
}

// --- size, format, texture type --------------------------------------------------------------------------------------

TEST(DescribeSpec, TellsSizeFormatAndKind) {
    const ImageDesc desc = Describe(ImageSpec(7, 5, 1, OIIO::TypeUInt16));
    EXPECT_EQ(desc.width, 7);
    EXPECT_EQ(desc.height, 5);
    EXPECT_EQ(desc.depth, 1);
    EXPECT_EQ(desc.format, kL16);
    EXPECT_EQ(desc.textureType, kTexture2D);
    EXPECT_EQ(desc.frameCount, 0);
    EXPECT_EQ(desc.orientation, kTopLeft);
    EXPECT_EQ(desc.gamma, 2.2);
}

TEST(DescribeSpec, LeavesTheFormatUnknownWhereNoneHoldsThePixels) {
    EXPECT_EQ(Describe(ImageSpec(4, 4, 3, OIIO::TypeUInt32)).format, kUnknown);
}

TEST(DescribeSpec, SixteenBitGreyDdsIsR16) {
    ImageSpec grey(4, 4, 1, OIIO::TypeUInt8);
    grey.attribute("oiio:BitsPerSample", 16);
    EXPECT_EQ(Describe(grey, DDS).format, kR16);
    EXPECT_EQ(Describe(grey, Other).format, kL8);

    ImageSpec two(4, 4, 2, OIIO::TypeUInt8);
    two.attribute("oiio:BitsPerSample", 16);
    EXPECT_EQ(Describe(two, DDS).format, kR8G8B8A8);
    EXPECT_EQ(Describe(ImageSpec(4, 4, 1, OIIO::TypeUInt8), DDS).format, kL8);
}

TEST(DescribeSpec, TheAlphaVariantOfADdsIsBlueFirst) {
    EXPECT_EQ(DescribeSpec(Rgba8(), false, DDS, true).format, kB8G8R8A8);
    EXPECT_EQ(DescribeSpec(Rgba8(), false, DDS, false).format, kR8G8B8A8);
    EXPECT_EQ(DescribeSpec(Rgba8(), false, Other, true).format, kR8G8B8A8);
    EXPECT_EQ(DescribeSpec(ImageSpec(4, 4, 1, OIIO::TypeUInt8), false, DDS, true).format, kL8);
}

TEST(DescribeSpec, OneChannelOpenExrIsDescribedAsFour) {
    EXPECT_EQ(Describe(ImageSpec(4, 4, 1, OIIO::TypeHalf), OpenEXR).format, kR16G16B16A16F);
    EXPECT_EQ(Describe(ImageSpec(4, 4, 1, OIIO::TypeFloat), OpenEXR).format, kR32G32B32A32F);
    EXPECT_EQ(Describe(ImageSpec(4, 4, 2, OIIO::TypeHalf), OpenEXR).format, kR16G16F);
    EXPECT_EQ(Describe(ImageSpec(4, 4, 1, OIIO::TypeFloat), Other).format, kR32F);
    EXPECT_EQ(Describe(ImageSpec(4, 4, 1, OIIO::TypeHalf), DDS).format, kR16F);
}

TEST(DescribeSpec, ACubeHasTheSizeOfOneFace) {
    ImageSpec spec = Rgba8(8, 48);
    spec.full_width = spec.full_height = 8;
    spec.attribute("textureformat", "CubeFace Environment");
    const ImageDesc desc = Describe(spec, DDS);
    EXPECT_EQ(desc.textureType, kTextureCube);
    EXPECT_EQ(desc.width, 8);
    EXPECT_EQ(desc.height, 8);
}

TEST(DescribeSpec, ACubeWithoutSixFacesIsFlat) {
    struct Case {
        int width, height, fullWidth, fullHeight, depth;
    };
    constexpr int kMax = std::numeric_limits<int>::max();
    for (const Case& each : {Case{8, 8, 8, 8, 1},
                             {8, 48, 8, 48, 1},
                             {8, 48, 4, 8, 1},
                             {8, 47, 8, 8, 1},
                             {8, 48, 8, 8, 2},
                             {8, 4, 8, (kMax - 3) / 3 * 2, 1},
                             {8, 48, 8, 0, 1}}) {
        for (const int fileType : {Other, OpenEXR, DDS}) {
            ImageSpec spec = Rgba8(each.width, each.height);
            spec.full_width = each.fullWidth, spec.full_height = each.fullHeight, spec.depth = each.depth;
            spec.attribute("textureformat", "CubeFace Environment");
            const ImageDesc desc = Describe(spec, fileType);
            EXPECT_EQ(desc.textureType, kTexture2D) << each.height;
            EXPECT_EQ(desc.width, each.width);
            EXPECT_EQ(desc.height, each.height);
        }
    }
}

TEST(DescribeSpec, ACubeInAnotherFileIsOneWhereItHasSixFaces) {
    ImageSpec spec = Rgba8(4, 6 * 3);
    spec.full_width = 4, spec.full_height = 3;
    spec.attribute("textureformat", "CubeFace Shadow");
    EXPECT_EQ(Describe(spec).textureType, kTextureCube);
    EXPECT_EQ(Describe(spec).height, 3);
}

TEST(DescribeSpec, TextIsNeverANumber) {
    ImageSpec spec(4, 4, 3, OIIO::TypeUInt8);
    spec.attribute("tiff:PhotometricInterpretation", "1");
    spec.attribute("Orientation", "6");
    spec.attribute("oiio:Gamma", "2.0");
    EXPECT_EQ(Describe(spec).format, kR8G8B8A8);
    EXPECT_EQ(Describe(spec).orientation, kTopLeft);
    EXPECT_EQ(Describe(spec).gamma, 2.2);
    ImageSpec grey(4, 4, 1, OIIO::TypeUInt8);
    grey.attribute("oiio:BitsPerSample", "16");
    EXPECT_EQ(Describe(grey, DDS).format, kL8);
}

TEST(DescribeSpec, AVolumeIsToldByNameOrByDepth) {
    ImageSpec named = Rgba8();
    named.attribute("textureformat", "Volume Texture");
    EXPECT_EQ(Describe(named, DDS).textureType, kTextureVolume);
    EXPECT_EQ(Describe(named, DDS).width, 4);

    ImageSpec deep = Rgba8();
    deep.depth = 2;
    EXPECT_EQ(Describe(deep).textureType, kTextureVolume);
    EXPECT_EQ(Describe(deep).depth, 2);
    deep.attribute("textureformat", "Plain Texture");
    EXPECT_EQ(Describe(deep).textureType, kTextureVolume);

    ImageSpec plain = Rgba8();
    plain.attribute("textureformat", "Plain Texture");
    EXPECT_EQ(Describe(plain).textureType, kTexture2D);
}

// --- orientation -----------------------------------------------------------------------------------------------------

TEST(DescribeSpec, MapsTheExifOrientation) {
    const std::pair<int, int> expected[] = {{1, 0}, {2, 1}, {3, 3}, {4, 2}, {5, 4},  {6, 5},
                                            {7, 7}, {8, 6}, {0, 0}, {9, 0}, {-1, 0}, {1 << 30, 0}};
    for (const auto& [exif, orientation] : expected) {
        ImageSpec spec = Rgba8();
        spec.attribute("Orientation", exif);
        EXPECT_EQ(Describe(spec).orientation, orientation) << exif;
    }
}

TEST(DescribeSpec, TheLineOrderOfOpenExrDecidesAlone) {
    ImageSpec spec = Rgba8();
    spec.attribute("Orientation", 6);
    spec.attribute("openexr:lineOrder", "decreasingY");
    EXPECT_EQ(Describe(spec, OpenEXR).orientation, kBottomLeft);
    spec.attribute("openexr:lineOrder", "increasingY");
    EXPECT_EQ(Describe(spec, OpenEXR).orientation, kTopLeft);
}

TEST(DescribeSpec, ARadianceFileHasNoOrientation) {
    ImageSpec spec = Rgba8();
    spec.attribute("Orientation", 6);
    EXPECT_EQ(DescribeSpec(spec, true, Other, false).orientation, kTopLeft);
}

// --- gamma -----------------------------------------------------------------------------------------------------------

TEST(DescribeSpec, InvertsTheGammaInSinglePrecision) {
    ImageSpec spec = Rgba8();
    spec.attribute("oiio:Gamma", 2.0F);
    EXPECT_EQ(Describe(spec).gamma, 0.5);
    spec.attribute("oiio:Gamma", 2.2F);
    EXPECT_EQ(Describe(spec).gamma, 0.45454543828964233);  // not 1 / 2.2, which is 0.45454545454545453
}

TEST(DescribeSpec, TakesTheExifGammaWhereThereIsNoOther) {
    ImageSpec spec = Rgba8();
    spec.attribute("Exif:Gamma", 4.0F);
    EXPECT_EQ(Describe(spec).gamma, 0.25);
    spec.attribute("oiio:Gamma", 2.0F);
    EXPECT_EQ(Describe(spec).gamma, 0.5);
}

TEST(DescribeSpec, IgnoresAGammaThatHasNoInverse) {
    for (const float gamma : {0.0F, -0.0F, -2.0F, std::numeric_limits<float>::quiet_NaN(),
                              -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::denorm_min()}) {
        ImageSpec spec = Rgba8();
        spec.attribute("oiio:Gamma", gamma);
        EXPECT_EQ(Describe(spec).gamma, 2.2) << gamma;
    }
}

TEST(DescribeSpec, IgnoresAGammaThatIsNoFloat) {
    ImageSpec spec = Rgba8();
    spec.attribute("oiio:Gamma", "2.0");
    EXPECT_EQ(Describe(spec).gamma, 2.2);
}

// --- open files ------------------------------------------------------------------------------------------------------

/// A file of so many subimages and levels, as any format's reader presents it.
class FakeInput final : public OIIO::ImageInput {
public:
    FakeInput(const char* formatName, const ImageSpec& spec, int subimages, int levels)
        : mFormatName(formatName), mSubimages(subimages), mLevels(levels) {
        m_spec = spec;
    }

    const char* format_name() const override { return mFormatName; }
    bool open(const std::string&, ImageSpec&) override { return true; }
    bool close() override { return true; }
    int current_subimage() const override { return mSubimage; }
    int current_miplevel() const override { return mLevel; }
    bool seek_subimage(int subimage, int level) override {
        ++seeks;
        if (subimage < 0 || subimage >= mSubimages || level < 0 || level >= mLevels) return false;
        mSubimage = subimage;
        mLevel = level;
        return true;
    }
    bool read_native_scanline(int, int, int, int, void*) override { return false; }

    int seeks = 0;

private:
    const char* mFormatName;
    int mSubimages;
    int mLevels;
    int mSubimage = 0;
    int mLevel = 0;
};

using OwnedDesc = std::unique_ptr<ImageDesc, void (*)(ImageDesc*)>;

OwnedDesc DescribeInput(OIIO::ImageInput& input, int fileType) {
    OIIOImageHandlerAccess access;
    return OwnedDesc(access.GetImageDescByOIIO(&input, fileType, false), [](ImageDesc* desc) { desc->Delete(); });
}

int Frames(OIIO::ImageInput& input, int fileType) {
    OIIOImageHandlerAccess access;
    return access.GetNumberOfFrames(&input, fileType);
}

TEST(GetImageDescByOIIO, KnowsRadianceFilesByTheirExactFormatName) {
    ImageSpec spec = Rgba8();
    spec.attribute("Orientation", 6);
    FakeInput radiance("hdr", spec, 1, 1);
    EXPECT_EQ(DescribeInput(radiance, Other)->orientation, kTopLeft);
    for (const char* name : {"HDR", "hdri", "jpeg", "hd"}) {
        FakeInput other(name, spec, 1, 1);
        EXPECT_EQ(DescribeInput(other, Other)->orientation, kRightTop) << name;
    }
}

TEST(GetImageDescByOIIO, GivesAnObjectOfTheHostsHeapWithoutAFrameCount) {
    FakeInput input("png", Rgba8(), 3, 1);
    const auto before = Kavra::Objects::ObjModel::ObjectCounters().liveBlocks;
    const OwnedDesc desc = DescribeInput(input, Other);
    EXPECT_EQ(Kavra::Objects::ObjModel::ObjectCounters().liveBlocks, before + 1);
    EXPECT_EQ(desc->frameCount, 0);
}

TEST(GetNumberOfFrames, CountsSubimagesUpToTheFirstThatIsNotThere) {
    for (const int subimages : {1, 2, 7}) {
        FakeInput input("tiff", Rgba8(), subimages, 3);
        EXPECT_EQ(Frames(input, Other), subimages);
        EXPECT_EQ(input.current_subimage(), 0);
        EXPECT_EQ(input.current_miplevel(), 0);
    }
}

TEST(GetNumberOfFrames, CountsTheLevelsOfADds) {
    FakeInput input("dds", Rgba8(256, 256), 1, 9);
    EXPECT_EQ(Frames(input, DDS), 9);
    EXPECT_EQ(input.current_miplevel(), 0);
}

TEST(GetNumberOfFrames, StopsAtTheFullChainOfTheSize) {
    FakeInput input("dds", Rgba8(16, 4), 1, std::numeric_limits<int>::max());
    EXPECT_EQ(Frames(input, DDS), 5);
    EXPECT_LT(input.seeks, 10);
}

TEST(GetNumberOfFrames, MeasuresTheChainOfACubeByItsFace) {
    ImageSpec spec = Rgba8(8, 48);
    spec.full_width = spec.full_height = 8;
    spec.attribute("textureformat", "CubeFace Environment");
    FakeInput input("dds", spec, 1, std::numeric_limits<int>::max());
    EXPECT_EQ(Frames(input, DDS), 4);
}

TEST(GetNumberOfFrames, StopsAtAMillionSubimages) {
    FakeInput input("endless", Rgba8(), std::numeric_limits<int>::max(), 1);
    EXPECT_EQ(Frames(input, Other), 1 << 20);
}

TEST(GetNumberOfFrames, AGreyTiffCountsItsChannels) {
    for (const int photometric : {0, 1}) {
        ImageSpec spec(4, 4, 2, OIIO::TypeUInt8);
        spec.attribute("tiff:PhotometricInterpretation", photometric);
        FakeInput pages("tiff", spec, 3, 1);
        EXPECT_EQ(Frames(pages, Other), 2) << photometric;
    }
}

TEST(GetNumberOfFrames, ATextThatSaysGreyCountsNothing) {
    ImageSpec spec(4, 4, 2, OIIO::TypeUInt8);
    spec.attribute("tiff:PhotometricInterpretation", "1");
    FakeInput pages("png", spec, 3, 1);
    EXPECT_EQ(Frames(pages, Other), 3);
}

TEST(GetNumberOfFrames, OtherTiffsCountTheirPages) {
    for (const int photometric : {2, 6, -1, std::numeric_limits<int>::min()}) {
        ImageSpec spec(4, 4, 2, OIIO::TypeUInt8);
        spec.attribute("tiff:PhotometricInterpretation", photometric);
        FakeInput pages("tiff", spec, 3, 1);
        EXPECT_EQ(Frames(pages, Other), 3) << photometric;
    }
}

// --- real files ------------------------------------------------------------------------------------------------------

class DescribedFile : public testing::Test {
protected:
    std::unique_ptr<OIIO::ImageInput> Picture(std::string_view name, const ImageSpec& spec) {
        const std::vector<unsigned char> pixels(spec.image_bytes());
        const auto path = folder / name;
        const auto output = OIIO::ImageOutput::create(path.string());
        EXPECT_TRUE(output && output->open(path.string(), spec) && output->write_image(spec.format, pixels.data()) &&
                    output->close());
        return OpenInput(Wide(path));
    }

    std::unique_ptr<OIIO::ImageInput> Dds(ETextureType type, EFormat format, int width, int height, int depth,
                                          int levels, std::size_t bytes) {
        const std::vector<unsigned char> pixels(bytes);
        DDSWriter writer;
        EXPECT_TRUE(writer.Construct(type, format, width, height, depth, levels, static_cast<int>(bytes), 0));
        EXPECT_TRUE(writer.Write(Wide(folder / "p.dds"), pixels.data()));
        return OpenInput(Wide(folder / "p.dds"));
    }

    TemporaryFolder folder;
};

TEST_F(DescribedFile, AJpegKeepsItsOrientation) {
    ImageSpec spec(8, 8, 3, OIIO::TypeUInt8);
    spec.attribute("Orientation", 6);
    const auto input = Picture("p.jpg", spec);
    ASSERT_NE(input, nullptr);
    EXPECT_EQ(DescribeInput(*input, Other)->orientation, kRightTop);
}

TEST_F(DescribedFile, AOnePageGreyTiffCountsOneAndOneWithAlphaTwo) {
    const auto grey = Picture("grey.tif", ImageSpec(4, 4, 1, OIIO::TypeUInt8));
    ASSERT_NE(grey, nullptr);
    EXPECT_EQ(Frames(*grey, Other), 1);
    const auto greyAlpha = Picture("grey-alpha.tif", ImageSpec(4, 4, 2, OIIO::TypeUInt8));
    ASSERT_NE(greyAlpha, nullptr);
    EXPECT_EQ(Frames(*greyAlpha, Other), 2);
}

TEST_F(DescribedFile, ADecreasingLineOrderIsUpsideDown) {
    ImageSpec spec(4, 4, 3, OIIO::TypeHalf);
    spec.attribute("openexr:lineOrder", "decreasingY");
    spec.attribute("Orientation", 6);
    const auto input = Picture("p.exr", spec);
    ASSERT_NE(input, nullptr);
    EXPECT_EQ(DescribeInput(*input, OpenEXR)->orientation, kBottomLeft);
}

TEST_F(DescribedFile, ASixteenBitGreyDdsIsR16) {
    const auto input = Dds(kTexture2D, kL16, 4, 4, 1, 1, 32);
    ASSERT_NE(input, nullptr);
    EXPECT_EQ(DescribeInput(*input, DDS)->format, kR16);
}

TEST_F(DescribedFile, ADdsCountsItsWholeChain) {
    const auto input = Dds(kTexture2D, kR8G8B8A8, 16, 16, 1, 5, 341 * 4);
    ASSERT_NE(input, nullptr);
    EXPECT_EQ(Frames(*input, DDS), 5);
    EXPECT_EQ(input->current_miplevel(), 0);
}

TEST_F(DescribedFile, ALowerLevelOfACubeHasItsOwnSize) {
    const auto input = Dds(kTextureCube, kR8G8B8A8, 8, 8, 1, 4, 6 * 85 * 4);
    ASSERT_NE(input, nullptr);
    for (int level = 0, size = 8; level < 4; ++level, size /= 2) {
        ASSERT_TRUE(input->seek_subimage(0, level));
        const OwnedDesc desc = DescribeInput(*input, DDS);
        EXPECT_EQ(desc->textureType, kTextureCube);
        EXPECT_EQ(desc->width, size);
        EXPECT_EQ(desc->height, size);
        EXPECT_EQ(input->current_miplevel(), level);
    }
}

TEST_F(DescribedFile, ALowerLevelOfAVolumeHasItsOwnDepth) {
    const auto input = Dds(kTextureVolume, kR8G8B8A8, 8, 4, 4, 3, (128 + 16 + 2) * 4);
    ASSERT_NE(input, nullptr);
    ASSERT_TRUE(input->seek_subimage(0, 1));
    const OwnedDesc desc = DescribeInput(*input, DDS);
    EXPECT_EQ(desc->textureType, kTextureVolume);
    EXPECT_EQ(desc->width, 4);
    EXPECT_EQ(desc->height, 2);
    EXPECT_EQ(desc->depth, 2);
}

}  // namespace
