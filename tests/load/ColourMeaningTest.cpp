#include "load/ColourMeaning.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Kavra::Devices;
using OIIO::ImageSpec;

ImageSpec Picture(int channels, OIIO::TypeDesc type = OIIO::TypeUInt8) {
    return {4, 4, channels, type};
}

ImageSpec InSpace(const char* name, OIIO::TypeDesc type = OIIO::TypeUInt8) {
    ImageSpec spec = Picture(3, type);
    spec.attribute("oiio:ColorSpace", name);
    return spec;
}

ImageSpec WithResolution(float x, float y, const char* unit) {
    ImageSpec spec = Picture(3);
    spec.attribute("XResolution", x);
    spec.attribute("YResolution", y);
    if (unit != nullptr) spec.attribute("ResolutionUnit", unit);
    return spec;
}

}  // namespace

// --- alpha -----------------------------------------------------------------------------------------------------------

TEST(AlphaKind, OpenExrIsPremultipliedAndMostOthersAreStraight) {
    EXPECT_EQ(AlphaKindOf("openexr", Picture(4, OIIO::TypeHalf)), kAlphaPremultiplied);
    for (const char* format : {"png", "webp", "bmp", "sgi", "ico", "dpx", "psd", "gif", "targa"})
        EXPECT_EQ(AlphaKindOf(format, Picture(4)), kAlphaStraight) << format;
}

TEST(AlphaKind, NoneWhereThereIsNoAlpha) {
    EXPECT_EQ(AlphaKindOf("png", Picture(3)), kAlphaNone);
    EXPECT_EQ(AlphaKindOf("openexr", Picture(1)), kAlphaNone);
    ImageSpec planes = Picture(4);
    planes.alpha_channel = -1;
    planes.attribute("planarconfig", "separate");
    EXPECT_EQ(AlphaKindOf("tiff", planes), kAlphaNone);
}

TEST(AlphaKind, TiffSaysItByItsExtraSamples) {
    ImageSpec associated = Picture(4);
    EXPECT_EQ(AlphaKindOf("tiff", associated), kAlphaPremultiplied);
    associated.attribute("oiio:UnassociatedAlpha", 1);
    EXPECT_EQ(AlphaKindOf("tiff", associated), kAlphaStraight);
    ImageSpec unspecified = Picture(4);
    unspecified.alpha_channel = -1;
    EXPECT_EQ(AlphaKindOf("tiff", unspecified), kAlphaStraight);
}

TEST(AlphaKind, TargaSaysItByItsExtensionArea) {
    ImageSpec spec = Picture(4);
    spec.attribute("targa:alpha_type", 4);
    EXPECT_EQ(AlphaKindOf("targa", spec), kAlphaPremultiplied);
    spec.attribute("targa:alpha_type", 3);
    EXPECT_EQ(AlphaKindOf("targa", spec), kAlphaStraight);
}

// --- light -----------------------------------------------------------------------------------------------------------

TEST(TransferOf, FloatsAreLinearAndIntegersBySrgb) {
    for (const char* format : {"openexr", "tiff", "hdr", "dds", "pnm"})
        EXPECT_EQ(TransferOf(format, Picture(3, OIIO::TypeFloat)).kind, kTransferLinear) << format;
    EXPECT_EQ(TransferOf("openexr", Picture(3, OIIO::TypeHalf)).kind, kTransferLinear);
    EXPECT_EQ(TransferOf("openexr", Picture(3, OIIO::TypeHalf)).gamma, 1.0);
    for (const char* format : {"png", "tiff", "jpeg", "targa", "dds", "pnm"})
        EXPECT_EQ(TransferOf(format, Picture(3)).kind, kTransferSrgb) << format;
    EXPECT_EQ(TransferOf("png", Picture(3, OIIO::TypeUInt16)).gamma, 2.2);
}

TEST(TransferOf, TheFilesOwnColourSpaceDecides) {
    EXPECT_EQ(TransferOf("openexr", InSpace("sRGB", OIIO::TypeHalf)).kind, kTransferSrgb);
    EXPECT_EQ(TransferOf("png", InSpace("lin_rec709_scene")).kind, kTransferLinear);
    EXPECT_EQ(TransferOf("png", InSpace("srgb_rec709_scene")).kind, kTransferSrgb);
    EXPECT_EQ(TransferOf("tiff", InSpace("Linear", OIIO::TypeUInt16)).kind, kTransferLinear);
    EXPECT_EQ(TransferOf("openexr", InSpace("ACEScg", OIIO::TypeHalf)).kind, kTransferLinear);
    EXPECT_EQ(TransferOf("dpx", InSpace("KodakLog")).kind, kTransferUnknown);
}

