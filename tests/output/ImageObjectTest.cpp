#include "output/CountingAllocator.h"
#include "output/ImageFixture.h"

#include <kavra/objects/ObjModel.h>

#include <gmock/gmock.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using Kavra::Objects::EMessageKind;
using Kavra::Objects::ObjModel;
using Kavra::Tests::Calls;
using Kavra::Tests::CountingAllocator;
using Kavra::Tests::Hold;
using Kavra::Tests::Image;
using Kavra::Tests::MessageRecorder;
using Kavra::Tests::RecordingTarget;
using Kavra::Tests::RecordingTexture;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using ImageObject = Kavra::Tests::Images;
using Bytes = std::vector<unsigned char>;

const Calls kTargetCalls = {"MemoryWrapper 0", "Map 1", "Unmap", "Release"};

MessageRecorder::Entry Warning(const wchar_t* text) {
    return {EMessageKind::kWarning, text, false};
}

// --- what it tells of itself -----------------------------------------------------------------------------------------

TEST_F(ImageObject, TellsItsSizeAndFormatAndNothingOfFilesAndRows) {
    const Image image = Blank(5, 3, kL16);
    EXPECT_EQ(image->Width(), 5);
    EXPECT_EQ(image->Height(), 3);
    EXPECT_EQ(image->Format(), kL16);
    EXPECT_EQ(image->ImageFileName(), nullptr);
    ImageDescription desc;
    desc.width = 77;
    EXPECT_EQ(image->RowData(desc), nullptr);
    EXPECT_EQ(desc.width, 77);
}

TEST_F(ImageObject, HasOneInterfaceOfItsOwn) {
    const Image image = Blank(1, 1, kL8);
    Kavra::Objects::UString* const name = Kavra::Objects::Intern(L"OIIOImage");
    EXPECT_EQ(OIIOImage::InterfaceID(), name);
    EXPECT_EQ(image->GetInterface(name), image.get());
    EXPECT_EQ(image->GetInterface(Kavra::Objects::Intern(L"IImage")), nullptr);
    EXPECT_EQ(image->GetInterface(nullptr), nullptr);
    EXPECT_EQ(image->ClassName(), name);
}

TEST_F(ImageObject, CountsItsOwnKindOnly) {
    const int before = OIIOImage::NetObjectCount(), handlers = OIIOImageHandler::NetObjectCount();
    {
        const Image first = Blank(1, 1, kL8), second = Blank(1, 1, kUnknown);
        EXPECT_EQ(OIIOImage::NetObjectCount(), before + 2);
        EXPECT_EQ(first->CurObjectCount(), before + 2);
        EXPECT_EQ(OIIOImage::mNetObjectCount, before + 2);
    }
    EXPECT_EQ(OIIOImage::NetObjectCount(), before);
    EXPECT_EQ(OIIOImageHandler::NetObjectCount(), handlers);
}

TEST_F(ImageObject, StartsWithoutReferencesAndGoesWithTheLastOne) {
    const int before = OIIOImage::NetObjectCount();
    IImage* const image = Host().CreateImage(1, 1, kL8);
    EXPECT_EQ(image->RefCount(), 0);
    image->AddRef();
    image->AddRef();
    image->ReleaseRef();
    EXPECT_EQ(OIIOImage::NetObjectCount(), before + 1);
    image->ReleaseRef();
    EXPECT_EQ(OIIOImage::NetObjectCount(), before);
}

// --- blank -----------------------------------------------------------------------------------------------------------

