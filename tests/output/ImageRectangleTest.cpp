#include "output/CountingAllocator.h"
#include "output/ImageFixture.h"

#include <kavra/devices/LoadPreferences.h>
#include <kavra/objects/ObjModel.h>

#include <OpenImageIO/imagebufalgo.h>
#include <gmock/gmock.h>

#include <climits>
#include <cstdint>
#include <limits>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Objects::EMessageKind;
using Kavra::Objects::ObjModel;
using Kavra::Tests::CountingAllocator;
using Kavra::Tests::Image;
using Kavra::Tests::MessageRecorder;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Bytes = std::vector<unsigned char>;

struct ImageRectangle : Kavra::Tests::Images {
    /// The only pixel of `image` in another format.
    Bytes OnePixel(const Image& image, EFormat format) {
        const auto rectangle = Load(image, {0, 0}, {1, 1}, {1, 1}, format);
        return rectangle ? rectangle->bytes : Bytes();
    }
    template <class T>
    std::vector<T> OnePixelAs(const Image& image, EFormat format) {
        return Load(image, {0, 0}, {1, 1}, {1, 1}, format)->As<T>();
    }
    /// A rectangle of an image of one byte a pixel.
    Bytes Part(const Image& image, Size origin, Size size) {
        const auto rectangle = Load(image, origin, size, size, kL8);
        return rectangle ? rectangle->bytes : Bytes();
    }
};

// --- cutting ---------------------------------------------------------------------------------------------------------

