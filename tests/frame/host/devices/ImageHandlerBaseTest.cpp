#include "common/PixelBlock.h"
#include "frame/host/devices/HandlerDouble.h"

#include <kavra/devices/IImageHandler.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <string>

using namespace Kavra::Devices;
using Kavra::vec4;
using Kavra::Objects::ObjModel;

namespace {

/// Loads one byte block, and averages to something recognisable.
class LoadingDouble final : public Kavra::Tests::HandlerDouble {
public:
    Block* LoadTexture(ImageDescription& desc, const KString& path, int width, int height, int, EFormat format,
                       bool highQuality, int level, EDataOrientation orientation,
                       IImageFormatHandler* formatHandler) override {
        ++loads;
        loadedPath = path.ToChars();
        asksForTheFileAsItIs = width < 1 && height < 1 && format == kUnknown && !highQuality && level == 0 &&
                               orientation == kTopLeft && formatHandler == nullptr;
        if (!hasFile) return nullptr;
        desc.width = 17;
        return new MemoryArrayWrapper<void, unsigned char>(Kavra::Common::NewZeroedBlock(4).release());
    }
    using IImageHandler::GetAverageColor;
    vec4<float> GetAverageColor(const ImageDescription& desc, const void* data, bool flag) override {
        ++averages;
        return {static_cast<float>(desc.width), data != nullptr ? 1.0F : 0.0F, flag ? 1.0F : 0.0F, 0.5F};
    }

    bool hasFile = true;
    int loads = 0;
    int averages = 0;
    bool asksForTheFileAsItIs = false;
    std::wstring loadedPath;
};

TEST(ImageHandlerBase, TheAverageOfAFileIsThatOfItsLoadedBlock) {
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    const std::size_t objects = ObjModel::ObjectCounters().liveBlocks;
    LoadingDouble handler;
    const vec4<float> colour = handler.GetAverageColor(KString(L"a/b.exr"), true);
    EXPECT_EQ(handler.loadedPath, L"a/b.exr");
    EXPECT_TRUE(handler.asksForTheFileAsItIs);
    EXPECT_EQ(handler.loads, 1);
    EXPECT_EQ(handler.averages, 1);
    EXPECT_EQ(colour.x, 17.0F);
    EXPECT_EQ(colour.y, 1.0F);
    EXPECT_EQ(colour.z, 1.0F);
    EXPECT_EQ(colour.w, 0.5F);
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objects);
}

TEST(ImageHandlerBase, TheFlagIsPassedOn) {
    LoadingDouble handler;
    EXPECT_EQ(handler.GetAverageColor(KString(L"x"), false).z, 0.0F);
}

TEST(ImageHandlerBase, AFileThatDoesNotLoadAveragesToNothing) {
    LoadingDouble handler;
    handler.hasFile = false;
    const vec4<float> colour = handler.GetAverageColor(KString(L"missing.png"), false);
    EXPECT_EQ(colour.x, 0.0F);
    EXPECT_EQ(colour.w, 0.0F);
    EXPECT_EQ(handler.averages, 0);
}

TEST(ImageHandlerBase, DdsIsSavedWhateverItsSizeAndFormat) {
    LoadingDouble handler;
    EXPECT_EQ(handler.SupportSave(L"x.dds", 4, 4, 1, kBC7), IImageHandler::kSupported);
    EXPECT_EQ(handler.SupportSave(L"folder.png/X.DDS", 0, 0, 0, kUnknown), IImageHandler::kSupported);
}

TEST(ImageHandlerBase, WhatTheHostCannotWriteItselfIsNotSaved) {
    LoadingDouble handler;
    for (const wchar_t* path : {L"", L"x", L"xdds", L"x.dds/y", L"x.ddsx", L"x.png", L"x.pcx", L"x.exr"})
        EXPECT_EQ(handler.SupportSave(path, 4, 4, 1, kR8G8B8A8), IImageHandler::kUnsupported) << path;
}

TEST(ImageHandlerBase, KnownExtensionsAreLoadedInAnyCase) {
    LoadingDouble handler;
    for (const wchar_t* path :
         {L"x.dds",  L".DDS",   L"x.exr", L"x.PNG", L"x.jpg",  L"x.jpeg", L"x.jp2",  L"x.jfif",
          L"x.tif",  L"x.tiff", L"x.bmp", L"x.rle", L"x.hdr",  L"x.tga",  L"x.tpic", L"x.gif",
          L"x.webp", L"x.pbm",  L"x.pgm", L"x.ppm", L"x.ico",  L"x.psd",  L"x.cal",  L"x.cals",
          L"x.flc",  L"x.fli",  L"x.pcx", L"x.pct", L"x.pict", L"x.rlc",  L"x.bil",  L"a.b/c.d.Tga"})
        EXPECT_EQ(handler.SupportLoad(path), IImageHandler::kSupported) << path;
}

TEST(ImageHandlerBase, OtherExtensionsAreNotLoaded) {
    LoadingDouble handler;
    for (const wchar_t* path : {L"", L"png", L"x", L"x.", L"x.txt", L"x.png/y", L"x.pngx", L"x.pn", L".png.bak"})
        EXPECT_EQ(handler.SupportLoad(path), IImageHandler::kUnsupported) << path;
}

}  // namespace
