#include "output/CountingAllocator.h"
#include "output/RecordingPictures.h"
#include "output/SavingFixture.h"

#include <kavra/devices/Sys.h>
#include <kavra/objects/ObjModel.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <limits>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Objects::ObjModel;
using Kavra::Tests::Calls;
using Kavra::Tests::CountingAllocator;
using Kavra::Tests::MessageRecorder;
using Kavra::Tests::RecordingHandler;
using Kavra::Tests::RecordingTarget;
using Kavra::Tests::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A target and the handler that is to save it: what reaches slot 5 is written down.
struct SavedTarget {
    SavedTarget(int width, int height, EFormat format) : target(width, height, format), handler(target.calls) {}
    bool Save(bool stretch = false) {
        IImageHandler& host = handler;
        return host.SaveTarget(L"x.png", &target, stretch);
    }

    RecordingTarget target;
    RecordingHandler handler;
    MessageRecorder messages;
};

const Calls kInOrder = {"MemoryWrapper 0", "Map 1", "SaveTexture", "Unmap", "Release"};

TEST(TargetSaving, SavesUnmapsAndReleasesInThisOrder) {
    SavedTarget saved(2, 1, kR32F);
    EXPECT_TRUE(saved.Save());
    EXPECT_EQ(saved.target.calls, kInOrder);
    EXPECT_EQ(saved.handler.saved.path, L"x.png");
    EXPECT_THAT(saved.messages.Texts(), IsEmpty());
}

TEST(TargetSaving, WithoutATargetThereIsSilence) {
    SavedTarget saved(2, 1, kR32F);
    EXPECT_FALSE(saved.handler.SaveTarget(L"x.png", nullptr, false));
    EXPECT_THAT(saved.target.calls, IsEmpty());
    EXPECT_THAT(saved.messages.Texts(), IsEmpty());
}

TEST(TargetSaving, WithoutMemoryThereIsSilence) {
    SavedTarget saved(2, 1, kR32F);
    saved.target.hasMemory = false;
    EXPECT_FALSE(saved.Save());
    EXPECT_THAT(saved.target.calls, ElementsAre("MemoryWrapper 0"));
    EXPECT_THAT(saved.messages.Texts(), IsEmpty());
}

TEST(TargetSaving, MemoryThatCannotBeMappedIsReleasedInSilence) {
    SavedTarget saved(2, 1, kR32F);
    saved.target.canBeMapped = false;
    EXPECT_FALSE(saved.Save());
    EXPECT_THAT(saved.target.calls, ElementsAre("MemoryWrapper 0", "Map 1", "Release"));
    EXPECT_THAT(saved.messages.Texts(), IsEmpty());
}

TEST(TargetSaving, OtherFormatsAreRefusedAfterMappingAndLeftMapped) {
    for (const int format : {0, 20, 25, 31, 37, 39, 41, 42, 48, 50, 51, 56, 58, 59, 63, 65, 67, 75, -1, 12345}) {
        SavedTarget saved(4, 4, kR32G32B32A32F);
        saved.target.format = static_cast<EFormat>(format);
        EXPECT_FALSE(saved.Save(true)) << format;
        EXPECT_THAT(saved.target.calls, ElementsAre("MemoryWrapper 0", "Map 1")) << format;
        using Entry = MessageRecorder::Entry;
        constexpr auto kWarning = Kavra::Objects::EMessageKind::kWarning;
        EXPECT_THAT(saved.messages.Entries(), ElementsAre(Entry{kWarning, L"Raster format not supported", false},
                                                          Entry{kWarning, L"Picture save failed.", false}))
            << format;
    }
}

TEST(TargetSaving, OneFloatChannelBecomesGreyBytes) {
    SavedTarget saved(2, 2, kR32F);
    saved.target.Set<float>({0.25F, 0.5F, 0.75F, 1.0F});
    ASSERT_TRUE(saved.Save());
    EXPECT_THAT(saved.handler.saved.bytes, ElementsAre(63, 127, 191, 255));  // 63.75 is truncated
    const ImageDescription& desc = saved.handler.saved.desc;
    EXPECT_EQ(desc.width, 2);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(desc.format, kR8);
    EXPECT_EQ(desc.rowPitch, 2);
    EXPECT_EQ(desc.depth, 0);
    EXPECT_EQ(desc.dataSize, 0U);
    EXPECT_EQ(desc.textureType, kTextureUnknown);
    EXPECT_FALSE(desc.hasAlpha);
}