TEST_F(ImageRectangle, HasThePixelsOfTheRectangleInPackedRows) {
    const Image image = Counting(4, 3);
    EXPECT_THAT(Part(image, {1, 1}, {2, 2}), ElementsAre(6, 7, 10, 11));
    EXPECT_THAT(Part(image, {0, 0}, {4, 3}), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
    EXPECT_THAT(Part(image, {3, 2}, {1, 1}), ElementsAre(12));
}

TEST_F(ImageRectangle, IsDescribed) {
    const auto rectangle = Load(Blank(8, 8, kR8G8B8A8), {1, 2}, {3, 4}, {3, 4}, kR8G8B8A8);
    ASSERT_TRUE(rectangle);
    EXPECT_EQ(rectangle->desc.width, 3);
    EXPECT_EQ(rectangle->desc.height, 4);
    EXPECT_EQ(rectangle->desc.depth, 1);
    EXPECT_EQ(rectangle->desc.format, kR8G8B8A8);
    EXPECT_EQ(rectangle->desc.rowPitch, 12);
    EXPECT_EQ(rectangle->desc.dataSize, 48U);
    EXPECT_EQ(rectangle->desc.orientation, kTopLeft);
    EXPECT_TRUE(rectangle->desc.defaultOrientation);
}

TEST_F(ImageRectangle, LeavesTheOtherFieldsOfTheDescriptionAlone) {
    const Image image = Counting(2, 2);
    ImageDescription desc;
    desc.textureType = kTextureCube;
    desc.gamma = 1.5;
    desc.hasAlpha = desc.hasTransparentPixels = desc.hasTranslucentPixels = true;
    image->LoadRect(desc, {0, 0}, {1, 1}, {1, 1}, kL8, kTopLeft)->Delete();
    EXPECT_EQ(desc.textureType, kTextureCube);
    EXPECT_EQ(desc.gamma, 1.5);
    EXPECT_TRUE(desc.hasAlpha && desc.hasTransparentPixels && desc.hasTranslucentPixels);
}

TEST_F(ImageRectangle, IsZeroOutsideTheImage) {
    const Image image = Counting(2, 2);
    EXPECT_THAT(Part(image, {-1, -1}, {2, 2}), ElementsAre(0, 0, 0, 1));
    EXPECT_THAT(Part(image, {1, 1}, {2, 2}), ElementsAre(4, 0, 0, 0));
    EXPECT_THAT(Part(image, {-1, 0}, {4, 1}), ElementsAre(0, 1, 2, 0));
    EXPECT_THAT(Part(image, {0, -1}, {1, 4}), ElementsAre(0, 1, 3, 0));
    EXPECT_THAT(Part(image, {2, 0}, {2, 2}), Each(0));
    EXPECT_THAT(Part(image, {0, 2}, {2, 2}), Each(0));
    EXPECT_THAT(Part(image, {-5, -5}, {2, 2}), Each(0));
    EXPECT_THAT(Part(image, {INT_MIN, INT_MIN}, {2, 2}), Each(0));
    EXPECT_THAT(Part(image, {INT_MAX - 2, INT_MAX - 2}, {2, 2}), Each(0));
}

TEST_F(ImageRectangle, IsWhatTheLibraryCuts) {
    const Image image = Counting(5, 4);
    Bytes pixels = Pixels(image);
    const OIIO::ImageBuf whole(OIIO::ImageSpec(5, 4, 1, OIIO::TypeUInt8), pixels.data());
    for (int y = -3; y < 6; ++y) {
        for (int x = -3; x < 7; ++x) {
            for (const Size size : {Size{1, 1}, Size{3, 2}, Size{9, 9}}) {
                const auto cut = OIIO::ImageBufAlgo::cut(whole, OIIO::ROI(x, x + size.x, y, y + size.y, 0, 1));
                Bytes expected(static_cast<std::size_t>(size.x * size.y));
                ASSERT_TRUE(cut.get_pixels(cut.roi(), OIIO::TypeUInt8, expected.data()));
                ASSERT_EQ(Part(image, {x, y}, size), expected) << x << ' ' << y << ' ' << size.x;
            }
        }
    }
}

TEST_F(ImageRectangle, SizesBelowOneAreNull) {
    const Image image = Counting(4, 4);
    for (const int none : {0, -1, INT_MIN}) {
        EXPECT_FALSE(Load(image, {0, 0}, {none, 2}, {2, 2}, kL8));
        EXPECT_FALSE(Load(image, {0, 0}, {2, none}, {2, 2}, kL8));
        EXPECT_FALSE(Load(image, {0, 0}, {2, 2}, {none, 2}, kL8));
        EXPECT_FALSE(Load(image, {0, 0}, {2, 2}, {2, none}, kL8));
        EXPECT_FALSE(Load(image, {0, 0}, {none, none}, {none, none}, kL8));
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageRectangle, SizesAndPlacesBeyondEverythingAreNull) {
    const Image image = Counting(4, 4);
    EXPECT_FALSE(Load(image, {INT_MAX, 0}, {1, 1}, {1, 1}, kL8));
    EXPECT_FALSE(Load(image, {0, INT_MAX}, {1, 1}, {1, 1}, kL8));
    EXPECT_FALSE(Load(image, {1, 0}, {INT_MAX, 1}, {1, 1}, kL8));
    EXPECT_FALSE(Load(image, {0, 0}, {INT_MAX, INT_MAX}, {1, 1}, kL8));
    EXPECT_FALSE(Load(image, {0, 0}, {1, 1}, {INT_MAX, INT_MAX}, kL8));
    EXPECT_FALSE(Load(image, {0, 0}, {1, 1}, {INT_MAX, 1}, kR32G32B32A32F));
    EXPECT_FALSE(Load(Blank(4, 4, kR32G32B32A32F), {0, 0}, {INT_MAX, INT_MAX}, {INT_MAX, INT_MAX}, kR32G32B32A32F));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageRectangle, APitchBeyondADescriptionIsNullAndDescribesNothing) {
    const Image image = Counting(1, 1);
    ImageDescription desc;
    EXPECT_EQ(image->LoadRect(desc, {0, 0}, {1, 1}, {1 << 27, 1}, kR32G32B32A32F, kTopLeft), nullptr);
    EXPECT_EQ(image->LoadRect(desc, {0, 0}, {1, 1}, {1, 1 << 27}, kR32G32B32A32F, kLeftTop), nullptr);
    EXPECT_EQ(desc.width, 0);
}

TEST_F(ImageRectangle, FormatsWithoutAPixelTypeAreWarnedAboutBeforeTheSize) {
    const Image image = Counting(4, 4);
    for (const int format : {0, 48, 63, 6, 75, 18, -1, 12345}) {
        messages.Clear();
        EXPECT_FALSE(Load(image, {0, 0}, {0, 0}, {0, 0}, static_cast<EFormat>(format)));
        EXPECT_THAT(messages.Entries(),
                    ElementsAre(MessageRecorder::Entry{EMessageKind::kWarning, L"Raster format not supported", false}))
            << format;
    }
}

// --- scaling and turning ---------------------------------------------------------------------------------------------

TEST_F(ImageRectangle, IsScaledWhenEitherSideDiffers) {
    const Image image = Counting(4, 4);
    const auto small = Load(image, {0, 0}, {4, 4}, {2, 2}, kL8);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->desc.width, 2);
    EXPECT_EQ(small->desc.rowPitch, 2);
    // So small a picture is sampled: of each four pixels the lower right one.
    EXPECT_THAT(small->bytes, ElementsAre(6, 8, 14, 16));
    EXPECT_THAT(Load(image, {0, 0}, {4, 4}, {4, 2}, kL8)->bytes, ElementsAre(5, 6, 7, 8, 13, 14, 15, 16));
    EXPECT_THAT(Load(image, {0, 0}, {4, 1}, {2, 1}, kL8)->bytes, ElementsAre(2, 4));
}

TEST_F(ImageRectangle, IsScaledAsTexturesAre) {
    Bytes bytes(64 * 64 * 4);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(i * 7 + i / 256);
    const Image image = Filled(64, 64, kR8G8B8A8, bytes);
    Bytes part = Load(image, {10, 20}, {40, 40}, {40, 40}, kR8G8B8A8)->bytes;
    const OIIO::ImageBuf from(OIIO::ImageSpec(40, 40, 4, OIIO::TypeUInt8), part.data());
    for (const Size size : {Size{20, 20}, Size{3, 60}, Size{38, 39}, Size{100, 90}}) {
        Bytes expected(static_cast<std::size_t>(size.x * size.y * 4));
        OIIO::ImageBuf to(OIIO::ImageSpec(size.x, size.y, 4, OIIO::TypeUInt8), expected.data());
        ASSERT_TRUE(OIIOImageHandler::AdaptiveResize(to, from, false));
        EXPECT_EQ(Load(image, {10, 20}, {40, 40}, size, kR8G8B8A8)->bytes, expected) << size.x;
    }
}

TEST_F(ImageRectangle, IsFilteredAsTheHostPrefersWhereSamplingWouldDo) {
    std::vector<unsigned char> stripes(400);
    for (std::size_t i = 0; i < stripes.size(); ++i)
        stripes[i] = i % 2 == 0 ? 0 : 200;
    const Image image = Filled(20, 20, kL8, stripes);
    const auto sampled = Load(image, {0, 0}, {20, 20}, {4, 4}, kL8);
    ASSERT_THAT(sampled->bytes, Each(testing::AnyOf(0, 200)));
    LoadPreferences preferences;
    preferences.choosesFilter = true;
    const LoadPreferencesScope scope(preferences);
    const auto filtered = Load(image, {0, 0}, {20, 20}, {4, 4}, kL8);
    EXPECT_NEAR(filtered->bytes[5], 100, 5) << "stripes of 0 and 200 are narrower than the filter by far";
}

TEST_F(ImageRectangle, IsResampledWithTheOptionsThatTheHostPrefers) {
    const Image image = Filled<unsigned char>(2, 1, kR8G8B8A8, {200, 0, 0, 0, 254, 254, 254, 254});
    const auto pixel = [&] { return Load(image, {0, 0}, {2, 1}, {1, 1}, kR8G8B8A8)->bytes; };
    LoadPreferences preferences;
    preferences.choosesFilter = true;
    preferences.filter = kResampleBox;
    const LoadPreferencesScope plain(preferences);
    EXPECT_THAT(pixel(), ElementsAre(227, 127, 127, 127));
    preferences.alphaWeighted = true;
    const LoadPreferencesScope weighted(preferences);
    EXPECT_THAT(pixel(), ElementsAre(254, 254, 254, 127));
}

TEST_F(ImageRectangle, IsZeroWhereTheImageEndsAlsoWhenScaled) {
    const Image image = Filled<unsigned char>(2, 2, kL8, {8, 8, 8, 8});
    EXPECT_THAT(Load(image, {-2, 0}, {4, 2}, {2, 1}, kL8)->bytes, ElementsAre(0, 8));
}

TEST_F(ImageRectangle, IsRotatedToEveryOrientation) {
    const Image image = Counting(3, 2);  // 1 2 3 / 4 5 6
    const auto rotated = [&](int orientation) {
        return Load(image, {0, 0}, {3, 2}, {3, 2}, kL8, static_cast<EDataOrientation>(orientation))->bytes;
    };
    EXPECT_THAT(rotated(kTopLeft), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(rotated(kTopRight), ElementsAre(3, 2, 1, 6, 5, 4));
    EXPECT_THAT(rotated(kBottomLeft), ElementsAre(4, 5, 6, 1, 2, 3));
    EXPECT_THAT(rotated(kBottomRight), ElementsAre(6, 5, 4, 3, 2, 1));
    EXPECT_THAT(rotated(kLeftTop), ElementsAre(1, 4, 2, 5, 3, 6));
    EXPECT_THAT(rotated(kRightTop), ElementsAre(3, 6, 2, 5, 1, 4));  // a quarter clockwise shows it upright
    EXPECT_THAT(rotated(kLeftBottom), ElementsAre(4, 1, 5, 2, 6, 3));
    EXPECT_THAT(rotated(kRightBottom), ElementsAre(6, 3, 5, 2, 4, 1));
    EXPECT_THAT(rotated(8), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(rotated(-1), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(ImageRectangle, IsDescribedAsItLiesAfterTheRotation) {
    const auto rectangle = Load(Blank(8, 8, kL16), {0, 0}, {8, 4}, {6, 2}, kL16, kRightTop);
    ASSERT_TRUE(rectangle);
    EXPECT_EQ(rectangle->desc.width, 2);
    EXPECT_EQ(rectangle->desc.height, 6);
    EXPECT_EQ(rectangle->desc.rowPitch, 4);
    EXPECT_EQ(rectangle->desc.dataSize, 24U);
    EXPECT_EQ(rectangle->desc.orientation, kRightTop);
    EXPECT_FALSE(rectangle->desc.defaultOrientation);
    const auto unknown = Load(Blank(1, 1, kL8), {0, 0}, {1, 1}, {1, 1}, kL8, static_cast<EDataOrientation>(9));
    EXPECT_EQ(unknown->desc.orientation, 9);
    EXPECT_FALSE(unknown->desc.defaultOrientation);
}

TEST_F(ImageRectangle, IsScaledBeforeItIsRotated) {
    const Image image = Counting(4, 2);  // 1 2 3 4 / 5 6 7 8
    const auto rectangle = Load(image, {0, 0}, {4, 2}, {2, 2}, kL8, kLeftTop);
    EXPECT_THAT(rectangle->bytes, ElementsAre(2, 6, 4, 8));
}

TEST_F(ImageRectangle, RotatesAndConvertsPixelsOfEverySize) {
    const Image image = Filled<std::uint16_t>(1, 2, kL16, {0x0101, 0xFFFF});
    const auto rectangle = Load(image, {0, 0}, {1, 2}, {1, 2}, kR16G16, kBottomLeft);
    EXPECT_THAT(rectangle->As<std::uint16_t>(), ElementsAre(0xFFFF, 0xFFFF, 0x0101, 0x0101));
}

// --- formats ---------------------------------------------------------------------------------------------------------

TEST_F(ImageRectangle, ColoursChangeTheirOrder) {
    const Image image = Filled<unsigned char>(1, 1, kR8G8B8A8, {10, 20, 30, 40});
    EXPECT_THAT(OnePixel(image, kB8G8R8A8), ElementsAre(30, 20, 10, 40));
    EXPECT_THAT(OnePixel(image, kB8G8R8X8), ElementsAre(30, 20, 10, 40));
    EXPECT_THAT(OnePixel(image, kR8G8B8X8), ElementsAre(10, 20, 30, 40));
}

TEST_F(ImageRectangle, OtherColoursComeRedFirstUnderABlueFirstName) {
    EXPECT_THAT(OnePixel(Filled<float>(1, 1, kR32G32B32A32F, {1.0F, 0.5F, 0.0F, 1.0F}), kB8G8R8A8),
                ElementsAre(255, 128, 0, 255));
    EXPECT_THAT(OnePixel(Filled<std::uint16_t>(1, 1, kR16G16B16A16, {65535, 257, 0, 65535}), kB8G8R8X8),
                ElementsAre(255, 1, 0, 255));
}

TEST_F(ImageRectangle, TheSameNumberOfChannelsIsConvertedByTheLibrary) {
    const Image image = Filled<unsigned char>(1, 1, kR8G8B8A8, {255, 128, 0, 51});
    EXPECT_THAT(OnePixelAs<std::uint16_t>(image, kR16G16B16A16), ElementsAre(65535, 128 * 257, 0, 51 * 257));
    EXPECT_THAT(OnePixelAs<float>(image, kR32G32B32A32F),
                ElementsAre(1.0F, 128 * (1 / 255.0F), 0.0F, 51 * (1 / 255.0F)));
    EXPECT_THAT(OnePixelAs<std::uint16_t>(image, kR16G16B16A16F), ElementsAre(0x3C00, 0x3804, 0, 0x3266));
    const Image floats = Filled<float>(1, 1, kR32G32B32A32F, {-0.5F, 1.5F, 0.5F, 1.0F});
    EXPECT_THAT(OnePixel(floats, kR8G8B8A8), ElementsAre(0, 255, 128, 255));
    EXPECT_THAT(OnePixel(Filled<std::uint16_t>(1, 1, kL16, {32768}), kL8), ElementsAre(128));
    EXPECT_THAT(OnePixel(Filled<unsigned char>(1, 1, kA8, {7}), kL8), ElementsAre(7));
}

TEST_F(ImageRectangle, ADifferentNumberOfChannelsGoesThroughTheConversionsWhereThereIsOne) {
    const Image grey = Filled<unsigned char>(1, 1, kL8, {200});
    EXPECT_THAT(OnePixel(grey, kR8G8B8A8), ElementsAre(200, 200, 200, 255));
    EXPECT_THAT(OnePixelAs<std::uint16_t>(grey, kR16G16), ElementsAre(200 * 257, 200 * 257));
    const Image colour = Filled<unsigned char>(1, 1, kR8G8B8A8, {255, 0, 0, 9});
    EXPECT_THAT(OnePixel(colour, kL8), ElementsAre(76));  // luminance, not red
    EXPECT_THAT(OnePixelAs<float>(Filled<float>(1, 1, kR32F, {2.5F}), kR32G32B32A32F),
                ElementsAre(2.5F, 2.5F, 2.5F, 1.0F));
    EXPECT_THAT(OnePixelAs<float>(Filled<float>(1, 1, kR32G32B32A32F, {1.5F, 2.5F, 3.5F, 4.5F}), kR32G32F),
                ElementsAre(1.5F, 2.5F));
    EXPECT_THAT(OnePixel(Filled<float>(1, 1, kR32G32B32A32F, {1.0F, 0.0F, 0.0F, 0.0F}), kA8), ElementsAre(255));
}

TEST_F(ImageRectangle, ChannelsThatAreTooManyAreLeftOutWhereThereIsNoConversion) {
    const Image colour = Filled<unsigned char>(2, 1, kR8G8B8A8, {10, 20, 30, 40, 50, 60, 70, 80});
    EXPECT_THAT(Load(colour, {0, 0}, {2, 1}, {2, 1}, kA8)->bytes, ElementsAre(10, 50));
    EXPECT_THAT(OnePixelAs<std::uint16_t>(colour, kL16), ElementsAre(10 * 257));
    EXPECT_THAT(OnePixelAs<std::uint16_t>(colour, kR16G16), ElementsAre(10 * 257, 20 * 257));
    EXPECT_THAT(OnePixel(Filled<std::uint16_t>(1, 1, kR16G16B16A16F, {0x3C00, 0, 0, 0}), kL8), ElementsAre(255));
    EXPECT_THAT(OnePixel(Filled<std::uint16_t>(1, 1, kR16G16, {257, 514}), kL8), ElementsAre(1));
}

TEST_F(ImageRectangle, ChannelsThatAreMissingAreBlackAndOpaque) {
    EXPECT_THAT(OnePixel(Filled<unsigned char>(1, 1, kA8, {7}), kR8G8B8A8), ElementsAre(7, 0, 0, 255));
    EXPECT_THAT(OnePixel(Filled<std::uint16_t>(1, 1, kR16G16, {257, 514}), kR8G8B8A8), ElementsAre(1, 2, 0, 255));
    EXPECT_THAT(OnePixel(Filled<std::uint16_t>(1, 1, kR16G16, {257, 514}), kB8G8R8A8), ElementsAre(1, 2, 0, 255));
    EXPECT_THAT(OnePixelAs<std::uint16_t>(Filled<unsigned char>(1, 1, kA8, {1}), kR16G16B16A16),
                ElementsAre(257, 0, 0, 65535));
    EXPECT_THAT(OnePixelAs<std::uint16_t>(Filled<std::uint16_t>(1, 1, kR16G16F, {0x4000, 0x3800}), kR16G16B16A16F),
                ElementsAre(0x4000, 0x3800, 0, 0x3C00));
    EXPECT_THAT(OnePixelAs<float>(Filled<float>(1, 1, kR32G32F, {2.5F, -1.0F}), kR32G32B32A32F),
                ElementsAre(2.5F, -1.0F, 0.0F, 1.0F));
    EXPECT_THAT(OnePixelAs<float>(Filled<unsigned char>(1, 1, kL8, {255}), kR32G32F), ElementsAre(1.0F, 0.0F));
    EXPECT_THAT(OnePixel(Filled<std::uint16_t>(1, 1, kR16F, {0x3C00}), kR8G8B8A8), ElementsAre(255, 0, 0, 255));
}

TEST_F(ImageRectangle, EveryFormatIsDeliveredInEveryOther) {
    const std::vector<EFormat> formats = {
        kA8,       kR8,       kL8,       kR16F,     kR16,     kL16,           kR32F,         kR16G16F,      kR16G16,
        kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8, kR32G32F, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F};
    CountingAllocator blocks(ObjModel::mDefaultAllocator);
    for (const EFormat from : formats) {
        const Image image = Blank(5, 4, from);
        for (const EFormat to : formats) {
            for (const Size size : {Size{3, 2}, Size{5, 7}}) {
                const auto rectangle = Load(image, {1, 1}, {3, 2}, size, to, kLeftTop);
                ASSERT_TRUE(rectangle) << from << ' ' << to;
                EXPECT_EQ(rectangle->desc.format, to);
                EXPECT_EQ(rectangle->desc.width, size.y);
            }
        }
        EXPECT_EQ(blocks.LiveBlocks(), 1U);
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- ownership -------------------------------------------------------------------------------------------------------

TEST_F(ImageRectangle, OutlivesTheImage) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator), objects(ObjModel::mHeapAllocator);
    ImageDescription desc;
    Image image = Counting(2, 2);
    IMemoryWrapper<void>* const block = image->LoadRect(desc, {0, 0}, {2, 2}, {2, 2}, kL8, kTopLeft);
    image.reset();
    EXPECT_EQ(static_cast<const unsigned char*>(block->mData)[3], 4);
    block->Delete();
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
    EXPECT_EQ(objects.LiveBlocks(), 0U);
}

TEST_F(ImageRectangle, WithoutMemoryIsNullAndNothingIsLost) {
    const Image image = Blank(4, 4, kR8G8B8A8);
    CountingAllocator blocks(ObjModel::mDefaultAllocator), objects(ObjModel::mHeapAllocator);
    // However far it comes: cut, scaled, rotated, gathered, converted.
    for (std::size_t granted = 0; granted < 4; ++granted) {
        blocks.Grant(granted);
        EXPECT_FALSE(Load(image, {-1, 0}, {4, 4}, {8, 2}, kB8G8R8A8, kLeftTop)) << granted;
        EXPECT_EQ(blocks.LiveBlocks(), 0U);
    }
    blocks.Grant(4);
    EXPECT_TRUE(Load(image, {-1, 0}, {4, 4}, {8, 2}, kB8G8R8A8, kLeftTop));
    blocks.GrantAll();
    objects.Grant(0);
    EXPECT_FALSE(Load(image, {0, 0}, {4, 4}, {4, 4}, kR8G8B8A8));
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
}

}  // namespace
