#include "frame/module/SampleFiles.h"
#include "support/MessageRecorder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <numeric>
#include <span>
#include <utility>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::EMessageKind;
using Kavra::Objects::ObjModel;
using OIIO::ImageSpec;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto* kNotSupported = L"format is not supported";
constexpr auto* kOutOfRange = L"Frame index out of range";
constexpr auto* kNoOverride = L"Override orientation of compressed DDS is not supported";
constexpr auto* kNotConverted = L"Currently not supported";

/// What a caller asks for; the rest of the arguments is as most callers give it.
struct Request {
    int width = 0;
    int height = 0;
    EFormat format = kUnknown;
    int level = 0;
    EDataOrientation orientation = kTopLeft;
    bool highQuality = false;
};

class LoadTexture : public testing::Test {
protected:
    OwnedBlock Load(const std::filesystem::path& path, const Request& request = {}) {
        return OwnedBlock(handler.LoadTexture(desc, Wide(path), request.width, request.height, 0, request.format,
                                              request.highQuality, request.level, request.orientation, nullptr));
    }

    /// The whole block of the last load, as values of type T.
    template <class T>
    std::vector<T> Values(const OwnedBlock& block) const {
        const std::size_t faces = desc.textureType == kTextureCube ? 6 : 1;
        std::vector<T> values(desc.dataSize * faces / sizeof(T));
        std::memcpy(values.data(), block->mData, values.size() * sizeof(T));
        return values;
    }

    std::filesystem::path Png(int width = 4, int height = 2) {
        return WritePicture(folder, "picture.png", ImageSpec(width, height, 4, OIIO::TypeUInt8),
                            Counting<unsigned char>(static_cast<std::size_t>(width * height * 4)));
    }

    /// Four channels, of a type that the image library reads and no host format holds: the host's reader must serve it.
    std::filesystem::path IntegerExr(int channels) {
        ImageSpec spec(3, 2, channels, OIIO::TypeUInt32);
        return WritePicture(folder, "integers.exr", spec,
                            Counting<std::uint32_t>(static_cast<std::size_t>(3 * 2 * channels)));
    }

    std::filesystem::path FloatExr(int channels = 4) {
        return WritePicture(folder, "floats.exr", ImageSpec(3, 2, channels, OIIO::TypeFloat),
                            Counting<float>(static_cast<std::size_t>(3 * 2 * channels)));
    }

    /// 4 x 4 with all its levels: 16 + 4 + 1 pixels counted through. The image library refuses this layout.
    std::filesystem::path FloatDds() {
        return WriteDds(folder, "floats.dds", {.format = kR32G32B32A32F, .width = 4, .height = 4, .levels = 3},
                        Counting<float>(21 * 4));
    }

    TemporaryFolder folder;
    OIIOImageHandler handler;
    ImageDescription desc;
    MessageRecorder messages;
};

std::vector<float> From(float first, std::size_t count) {
    std::vector<float> values(count);
    std::iota(values.begin(), values.end(), first);
    return values;
}

// --- the image library's files ---------------------------------------------------------------------------------------

TEST_F(LoadTexture, WrapsTheBlockOfTheImageLibrary) {
    const Live before;
    auto block = Load(Png());
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.format, kR8G8B8A8);
    EXPECT_EQ(Values<unsigned char>(block), Counting<unsigned char>(32));
    EXPECT_EQ(Live().blocks, before.blocks + 1);
    EXPECT_EQ(Live().objects, before.objects + 1);

    block.reset();
    EXPECT_EQ(Live(), before);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LoadTexture, WithoutTheBoolIsLoadTextureWithFalse) {
    const auto path =
        WritePicture(folder, "noise.png", ImageSpec(60, 60, 4, OIIO::TypeUInt8), Counting<unsigned char>(60 * 60 * 4));
    const Request smaller{.width = 57, .height = 57};
    const auto plain = Values<unsigned char>(Load(path, smaller));
    const auto filtered = Values<unsigned char>(Load(path, {.width = 57, .height = 57, .highQuality = true}));
    ASSERT_NE(plain, filtered);

    const OwnedBlock block(handler.LoadTexture(desc, Wide(path), 57, 57, 0, kUnknown, 0, kTopLeft, nullptr));
    EXPECT_EQ(Values<unsigned char>(block), plain);
}