TEST(TargetSaving, TwoFloatChannelsBecomeRedAndGreen) {
    SavedTarget saved(2, 1, kR32G32F);
    saved.target.Set<float>({0.0F, 1.0F, 1.0F, 0.5F});
    ASSERT_TRUE(saved.Save());
    EXPECT_THAT(saved.handler.saved.bytes, ElementsAre(0, 255, 0, 255, 255, 127, 0, 255));
    EXPECT_EQ(saved.handler.saved.desc.format, kR8G8B8A8);
    EXPECT_EQ(saved.handler.saved.desc.rowPitch, 8);
}

TEST(TargetSaving, FourFloatChannelsKeepTheirOrder) {
    SavedTarget saved(1, 2, kR32G32B32A32F);
    saved.target.Set<float>({0.0F, 0.25F, 0.5F, 1.0F, 1.0F, 0.75F, 0.5F, 0.0F});
    ASSERT_TRUE(saved.Save());
    EXPECT_THAT(saved.handler.saved.bytes, ElementsAre(0, 63, 127, 255, 255, 191, 127, 0));
    EXPECT_EQ(saved.handler.saved.desc.format, kR8G8B8A8);
    EXPECT_EQ(saved.handler.saved.desc.rowPitch, 4);
}

TEST(TargetSaving, StretchingIsTheCallersChoice) {
    SavedTarget saved(3, 1, kR32F);
    saved.target.Set<float>({0.25F, 0.5F, 0.75F});
    ASSERT_TRUE(saved.Save(true));
    EXPECT_THAT(saved.handler.saved.bytes, ElementsAre(0, 127, 255));
    ASSERT_TRUE(saved.Save(false));
    EXPECT_THAT(saved.handler.saved.bytes, ElementsAre(63, 127, 191));
}

TEST(TargetSaving, RowsAreReadByTheirPitchAndComeOutPacked) {
    SavedTarget saved(1, 2, kR32F);
    saved.target.pitch = 7;  // the second row lies on no float's boundary
    saved.target.bytes.assign(11, 0xFF);
    const float values[] = {0.5F, 1.0F};
    std::memcpy(saved.target.bytes.data(), &values[0], 4);
    std::memcpy(saved.target.bytes.data() + 7, &values[1], 4);
    ASSERT_TRUE(saved.Save());
    EXPECT_THAT(saved.handler.saved.bytes, ElementsAre(127, 255));
    EXPECT_EQ(saved.handler.saved.desc.rowPitch, 1);
}

TEST(TargetSaving, ByteColoursAreHandedOnAsTheyAre) {
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8}) {
        SavedTarget saved(1, 2, format);
        saved.target.pitch = 6;
        saved.target.bytes = {1, 2, 3, 4, 99, 99, 5, 6, 7, 8};
        ASSERT_TRUE(saved.Save(true));
        EXPECT_EQ(saved.handler.saved.data, saved.target.bytes.data());
        EXPECT_EQ(saved.handler.saved.desc.format, format);
        EXPECT_EQ(saved.handler.saved.desc.rowPitch, 6);
        EXPECT_EQ(saved.target.calls, kInOrder);
    }
}

TEST(TargetSaving, AFailedSaveIsWarnedAboutAfterTheMemoryWasGivenBack) {
    SavedTarget saved(2, 1, kR32F);
    saved.handler.saves = false;
    EXPECT_FALSE(saved.Save());
    EXPECT_EQ(saved.target.calls, kInOrder);
    EXPECT_THAT(saved.messages.Texts(), ElementsAre(L"Picture save failed."));
}

