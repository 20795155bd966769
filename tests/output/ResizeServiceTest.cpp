#include "common/HostObject.h"
#include "output/CountingAllocator.h"
#include "support/MessageRecorder.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <Imath/half.h>
#include <OpenImageIO/imagebufalgo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <optional>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Common::HostObject;
using Kavra::Objects::EMessageKind;
using Kavra::Objects::ObjModel;
using Kavra::Tests::CountingAllocator;
using Kavra::Tests::MessageRecorder;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Size = Kavra::vec3<int>;
using Bytes = std::vector<unsigned char>;
using Block = HostObject<IMemoryWrapper<void>>;

constexpr int kUntouched = -12345;

/// The bytes 1, 2, 3 ...
Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

/// Arguments of one call; unless changed they ask for the nearest pixels of a 4 x 4 picture in 2 x 2.
struct Resizing : testing::Test {
    Block Run(EResizeMethod method) {
        IImageHandler& host = handler;
        return Block(host.Resize(method, data, bytes.size(), srcPitch, srcSize, format, type, dstSize, pitch, filter));
    }
    /// The first `count` bytes of the new block, which must be all of it for the sanitizer to notice a longer one.
    std::optional<Bytes> Result(EResizeMethod method, std::size_t count) {
        const Block block = Run(method);
        if (!block) return std::nullopt;
        const auto* first = static_cast<const unsigned char*>(block->mData);
        return Bytes(first, first + count);
    }
    void Use(Bytes source) {
        bytes = std::move(source);
        data = bytes.data();
    }
    template <class T>
    void UseElements(const std::vector<T>& elements) {
        const auto* raw = reinterpret_cast<const unsigned char*>(elements.data());
        Use(Bytes(raw, raw + elements.size() * sizeof(T)));
    }

    OIIOImageHandler handler;
    MessageRecorder messages;
    CountingAllocator blocks{ObjModel::mDefaultAllocator};
    Bytes bytes = Counting(64);
    const void* data = bytes.data();
    int srcPitch = 16;
    Size srcSize{4, 4, 1};
    EFormat format = kR8G8B8A8;
    ETextureType type = kTexture2D;
    Size dstSize{2, 2, 1};
    int pitch = kUntouched;
    EImageFilterType filter = kFilterNearest;
};

struct ResizeMethods : Resizing {};
struct ResizeCopy : Resizing {};
struct ResizeCropOrPad : Resizing {};
struct ResizeFilter : Resizing {};

// --- methods ---------------------------------------------------------------------------------------------------------

TEST_F(ResizeMethods, OtherMethodsAreAnError) {
    for (const int method : {-1, 3, 4, INT_MAX}) {
        messages.Clear();
        EXPECT_FALSE(Run(static_cast<EResizeMethod>(method)));
        EXPECT_THAT(messages.Entries(),
                    ElementsAre(MessageRecorder::Entry{EMessageKind::kError, L"wrong resize method!", false}));
        EXPECT_EQ(pitch, kUntouched);
    }
}

TEST_F(ResizeMethods, TheBlockIsFreedWithItsWrapper) {
    for (const EResizeMethod method : {kResizeCopy, kResizeFilter, kResizeCropOrPad}) {
        const Block block = Run(method);
        ASSERT_TRUE(block);
        EXPECT_EQ(blocks.LiveBlocks(), 1U);
    }
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
}

