// What the thread's failure says of pictures that are not saved, made or changed.

#include "module/Reasons.h"
#include "output/SavingFixture.h"
#include "output/SmallDisk.h"
#include "support/Program.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/devices/IImage.h>
#include <kavra/devices/ImageLimits.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/devices/SavePreferences.h>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

class SavingReasons : public Reasons {
protected:
    Reason AfterSave(const std::filesystem::path& path, const Texture& texture) {
        mSaved = handler.SaveTexture(Wide(path), texture.desc, texture.bytes.data());
        return ReasonNow();
    }
    Reason AfterSave(std::string_view name) { return AfterSave(folder / name, {8, 8, kR8G8B8A8}); }

    bool mSaved = false;
};

}  // namespace

TEST_F(SavingReasons, ASaveThatSucceedsLeavesNothing) {
    EXPECT_EQ(AfterSave("a.png").kind, kFailureNone);
    EXPECT_TRUE(mSaved);
    EXPECT_EQ(AfterSave("a.dds").kind, kFailureNone);
    EXPECT_TRUE(mSaved);
}

TEST_F(SavingReasons, AnExtensionThatNobodyWritesIsNamed) {
    const Reason reason = AfterSave("a.xyz");
    EXPECT_FALSE(mSaved);
    EXPECT_EQ(reason.kind, kFailureUnknownType);
    EXPECT_EQ(reason.text, "no writer for files named .xyz");
    EXPECT_EQ(AfterSave("a").text, "the name has no extension that says what to write");
}

TEST_F(SavingReasons, WhatAFileCannotHoldIsSaid) {
    const Texture blocks(8, 8, kBC1);
    EXPECT_EQ(AfterSave(folder / "a.png", blocks).kind, kFailureFormat);
    DDSWriter writer;
    EXPECT_FALSE(writer.Construct(kTextureCube, kR8G8B8A8, 8, 4, 1, 1, 8 * 4 * 4 * 6, 0));
    EXPECT_EQ(ReasonNow().kind, kFailureFormat);
    EXPECT_FALSE(writer.Write(Wide(folder / "a.dds"), blocks.bytes.data()));
    EXPECT_EQ(ReasonNow().kind, kFailureArguments);
}

TEST_F(SavingReasons, AFolderUnderTheNameIsNamed) {
    for (const char* name : {"a.png", "a.dds"}) {
        std::filesystem::create_directory(folder / name);
        EXPECT_EQ(AfterSave(name).kind, kFailureIsFolder) << name;
        EXPECT_FALSE(mSaved);
    }
}

TEST_F(SavingReasons, AFolderThatCannotBeMadeIsTheReason) {
    folder.Write("file", "x");
    for (const char* name : {"file/a.png", "file/a.dds"}) {
        const Reason reason = AfterSave(name);
        EXPECT_EQ(reason.kind, kFailureCannotWrite) << name;
        EXPECT_EQ(reason.text, "a part of its path is no folder") << name;
    }
}

TEST_F(SavingReasons, ADiskThatTakesNoMoreIsTheReason) {
    const Texture large(300, 300, kR8G8B8A8);
    for (const char* name : {"a.png", "a.dds", "a.tif", "a.bmp"}) {
        const SmallDisk disk(1000);
        const Reason reason = AfterSave(folder / name, large);
        EXPECT_FALSE(mSaved) << name;
        EXPECT_EQ(reason.kind, kFailureCannotWrite) << name << ": " << reason.text;
        EXPECT_EQ(reason.text, "File too large") << name;
    }
}

TEST_F(SavingReasons, APictureWithoutPixelsSaysWhy) {
    IImage* const image = handler.CreateImage(8, 8, kBC1);
    EXPECT_EQ(ReasonNow().kind, kFailureFormat);
    ASSERT_NE(image, nullptr);
    image->AddRef();
    EXPECT_FALSE(image->Save(Wide(folder / "a.png")));
    EXPECT_EQ(ReasonNow().kind, kFailureArguments);
    image->ReleaseRef();
}

TEST_F(SavingReasons, LightAndSizesSayWhatTheyDoNotDo) {
    ImageDescription cube;
    cube.textureType = kTextureCube;
    (void)handler.GetAverageColor(cube, nullptr, false);
    EXPECT_EQ(ReasonNow().kind, kFailureUnsupported);
    EXPECT_EQ(handler.FindIBLLightDirections(cube, nullptr, nullptr, nullptr, 0), 0U);
    EXPECT_EQ(ReasonNow().kind, kFailureArguments);
    int pitch = 0;
    EXPECT_EQ(handler.Resize(kResizeFilter, nullptr, 0, 0, {1, 1, 1}, kR8G8B8A8, kTexture2D, {2, 2, 1}, pitch,
                             kFilterBilinear),
              nullptr);
    EXPECT_EQ(ReasonNow().kind, kFailureArguments);
}

TEST_F(SavingReasons, FramesLevelsFacesAndChannelsThatAreNotThereAreCounted) {
    EXPECT_EQ(AfterLoad(Sample("pages.tif"), {.level = 7}).kind, kFailureOutOfRange);
    const Reason frame = AfterLoad(Sample("spinner.gif"), {.level = 700});
    EXPECT_EQ(frame.kind, kFailureOutOfRange);
    EXPECT_TRUE(frame.text.starts_with("there is no frame 700; the file has ")) << frame.text;
    const Reason level = AfterLoad(Sample("mips.dds"), {.level = 30});
    EXPECT_TRUE(level.text.starts_with("there is no mip level 30; the file has ")) << level.text;
    LoadPreferences preferences;
    preferences.channels = "R,Q";
    {
        const LoadPreferencesScope scope(preferences);
        EXPECT_EQ(AfterLoad(Sample("photo.jpg")).text, "there are no channels R,Q; the file has R, G, B");
    }
    preferences.channels = nullptr;
    preferences.face = 2;
    const LoadPreferencesScope scope(preferences);
    EXPECT_EQ(AfterLoad(Sample("photo.jpg")).text, "there is no face 2; it is no cube map");
    EXPECT_EQ(AfterLoad(Sample("photo.dds")).text, "there is no face 2; it is no cube map");
}

/// 480 x 320 pixels.
TEST_F(SavingReasons, ALimitIsNamedWithWhatItWouldTake) {
    ImageLimits limits;
    limits.maxPixels = 1000;
    SetImageLimits(limits);
    const Reason reason = AfterLoad(Sample("photo.jpg"));
    SetImageLimits({});
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(reason.kind, kFailureTooLarge);
    EXPECT_EQ(reason.text, "the picture has 153600 pixels, and the limit is 1000");
}