TEST(TargetSaving, AnExceptionOfTheSaverIsAFailedSave) {
    SavedTarget saved(2, 1, kR32F);
    saved.handler.throws = true;
    EXPECT_FALSE(saved.Save());
    EXPECT_EQ(saved.target.calls, kInOrder);
    EXPECT_THAT(saved.messages.Texts(), ElementsAre(L"Picture save failed."));
}

TEST(TargetSaving, AnExceptionOfTheTargetStaysInside) {
    for (const char* call : {"MemoryWrapper 0", "Map 1"}) {
        SavedTarget saved(2, 1, kR32F);
        saved.target.throwsIn = call;
        EXPECT_FALSE(saved.Save()) << call;
    }
    SavedTarget saved(2, 1, kR32F);
    saved.target.throwsIn = "Map 1";
    EXPECT_FALSE(saved.Save());
    EXPECT_THAT(saved.target.calls, ElementsAre("MemoryWrapper 0", "Map 1", "Release"));
}

TEST(TargetSaving, ATargetThatThrowsAsItsMemoryIsGivenBackIsSavedAllTheSame) {
    for (const char* call : {"Unmap", "Release"}) {
        SavedTarget saved(2, 1, kR32F);
        saved.target.throwsIn = call;
        EXPECT_TRUE(saved.Save()) << call;
        EXPECT_EQ(saved.target.calls, kInOrder);
    }
}

TEST(TargetSaving, FloatsThatDoNotFitTheirPitchAreAFailedSave) {
    for (const EFormat format : {kR32F, kR32G32F, kR32G32B32A32F}) {
        const int row = 3 * Kavra::Utilities::AFormatConvertor::BytesPerPixel(format);
        for (const int pitch : {row - 1, 0, -row, std::numeric_limits<int>::min()}) {
            SavedTarget saved(3, 2, format);
            saved.target.pitch = pitch;
            EXPECT_FALSE(saved.Save()) << format << " " << pitch;
            EXPECT_THAT(saved.target.calls, ElementsAre("MemoryWrapper 0", "Map 1", "Unmap", "Release"));
            EXPECT_THAT(saved.messages.Texts(), ElementsAre(L"Picture save failed."));
        }
    }
}

TEST(TargetSaving, BytesGoToTheSaverAsTheyLieWhateverTheirPitch) {
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8}) {
        for (const int pitch : {11, 1, 0, -12, std::numeric_limits<int>::min()}) {
            SavedTarget saved(3, 2, format);
            saved.target.pitch = pitch;
            EXPECT_TRUE(saved.Save()) << format << " " << pitch;
            EXPECT_EQ(saved.target.calls, kInOrder);
            EXPECT_EQ(saved.handler.saved.desc.rowPitch, pitch);
            EXPECT_EQ(saved.handler.saved.desc.format, format);
            EXPECT_EQ(saved.handler.saved.data, saved.target.bytes.data());
            EXPECT_THAT(saved.messages.Texts(), IsEmpty());
        }
    }
}

TEST(TargetSaving, ARowBeyondEveryPitchIsAFailedSave) {
    SavedTarget saved(1, 1, kR32G32B32A32F);
    saved.target.width = std::numeric_limits<int>::max();
    saved.target.pitch = std::numeric_limits<int>::max();
    EXPECT_FALSE(saved.Save());
    EXPECT_THAT(saved.messages.Texts(), ElementsAre(L"Picture save failed."));
}

TEST(TargetSaving, AnEmptyTargetIsTheSaversDecision) {
    struct Size {
        int width, height;
    };
    for (const auto& [width, height] : {Size{0, 4}, Size{4, 0}, Size{-4, 4}, Size{4, -4}}) {
        for (const EFormat format : {kR32F, kR32G32B32A32F, kR8G8B8A8}) {
            const CountingAllocator blocks(ObjModel::mDefaultAllocator);
            SavedTarget saved(4, 4, format);
            saved.target.width = width;
            saved.target.height = height;
            saved.handler.saves = false;
            EXPECT_FALSE(saved.Save());
            EXPECT_EQ(saved.target.calls, kInOrder);
            EXPECT_EQ(saved.handler.saved.desc.width, width);
            EXPECT_EQ(saved.handler.saved.desc.height, height);
            EXPECT_THAT(saved.messages.Texts(), ElementsAre(L"Picture save failed."));
        }
    }
}

