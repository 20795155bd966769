// What of a source's metadata is in the file that a command makes of it, and what is said of the rest.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/ColourProfile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

struct KeptMetadata : testing::Test {
    /// A picture of 40 x 32 pixels that says much of itself.
    std::filesystem::path Source(const Profile& profile = MakeProfile("RGB ", 400),
                                 const std::string& name = "in.jpg") {
        OIIO::ImageSpec spec(40, 32, 3, OIIO::TypeDesc::UINT8);
        if (!profile.empty()) {
            spec.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, static_cast<int>(profile.size())),
                           profile.data());
        }
        spec.attribute("XResolution", 144.0F);
        spec.attribute("YResolution", 144.0F);
        spec.attribute("ResolutionUnit", "in");
        spec.attribute("ImageDescription", "A ship");
        spec.attribute("Copyright", "2026 Ann");
        spec.attribute("Artist", "Ann");
        spec.attribute("Make", "Maker");
        spec.attribute("ExposureTime", 0.004F);
        spec.attribute("Exif:BodySerialNumber", "12345");
        spec.attribute("GPS:LatitudeRef", "N");
        std::vector<unsigned char> pixels(spec.image_bytes(), 100);
        const auto path = folder / name;
        const auto output = OIIO::ImageOutput::create(path.string());
        EXPECT_TRUE(output && output->open(path.string(), spec) &&
                    output->write_image(OIIO::TypeDesc::UINT8, pixels.data()) && output->close());
        return path;
    }
    OIIO::ImageSpec Made(const std::string& name) const { return PictureFile(folder / name).Spec(); }

    TemporaryFolder folder;
};

Profile ProfileIn(const OIIO::ImageSpec& spec) {
    const OIIO::ParamValue* const found = spec.find_attribute("ICCProfile");
    if (found == nullptr) return {};
    const auto* const bytes = static_cast<const unsigned char*>(found->data());
    return {bytes, bytes + found->type().size()};
}

TEST_F(KeptMetadata, TypesWithAPlaceForItKeepIt) {
    const auto in = Source();
    for (const std::string name : {"a.png", "a.tif", "a.jpg"}) {
        ExpectDone({"convert", in, folder / name});
        const auto spec = Made(name);
        EXPECT_EQ(ProfileIn(spec), MakeProfile("RGB ", 400)) << name;
        EXPECT_EQ(spec.get_float_attribute("XResolution"), 144) << name;
        EXPECT_EQ(spec.get_string_attribute("ImageDescription"), "A ship") << name;
        EXPECT_EQ(spec.get_string_attribute("Copyright"), "2026 Ann") << name;
        EXPECT_EQ(spec.get_string_attribute("Artist"), "Ann") << name;
        EXPECT_EQ(spec.get_string_attribute("Make"), "Maker") << name;
        EXPECT_NEAR(spec.get_float_attribute("ExposureTime"), 0.004, 1e-4) << name;
    }
}

TEST_F(KeptMetadata, PlacesAndSerialNumbersAreNeverKept) {
    const auto in = Source();
    for (const std::string name : {"a.png", "a.tif", "a.jpg"}) {
        ExpectDone({"convert", in, folder / name});
        EXPECT_EQ(Made(name).get_string_attribute("Exif:BodySerialNumber"), "") << name;
        EXPECT_EQ(Made(name).get_string_attribute("GPS:LatitudeRef"), "") << name;
    }
}

TEST_F(KeptMetadata, WhatCannotBeKeptIsNotedOnce) {
    const auto in = Source();
    ExpectDone(
        {"convert", in, folder / "a.webp"},
        NoteLine(in,
                 ".webp files cannot keep: ImageDescription, Copyright, Artist, Make, ExposureTime, the resolution"));
    EXPECT_EQ(ProfileIn(Made("a.webp")), MakeProfile("RGB ", 400));
    ExpectDone(
        {"convert", in, folder / "a.tga"},
        NoteLine(in, ".tga files cannot keep: the colour profile, Copyright, Make, ExposureTime, the resolution"));
    EXPECT_EQ(Made("a.tga").get_string_attribute("Artist"), "Ann");
}

TEST_F(KeptMetadata, StripKeepsNothingAndNotesNothing) {
    const auto in = Source();
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.webp", "a.bmp"}) {
        ExpectDone({"convert", in, folder / name, "--strip"});
        const auto spec = Made(name);
        EXPECT_TRUE(ProfileIn(spec).empty()) << name;
        for (const char* text : {"ImageDescription", "Copyright", "Artist", "Make"})
            EXPECT_EQ(spec.get_string_attribute(text), "") << name << text;
    }
}

TEST_F(KeptMetadata, AResolutionOfOnesOwnTakesThePlaceOfTheSources) {
    ExpectDone({"convert", Source(), folder / "a.png", "--dpi", "300"});
    EXPECT_EQ(Made("a.png").get_float_attribute("XResolution"), 300);
}

TEST_F(KeptMetadata, ADamagedProfileIsLeftOutWithANote) {
    Profile damaged = MakeProfile("RGB ", 400);
    SetNumber(damaged, 128, 0xFFFFFF);
    const auto in = Source(damaged);
    for (const std::string name : {"a.png", "a.tif", "a.jpg"}) {
        ExpectDone({"convert", in, folder / name},
                   NoteLine(in, "the colour profile is damaged or of other channels, and is left out"));
        EXPECT_TRUE(ProfileIn(Made(name)).empty()) << name;
    }
}

TEST_F(KeptMetadata, GreyPicturesGetNoProfileOfColours) {
    const auto in = Source();
    ExpectDone({"convert", in, folder / "a.png", "--grey"},
               NoteLine(in, "the colour profile is damaged or of other channels, and is left out"));
    EXPECT_TRUE(ProfileIn(Made("a.png")).empty());
}

TEST_F(KeptMetadata, PicturesComeOutUprightAndSayNothingElse) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const auto photo = Sample("photo-orientation-" + std::to_string(orientation) + ".jpg");
        for (const std::string name : {"a.jpg", "a.tif", "a.png"}) {
            ExpectDone({"convert", photo, folder / name});
            EXPECT_EQ(PictureFile(folder / name).Size(), "40x60");
            EXPECT_EQ(Made(name).get_int_attribute("Orientation", 1), 1) << orientation << name;
        }
    }
}

}  // namespace
