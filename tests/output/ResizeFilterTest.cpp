// The resize service's filters.

#include "output/Resizing.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/LoadPreferences.h>

#include <Imath/half.h>
#include <OpenImageIO/imagebufalgo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Objects::EMessageKind;
using Kavra::Objects::ObjModel;
using Kavra::Tests::Block;
using Kavra::Tests::Bytes;
using Kavra::Tests::Counting;
using Kavra::Tests::kUntouched;
using Kavra::Tests::MessageRecorder;
using Kavra::Tests::Resizing;
using Kavra::Tests::Size;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct ResizeFilter : Resizing {};

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
