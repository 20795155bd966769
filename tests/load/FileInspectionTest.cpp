// What is told of whole files, of the samples and of files made here.

#include "common/HostObject.h"
#include "load/DdsFile.h"
#include "load/Inspections.h"
#include "support/Loading.h"
#include "support/Program.h"

#include <kavra/devices/LoadPreferences.h>

#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;

std::string ChannelsOf(const FilePart& part) {
    std::string text;
    for (std::size_t i = 0; i < part.channelCount; ++i)
        text += std::string(part.channels[i].name) + ":" + part.channels[i].type + " ";
    return text;
}

Bytes Zeros(std::size_t count) {
    return Bytes(count);
}

}  // namespace

// --- What the samples say --------------------------------------------------------------------------------------------

TEST_F(FileInspection, AnOpenExrPictureIsPremultipliedLight) {
    const Inspected file = Inspect(Sample("rgba.exr"));
    ASSERT_TRUE(file);
    EXPECT_STREQ(file->FileType(), "openexr");
    ASSERT_EQ(file->PartCount(), 1U);
    const FilePart& part = file->Part(0);
    EXPECT_EQ(part.size, sizeof(FilePart));
    EXPECT_EQ(ChannelsOf(part), "R:half G:half B:half A:half ");
    EXPECT_EQ(part.bitsPerSample, 16);
    EXPECT_EQ(part.alpha, kAlphaPremultiplied);
    EXPECT_EQ(part.transfer, kTransferLinear);
    EXPECT_EQ(part.gamma, 1.0);
    EXPECT_STREQ(part.compression, "zip");
    EXPECT_EQ(part.levelCount, 1U);
    EXPECT_EQ(part.levels[0].width, 96);
    EXPECT_EQ(part.levels[0].height, 64);
    EXPECT_EQ(part.tileWidth, 0);
    EXPECT_EQ(part.tileDepth, 0);
    EXPECT_STREQ(TextOf(part, "DateTime"), "2026:01:01 00:00:00");
    EXPECT_EQ(TextOf(part, "compression"), nullptr);  // told elsewhere
}

TEST_F(FileInspection, ADepthPictureHasOneChannelOfItsName) {
    const Inspected file = Inspect(Sample("depth.exr"));
    ASSERT_TRUE(file);
    EXPECT_EQ(ChannelsOf(file->Part(0)), "Z:float ");
    EXPECT_EQ(file->Part(0).alpha, kAlphaNone);
}

