#include "output/ImageFixture.h"

#include <gmock/gmock.h>

#include <climits>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Objects::EMessageKind;
using Kavra::Tests::Hold;
using Kavra::Tests::Image;
using Kavra::Tests::MessageRecorder;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Bytes = std::vector<unsigned char>;

struct ImagePasting : Kavra::Tests::Images {
    bool Refuses(const Image& image, const IImage* source, int srcX, int srcY, int width, int height, int dstX,
                 int dstY) {
        messages.Clear();
        if (image->Paste(source, srcX, srcY, width, height, dstX, dstY)) return false;
        const auto entries = messages.Entries();
        return entries.size() == 1 && entries[0].kind == EMessageKind::kError &&
               entries[0].text == L"Invalid parameter" && !entries[0].hasDetail;
    }
};

TEST_F(ImagePasting, FromTheCornerItLandsWhereItIsTold) {
    const Image image = Blank(16, 16, kR8G8B8A8);
    const Image source = Filled<unsigned char>(16, 16, kR8G8B8A8, Bytes(16 * 16 * 4, 9));
    EXPECT_TRUE(image->Paste(source.get(), 0, 0, 4, 4, 8, 8));
    const Bytes pixels = Pixels(image);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t x = i / 4 % 16, y = i / 4 / 16;
        ASSERT_EQ(pixels[i], x >= 8 && x < 12 && y >= 8 && y < 12 ? 9 : 0) << x << ' ' << y;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImagePasting, FromElsewhereItLandsAtTheDifferenceOfTheCorners) {
    const Image image = Blank(16, 16, kR8G8B8A8);
    const Image source = Filled<unsigned char>(16, 16, kR8G8B8A8, Bytes(16 * 16 * 4, 9));
    EXPECT_TRUE(image->Paste(source.get(), 2, 2, 4, 4, 8, 8));
    const Bytes pixels = Pixels(image);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t x = i / 4 % 16, y = i / 4 / 16;
        ASSERT_EQ(pixels[i], x >= 6 && x < 10 && y >= 6 && y < 10 ? 9 : 0) << x << ' ' << y;
    }
}

TEST_F(ImagePasting, ThePixelsAreTheOnesAtTheSourcesCorner) {
    const Image image = Blank(4, 3, kL8);
    EXPECT_TRUE(image->Paste(Counting(4, 3).get(), 1, 1, 2, 1, 2, 2));  // 6 and 7 to (1, 1)
    EXPECT_THAT(Pixels(image), ElementsAre(0, 0, 0, 0, 0, 6, 7, 0, 0, 0, 0, 0));
}