TEST_F(LoadTexture, WarnsOnceAboutAFileThatNobodyReads) {
    for (const auto& path : {folder / "missing.png", folder / "missing.xyz", folder / "x.null",
                             folder.Write("text.xyz", "no picture"), folder.Path(), std::filesystem::path()}) {
        messages.Clear();
        EXPECT_EQ(Load(path), nullptr);
        EXPECT_EQ(messages.Entries(),
                  (std::vector<MessageRecorder::Entry>{{EMessageKind::kWarning, kNotSupported, false}}))
            << path;
    }
}

TEST_F(LoadTexture, GoesOnAfterAFrameThatIsNotThere) {
    const Live before;
    EXPECT_EQ(Load(Png(), {.level = 1}), nullptr);
    EXPECT_THAT(messages.Texts(), ElementsAre(kOutOfRange, kNotSupported));
    EXPECT_EQ(Live(), before);
}

TEST_F(LoadTexture, WarnsTwiceWhereTheImageLibraryHasNoTypeForTheFormat) {
    for (const EFormat format : {kR32G32B32F, kR8G8B8A8Alt}) {
        messages.Clear();
        EXPECT_EQ(Load(Png(), {.format = format}), nullptr);
        EXPECT_THAT(messages.Texts(), ElementsAre(kNotSupported, kNotSupported)) << format;
    }
}

// --- the host's OpenEXR reader ---------------------------------------------------------------------------------------

TEST_F(LoadTexture, TakesAnOpenExrFileThatTheLibraryCannotDeliverFromTheHost) {
    auto block = Load(IntegerExr(4));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.width, 3);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(desc.depth, 1);
    EXPECT_EQ(desc.format, kR32G32B32A32F);
    EXPECT_EQ(desc.rowPitch, 48);
    EXPECT_EQ(desc.dataSize, 96U);
    EXPECT_EQ(desc.textureType, kTexture2D);
    EXPECT_TRUE(desc.hasAlpha);
    EXPECT_FALSE(desc.hasTransparentPixels);
    EXPECT_FALSE(desc.hasTranslucentPixels);
    EXPECT_TRUE(desc.defaultOrientation);
    EXPECT_EQ(desc.gamma, 2.2);
    EXPECT_EQ(Values<float>(block), Counting<float>(24));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LoadTexture, GivesThreeFloatsWhereTheOpenExrFileHasNoAlpha) {
    const auto block = Load(IntegerExr(3));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.format, kR32G32B32F);
    EXPECT_EQ(desc.rowPitch, 36);
    EXPECT_EQ(desc.dataSize, 72U);
    EXPECT_FALSE(desc.hasAlpha);
    EXPECT_EQ(Values<float>(block), Counting<float>(18));
}

TEST_F(LoadTexture, ThreeFloatsStayWhatTheyAreWhateverIsAsked) {
    const auto block = Load(IntegerExr(3), {.format = kR8G8B8A8});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.format, kR32G32B32F);
    EXPECT_EQ(desc.rowPitch, 36);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LoadTexture, ConvertsWhatTheHostsOpenExrReaderGave) {
    const Live before;
    const auto block = Load(FloatExr(), {.format = kR32G32B32F});
    ASSERT_NE(block, nullptr);
    EXPECT_THAT(messages.Texts(), ElementsAre(kNotSupported));
    EXPECT_EQ(desc.format, kR32G32B32F);
    EXPECT_EQ(desc.rowPitch, 36);
    EXPECT_EQ(desc.dataSize, 96U);  // 12-byte pixels get the room of 16-byte ones
    auto pixels = Values<float>(block);
    pixels.resize(18);
    EXPECT_THAT(pixels, ElementsAre(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 16, 17, 18, 20, 21, 22));
    EXPECT_EQ(Live().blocks, before.blocks + 1);
}

