#include "readers/FileSamples.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

TEST(CommonImageExtension, AreTheseNineteen) {
    for (const wchar_t* extension :
         {L".png", L".jpg", L".jpeg", L".jp2", L".jfif", L".tif", L".tiff", L".bmp", L".rle", L".hdr", L".tga",
          L".tpic", L".gif", L".webp", L".pbm", L".pgm", L".ppm", L".ico", L".psd"}) {
        EXPECT_EQ(IsCommonImageExtension((std::wstring(L"dir/name") + extension).c_str()), 9);
        EXPECT_EQ(IsCommonImageExtension(extension), 9);
    }
    for (const wchar_t* name :
         {L"x.jpe", L"x.exr", L"x.dds", L"x.pcx", L"x.jxl", L"x.pnm", L"x.bil", L"x.png2", L"x.pn"}) {
        EXPECT_EQ(IsCommonImageExtension(name), -1);
    }
}

TEST(CommonImageExtension, CaseDoesNotMatter) {
    EXPECT_EQ(IsCommonImageExtension(L"X.PNG"), 9);
    EXPECT_EQ(IsCommonImageExtension(L"x.TiFf"), 9);
}

TEST(CommonImageExtension, BeginsAtTheLastDotOfTheWholePath) {
    EXPECT_EQ(IsCommonImageExtension(L"x.dds.png"), 9);
    EXPECT_EQ(IsCommonImageExtension(L"x.png.dds"), -1);
    EXPECT_EQ(IsCommonImageExtension(L"d.png/a"), -1);
    EXPECT_EQ(IsCommonImageExtension(L"x.png/"), -1);
    EXPECT_EQ(IsCommonImageExtension(L"png"), -1);
    EXPECT_EQ(IsCommonImageExtension(L"x."), -1);
    EXPECT_EQ(IsCommonImageExtension(L""), -1);
}

class Detection : public testing::Test {
protected:
    int Detect(const std::string& name) { return DetectImageFileType(Wide(mFolder / name)); }
    int DetectBytes(const ByteBuilder& file, const std::string& name = "file.dat") {
        mFolder.Write(name, file.Bytes());
        return Detect(name);
    }
    int DetectText(std::string_view text) { return DetectBytes(ByteBuilder().Text(text)); }

    TemporaryFolder mFolder;
};

TEST_F(Detection, ACommonExtensionDecidesWithoutTheFile) {
    EXPECT_EQ(Detect("missing.PNG"), Other);
    EXPECT_EQ(Detect("missing.hdr"), Other);
    EXPECT_EQ(DetectBytes(ByteBuilder().Text("DDS "), "x.png"), Other);
    ASSERT_EQ(mkfifo((mFolder / "pipe.jpg").c_str(), 0600), 0);
    EXPECT_EQ(Detect("pipe.jpg"), Other);
}