TEST_F(ImagePasting, WhatLandsLeftOrAboveIsLeftOut) {
    const Image left = Blank(4, 1, kL8);
    EXPECT_TRUE(left->Paste(Counting(4, 1).get(), 2, 0, 2, 1, 1, 0));  // 3 and 4 to -1 and 0
    EXPECT_THAT(Pixels(left), ElementsAre(4, 0, 0, 0));
    const Image above = Blank(1, 4, kL8);
    EXPECT_TRUE(above->Paste(Counting(1, 4).get(), 0, 1, 1, 3, 0, 0));  // 2, 3 and 4 to -1, 0 and 1
    EXPECT_THAT(Pixels(above), ElementsAre(3, 4, 0, 0));
    const Image corner = Blank(3, 3, kL8);
    EXPECT_TRUE(corner->Paste(Counting(3, 3).get(), 1, 1, 2, 2, 0, 0));
    EXPECT_THAT(Pixels(corner), ElementsAre(9, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(ImagePasting, WhatLandsOutsideWhollyChangesNothingAndSucceeds) {
    const Image image = Blank(4, 4, kL8);
    EXPECT_TRUE(image->Paste(Counting(8, 8).get(), 4, 0, 2, 2, 1, 0));
    EXPECT_TRUE(image->Paste(Counting(8, 8).get(), 0, 4, 2, 2, 0, 1));
    EXPECT_TRUE(image->Paste(Counting(8, 8).get(), 6, 6, 2, 2, 0, 0));
    EXPECT_THAT(Pixels(image), Each(0));
}

TEST_F(ImagePasting, PixelsOfEverySizeAreCopiedWhole) {
    const Image image = Blank(2, 1, kR32G32B32A32F);
    const Image source = Filled<float>(1, 1, kR32G32B32A32F, {-1.5F, 2.0F, 1e30F, 0.25F});
    EXPECT_TRUE(image->Paste(source.get(), 0, 0, 1, 1, 1, 0));
    EXPECT_THAT(Load(image, {1, 0}, {1, 1}, {1, 1}, kR32G32B32A32F)->As<float>(),
                ElementsAre(-1.5F, 2.0F, 1e30F, 0.25F));
    const Image halves = Blank(2, 1, kR16G16F);
    EXPECT_TRUE(halves->Paste(Filled<unsigned char>(1, 1, kR16G16F, {1, 2, 3, 4}).get(), 0, 0, 1, 1, 1, 0));
    EXPECT_THAT(Pixels(halves), ElementsAre(0, 0, 0, 0, 1, 2, 3, 4));
}

TEST_F(ImagePasting, IntoItselfTheRectangleIsTakenAsItWas) {
    // To the right, to the left, down and up, each time over a part of the source.
    const Image right = Counting(5, 1);
    EXPECT_TRUE(right->Paste(right.get(), 0, 0, 4, 1, 1, 0));
    EXPECT_THAT(Pixels(right), ElementsAre(1, 1, 2, 3, 4));
    const Image left = Counting(5, 1);
    EXPECT_TRUE(left->Paste(left.get(), 2, 0, 3, 1, 2, 0));
    EXPECT_THAT(Pixels(left), ElementsAre(3, 4, 5, 4, 5));
    const Image down = Counting(1, 5);
    EXPECT_TRUE(down->Paste(down.get(), 0, 0, 1, 4, 0, 1));
    EXPECT_THAT(Pixels(down), ElementsAre(1, 1, 2, 3, 4));
    const Image up = Counting(1, 5);
    EXPECT_TRUE(up->Paste(up.get(), 0, 2, 1, 3, 0, 2));
    EXPECT_THAT(Pixels(up), ElementsAre(3, 4, 5, 4, 5));
    const Image slant = Counting(3, 3);
    EXPECT_TRUE(slant->Paste(slant.get(), 0, 0, 2, 2, 1, 1));
    EXPECT_THAT(Pixels(slant), ElementsAre(1, 2, 3, 4, 1, 2, 7, 4, 5));
    // Down and to the left at once: (1, 0) goes to (0, 1).
    const Image back = Counting(3, 3);
    EXPECT_TRUE(back->Paste(back.get(), 1, 0, 2, 2, 1, 1));
    EXPECT_THAT(Pixels(back), ElementsAre(1, 2, 3, 2, 3, 6, 5, 6, 9));
}

TEST_F(ImagePasting, TheWholeImageFitsIntoItself) {
    const Image image = Blank(4, 3, kL8), source = Counting(4, 3);
    EXPECT_TRUE(image->Paste(source.get(), 0, 0, 4, 3, 0, 0));
    EXPECT_EQ(Pixels(image), Pixels(source));
}

TEST_F(ImagePasting, EveryBoundIsChecked) {
    const Image image = Blank(4, 4, kL8), source = Counting(6, 6);
    EXPECT_TRUE(Refuses(image, source.get(), 3, 0, 4, 1, 0, 0));  // right of the source
    EXPECT_TRUE(Refuses(image, source.get(), 0, 3, 1, 4, 0, 0));  // below it
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 0, 1, 0, 0));  // no width
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, 0, 0, 0));
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, -1, 1, 0, 0));
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, -1, 0, 0));
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 5, 1, 0, 0));  // wider than the image
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, 5, 0, 0));
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, 1, 4, 0));  // at its width
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, 1, 0, 4));
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 2, 1, 3, 0));  // over its edge
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, 2, 0, 3));
    EXPECT_TRUE(Refuses(image, source.get(), -1, 0, 1, 1, 0, 0));
    EXPECT_TRUE(Refuses(image, source.get(), 0, -1, 1, 1, 0, 0));
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, 1, -1, 0));
    EXPECT_TRUE(Refuses(image, source.get(), 0, 0, 1, 1, 0, -1));
    EXPECT_THAT(Pixels(image), Each(0));
    EXPECT_TRUE(image->Paste(source.get(), 0, 0, 4, 4, 0, 0));
}

