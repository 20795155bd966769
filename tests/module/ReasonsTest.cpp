// What the thread's failure says of files that cannot be read at all, and when it says it.

#include "module/Reasons.h"
#include "support/Program.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/EXRHandler.h>
#include <kavra/devices/IImage.h>
#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/ImageDesc.h>

#include <OpenImageIO/imageio.h>

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

constexpr std::array<const char*, 4> kNames = {"a.png", "a.dds", "a.pcx", "a.xyz"};

/// A format handler that fails with a load of its own while it is asked.
class FailingChooser final : public IImageFormatHandler {
public:
    FailingChooser(IImageHandler& handler, std::filesystem::path missing)
        : mHandler(handler), mMissing(std::move(missing)) {}
    EFormat ChooseFormat(EFormat fileFormat, int) override {
        (void)LoadFile(mHandler, mMissing);
        return fileFormat;
    }

private:
    IImageHandler& mHandler;
    std::filesystem::path mMissing;
};

}  // namespace

TEST_F(Reasons, AMissingFileIsSaidToBeMissingWhateverItsName) {
    for (const char* name : kNames) {
        const Reason reason = AfterLoad(folder / name);
        EXPECT_EQ(reason.kind, kFailureNoSuchFile) << name;
        EXPECT_EQ(reason.text, "there is no such file") << name;
    }
}

TEST_F(Reasons, PixelsThatNoFormatHoldsAreNamed) {
    const auto write = [&](const std::string& name, int channels) {
        std::string path = folder / name;
        const std::vector<float> values(static_cast<std::size_t>(channels) * 4);
        const auto writer = OIIO::ImageOutput::create(path);
        if (!writer || !writer->open(path, OIIO::ImageSpec(2, 2, channels, OIIO::TypeFloat)) ||
            !writer->write_image(OIIO::TypeFloat, values.data()) || !writer->close())
            ADD_FAILURE() << name;
        return path;
    };
    const std::pair<std::string, std::string> files[] = {
        {write("x.tif", 6), "no format of pixels here holds 6 channels of float"},
        {write("x.zfile", 1), "holds depth alone (channel z), which is no colour unless chosen by that name"}};
    for (const auto& [path, text] : files) {
        EXPECT_EQ(AfterLoad(path).text, text);
        EXPECT_FALSE(mLoaded);
        EXPECT_EQ(handler.GetImageDesc(Wide(path)), nullptr);
        EXPECT_EQ(ReasonNow().kind, kFailureUnsupported);
        EXPECT_EQ(ReasonNow().text, text);
    }
}

TEST_F(Reasons, PixelsThatAreWantedAsBlocksAreSaidToGoIntoTextureFiles) {
    for (const EFormat format : {kBC1, kBC5, kBC7}) {
        const Reason reason = AfterLoad(Sample("grey.png"), {.format = format});
        EXPECT_FALSE(mLoaded);
        EXPECT_EQ(reason.kind, kFailureFormat);
        EXPECT_EQ(reason.text, "it has pixels and blocks are wanted, which go into .dds and .ktx2 files");
    }
}

TEST_F(Reasons, TheSameIsSaidByEveryWayToAskForAFile) {
    const Kavra::Objects::KString path = Wide(folder / "a.png");
    EXPECT_EQ(handler.GetImageDesc(path), nullptr);
    EXPECT_EQ(ReasonNow().kind, kFailureNoSuchFile);
    EXPECT_EQ(handler.Inspect(path), nullptr);
    EXPECT_EQ(ReasonNow().kind, kFailureNoSuchFile);
    DDSReader dds;
    EXPECT_FALSE(dds.Load(path));
    EXPECT_EQ(ReasonNow().kind, kFailureNoSuchFile);
    EXRHandler exr(true);
    EXPECT_FALSE(exr.ReadFromFile(path));
    EXPECT_EQ(ReasonNow().kind, kFailureNoSuchFile);
}

TEST_F(Reasons, ALinkThatLeadsNowhereIsNamed) {
    std::filesystem::create_symlink(folder / "gone", folder / "a.png");
    const Reason reason = AfterLoad(folder / "a.png");
    EXPECT_EQ(reason.kind, kFailureNoSuchFile);
    EXPECT_EQ(reason.text, "the link leads to no file");
}

TEST_F(Reasons, AFolderAPipeASocketAndADeviceAreNamed) {
    for (const char* name : kNames) {
        std::filesystem::create_directory(folder / name);
        EXPECT_EQ(AfterLoad(folder / name).kind, kFailureIsFolder) << name;
        std::filesystem::remove(folder / name);
        ASSERT_EQ(mkfifo((folder / name).c_str(), 0600), 0);
        EXPECT_EQ(AfterLoad(folder / name).kind, kFailureNoRegularFile) << name;
        EXPECT_EQ(ReasonNow().text, "it is a pipe, not a file") << name;
        std::filesystem::remove(folder / name);
    }
    EXPECT_EQ(AfterLoad("/dev/null").text, "it is a device, not a file");
}