TEST_F(LoadTexture, KeepsTheFilesFormatWhereTheConversionYieldsNothing) {
    const Live before;
    const auto block = Load(FloatExr(), {.format = kBC1});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(messages.Entries(), (std::vector<MessageRecorder::Entry>{{EMessageKind::kWarning, kNotSupported, false},
                                                                       {EMessageKind::kError, kNotConverted, false}}));
    EXPECT_EQ(desc.format, kR32G32B32A32F);
    EXPECT_EQ(desc.rowPitch, 48);
    EXPECT_EQ(Values<float>(block), Counting<float>(24));
    EXPECT_EQ(Live().blocks, before.blocks + 1);
}

TEST_F(LoadTexture, AnOpenExrFrameBeyondTheFileComesFromTheHostAsTheFirst) {
    const auto block = Load(FloatExr(), {.level = 5});
    ASSERT_NE(block, nullptr);
    EXPECT_THAT(messages.Texts(), ElementsAre(kOutOfRange));
    EXPECT_EQ(Values<float>(block), Counting<float>(24));
}

TEST_F(LoadTexture, TheHostsOpenExrReaderHeedsNeitherSizeNorOrientation) {
    desc.orientation = kRightBottom;
    const auto block = Load(IntegerExr(4), {.width = 1, .height = 1, .orientation = kBottomLeft});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.width, 3);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(desc.orientation, kRightBottom);
    EXPECT_TRUE(desc.defaultOrientation);
    EXPECT_EQ(Values<float>(block), Counting<float>(24));
}

// --- the host's DDS reader -------------------------------------------------------------------------------------------