TEST_F(FileInspection, APngIsStraightAndEncoded) {
    const Inspected file = Inspect(Sample("cutout.png"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Part(0).alpha, kAlphaStraight);
    EXPECT_EQ(file->Part(0).transfer, kTransferSrgb);
    EXPECT_EQ(file->Part(0).bitsPerSample, 8);
    EXPECT_EQ(file->Part(0).iccProfile, nullptr);
    EXPECT_EQ(file->Part(0).iccBytes, 0U);
}

TEST_F(FileInspection, APageIsAPart) {
    const Inspected file = Inspect(Sample("pages.tif"));
    ASSERT_TRUE(file);
    ASSERT_EQ(file->PartCount(), 3U);
    EXPECT_EQ(file->Part(1).levels[0].width, 60);
    EXPECT_EQ(file->Part(2).levels[0].height, 64);
}

TEST_F(FileInspection, FramesOfAnAnimationSayHowLongTheyAreShown) {
    const Inspected gif = Inspect(Sample("spinner.gif"));
    ASSERT_TRUE(gif);
    ASSERT_EQ(gif->PartCount(), 8U);
    EXPECT_DOUBLE_EQ(gif->Part(3).seconds, 1.0);  // 100 hundredths
    const Inspected flic = Inspect(Sample("balloon.flc"));
    ASSERT_TRUE(flic);
    EXPECT_STREQ(flic->FileType(), "FLIC");
    EXPECT_GT(flic->PartCount(), 1U);
    EXPECT_GT(flic->Part(0).seconds, 0.0);
    EXPECT_LT(flic->Part(0).seconds, 1.0);
}

TEST_F(FileInspection, AnimationsSayTheirSpeedAlikeInBothReadings) {
    Bytes fli = Zeros(128);
    fli[4] = 0x11;
    fli[5] = 0xAF;
    fli[6] = fli[8] = fli[10] = 1;
    fli[16] = 35;
    for (const auto reading : {kLegacyContract, kLegacyCommon}) {
        LoadPreferences preferences;
        preferences.legacy = reading;
        const LoadPreferencesScope scope(preferences);
        fli[16] = 35;
        EXPECT_DOUBLE_EQ(Inspect(folder.Write("a.fli", fli))->Part(0).seconds, 0.5) << "seventieths";
        fli[16] = 0;
        EXPECT_DOUBLE_EQ(Inspect(folder.Write("a.fli", fli))->Part(0).seconds, 0) << "as fast as may be";
        EXPECT_DOUBLE_EQ(Inspect(Sample("balloon.flc"))->Part(0).seconds, 0.1) << "thousandths";
    }
}

TEST_F(FileInspection, APageOfADcxFileIsAPartOfItsOwnSize) {
    LoadPreferences preferences;
    preferences.legacy = kLegacyCommon;
    const LoadPreferencesScope scope(preferences);
    const Inspected file = Inspect(Sample("common/pages.dcx"));
    ASSERT_TRUE(file);
    EXPECT_STREQ(file->FileType(), "PCX");
    ASSERT_EQ(file->PartCount(), 3U);
    EXPECT_EQ(file->Part(0).levels[0].height, 90);
    EXPECT_EQ(file->Part(1).levels[0].width, 120);
    EXPECT_EQ(file->Part(2).levels[0].height, 40);
}

TEST_F(FileInspection, LegacyFilesSayWhatTheirReadersKnow) {
    const Inspected file = Inspect(Sample("photo.pcx"));
    ASSERT_TRUE(file);
    EXPECT_STREQ(file->FileType(), "PCX");
    EXPECT_EQ(file->Part(0).alpha, kAlphaNone);
    EXPECT_EQ(file->Part(0).transfer, kTransferSrgb);
    EXPECT_EQ(file->Part(0).levels[0].width, 120);
    EXPECT_EQ(ChannelsOf(file->Part(0)), "R:uint8 G:uint8 B:uint8 ");
}

TEST_F(FileInspection, EverySampleIsDescribedWithItsSize) {
    OIIOImageHandler handler;
    for (const std::filesystem::path& sample : AllSamples()) {
        const Common::HostObject<ImageDesc> desc(handler.GetImageDesc(Wide(sample)));
        if (!desc) continue;
        const Inspected file = Inspect(sample);
        ASSERT_TRUE(file) << sample;
        const FilePart& part = file->Part(0);
        EXPECT_EQ(part.levels[0].width, desc->width) << sample;
        EXPECT_EQ(part.levels[0].height, desc->height) << sample;
        EXPECT_EQ(part.levels[0].depth, desc->depth) << sample;
        EXPECT_EQ(part.textureType, desc->textureType) << sample;
        EXPECT_EQ(part.orientation, desc->orientation) << sample;
    }
}

TEST_F(FileInspection, TheHandlerIsReachedByACast) {
    OIIOImageHandler handler;
    IImageHandler* const asHostsHoldIt = &handler;
    auto* const inspector = dynamic_cast<IImageInspector*>(asHostsHoldIt);
    ASSERT_NE(inspector, nullptr);
    EXPECT_TRUE(Inspected(inspector->Inspect(Wide(Sample("photo.jpg")))));
    EXPECT_EQ(inspector->Inspect(Wide(folder / "missing.png")), nullptr);
    EXPECT_TRUE(std::string_view(inspector->ReadableExtensions()).contains(".png"));
    EXPECT_TRUE(std::string_view(inspector->WritableExtensions()).contains(".dds"));
}

// --- DDS -------------------------------------------------------------------------------------------------------------

TEST_F(FileInspection, ACubeHasTheSizeOfAFaceAndAllItsLevels) {
    const Inspected file = Inspect(Sample("cube-mips.dds"));
    ASSERT_TRUE(file);
    EXPECT_STREQ(file->FileType(), "dds");
    ASSERT_EQ(file->PartCount(), 1U);
    const FilePart& part = file->Part(0);
    EXPECT_EQ(part.textureType, kTextureCube);
    EXPECT_EQ(part.faces, 63U);
    ASSERT_EQ(part.levelCount, 6U);
    EXPECT_EQ(part.levels[0].height, 32);
    EXPECT_EQ(part.levels[1].width, 16);  // which the library calls 32
    EXPECT_EQ(part.levels[5].width, 1);
    EXPECT_EQ(part.tileWidth, 0);  // a face is no tile
    EXPECT_EQ(part.bitsPerSample, 8);
    EXPECT_EQ(part.elements, 1);
}

TEST_F(FileInspection, AVolumeHasItsSlices) {
    const Inspected file = Inspect(Sample("volume.dds"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Part(0).textureType, kTextureVolume);
    EXPECT_EQ(file->Part(0).levels[0].depth, 8);
    EXPECT_EQ(file->Part(0).faces, 0U);
}

TEST_F(FileInspection, FacesThatAreNotThereAreNotNamed) {
    DdsFile dds{.width = 2, .height = 2, .faces = 0b010001, .data = Zeros(2 * 16)};
    const Inspected file = Inspect(folder.Write("partial.dds", dds.Bytes()));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Part(0).faces, 0b010001U);
}

TEST_F(FileInspection, FloatsThatOnlyTheHostReadsAreLinear) {
    const Inspected file = Inspect(Sample("float.dds"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Part(0).transfer, kTransferLinear);
    EXPECT_EQ(ChannelsOf(file->Part(0)), "R:float G:float B:float A:float ");
    EXPECT_EQ(file->Part(0).alpha, kAlphaStraight);
    EXPECT_EQ(file->Part(0).bitsPerSample, 32);
}

TEST_F(FileInspection, AnArrayHasAsManyElementsAsTheFileIsLongEnoughFor) {
    DdsFile dds{.width = 2, .height = 2, .data = Zeros(3 * 16)};
    dds.Dxgi(28).arraySize = 3;
    EXPECT_EQ(Inspect(folder.Write("three.dds", dds.Bytes()))->Part(0).elements, 3);
    dds.arraySize = 0xFFFFFFFF;
    EXPECT_EQ(Inspect(folder.Write("claims.dds", dds.Bytes()))->Part(0).elements, 3);
}

TEST_F(FileInspection, LevelsAreThoseOfTheFullChainAtMost) {
    DdsFile dds{.width = 4, .height = 4, .mips = 0x7FFFFFFF, .data = Zeros(21 * 4)};
    EXPECT_EQ(Inspect(folder.Write("levels.dds", dds.Bytes()))->Part(0).levelCount, 3U);
}

TEST_F(FileInspection, SixteenBitGreyIsToldAsItIsDelivered) {
    DdsFile dds{.width = 2, .height = 1, .data = Zeros(4)};
    dds.Luminance16();
    const Inspected file = Inspect(folder.Write("grey.dds", dds.Bytes()));
    ASSERT_TRUE(file);
    EXPECT_EQ(ChannelsOf(file->Part(0)), "Y:uint16 ");
    EXPECT_EQ(file->Part(0).bitsPerSample, 16);
}

// --- Files made here -------------------------------------------------------------------------------------------------

TEST_F(FileInspection, ATiffSaysWhatItsAlphaIs) {
    ImageSpec spec(1, 1, 4, OIIO::TypeUInt8);
    const Bytes pixel = {10, 20, 30, 40};
    EXPECT_EQ(Inspect(WritePicture(folder / "straight.tif", spec, pixel))->Part(0).alpha, kAlphaStraight);
    const auto output = OIIO::ImageOutput::create("a.tif");
    const std::string name = (folder / "associated.tif").string();
    ASSERT_TRUE(output->open(name, spec) && output->write_image(OIIO::TypeUInt8, pixel.data()) && output->close());
    EXPECT_EQ(Inspect(name)->Part(0).alpha, kAlphaPremultiplied);
    EXPECT_EQ(LoadFile(name).bytes, pixel);  // as a load delivers it: as it is stored
}

TEST_F(FileInspection, DescriptionResolutionAndProfileAreKept) {
    ImageSpec spec(1, 1, 3, OIIO::TypeUInt8);
    spec.attribute("ImageDescription", "A red chair");
    spec.attribute("XResolution", 300.0F);
    spec.attribute("YResolution", 300.0F);
    spec.attribute("ResolutionUnit", "in");
    const Bytes profile(200, 7);
    spec.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, 200), profile.data());
    const Inspected file = Inspect(WritePicture(folder / "told.tif", spec, Bytes{1, 2, 3}));
    ASSERT_TRUE(file);
    const FilePart& part = file->Part(0);
    EXPECT_STREQ(TextOf(part, "ImageDescription"), "A red chair");
    EXPECT_DOUBLE_EQ(part.xResolution, 300);
    EXPECT_DOUBLE_EQ(part.yResolution, 300);
    ASSERT_EQ(part.iccBytes, profile.size());
    const auto* const bytes = static_cast<const unsigned char*>(part.iccProfile);
    EXPECT_EQ(Bytes(bytes, bytes + part.iccBytes), profile);
    EXPECT_EQ(TextOf(part, "ICCProfile"), nullptr);
}