TEST(TransferOf, AnExponentIsReadFromTheNameOfTheSpace) {
    EXPECT_EQ(TransferOf("png", InSpace("g22_rec709_scene")).kind, kTransferGamma);
    EXPECT_DOUBLE_EQ(TransferOf("png", InSpace("g22_rec709_scene")).gamma, 2.2);
    EXPECT_DOUBLE_EQ(TransferOf("png", InSpace("Gamma1.8")).gamma, 1.8);
    EXPECT_EQ(TransferOf("png", InSpace("grey")).kind, kTransferSrgb);  // no number: by its type
    EXPECT_EQ(TransferOf("png", InSpace("g999999_x")).kind, kTransferSrgb);
}

TEST(TransferOf, AStatedGammaCountsWhereNoSpaceIsNamed) {
    ImageSpec spec = Picture(3);
    spec.attribute("oiio:Gamma", 2.0F);
    EXPECT_EQ(TransferOf("targa", spec).kind, kTransferGamma);
    EXPECT_DOUBLE_EQ(TransferOf("targa", spec).gamma, 2.0);
    spec.attribute("oiio:Gamma", 1.0F);
    EXPECT_EQ(TransferOf("targa", spec).kind, kTransferLinear);
    spec.attribute("oiio:Gamma", std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(TransferOf("targa", spec).kind, kTransferSrgb);
}

TEST(TransferOf, ARadianceFileSaysWhatEncodedIt) {
    ImageSpec spec = InSpace("lin_rec709_scene", OIIO::TypeFloat);
    EXPECT_EQ(TransferOf("hdr", spec).kind, kTransferLinear);
    spec.attribute("oiio:Gamma", 0.5F);  // of a file with the line "GAMMA=2.0"
    EXPECT_DOUBLE_EQ(TransferOf("hdr", spec).gamma, 2.0);
}

TEST(TransferOf, DensitiesAndMeasurementsMeanNothingKnown) {
    for (const char* format : {"dpx", "cineon", "fits", "dicom"})
        EXPECT_EQ(TransferOf(format, Picture(1, OIIO::TypeUInt16)).kind, kTransferUnknown) << format;
}

// --- resolution ------------------------------------------------------------------------------------------------------

TEST(ResolutionOf, IsInDotsPerInchWhateverTheFileCountsIn) {
    EXPECT_DOUBLE_EQ(ResolutionOf("tiff", WithResolution(300, 150, "in")).x, 300);
    EXPECT_DOUBLE_EQ(ResolutionOf("tiff", WithResolution(300, 150, "in")).y, 150);
    EXPECT_DOUBLE_EQ(ResolutionOf("png", WithResolution(72, 72, "inch")).x, 72);
    EXPECT_NEAR(ResolutionOf("jpeg", WithResolution(118.11F, 118.11F, "cm")).x, 300, 0.01);
    EXPECT_NEAR(ResolutionOf("bmp", WithResolution(11811, 11811, "m")).x, 300, 0.01);
    EXPECT_DOUBLE_EQ(ResolutionOf("tiff", WithResolution(96, 96, nullptr)).x, 96);
}

TEST(ResolutionOf, CountsInAnyKindOfNumber) {
    ImageSpec spec = Picture(3);
    spec.attribute("XResolution", 11811);
    spec.attribute("ResolutionUnit", "m");
    EXPECT_NEAR(ResolutionOf("bmp", spec).x, 300, 0.01);
    EXPECT_NEAR(ResolutionOf("bmp", spec).y, 300, 0.01);  // the other one where only one is there
}

TEST(ResolutionOf, IsZeroWhereTheFileSaysNothingThatCanBe) {
    EXPECT_EQ(ResolutionOf("png", Picture(3)).x, 0);
    EXPECT_EQ(ResolutionOf("jpeg", WithResolution(1, 1, "none")).x, 0);
    EXPECT_EQ(ResolutionOf("tiff", WithResolution(-300, -300, "in")).x, 0);
    EXPECT_EQ(ResolutionOf("tiff", WithResolution(std::numeric_limits<float>::infinity(), 1e30F, "in")).x, 0);
    EXPECT_EQ(ResolutionOf("tiff", WithResolution(std::numeric_limits<float>::quiet_NaN(), 0, "in")).y, 0);
}

TEST(ResolutionOf, APsdFileCountsInInchesWhateverItIsShownIn) {
    EXPECT_DOUBLE_EQ(ResolutionOf("psd", WithResolution(300, 300, "cm")).x, 300);
}