TEST_F(Reasons, APathThatLeadsThroughAFileOrHasNoNameLeadsToNone) {
    EXPECT_EQ(AfterLoad(folder.Write("file", "x") / "a.png").kind, kFailureNoSuchFile);
    EXPECT_EQ(AfterLoad("").kind, kFailureNoSuchFile);
    EXPECT_EQ(AfterLoad(folder / std::string(300, 'a')).kind, kFailureNoSuchFile);
}

TEST_F(Reasons, AFileThatMayNotBeReadIsSaidToBeThat) {
    if (geteuid() == 0) GTEST_SKIP() << "the superuser may read everything";
    const auto path = folder.Write("a.png", "x");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    EXPECT_EQ(AfterLoad(path).kind, kFailureNoPermission);
}

TEST_F(Reasons, AnEmptyFileIsSaidToBeEmpty) {
    for (const char* name : kNames)
        EXPECT_EQ(AfterLoadOf(name, "").kind, kFailureEmptyFile) << name;
}

TEST_F(Reasons, TextIsNoImageUnderAnyName) {
    for (const char* name : {"a.png", "a.tif", "a.jpg", "a.exr", "a.tga", "a.bmp", "a.hdr", "a.xyz", "a"}) {
        const Reason reason = AfterLoadOf(name, "Once upon a time there was a file that was none.\n");
        EXPECT_EQ(reason.kind, kFailureNotAnImage) << name;
        EXPECT_EQ(reason.text, "it is text, not an image") << name;
    }
}

TEST_F(Reasons, BytesThatMeanNothingAreNoImage) {
    std::string bytes;
    for (unsigned i = 0, state = 77; i < 5000; ++i, state = state * 1103515245 + 12345)
        bytes += static_cast<char>(state >> 16);
    for (const char* name : {"a.png", "a.tif", "a.jpg", "a.exr", "a.dat", "a"})
        EXPECT_EQ(AfterLoadOf(name, bytes).kind, kFailureNotAnImage) << name;
}

TEST_F(Reasons, FilesOfOtherKindsAreCalledByTheirNames) {
    const Reason pdf = AfterLoadOf("a.png", "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n1 0 obj");
    EXPECT_EQ(pdf.kind, kFailureUnknownType);
    EXPECT_EQ(pdf.text, "nothing here reads files of this kind: a PDF document");
}

TEST_F(Reasons, ALoadThatSucceedsForgetsTheFailureBefore) {
    EXPECT_EQ(AfterLoad(folder / "a.png").kind, kFailureNoSuchFile);
    EXPECT_EQ(AfterLoad(Sample("photo.jpg")).kind, kFailureNone);
    EXPECT_TRUE(mLoaded);
}

TEST_F(Reasons, NothingIsLeftByTheSamples) {
    for (const auto& sample : AllSamples()) {
        const Reason reason = AfterLoad(sample);
        EXPECT_EQ(reason.kind == kFailureNone, mLoaded) << sample << ": " << reason.text;
        EXPECT_EQ(IsDescribed(handler, sample), ReasonNow().kind == kFailureNone) << sample;
    }
}

/// The outer load fails too, over what it said before it asked: the inner one must not have cleared that, nor may what
/// it says itself stay where the outer one succeeds.
TEST_F(Reasons, AnOperationWithinAnotherLeavesNothingBehindWhereTheOuterOneSucceeds) {
    FailingChooser chooser(handler, folder / "missing.png");
    EXPECT_EQ(AfterLoad(Sample("photo.jpg"), {.formatHandler = &chooser}).kind, kFailureNone);
    EXPECT_TRUE(mLoaded);
}

TEST_F(Reasons, AnOperationOfTheHostWithinOneOfTheModuleIsPartOfIt) {
    BeginOperation();
    FailureReport said;
    said.kind = kFailureTooLarge;
    said.text = "first";
    SetLastFailure(said);
    EXPECT_EQ(AfterLoad(Sample("photo.jpg")).text, "first");
    DDSReader reader;
    EXPECT_FALSE(reader.Load(Wide(folder / "missing.dds")));
    EXPECT_EQ(ReasonNow().text, "first");
    EndOperation(false);
    EXPECT_EQ(ReasonNow().text, "first");
    EXPECT_EQ(AfterLoad(Sample("photo.jpg")).kind, kFailureNone);
}

TEST_F(Reasons, OfThreadsThatLoadAtATimeEachHasItsOwn) {
    EXPECT_EQ(AfterLoad(folder / "a.png").kind, kFailureNoSuchFile);
    std::thread([&] {
        EXPECT_EQ(ReasonNow().kind, kFailureNone);
        EXPECT_EQ(AfterLoadOf("b.png", "").kind, kFailureEmptyFile);
    }).join();
    EXPECT_EQ(ReasonNow().kind, kFailureNoSuchFile);
}

TEST_F(Reasons, SavingWithoutAPictureIsAskingForTheImpossible) {
    EXPECT_FALSE(handler.SaveTexture(Wide(folder / "a.png")));
    EXPECT_EQ(ReasonNow().kind, kFailureArguments);
}