TEST(TargetSaving, TheStagingIsFreedOnEveryPath) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator);
    SavedTarget saved(8, 8, kR32G32F);
    EXPECT_TRUE(saved.Save());
    saved.handler.saves = false;
    EXPECT_FALSE(saved.Save());
    saved.handler.throws = true;
    EXPECT_FALSE(saved.Save());
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
}

TEST(TargetSaving, WithoutMemoryForTheStagingTheSaveHasFailed) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator);
    blocks.Grant(0);
    SavedTarget saved(8, 8, kR32G32F);
    EXPECT_FALSE(saved.Save());
    EXPECT_THAT(saved.target.calls, ElementsAre("MemoryWrapper 0", "Map 1", "Unmap", "Release"));
    EXPECT_THAT(saved.messages.Texts(), ElementsAre(L"Picture save failed."));
}

using TargetFiles = Kavra::Tests::Saving;

TEST_F(TargetFiles, ABlueFirstTargetIsWrittenRedFirst) {
    RecordingTarget target(1, 1, kB8G8R8A8);
    target.bytes = {10, 20, 30, 40};
    ASSERT_TRUE(handler.SaveTarget(Wide(folder / "x.png"), &target, false));
    EXPECT_THAT(Read("x.png").pixels, ElementsAre(30, 20, 10, 40));
}

TEST_F(TargetFiles, FloatsAreWrittenAsBytesToEveryKindOfFile) {
    RecordingTarget target(2, 1, kR32G32B32A32F);
    target.Set<float>({0, 0.5F, 1, 1, 1, 1, 0, 0.5F});
    for (const char* name : {"a/x.png", "a/x.dds"}) {
        ASSERT_TRUE(handler.SaveTarget(Wide(folder / name), &target, false)) << name;
        EXPECT_THAT(Read(name).pixels, ElementsAre(0, 127, 255, 255, 255, 255, 0, 127)) << name;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(TargetFiles, RowsOfAShortPitchAreZeroAtTheirEndsInADDSAndOverlapElsewhere) {
    RecordingTarget target(2, 2, kR8G8B8A8);
    target.pitch = 5;
    target.bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    target.bytes.shrink_to_fit();
    ASSERT_TRUE(handler.SaveTarget(Wide(folder / "x.dds"), &target, false));
    EXPECT_THAT(Read("x.dds").pixels, ElementsAre(1, 2, 3, 4, 5, 0, 0, 0, 6, 7, 8, 9, 10, 0, 0, 0));
    ASSERT_TRUE(handler.SaveTarget(Wide(folder / "x.png"), &target, false));
    EXPECT_THAT(Read("x.png").pixels, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 6, 7, 8, 9, 10, 0, 0, 0));
}

TEST_F(TargetFiles, APitchBelowOneIsAFailedSave) {
    for (const int pitch : {0, -8, std::numeric_limits<int>::min()}) {
        RecordingTarget target(2, 2, kB8G8R8A8);
        target.pitch = pitch;
        for (const char* name : {"x.png", "x.dds"})
            EXPECT_FALSE(handler.SaveTarget(Wide(folder / name), &target, false)) << name << pitch;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    EXPECT_EQ(messages.Texts().size(), 6U);
    EXPECT_THAT(messages.Texts(), testing::Each(std::wstring(L"Picture save failed.")));
}

TEST_F(TargetFiles, TheSaversMessagesComeFirst) {
    RecordingTarget target(1, 1, kR32F);
    EXPECT_FALSE(handler.SaveTarget(L"", &target, false));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"wrong file path", L"Picture save failed."));
    messages.Clear();
    folder.Write("file", "text");
    EXPECT_FALSE(handler.SaveTarget(Wide(folder / "file/x.png"), &target, false));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"fail to create specified folder", L"Picture save failed."));
}

}  // namespace
