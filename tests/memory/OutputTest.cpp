// Images, blocks and files when memory fails: the no-answer, no message beyond those of a failure, and nothing lost.

#include "common/HostObject.h"
#include "memory/ShortMemory.h"
#include "output/ImageFixture.h"
#include "output/SavingFixture.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/ASimpleTexture.h>
#include <kavra/devices/ATarget.h>
#include <kavra/devices/IWriteImageLineProvider.h>
#include <kavra/devices/Sys.h>
#include <kavra/oiio/OIIOImage.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <vector>

using namespace Kavra::Devices;
using Kavra::vec2;
using Kavra::vec3;
using Kavra::Common::HostObject;
using Kavra::Tests::Expected;
using Kavra::Tests::Hold;
using Kavra::Tests::Image;
using Kavra::Tests::kSilence;
using Kavra::Tests::Outcome;
using Kavra::Tests::ReadAll;
using Kavra::Tests::ReadPicture;
using Kavra::Tests::RunLibraryShortOfMemory;
using Kavra::Tests::RunShortOfMemory;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

namespace {

/// A target and a texture in one, which take no memory themselves.
class Picture final : public ATarget, public ASimpleTexture, public IMappedMemory {
public:
    Picture(int width, int height, EFormat format, int pitch, std::vector<unsigned char>& bytes)
        : mWidth(width), mHeight(height), mFormat(format), mPitch(pitch), mBytes(bytes) {}

    int Width() const override { return mWidth; }
    int Height() const override { return mHeight; }
    EFormat Format() const override { return mFormat; }
    IMappedMemory* MemoryWrapper(int) override { return ++held, this; }
    void* Map(int, int& pitch) override {
        ++held;
        pitch = mPitch;
        return mBytes.data();
    }
    void Unmap() override { --held; }
    void Release() override { --held; }
    bool Save(const KString&) override { return false; }
    void AddRef() override { ++held; }
    void ReleaseRef() override { --held; }

    int held = 0;  ///< mapped, handed out or referred to

private:
    int mWidth, mHeight;
    EFormat mFormat;
    int mPitch;
    std::vector<unsigned char>& mBytes;
};

struct Lines final : IWriteImageLineProvider {
    explicit Lines(std::size_t size) : bytes(size) {}
    void FillLine(void* line) override { std::memset(line, 7, bytes); }
    std::size_t bytes;
};

struct OutputShortOfMemory : testing::Test {
    static constexpr int kSide = 12;
    static constexpr int kPitch = kSide * 16;

    OIIOImageHandler handler;
    IImageHandler& host = handler;
    std::vector<unsigned char> bytes = std::vector<unsigned char>(static_cast<std::size_t>(kPitch * kSide), 0x30);