TEST_F(ResizeMethods, WithoutMemoryForTheWrapperTheBlockIsFreed) {
    for (const EResizeMethod method : {kResizeCopy, kResizeFilter, kResizeCropOrPad}) {
        CountingAllocator objects(ObjModel::mHeapAllocator);
        objects.Grant(0);
        EXPECT_FALSE(Run(method));
        EXPECT_EQ(blocks.LiveBlocks(), 0U);
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeMethods, WithoutMemoryForTheBlockTheAnswerIsNull) {
    blocks.Grant(0);
    for (const EResizeMethod method : {kResizeCopy, kResizeFilter, kResizeCropOrPad})
        EXPECT_FALSE(Run(method));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- copy ------------------------------------------------------------------------------------------------------------

TEST_F(ResizeCopy, TheBlockAndThePitchAreTheSources) {
    srcPitch = 17;
    EXPECT_EQ(Result(kResizeCopy, 64), bytes);
    EXPECT_EQ(pitch, 17);
}

TEST_F(ResizeCopy, EverythingElseIsIgnored) {
    srcPitch = -7;
    srcSize = {-1, INT_MAX, 0};
    dstSize = {0, INT_MIN, 9};
    format = kUnknown;
    type = kTextureCube;
    filter = static_cast<EImageFilterType>(99);
    EXPECT_EQ(Result(kResizeCopy, 64), bytes);
    EXPECT_EQ(pitch, -7);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeCopy, NothingIsAnEmptyBlock) {
    bytes.clear();
    for (const void* none : {static_cast<const void*>(nullptr), static_cast<const void*>(this)}) {
        data = none;
        pitch = kUntouched;
        const Block block = Run(kResizeCopy);
        ASSERT_TRUE(block);
        EXPECT_NE(block->mData, nullptr);
        EXPECT_EQ(pitch, 16);
    }
}

TEST_F(ResizeCopy, BytesFromNowhereAreNull) {
    data = nullptr;
    EXPECT_FALSE(Run(kResizeCopy));
    EXPECT_EQ(pitch, 16);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- crop or pad -----------------------------------------------------------------------------------------------------

TEST_F(ResizeCropOrPad, ASmallerBlockGetsTheUpperLeftPixels) {
    EXPECT_THAT(Result(kResizeCropOrPad, 16),
                testing::Optional(ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 17, 18, 19, 20, 21, 22, 23, 24)));
    EXPECT_EQ(pitch, 8);
}

TEST_F(ResizeCropOrPad, ALargerBlockIsFilledUpWithZeros) {
    dstSize = {8, 8, 1};
    Bytes expected(256, 0);
    for (std::size_t row = 0; row < 4; ++row)
        std::memcpy(expected.data() + row * 32, bytes.data() + row * 16, 16);
    EXPECT_EQ(Result(kResizeCropOrPad, 256), expected);
    EXPECT_EQ(pitch, 32);
}

TEST_F(ResizeCropOrPad, AWiderSourceRunsIntoTheNextRowAndItsLastRowShows) {
    format = kL8;
    Use({1, 2, 3, 4, 5, 6});
    srcPitch = 3;
    dstSize = {2, 4, 1};  // two rows of 3 bytes into four rows of 2
    EXPECT_THAT(Result(kResizeCropOrPad, 8), testing::Optional(ElementsAre(1, 2, 4, 5, 6, 0, 0, 0)));
    EXPECT_EQ(pitch, 2);
}

TEST_F(ResizeCropOrPad, AWiderSourceEndsAtTheEndOfTheBlock) {
    format = kL8;
    Use({1, 2, 3, 4, 5, 6});
    srcPitch = 3;
    dstSize = {2, 2, 1};  // as many rows: the last one would end a byte behind the block
    EXPECT_THAT(Result(kResizeCropOrPad, 4), testing::Optional(ElementsAre(1, 2, 4, 5)));
    srcPitch = 6;
    dstSize = {1, 3, 1};  // one row of 6 over three rows of 1
    EXPECT_THAT(Result(kResizeCropOrPad, 3), testing::Optional(ElementsAre(1, 2, 3)));
}

TEST_F(ResizeCropOrPad, WhereRowsAreFewerTheirLengthIsTheBlocksThoughTheSourcesAreShorter) {
    format = kL8;
    Use({1, 2, 3, 4, 5, 6, 7, 8});
    srcPitch = 2;
    dstSize = {3, 2, 1};  // two of four rows, three bytes of each
    EXPECT_THAT(Result(kResizeCropOrPad, 6), testing::Optional(ElementsAre(1, 2, 3, 3, 4, 5)));
}

TEST_F(ResizeCropOrPad, ALongerRowEndsAtTheEndOfTheSource) {
    format = kL8;
    Use({1, 2, 3});
    srcPitch = 1;
    dstSize = {4, 2, 1};  // the second row would read 4 bytes from the second of 3
    EXPECT_THAT(Result(kResizeCropOrPad, 8), testing::Optional(ElementsAre(1, 2, 3, 0, 2, 3, 0, 0)));
}

TEST_F(ResizeCropOrPad, APartOfARowIsNoRow) {
    format = kL8;
    Use({1, 2, 3, 4, 5});
    srcPitch = 2;
    dstSize = {2, 3, 1};
    EXPECT_THAT(Result(kResizeCropOrPad, 6), testing::Optional(ElementsAre(1, 2, 3, 4, 0, 0)));
}

TEST_F(ResizeCropOrPad, APitchBelowOneGivesZeros) {
    for (const int none : {0, -16, INT_MIN}) {
        srcPitch = none;
        EXPECT_THAT(Result(kResizeCropOrPad, 16), testing::Optional(Each(0)));
        EXPECT_EQ(pitch, 8);
    }
    srcPitch = INT_MAX;  // longer than the whole source
    EXPECT_THAT(Result(kResizeCropOrPad, 16), testing::Optional(Each(0)));
}

TEST_F(ResizeCropOrPad, EmptySizesAndFormatsAreEmptyBlocks) {
    for (const Size size : {Size{0, 2, 1}, Size{2, 0, 1}}) {
        dstSize = size;
        EXPECT_TRUE(Run(kResizeCropOrPad));
        EXPECT_EQ(pitch, 4 * size.x);
    }
    dstSize = {2, 2, 1};
    for (const EFormat none : {kUnknown, kBC1, static_cast<EFormat>(12345)}) {
        format = none;
        EXPECT_TRUE(Run(kResizeCropOrPad));
        EXPECT_EQ(pitch, 0);
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeCropOrPad, NegativeSizesAreNull) {
    for (const Size size :
         {Size{-1, 2, 1}, Size{2, -1, 1}, Size{-2, -2, 1}, Size{INT_MIN, 1, 1}, Size{1, INT_MIN, 1}}) {
        dstSize = size;
        EXPECT_FALSE(Run(kResizeCropOrPad));
        format = kUnknown;
        EXPECT_FALSE(Run(kResizeCropOrPad));
        format = kR8G8B8A8;
    }
}

TEST_F(ResizeCropOrPad, SizesBeyondMemoryAreNull) {
    for (const Size size : {Size{INT_MAX, 1, 1}, Size{INT_MAX / 4, INT_MAX, 1}, Size{INT_MAX, INT_MAX, 1}}) {
        dstSize = size;
        EXPECT_FALSE(Run(kResizeCropOrPad));
    }
    dstSize = {INT_MAX / 4, INT_MAX, 1};
    (void)Run(kResizeCropOrPad);
    EXPECT_EQ(pitch, INT_MAX / 4 * 4);
}

TEST_F(ResizeCropOrPad, BytesFromNowhereAreNull) {
    data = nullptr;
    EXPECT_FALSE(Run(kResizeCropOrPad));
    EXPECT_EQ(pitch, 8);
    bytes.clear();
    EXPECT_THAT(Result(kResizeCropOrPad, 16), testing::Optional(Each(0)));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeCropOrPad, TypeFilterDepthAndSourceSizeAreIgnored) {
    type = kTextureVolume;
    filter = static_cast<EImageFilterType>(99);
    srcSize = {-1, -1, -1};
    dstSize.z = -9;
    EXPECT_TRUE(Run(kResizeCropOrPad));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- filter ----------------------------------------------------------------------------------------------------------

TEST_F(ResizeFilter, WithoutDataThereIsAnError) {
    data = nullptr;
    type = kTextureCube;
    EXPECT_FALSE(Run(kResizeFilter));
    EXPECT_THAT(messages.Entries(),
                ElementsAre(MessageRecorder::Entry{EMessageKind::kError, L"No data passed in to resize.", false}));
    EXPECT_EQ(pitch, kUntouched);
}

TEST_F(ResizeFilter, OnlyFlatTexturesAreResized) {
    for (const int other : {0, 2, 4, 5, 6, 7, -1}) {
        type = static_cast<ETextureType>(other);
        messages.Clear();
        EXPECT_FALSE(Run(kResizeFilter)) << other;
        EXPECT_THAT(messages.Entries(),
                    ElementsAre(MessageRecorder::Entry{EMessageKind::kWarning, L"Texture type not supported", false}));
    }
    type = kTexture1D;
    EXPECT_TRUE(Run(kResizeFilter));
}

TEST_F(ResizeFilter, FormatsWithoutAPixelTypeAreWarnedAbout) {
    for (const int other : {0, 48, 63, 6, 75, 18, -1, 12345}) {
        format = static_cast<EFormat>(other);
        messages.Clear();
        EXPECT_FALSE(Run(kResizeFilter)) << other;
        EXPECT_THAT(messages.Texts(), ElementsAre(L"Raster format not supported")) << other;
        EXPECT_EQ(pitch, kUntouched);
    }
}

TEST_F(ResizeFilter, TheTypeIsLookedAtBeforeTheFormat) {
    type = kTextureCube;
    format = kUnknown;
    EXPECT_FALSE(Run(kResizeFilter));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"Texture type not supported"));
}

TEST_F(ResizeFilter, OtherFiltersAreWarnedAboutOnceThePitchIsSet) {
    for (const int other : {-1, 3, 4}) {
        filter = static_cast<EImageFilterType>(other);
        messages.Clear();
        pitch = kUntouched;
        EXPECT_FALSE(Run(kResizeFilter));
        EXPECT_THAT(messages.Entries(),
                    ElementsAre(MessageRecorder::Entry{EMessageKind::kWarning, L"invalid input parameter", false}));
        EXPECT_EQ(pitch, 8);
        EXPECT_EQ(blocks.LiveBlocks(), 0U);
    }
}

TEST_F(ResizeFilter, ZeroTakesTheNearestPixels) {
    format = kL8;
    Use(Counting(16));
    // The centre of a pixel of the result is the corner of four of the source; the lower right one is taken.
    EXPECT_THAT(Result(kResizeFilter, 4), testing::Optional(ElementsAre(6, 8, 14, 16)));
    EXPECT_EQ(pitch, 2);
    dstSize = {8, 4, 1};
    EXPECT_THAT(Result(kResizeFilter, 8), testing::Optional(ElementsAre(1, 1, 2, 2, 3, 3, 4, 4)));
}

TEST_F(ResizeFilter, TwoInterpolatesBetweenPixels) {
    format = kR32F;
    filter = kFilterBilinear;
    srcSize = {2, 1, 1};
    UseElements<float>({1.0F, 3.0F});
    dstSize = {1, 1, 1};
    const Block block = Run(kResizeFilter);
    ASSERT_TRUE(block);
    EXPECT_EQ(*static_cast<const float*>(block->mData), 2.0F);
}

/// Filters by hand: the result of a kernel that Mitchell and Netravali describe (Reconstruction Filters in Computer
/// Graphics, 1988), B = C = 1/3, two source pixels wide on each side per pixel of the result.
double Mitchell(double x) {
    x = std::abs(x);
    if (x < 1) return (7 * x * x * x - 12 * x * x + 16.0 / 3) / 6;
    if (x < 2) return (-7.0 / 3 * x * x * x + 12 * x * x - 20 * x + 32.0 / 3) / 6;
    return 0;
}

TEST_F(ResizeFilter, OneIsTheMitchellFilter) {
    format = kR32F;
    filter = kFilterMitchell;
    srcSize = {32, 1, 1};
    std::vector<float> values(32, 0.0F);
    values[16] = 1.0F;
    UseElements(values);
    dstSize = {16, 1, 1};
    const Block block = Run(kResizeFilter);
    ASSERT_TRUE(block);
    EXPECT_EQ(pitch, 64);
    const auto* result = static_cast<const float*>(block->mData);
    for (int x = 0; x < 16; ++x) {
        // Centres: the impulse is at 16.5 of the source, the pixel at 2 x + 1. All weights of a pixel together are 1.
        double sum = 0;
        for (int i = -16; i < 48; ++i)
            sum += Mitchell((i + 0.5 - (2 * x + 1)) / 2);
        EXPECT_NEAR(result[x], Mitchell((16.5 - (2 * x + 1)) / 2) / sum, 1e-5) << x;
    }
}

TEST_F(ResizeFilter, AFilterThatTheHostPrefersHoldsOverTheArgument) {
    format = kR32F;
    srcSize = {8, 1, 1};
    UseElements<float>({0, 0, 0, 0, 1, 0, 0, 0});
    dstSize = {4, 1, 1};
    filter = kFilterMitchell;
    const auto mitchell = Result(kResizeFilter, 16);
    filter = kFilterNearest;
    const auto nearest = Result(kResizeFilter, 16);
    ASSERT_NE(nearest, mitchell);

    LoadPreferences preferences;
    preferences.choosesFilter = true;
    const LoadPreferencesScope scope(preferences);
    EXPECT_EQ(Result(kResizeFilter, 16), mitchell);
    filter = static_cast<EImageFilterType>(3);
    EXPECT_FALSE(Run(kResizeFilter)) << "what is no filter is refused all the same";
    EXPECT_THAT(messages.Texts(), ElementsAre(L"invalid input parameter"));
}

TEST_F(ResizeFilter, AFilterThatIsNotChosenOrNotKnownLeavesTheArgumentsOwn) {
    format = kL8;
    Use(Counting(16));
    LoadPreferences preferences;
    preferences.filter = kResampleBox;
    const LoadPreferencesScope unchosen(preferences);
    EXPECT_THAT(Result(kResizeFilter, 4), testing::Optional(ElementsAre(6, 8, 14, 16)));
    preferences.choosesFilter = true;
    preferences.filter = static_cast<EResampleFilter>(99);
    const LoadPreferencesScope unknown(preferences);
    EXPECT_THAT(Result(kResizeFilter, 4), testing::Optional(ElementsAre(6, 8, 14, 16)));
}

TEST_F(ResizeFilter, TheHostMayPreferThatTransparentPixelsLendNoColour) {
    filter = kFilterMitchell;
    srcSize = {2, 1, 1};
    Use({200, 0, 0, 0, 254, 254, 254, 254});
    dstSize = {1, 1, 1};
    EXPECT_THAT(Result(kResizeFilter, 4), testing::Optional(ElementsAre(227, 127, 127, 127)));
    LoadPreferences preferences;
    preferences.alphaWeighted = true;
    const LoadPreferencesScope scope(preferences);
    EXPECT_THAT(Result(kResizeFilter, 4), testing::Optional(ElementsAre(254, 254, 254, 127)));
}

TEST_F(ResizeFilter, TheHostMayPreferThatNoLightBecomesNegative) {
    format = kR32F;
    filter = kFilterMitchell;
    srcSize = {32, 1, 1};
    std::vector<float> values(32, 0.0F);
    values[16] = 1000.0F;
    UseElements(values);
    dstSize = {16, 1, 1};
    const auto darkest = [&] {
        const Block block = Run(kResizeFilter);
        return *std::min_element(static_cast<float*>(block->mData), static_cast<float*>(block->mData) + 16);
    };
    EXPECT_LT(darkest(), -1);
    LoadPreferences preferences;
    preferences.bounded = true;
    const LoadPreferencesScope scope(preferences);
    EXPECT_EQ(darkest(), 0);
}

TEST_F(ResizeFilter, TheHostMayPreferTheMeanOfTheLight) {
    format = kL8;
    filter = kFilterMitchell;
    srcSize = {2, 1, 1};
    Use({0, 254});
    dstSize = {1, 1, 1};
    EXPECT_THAT(Result(kResizeFilter, 1), testing::Optional(ElementsAre(127)));
    LoadPreferences preferences;
    preferences.linearLight = true;
    const LoadPreferencesScope scope(preferences);
    EXPECT_THAT(Result(kResizeFilter, 1), testing::Optional(ElementsAre(187)));  // half of 0.9911, encoded
}

TEST_F(ResizeFilter, ALargeFloatPictureIsHalved) {
    format = kR32G32B32A32F;
    filter = kFilterMitchell;
    srcSize = {256, 256, 1};
    dstSize = {128, 128, 1};
    std::vector<float> values(256 * 256 * 4);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<float>(i % 977) / 977.0F;
    UseElements(values);
    const Block block = Run(kResizeFilter);
    ASSERT_TRUE(block);
    EXPECT_EQ(pitch, 2048);

    std::vector<float> expected(128 * 128 * 4);
    const OIIO::ImageBuf from(OIIO::ImageSpec(256, 256, 4, OIIO::TypeFloat), values.data());
    OIIO::ImageBuf to(OIIO::ImageSpec(128, 128, 4, OIIO::TypeFloat), expected.data());
    ASSERT_TRUE(OIIO::ImageBufAlgo::resize(to, from, {{"filtername", "mitchell"}}));
    EXPECT_EQ(std::memcmp(block->mData, expected.data(), expected.size() * sizeof(float)), 0);
}

TEST_F(ResizeFilter, EveryFormatWithAPixelTypeKeepsItsPixels) {
    for (const EFormat each : {kA8, kR8, kL8, kR16F, kR16, kL16, kR32F, kR16G16F, kR16G16, kR8G8B8A8, kB8G8R8A8,
                               kB8G8R8X8, kR8G8B8X8, kR32G32F, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F}) {
        format = each;
        const int bytesPerPixel = Kavra::Utilities::AFormatConvertor::BytesPerPixel(each);
        Use(Counting(static_cast<std::size_t>(16 * bytesPerPixel)));
        for (unsigned char& byte : bytes)
            byte %= 0x38;  // finite numbers of every type
        dstSize = srcSize;
        EXPECT_EQ(Result(kResizeFilter, bytes.size()), bytes) << each;
        EXPECT_EQ(pitch, 4 * bytesPerPixel);
    }
}

TEST_F(ResizeFilter, TheSourceIsTakenAsPackedWhateverItsPitch) {
    format = kL8;
    Use(Counting(16));
    dstSize = srcSize;
    for (const int other : {0, -4, 5, INT_MAX}) {
        srcPitch = other;
        EXPECT_EQ(Result(kResizeFilter, 16), bytes);
        EXPECT_EQ(pitch, 4);
    }
}

TEST_F(ResizeFilter, ASourceThatIsTooShortIsNull) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{63}}) {
        bytes.resize(size);
        EXPECT_FALSE(Run(kResizeFilter)) << size;
    }
    bytes.resize(64);
    data = bytes.data();
    EXPECT_TRUE(Run(kResizeFilter));
    srcSize = {INT_MAX, INT_MAX, 1};
    EXPECT_FALSE(Run(kResizeFilter));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeFilter, SizesBelowOneAreNull) {
    for (const int size : {0, -1, INT_MIN}) {
        for (int* const side : {&srcSize.x, &srcSize.y, &dstSize.x, &dstSize.y}) {
            const int kept = *side;
            *side = size;
            EXPECT_FALSE(Run(kResizeFilter));
            *side = kept;
        }
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeFilter, SizesBeyondMemoryAreNull) {
    for (const Size size : {Size{INT_MAX, 1, 1}, Size{INT_MAX / 4, INT_MAX, 1}}) {
        dstSize = size;
        EXPECT_FALSE(Run(kResizeFilter));
    }
}

TEST_F(ResizeFilter, AColumnOfAnyHeightIsShrunkToOnePixel) {
    format = kL8;
    filter = kFilterMitchell;
    srcSize = {1, 3 << 20, 1};  // more weights than the stack of the library holds
    Use(Bytes(3 << 20, 77));
    dstSize = {1, 1, 1};
    EXPECT_THAT(Result(kResizeFilter, 1), testing::Optional(ElementsAre(77)));
}

TEST_F(ResizeFilter, ARowMayGrowToAnyWidth) {
    format = kL8;
    filter = kFilterMitchell;
    srcSize = {1, 200, 1};  // the library would end the process over this
    Use(Bytes(200, 77));
    dstSize = {20000, 1, 1};
    EXPECT_THAT(Result(kResizeFilter, 20000), testing::Optional(Each(77)));
}

}  // namespace