TEST_F(FileInspection, PartsWindowsTilesAndLevelsOfOpenExr) {
    const std::string name = (folder / "parts.exr").string();
    std::vector<ImageSpec> specs(2, ImageSpec(64, 32, 3, OIIO::TypeHalf));
    specs[0].attribute("oiio:subimagename", "beauty");
    specs[1].attribute("oiio:subimagename", "depth");
    specs[1].nchannels = 1;
    specs[1].channelnames = {"Z"};
    specs[1].format = OIIO::TypeFloat;
    specs[1].x = 5;
    specs[1].y = -3;
    specs[0].full_width = specs[1].full_width = 128;
    for (ImageSpec& spec : specs)
        spec.tile_width = spec.tile_height = 16;
    const auto output = OIIO::ImageOutput::create(name);
    const std::vector<float> pixels(64 * 32 * 3);
    ASSERT_TRUE(output->open(name, 2, specs.data())) << output->geterror();
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, pixels.data()));
    ASSERT_TRUE(output->open(name, specs[1], OIIO::ImageOutput::AppendSubimage));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, pixels.data()) && output->close());

    const Inspected file = Inspect(name);
    ASSERT_TRUE(file);
    ASSERT_EQ(file->PartCount(), 2U);
    EXPECT_STREQ(file->Part(0).name, "beauty");
    const FilePart& depth = file->Part(1);
    EXPECT_STREQ(depth.name, "depth");
    EXPECT_EQ(ChannelsOf(depth), "Z:float ");
    EXPECT_EQ(depth.dataX, 5);
    EXPECT_EQ(depth.dataY, -3);
    EXPECT_EQ(depth.displayWidth, 128);
    EXPECT_EQ(depth.tileWidth, 16);
    EXPECT_EQ(depth.tileDepth, 1);
}

TEST_F(FileInspection, StoredLevelsAreCounted) {
    const std::string name = (folder / "levels.exr").string();
    auto output = OIIO::ImageOutput::create(name);
    auto mode = OIIO::ImageOutput::Create;
    for (int side = 64; side >= 1; side /= 2) {
        ImageSpec spec(side, side, 3, OIIO::TypeFloat);
        spec.tile_width = spec.tile_height = 16;
        spec.attribute("textureformat", "Plain Texture");
        AppendPicture(*output, name, spec, std::vector<float>(spec.image_pixels() * 3, 0.5F), mode);
        mode = OIIO::ImageOutput::AppendMIPLevel;
    }
    output.reset();  // which writes the rest of the file
    const Inspected file = Inspect(name);
    ASSERT_TRUE(file);
    ASSERT_EQ(file->Part(0).levelCount, 7U);
    EXPECT_EQ(file->Part(0).levels[2].width, 16);
}

}  // namespace Kavra::Tests