TEST_F(ImageObject, IsBlankAtFirst) {
    for (const EFormat format : {kA8, kR8, kL8, kR16F, kR16, kL16, kR32F, kR16G16F, kR16G16, kR8G8B8A8, kR32G32F,
                                 kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F}) {
        const Image image = Blank(3, 2, format);
        EXPECT_EQ(image->Format(), format);
        const auto bytes = static_cast<std::size_t>(6 * Kavra::Utilities::AFormatConvertor::BytesPerPixel(format));
        EXPECT_EQ(Pixels(image), Bytes(bytes, 0)) << format;
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageObject, KeepsAllByteColoursRedFirst) {
    for (const EFormat format : {kB8G8R8A8, kB8G8R8X8, kR8G8B8X8, kR8G8B8A8})
        EXPECT_EQ(Blank(16, 16, format)->Format(), kR8G8B8A8);
}

TEST_F(ImageObject, OfAnUnsupportedFormatHasNoBufferButKeepsWhatItWasTold) {
    for (const int format : {0, 48, 63, 6, 75, 18, -1, 12345}) {
        messages.Clear();
        const Image image = Blank(5, 3, static_cast<EFormat>(format));
        ASSERT_TRUE(image);
        EXPECT_THAT(messages.Entries(), ElementsAre(Warning(L"Unsupported target type"))) << format;
        EXPECT_EQ(image->Width(), 5);
        EXPECT_EQ(image->Height(), 3);
        EXPECT_EQ(image->Format(), format);
        messages.Clear();
        EXPECT_FALSE(image->Paste(image.get(), 0, 0, 1, 1, 0, 0));
        EXPECT_FALSE(image->Save(L"x.png"));
        EXPECT_FALSE(Load(image, {0, 0}, {1, 1}, {1, 1}, kL8));
        EXPECT_THAT(messages.Texts(), IsEmpty());
    }
}

TEST_F(ImageObject, OfASizeBelowOneIsAsUnsupported) {
    const std::vector<Size> sizes = {{0, 3}, {3, 0}, {-1, 3}, {3, -1}, {INT_MIN, INT_MIN}};
    for (const Size size : sizes) {
        messages.Clear();
        const Image image = Blank(size.x, size.y, kL8);
        ASSERT_TRUE(image);
        EXPECT_THAT(messages.Entries(), ElementsAre(Warning(L"Unsupported target type")));
        EXPECT_EQ(image->Width(), size.x);
        EXPECT_EQ(image->Height(), size.y);
        EXPECT_FALSE(Load(image, {0, 0}, {1, 1}, {1, 1}, kL8));
    }
}

TEST_F(ImageObject, BeyondMemoryIsNull) {
    const int before = OIIOImage::NetObjectCount();
    EXPECT_EQ(Host().CreateImage(INT_MAX, INT_MAX, kR32G32B32A32F), nullptr);
    EXPECT_EQ(Host().CreateImage(INT_MAX, INT_MAX, kL8), nullptr);
    EXPECT_EQ(OIIOImage::NetObjectCount(), before);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- from a target ---------------------------------------------------------------------------------------------------

TEST_F(ImageObject, CopiesATargetAndGivesItsMemoryBack) {
    RecordingTarget target(2, 2, kL16);
    target.pitch = 7;
    target.bytes = {1, 2, 3, 4, 99, 99, 99, 5, 6, 7, 8};  // no gap after the last row
    const Image image = Hold(Host().CreateImage(&target));
    EXPECT_EQ(target.calls, kTargetCalls);
    target.bytes.assign(target.bytes.size(), 0);
    EXPECT_EQ(image->Format(), kL16);
    EXPECT_THAT(Pixels(image), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageObject, MakesABlueFirstTargetRedFirst) {
    for (const EFormat format : {kB8G8R8A8, kB8G8R8X8}) {
        const Image image = Filled<unsigned char>(2, 1, format, {10, 20, 30, 40, 50, 60, 70, 80});
        EXPECT_EQ(image->Format(), kR8G8B8A8);
        EXPECT_THAT(Pixels(image), ElementsAre(30, 20, 10, 40, 70, 60, 50, 80));
    }
    for (const EFormat format : {kR8G8B8A8, kR8G8B8X8}) {
        const Image image = Filled<unsigned char>(1, 1, format, {10, 20, 30, 40});
        EXPECT_EQ(image->Format(), kR8G8B8A8);
        EXPECT_THAT(Pixels(image), ElementsAre(10, 20, 30, 40));
    }
}

TEST_F(ImageObject, OfAnUnsupportedTargetNeverAsksForItsMemory) {
    for (const int format : {0, 48, 63, 6, 75, -1}) {
        messages.Clear();
        RecordingTarget target(4, 4, kR32G32B32A32F);
        target.format = static_cast<EFormat>(format);
        const Image image = Hold(Host().CreateImage(&target));
        ASSERT_TRUE(image);
        EXPECT_THAT(messages.Entries(), ElementsAre(Warning(L"Unsupported target type")));
        EXPECT_THAT(target.calls, IsEmpty());
        EXPECT_EQ(image->Width(), 4);
        EXPECT_EQ(image->Format(), format);
        EXPECT_FALSE(image->Save(L"x.png"));
    }
    RecordingTarget target(4, 4, kL8);
    target.height = 0;
    EXPECT_FALSE(Load(Hold(Host().CreateImage(&target)), {0, 0}, {1, 1}, {1, 1}, kL8));
}

TEST_F(ImageObject, OfATargetThatCannotBeMappedHasNoBuffer) {
    struct Case {
        std::function<void(RecordingTarget&)> spoil;
        Calls calls;
    };
    const Calls mapped = {"MemoryWrapper 0", "Map 1", "Unmap", "Release"};
    const std::vector<Case> cases = {
        {[](RecordingTarget& target) { target.hasMemory = false; }, {"MemoryWrapper 0"}},
        {[](RecordingTarget& target) { target.canBeMapped = false; }, {"MemoryWrapper 0", "Map 1", "Release"}},
        {[](RecordingTarget& target) { target.pitch = 7; }, mapped},
        {[](RecordingTarget& target) { target.pitch = 0; }, mapped},
        {[](RecordingTarget& target) { target.pitch = -8; }, mapped},
        {[](RecordingTarget& target) { target.pitch = INT_MIN; }, mapped},
        {[](RecordingTarget& target) { target.width = target.pitch = INT_MAX; }, mapped},
    };
    for (const Case& each : cases) {
        messages.Clear();
        RecordingTarget target(2, 2, kR8G8B8X8);
        each.spoil(target);
        const Image image = Hold(Host().CreateImage(&target));
        ASSERT_TRUE(image);
        EXPECT_THAT(messages.Entries(), ElementsAre(Warning(L"target can't be mapped")));
        EXPECT_EQ(target.calls, each.calls);
        EXPECT_EQ(image->Format(), kR8G8B8A8);
        EXPECT_EQ(image->Height(), 2);
        EXPECT_FALSE(image->Save(L"x.png"));
    }
}

TEST_F(ImageObject, OfNoTargetOrTextureIsEmptyInSilence) {
    for (const Image& image : {Hold(Host().CreateImage(static_cast<ATarget*>(nullptr))),
                               Hold(Host().CreateImage(static_cast<ASimpleTexture*>(nullptr)))}) {
        ASSERT_TRUE(image);
        EXPECT_EQ(image->Width(), 0);
        EXPECT_EQ(image->Height(), 0);
        EXPECT_EQ(image->Format(), kUnknown);
        EXPECT_FALSE(image->Save(L"x.png"));
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- from a texture --------------------------------------------------------------------------------------------------

TEST_F(ImageObject, HoldsItsTextureUntilItGoes) {
    RecordingTexture texture(1, 1, kB8G8R8A8);
    texture.bytes = {10, 20, 30, 40};
    {
        const Image image = Hold(Host().CreateImage(&texture));
        EXPECT_EQ(texture.references, 1);
        EXPECT_EQ(texture.calls, (Calls{"AddRef", "MemoryWrapper 0", "Map 1", "Unmap", "Release"}));
        EXPECT_THAT(Pixels(image), ElementsAre(30, 20, 10, 40));
    }
    EXPECT_EQ(texture.references, 0);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ImageObject, OfATextureWithoutPixelsSaysSoInItsOwnWords) {
    RecordingTexture unsupported(4, 4, kR32G32B32A32F);
    unsupported.format = kBC3;
    const Image first = Hold(Host().CreateImage(&unsupported));
    EXPECT_EQ(first->Format(), kBC3);
    EXPECT_EQ(unsupported.calls, Calls{"AddRef"});
    EXPECT_THAT(messages.Entries(), ElementsAre(Warning(L"Unsupported texture type")));

    messages.Clear();
    RecordingTexture unmapped(4, 4, kL8);
    unmapped.canBeMapped = false;
    const Image second = Hold(Host().CreateImage(&unmapped));
    EXPECT_EQ(unmapped.calls, (Calls{"AddRef", "MemoryWrapper 0", "Map 1", "Release"}));
    EXPECT_THAT(messages.Entries(), ElementsAre(Warning(L"texture can't be mapped")));
    EXPECT_EQ(unmapped.references, 1);
}

// --- memory and exceptions -------------------------------------------------------------------------------------------

TEST_F(ImageObject, FreesItsPixelsWithItself) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator), objects(ObjModel::mHeapAllocator);
    RecordingTarget target(4, 4, kB8G8R8A8);
    RecordingTexture texture(4, 4, kR32F);
    {
        const Image blank = Blank(4, 4, kL8), copy = Hold(Host().CreateImage(&target)),
                    kept = Hold(Host().CreateImage(&texture)), none = Blank(4, 4, kUnknown);
        EXPECT_EQ(blocks.LiveBlocks(), 3U);
        EXPECT_EQ(objects.LiveBlocks(), 4U);
    }
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
    EXPECT_EQ(objects.LiveBlocks(), 0U);
}

TEST_F(ImageObject, WithoutMemoryForItselfIsNull) {
    CountingAllocator objects(ObjModel::mHeapAllocator);
    objects.Grant(0);
    RecordingTarget target(4, 4, kL8);
    RecordingTexture texture(4, 4, kL8);
    const int before = OIIOImage::NetObjectCount();
    EXPECT_EQ(Host().CreateImage(4, 4, kL8), nullptr);
    EXPECT_EQ(Host().CreateImage(&target), nullptr);
    EXPECT_EQ(Host().CreateImage(&texture), nullptr);
    EXPECT_EQ(OIIOImage::NetObjectCount(), before);
    EXPECT_THAT(target.calls, IsEmpty());
    EXPECT_EQ(texture.references, 0);
}

TEST_F(ImageObject, WithoutMemoryForItsPixelsIsNullAndGivesEverythingBack) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator), objects(ObjModel::mHeapAllocator);
    blocks.Grant(0);
    RecordingTarget target(4, 4, kL8);
    RecordingTexture texture(4, 4, kL8);
    const int before = OIIOImage::NetObjectCount();
    EXPECT_EQ(Host().CreateImage(4, 4, kL8), nullptr);
    EXPECT_EQ(Host().CreateImage(&target), nullptr);
    EXPECT_EQ(Host().CreateImage(&texture), nullptr);
    EXPECT_EQ(target.calls, kTargetCalls);
    EXPECT_EQ(texture.calls, (Calls{"AddRef", "MemoryWrapper 0", "Map 1", "Unmap", "Release", "ReleaseRef"}));
    EXPECT_EQ(OIIOImage::NetObjectCount(), before);
    EXPECT_EQ(objects.LiveBlocks(), 0U);
}

TEST_F(ImageObject, NoExceptionOfATargetOrTextureLeaves) {
    CountingAllocator blocks(ObjModel::mDefaultAllocator), objects(ObjModel::mHeapAllocator);
    for (const char* call : {"MemoryWrapper 0", "Map 1"}) {
        RecordingTarget target(4, 4, kL8);
        RecordingTexture texture(4, 4, kL8);
        target.throwsIn = texture.throwsIn = call;
        EXPECT_EQ(Host().CreateImage(&target), nullptr);
        EXPECT_EQ(Host().CreateImage(&texture), nullptr);
        EXPECT_EQ(texture.references, 0) << call;
        EXPECT_EQ(target.calls.back(), std::string(call) == "Map 1" ? "Release" : call);
    }
    RecordingTexture texture(4, 4, kL8);
    texture.throwsIn = "ReleaseRef";
    Hold(Host().CreateImage(&texture)).reset();
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
    EXPECT_EQ(objects.LiveBlocks(), 0U);
}

}  // namespace