TEST_F(LoadTexture, GivesALevelOfADdsThatOnlyTheHostReadsAtItsFullSize) {
    const auto path = FloatDds();
    for (const auto& [level, size, first] : {std::tuple{0, 4, 0.0F}, {1, 2, 64.0F}, {2, 1, 80.0F}, {-3, 4, 0.0F}}) {
        const auto block = Load(path, {.level = level});
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(desc.width, size);
        EXPECT_EQ(desc.height, size);
        EXPECT_EQ(desc.format, kR32G32B32A32F);
        EXPECT_EQ(desc.rowPitch, 16 * size);
        EXPECT_EQ(Values<float>(block), From(first, static_cast<std::size_t>(size * size * 4)));
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LoadTexture, RefusesToShrinkADdsThatOnlyTheHostReads) {
    const auto path = FloatDds();
    const Live before;
    for (const Request& request : {Request{.width = 3}, Request{.height = 3}, Request{.width = 1, .level = 1}}) {
        messages.Clear();
        EXPECT_EQ(Load(path, request), nullptr);
        EXPECT_THAT(messages.Texts(), ElementsAre(kNotSupported));
    }
    EXPECT_EQ(Live(), before);
}

TEST_F(LoadTexture, TakesASizeOfTheLevelOrMoreForTheLevelsOwn) {
    const auto path = FloatDds();
    for (const Request& request : {Request{.width = 4, .height = 4}, Request{.width = 1000, .height = 2, .level = 1},
                                   Request{.width = 1, .height = 1, .level = 2}}) {
        EXPECT_NE(Load(path, request), nullptr) << request.width << " at " << request.level;
    }
}

TEST_F(LoadTexture, RefusesALevelThatTheDdsDoesNotHave) {
    const auto path = FloatDds();
    for (const int level : {3, 31, 32, std::numeric_limits<int>::max()}) {
        messages.Clear();
        EXPECT_EQ(Load(path, {.level = level, .orientation = kTopRight}), nullptr);
        EXPECT_THAT(messages.Texts(), ElementsAre(kNotSupported)) << level;
    }
}

TEST_F(LoadTexture, WarnsTwiceAboutALevelThatADdsOfTheImageLibraryDoesNotHave) {
    const auto path =
        WriteDds(folder, "bytes.dds", {.format = kR8G8B8A8, .width = 4, .height = 4}, Counting<unsigned char>(64));
    EXPECT_EQ(Load(path, {.level = 1}), nullptr);
    EXPECT_THAT(messages.Texts(), ElementsAre(kOutOfRange, kNotSupported));
}

TEST_F(LoadTexture, WarnsThatADdsKeepsItsOrientationAndLoadsIt) {
    const auto block = Load(FloatDds(), {.orientation = kBottomLeft});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(messages.Entries(), (std::vector<MessageRecorder::Entry>{{EMessageKind::kWarning, kNoOverride, false}}));
    EXPECT_EQ(Values<float>(block), Counting<float>(64));
}

TEST_F(LoadTexture, SaysNothingOfTheOrientationWhereTheSizeIsRefused) {
    EXPECT_EQ(Load(FloatDds(), {.width = 1, .orientation = kBottomLeft}), nullptr);
    EXPECT_THAT(messages.Texts(), ElementsAre(kNotSupported));
}

TEST_F(LoadTexture, HandsADdsBlockOnWithOneOwnerInEveryCase) {
    const auto path = FloatDds();
    const Live before;
    // As it is, in the file's format because none is asked for, converted, and kept because it cannot be.
    for (const EFormat format : {kR32G32B32A32F, kUnknown, kR8G8B8A8, kBC1}) {
        auto block = Load(path, {.format = format});
        ASSERT_NE(block, nullptr) << format;
        EXPECT_EQ(desc.format, format == kR8G8B8A8 ? kR8G8B8A8 : kR32G32B32A32F);
        EXPECT_EQ(Live().blocks, before.blocks + 1) << format;
        EXPECT_EQ(Live().objects, before.objects + 1) << format;
        block.reset();
        EXPECT_EQ(Live(), before) << format;
    }
}

TEST_F(LoadTexture, ReturnsTheHostsOwnWrapperOnlyWhereTheFormatIsTheOneWanted) {
    const auto path = FloatDds();
    const auto wrappersMade = [&](EFormat format) {
        const auto before = ObjModel::ObjectCounters().totalBlocks;
        (void)Load(path, {.format = format});
        return ObjModel::ObjectCounters().totalBlocks - before;
    };
    EXPECT_EQ(wrappersMade(kUnknown), wrappersMade(kR32G32B32A32F) + 1);
}

TEST_F(LoadTexture, ConvertsWhatTheHostsDdsReaderGave) {
    const auto path = WriteDds(folder, "floats.dds", {.format = kR32G32B32A32F, .width = 2, .height = 1},
                               std::vector<float>{0, 0.5F, 1, 2, 1, -1, 0, 0.25F});
    const auto block = Load(path, {.format = kB8G8R8A8});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.format, kB8G8R8A8);
    EXPECT_EQ(desc.rowPitch, 8);
    EXPECT_EQ(desc.dataSize, 8U);
    EXPECT_EQ(Values<unsigned char>(block), (std::vector<unsigned char>{255, 128, 0, 255, 0, 0, 255, 64}));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LoadTexture, KeepsADdsFormatThatDoesNotConvert) {
    const auto path = WriteDds(folder, "pairs.dds", {.format = kR32G32F, .width = 2, .height = 2}, Counting<float>(8));
    const auto block = Load(path, {.format = kR8G8B8A8});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.format, kR32G32F);
    EXPECT_EQ(desc.rowPitch, 16);
    EXPECT_EQ(Values<float>(block), Counting<float>(8));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(LoadTexture, ConvertsAllSixFacesAndDescribesOne) {
    std::vector<float> faces(6 * 4 * 4);
    for (std::size_t i = 0; i < faces.size(); ++i)
        faces[i] = static_cast<float>(i / 16) / 5;  // 0, 51, ... 255 of 255
    const auto path =
        WriteDds(folder, "cube.dds", {.format = kR32G32B32A32F, .width = 2, .height = 2, .type = kTextureCube}, faces);
    const auto block = Load(path, {.format = kR8G8B8A8});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.textureType, kTextureCube);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(desc.rowPitch, 8);
    EXPECT_EQ(desc.dataSize, 16U);
    const auto bytes = Values<unsigned char>(block);
    ASSERT_EQ(bytes.size(), 96U);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        EXPECT_EQ(bytes[i], 51 * (i / 16)) << i;
}