    /// Destroys what was made at once.
    static bool IsImage(IImage* image) { return Hold(image) != nullptr; }
};

TEST_F(OutputShortOfMemory, ABlankImageIsMadeOrNull) {
    RunShortOfMemory(kSilence, [&] { return IsImage(host.CreateImage(kSide, kSide, kR16G16B16A16F)); });
    EXPECT_EQ(OIIOImage::NetObjectCount(), 0);
}

TEST_F(OutputShortOfMemory, AnImageOfATargetIsMadeOrNullAndTheTargetGivenBack) {
    for (const EFormat format : {kB8G8R8A8, kR32G32B32A32F}) {
        Picture picture(kSide, kSide, format, kPitch, bytes);
        RunShortOfMemory(
            kSilence, [&] { return IsImage(host.CreateImage(static_cast<ATarget*>(&picture))); },
            [&] { EXPECT_EQ(picture.held, 0); });
    }
}

TEST_F(OutputShortOfMemory, AnImageOfATextureIsMadeOrNullAndTheTextureLetGo) {
    Picture picture(kSide, kSide, kR8G8B8A8, kPitch, bytes);
    RunShortOfMemory(
        kSilence, [&] { return IsImage(host.CreateImage(static_cast<ASimpleTexture*>(&picture))); },
        [&] { EXPECT_EQ(picture.held, 0); });
}

TEST_F(OutputShortOfMemory, PastingNeedsNoMemory) {
    const Image from = Hold(host.CreateImage(kSide, kSide, kL16)), to = Hold(host.CreateImage(kSide, kSide, kL16));
    const Kavra::Tests::Shortage shortage(0, Kavra::Tests::Refusal::kAllSince);
    EXPECT_TRUE(to->Paste(from.get(), 0, 0, kSide, kSide, 0, 0));
    EXPECT_TRUE(to->Paste(to.get(), 0, 0, 3, 3, 5, 5));
    EXPECT_FALSE(Kavra::Tests::Shortage::HasRefused());
}

TEST_F(OutputShortOfMemory, ARectangleIsReadOrNull) {
    const Image image = Hold(host.CreateImage(kSide, kSide, kR8G8B8A8));
    const auto loads = [&](vec2<int> origin, EFormat format) {
        ImageDescription desc;
        const HostObject<IMemoryWrapper<void>> block(
            image->LoadRect(desc, origin, {kSide, kSide}, {kSide, kSide}, format, kTopLeft));
        return block != nullptr;
    };
    RunShortOfMemory(kSilence, [&] { return loads({0, 0}, kR8G8B8A8); });
    RunShortOfMemory(kSilence, [&] { return loads({-3, 5}, kR8G8B8A8); });  // partly outside
    RunShortOfMemory(kSilence, [&] { return loads({0, 0}, kB8G8R8A8); });   // another order
    RunShortOfMemory(kSilence, [&] { return loads({0, 0}, kL8); });         // fewer channels
}

TEST_F(OutputShortOfMemory, ABlockIsCopiedOrCroppedOrNull) {
    for (const EResizeMethod method : {kResizeCopy, kResizeCropOrPad}) {
        RunShortOfMemory(kSilence, [&] {
            int pitch = 0;
            const HostObject<IMemoryWrapper<void>> block(host.Resize(
                method, bytes.data(), bytes.size(), kPitch, {}, kL8, kTexture2D, {5, 5, 1}, pitch, kFilterNearest));
            return block != nullptr;
        });
    }
}

TEST_F(OutputShortOfMemory, ABlockIsFilteredOrNull) {
    for (const EImageFilterType filter : {kFilterNearest, kFilterMitchell, kFilterBilinear}) {
        RunLibraryShortOfMemory(
            kSilence, [] {},
            [&] {
                int pitch = 0;
                const HostObject<IMemoryWrapper<void>> block(host.Resize(kResizeFilter, bytes.data(), bytes.size(), 0,
                                                                         {kSide, kSide, 1}, kR8G8B8A8, kTexture2D,
                                                                         {5, 5, 1}, pitch, filter));
                return block != nullptr;
            },
            [](const Outcome&) {});
    }
}

TEST_F(OutputShortOfMemory, ARectangleIsScaledAndTurnedAndChangedOrNull) {
    const Image image = Hold(host.CreateImage(kSide, kSide, kR8G8B8A8));
    RunLibraryShortOfMemory(
        kSilence, [] {},
        [&] {
            ImageDescription desc;
            const HostObject<IMemoryWrapper<void>> block(
                image->LoadRect(desc, {1, 2}, {kSide, kSide}, {5, 7}, kR16G16, kLeftTop));
            return block != nullptr;
        },
        [](const Outcome&) {});
}

/// Saving over an old file: by a writer that writes through a proxy, by one that opens the file itself, by one that
/// wants a stream, and by the host's own.
struct SavingShortOfMemory : OutputShortOfMemory {
    /// The host's file handler cannot look for the folder when there is no memory.
    const Expected kFailures = {{}, {L"fail to create specified folder"}};