TEST_F(ImagePasting, TheBoundsAreCheckedBeforeTheShift) {
    // It would land inside, but is named over the edge.
    const Image image = Blank(4, 4, kL8);
    EXPECT_TRUE(Refuses(image, Counting(8, 8).get(), 4, 0, 2, 1, 4, 0));
}

TEST_F(ImagePasting, NumbersBeyondEverythingAreRefused) {
    const Image image = Blank(4, 4, kL8);
    for (const int huge : {INT_MAX, INT_MAX - 1, INT_MIN}) {
        EXPECT_TRUE(Refuses(image, image.get(), huge, 0, 4, 4, 0, 0));
        EXPECT_TRUE(Refuses(image, image.get(), 0, huge, 4, 4, 0, 0));
        EXPECT_TRUE(Refuses(image, image.get(), 0, 0, huge, 4, 0, 0));
        EXPECT_TRUE(Refuses(image, image.get(), 0, 0, 4, huge, 0, 0));
        EXPECT_TRUE(Refuses(image, image.get(), 0, 0, 4, 4, huge, 0));
        EXPECT_TRUE(Refuses(image, image.get(), 0, 0, 4, 4, 0, huge));
        EXPECT_TRUE(Refuses(image, image.get(), huge, huge, huge, huge, huge, huge));
    }
}

TEST_F(ImagePasting, FormatsMustBeTheSame) {
    EXPECT_TRUE(Refuses(Blank(4, 4, kL8), Blank(4, 4, kR8G8B8A8).get(), 0, 0, 1, 1, 0, 0));
    EXPECT_TRUE(Refuses(Blank(4, 4, kL8), Blank(4, 4, kR8).get(), 0, 0, 1, 1, 0, 0));
    EXPECT_TRUE(Blank(4, 4, kB8G8R8A8)->Paste(Blank(4, 4, kR8G8B8X8).get(), 0, 0, 1, 1, 0, 0));
}

/// An image of somebody else's making.
class ForeignImage final : public IImage {
    using Size = Kavra::vec2<int>;

public:
    void* GetInterface(UString*) override { return this; }
    UString* ClassName() const override { return OIIOImage::InterfaceID(); }
    int CurObjectCount() const override { return 1; }
    int Width() const override { return 4; }
    int Height() const override { return 4; }
    EFormat Format() const override { return kL8; }
    const wchar_t* ImageFileName() const override { return nullptr; }
    void* RowData(ImageDescription&) override { return nullptr; }
    bool Paste(const IImage*, int, int, int, int, int, int) override { return true; }
    bool Save(const KString&) override { return true; }
    IMemoryWrapper<void>* LoadRect(ImageDescription&, Size, Size, Size, EFormat, EDataOrientation) override {
        return nullptr;
    }
};

TEST_F(ImagePasting, FromNothingOrFromOthersThereIsSilence) {
    const Image image = Blank(4, 4, kL8), empty = Blank(4, 4, kUnknown);
    messages.Clear();
    const ForeignImage foreign;
    EXPECT_FALSE(image->Paste(nullptr, 0, 0, 1, 1, 0, 0));
    EXPECT_FALSE(image->Paste(&foreign, 0, 0, 1, 1, 0, 0));
    EXPECT_FALSE(image->Paste(empty.get(), 0, 0, 1, 1, 0, 0));
    EXPECT_FALSE(empty->Paste(image.get(), -1, 0, 1, 1, 0, 0));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

}  // namespace