TEST_F(LoadTexture, RefusesLowerLevelsOfAVolumeThatAreStillDeep) {
    // 4 x 4 x 4, 2 x 2 x 2 and 1 x 1 x 1 pixels.
    const auto path =
        WriteDds(folder, "volume.dds",
                 {.format = kR32G32B32A32F, .width = 4, .height = 4, .depth = 4, .levels = 3, .type = kTextureVolume},
                 Counting<float>((64 + 8 + 1) * 4));

    auto block = Load(path);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(desc.depth, 4);
    EXPECT_EQ(Values<float>(block), Counting<float>(64 * 4));
    EXPECT_THAT(messages.Texts(), IsEmpty());

    EXPECT_EQ(Load(path, {.level = 1}), nullptr);
    EXPECT_THAT(messages.Texts(), ElementsAre(kNotSupported));

    block = Load(path, {.level = 2});
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(Values<float>(block), From(72 * 4, 4));
}

TEST_F(LoadTexture, AnswersATruncatedDdsWithTheOneWarning) {
    const auto whole = ReadAll(FloatDds());
    const Live before;
    for (const std::size_t length : {std::size_t{4}, std::size_t{100}, std::size_t{128}, whole.size() - 64 - 16 - 1}) {
        messages.Clear();
        EXPECT_EQ(Load(folder.Write("short.dds", std::span(whole).first(length))), nullptr);
        EXPECT_THAT(messages.Texts(), testing::Contains(kNotSupported)) << length;
        EXPECT_EQ(Live(), before);
    }
}

// --- memory ----------------------------------------------------------------------------------------------------------

/// Loads with every number of successful allocations there can be; nothing may be left behind by any of them.
class LoadTextureWithoutMemory : public LoadTexture {
protected:
    void Try(Kavra::Objects::IMemoryAllocator*& place, const std::filesystem::path& path, EFormat format) {
        const Live before;
        bool refused = true;
        for (int allowed = 0; refused && allowed < 100; ++allowed) {
            FailingAllocator allocator(place, allowed);
            const auto block = Load(path, {.format = format});
            refused = allocator.HasRefused();
            if (!refused) {
                EXPECT_NE(block, nullptr) << path;
            } else if (!block) {
                EXPECT_EQ(allocator.LiveBlocks(), 0) << path << " with " << allowed;
                EXPECT_EQ(Live(), before) << path << " with " << allowed;
            }
        }
        EXPECT_FALSE(refused);
        EXPECT_EQ(Live(), before);
    }
};

TEST_F(LoadTextureWithoutMemory, LeavesNoBlockBehind) {
    for (const EFormat format : {kUnknown, kR8G8B8A8}) {
        Try(ObjModel::mDefaultAllocator, Png(), format);
        Try(ObjModel::mDefaultAllocator, IntegerExr(4), format);
        Try(ObjModel::mDefaultAllocator, FloatDds(), format);
    }
}

TEST_F(LoadTextureWithoutMemory, LeavesNoObjectBehind) {
    for (const EFormat format : {kUnknown, kR8G8B8A8}) {
        Try(ObjModel::mHeapAllocator, Png(), format);
        Try(ObjModel::mHeapAllocator, IntegerExr(4), format);
        Try(ObjModel::mHeapAllocator, FloatDds(), format);
    }
}

}  // namespace