    bool SavesTexture(const KString& path, EFormat format, int pitch) {
        ImageDescription desc;
        desc.width = desc.height = kSide;
        desc.depth = 1;
        desc.format = format;
        desc.rowPitch = pitch;
        desc.textureType = kTexture2D;
        return host.SaveTexture(path, desc, bytes.data());
    }

    /// Whatever happens: the old file as it was, or the new one whole, and nothing beside it but what a process leaves
    /// that is ended in the middle.
    void ExpectOldOrWhole(const char* name, const Expected& expected,
                          const std::function<bool(const KString&)>& save) const {
        const TemporaryFolder folder;
        const std::vector<unsigned char> old(5000, 'o');
        const std::filesystem::path file = folder / name;
        const KString path = Wide(file);
        ASSERT_TRUE(save(path)) << name;
        const std::vector<unsigned char> whole = ReadPicture(file).pixels;
        ASSERT_FALSE(whole.empty());
        bool isAsBefore = false;
        const auto before = [&] {
            if (isAsBefore) return;
            std::filesystem::remove_all(folder.Path());
            std::filesystem::create_directory(folder.Path());
            folder.Write(name, old);
        };
        RunLibraryShortOfMemory(
            expected, before, [&] { return save(path); },
            [&](const Outcome& outcome) {
                const bool isOld = ReadAll(file) == old;
                EXPECT_NE(isOld, outcome.done) << name;
                EXPECT_TRUE(isOld || ReadPicture(file).pixels == whole) << name;
                const auto files = std::distance(std::filesystem::directory_iterator(folder.Path()), {});
                EXPECT_TRUE(files == 1 || outcome.wasKilled) << name;
                isAsBefore = isOld && files == 1;
            });
    }
};

TEST_F(SavingShortOfMemory, ATextureReplacesAnOldFileWhollyOrNotAtAll) {
    constexpr int kPacked = 4 * kSide;
    struct Case {
        const char* name;
        EFormat format;
        int pitch;
    };
    for (const Case& each :
         {Case{"x.tif", kR8G8B8A8, kPacked}, Case{"x.tif", kB8G8R8A8, kPacked}, Case{"x.fits", kR8G8B8A8, 30},
          Case{"x.pfm", kR16F, kPacked}, Case{"x.jpg", kR8G8B8A8, kPacked}, Case{"x.dds", kR8G8B8A8, kPitch}}) {
        ExpectOldOrWhole(each.name, kFailures,
                         [&](const KString& path) { return SavesTexture(path, each.format, each.pitch); });
    }
}

TEST_F(SavingShortOfMemory, ATargetReplacesAnOldFileWhollyOrNotAtAll) {
    Picture picture(kSide, kSide, kR32G32B32A32F, kPitch, bytes);
    const Expected failures = {{L"Picture save failed."},
                               {L"fail to create specified folder", L"Picture save failed."}};
    for (const char* name : {"x.tif", "x.dds"}) {
        ExpectOldOrWhole(name, failures, [&](const KString& path) {
            return host.SaveTarget(path, &picture, false) && picture.held == 0;
        });
    }
}

TEST_F(SavingShortOfMemory, AnImageReplacesAnOldFileWhollyOrNotAtAll) {
    const Image image = Hold(host.CreateImage(kSide, kSide, kR8G8B8A8));
    Sys::SetImageHandler(&handler);
    // What the library fails to write goes to the host's handler, which looks for the folder once more.
    ExpectOldOrWhole("x.tif", kFailures, [&](const KString& path) { return image->Save(path); });
    Sys::SetImageHandler(nullptr);
}

TEST_F(SavingShortOfMemory, LinesReplaceAnOldFileWhollyOrNotAtAll) {
    for (const char* name : {"x.tif", "x.fits"}) {
        ExpectOldOrWhole(name, kFailures, [&](const KString& path) {
            Lines lines(4 * kSide);
            return host.writeImageOneLineAtATime(path, 72, &lines, kSide, kSide, 3);
        });
    }
}

}  // namespace