TEST_F(Detection, WhatCannotBeOpenedIsNone) {
    EXPECT_EQ(Detect("missing.pcx"), None);
    EXPECT_EQ(DetectImageFileType(L""), None);
    EXPECT_EQ(DetectImageFileType(Wide(mFolder.Path())), None) << "a folder";
    ASSERT_EQ(mkfifo((mFolder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(Detect("pipe"), None) << "and does not wait for a writer";
    EXPECT_EQ(DetectImageFileType(L"/dev/zero"), None);
    EXPECT_EQ(DetectImageFileType(std::wstring(5000, L'a').c_str()), None);
}

TEST_F(Detection, EveryKindIsKnownByItsContent) {
    EXPECT_EQ(DetectText("DDS "), DDS);
    EXPECT_EQ(DetectBytes(ByteBuilder().Little32(20000630)), OpenEXR);
    EXPECT_EQ(DetectBytes(PcxStart()), PCX);
    EXPECT_EQ(DetectBytes(CalsStart()), CALS);
    EXPECT_EQ(DetectBytes(FlicStart()), FLIC);
    EXPECT_EQ(DetectBytes(PictVersion2()), PICT);
    EXPECT_EQ(DetectBytes(RlcFile(20, {{{0, 5}, {5, 20}}, {}, {{3, 3}}})), RLC);
    EXPECT_EQ(DetectText("some text"), Other);
}

TEST_F(Detection, FilesShorterThanTheirMagicNumberAreOther) {
    EXPECT_EQ(DetectText(""), Other);
    EXPECT_EQ(DetectText("DDS"), Other);
    EXPECT_EQ(DetectText("dds "), Other);
    EXPECT_EQ(DetectBytes(ByteBuilder().Byte(0x76).Byte(0x2F).Byte(0x31)), Other);
    EXPECT_EQ(DetectBytes(ByteBuilder().Byte(0x76).Byte(0x2F).Byte(0x31).Byte(0x01)), OpenEXR);
    EXPECT_EQ(DetectBytes(ByteBuilder().Byte(0x01).Byte(0x31).Byte(0x2F).Byte(0x76)), Other);
}

TEST_F(Detection, OpenExrComesBeforeAllThatFollow) {
    EXPECT_EQ(DetectBytes(FlicStart().At(0).Little32(20000630)), OpenEXR);
    EXPECT_EQ(DetectBytes(PictVersion2().At(0).Little32(20000630)), OpenEXR);
}

TEST_F(Detection, DdsComesBeforeAllThatFollow) {
    EXPECT_EQ(DetectBytes(FlicStart().At(0).Text("DDS ")), DDS);
}

TEST_F(Detection, PcxComesBeforeCals) {
    ByteBuilder both = CalsStart().At(0).Append(PcxStart().Bytes());
    EXPECT_EQ(DetectBytes(both), PCX);
    EXPECT_EQ(DetectBytes(both.At(0).Byte(11)), CALS) << "it was both";
}

TEST_F(Detection, CalsComesBeforeFlic) {
    ByteBuilder both = CalsStart().At(0).Append(FlicStart().Bytes());
    EXPECT_EQ(DetectBytes(both), CALS);
    EXPECT_EQ(DetectBytes(both.At(768).Text("x")), FLIC);
}

TEST_F(Detection, FlicComesBeforePict) {
    ByteBuilder both = PictVersion2().At(0).Append(FlicStart().Bytes());
    EXPECT_EQ(DetectBytes(both), FLIC);
    EXPECT_EQ(DetectBytes(both.At(4).Byte(0)), PICT);
}

/// A picture behind 100 rows without runs.
ByteBuilder PictAndRlc() {
    return PictVersion2().At(0).Big16(100).Big16(100);
}

TEST_F(Detection, PictComesBeforeRlc) {
    EXPECT_EQ(DetectBytes(PictAndRlc()), PICT);
    EXPECT_EQ(DetectBytes(PictAndRlc().At(522).Byte(1)), RLC);
}

TEST_F(Detection, ASpotRasterIsKnownByItsSideFile) {
    mFolder.Write("q.hdr", "NCOLS 2\nNROWS 2\n");
    mFolder.Write("q.bil", "abcd");
    EXPECT_EQ(Detect("q.bil"), Spot);
    EXPECT_EQ(Detect("q.hdr"), Other) << "an extension that decides by itself";
    EXPECT_EQ(Detect("q.xyz"), None) << "the path itself must open";
    mFolder.Write("q.xyz", "");
    EXPECT_EQ(Detect("q.xyz"), Spot);
    mFolder.Write("q", "");
    EXPECT_EQ(Detect("q"), Other);
    std::filesystem::create_directory(mFolder / "d.bil");
    mFolder.Write("d.bil/q", "abcd");
    mFolder.Write("d.hdr", "NCOLS 2\nNROWS 2\n");
    EXPECT_EQ(Detect("d.bil/q"), Other) << "the extension of a folder is not the file's";
    mFolder.Write("q.bil", "");
    EXPECT_EQ(Detect("q.xyz"), Other) << "without data";
}

TEST_F(Detection, ContentWinsOverTheSideFile) {
    mFolder.Write("q.hdr", "NCOLS 2\nNROWS 2\n");
    EXPECT_EQ(DetectBytes(PcxStart(), "q.bil"), PCX);
    EXPECT_EQ(DetectBytes(RlcFile(20, {{{0, 5}}, {}}), "q.bil"), RLC);
    EXPECT_EQ(DetectBytes(ByteBuilder(100), "q.bil"), Spot);
}

TEST_F(Detection, NamesMayBeAnyText) {
    EXPECT_EQ(DetectBytes(ByteBuilder().Text("DDS "), "\u00FC \U0001F600.dat"), DDS);
    mFolder.Write("\u00FC.hdr", "NCOLS 2\nNROWS 2\n");
    EXPECT_EQ(DetectBytes(ByteBuilder(4), "\u00FC.bil"), Spot);
}

std::ptrdiff_t OpenFiles() {
    return std::ranges::distance(std::filesystem::directory_iterator("/proc/self/fd"));
}

TEST_F(Detection, LeavesNoFileOpen) {
    mFolder.Write("q.hdr", "NCOLS 2\nNROWS 2\n");
    mFolder.Write("q.pal", "1 2 3 4\n");
    const auto before = OpenFiles();
    EXPECT_EQ(DetectText("DDS "), DDS);
    EXPECT_EQ(DetectBytes(PictVersion2()), PICT);
    EXPECT_EQ(DetectBytes(ByteBuilder(4), "q.bil"), Spot);
    EXPECT_EQ(DetectText("text"), Other);
    EXPECT_EQ(DetectImageFileType(Wide(mFolder.Path())), None);
    EXPECT_EQ(OpenFiles(), before);
}

}  // namespace
