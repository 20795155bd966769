// A host calls by slot. These tests do as a host does that was compiled from another declaration of the interface: they
// take the function out of the table and call it.

#include "support/CallSlot.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Kavra::Devices;
using Kavra::vec3;
using Kavra::vec4;
using Kavra::Tests::CallSlot;

/// Writes down which operation was called.
class RecordingHandler final : public IImageHandler {
public:
    ~RecordingHandler() override { destroyed = true; }
    void Delete() override { called = "Delete"; }
    IMemoryWrapper<void>* LoadTexture(ImageDescription&, const KString&, int width, int height, int depth,
                                      EFormat format, bool highQuality, int level, EDataOrientation orientation,
                                      IImageFormatHandler*) override {
        called = "LoadTexture with bool";
        arguments = {width, height, depth, format, highQuality, level, orientation};
        return nullptr;
    }
    IMemoryWrapper<void>* LoadTexture(ImageDescription&, const KString&, int, int, int, EFormat, int, EDataOrientation,
                                      IImageFormatHandler*) override {
        called = "LoadTexture without bool";
        return nullptr;
    }
    ImageDesc* GetImageDesc(const KString&) override {
        called = "GetImageDesc";
        return nullptr;
    }
    bool SaveTexture(const KString&, const ImageDescription&, const void*) override {
        called = "SaveTexture with data";
        return true;
    }
    bool SaveTexture(const KString&) override {
        called = "SaveTexture of path";
        return true;
    }
    bool SaveTarget(const KString&, ATarget*, bool) override {
        called = "SaveTarget";
        return true;
    }
    IMemoryWrapper<void>* Resize(EResizeMethod, const void*, std::size_t, int, const vec3<int>&, EFormat, ETextureType,
                                 const vec3<int>&, int& pitch, EImageFilterType) override {
        called = "Resize";
        pitch = 99;
        return nullptr;
    }
    vec4<float> GetAverageColor(const ImageDescription&, const void*, bool) override {
        called = "GetAverageColor of data";
        return {1, 2, 3, 4};
    }
    vec4<float> GetAverageColor(const KString&, bool) override {
        called = "GetAverageColor of path";
        return {5, 6, 7, 8};
    }
    vec3<float> GetIBLIntensity(const ImageDescription&, const void*, bool, vec3<float>*) override {
        called = "GetIBLIntensity";
        return {1, 2, 3};
    }
    unsigned FindIBLLightDirections(const ImageDescription&, const void*, vec3<float>* const, vec3<float>* const,
                                    unsigned count) override {
        called = "FindIBLLightDirections";
        return count;
    }
    IImage* CreateImage(int, int, EFormat) override {
        called = "CreateImage of size";
        return nullptr;
    }
    IImage* CreateImage(ATarget*) override {
        called = "CreateImage of target";
        return nullptr;
    }
    IImage* CreateImage(ASimpleTexture*) override {
        called = "CreateImage of texture";
        return nullptr;
    }
    ImageHandlerStatus SupportSave(const KString&, int, int, int, EFormat) override {
        called = "SupportSave";
        return kSupported;
    }
    ImageHandlerStatus SupportLoad(const KString&) override {
        called = "SupportLoad";
        return kSupported;
    }
    bool writeImageOneLineAtATime(const KString&, double, IWriteImageLineProvider*, int, int, int) const override {
        called = "writeImageOneLineAtATime";
        return true;
    }
    IClone* Clone() override {
        called = "Clone";
        return this;
    }

    mutable std::string called;
    std::vector<int> arguments;
    inline static bool destroyed = false;
};

class Slots : public testing::Test {
protected:
    RecordingHandler handler;
    void* view = static_cast<IImageHandler*>(&handler);
    ImageDescription desc;
    const KString path{L"picture.png"};
    vec3<int> size;
    int pitch = 0;
};

TEST_F(Slots, OneDeletes) {
    CallSlot<void>(view, 1);
    EXPECT_EQ(handler.called, "Delete");
}

TEST_F(Slots, TwoLoadsWithTheQualityAndThreeWithout) {
    using Wrapper = IMemoryWrapper<void>*;
    CallSlot<Wrapper, ImageDescription*, const KString*, int, int, int, EFormat, bool, int, EDataOrientation,
             IImageFormatHandler*>(view, 2, &desc, &path, 11, 12, 13, kR32F, true, 14, kLeftTop, nullptr);
    EXPECT_EQ(handler.called, "LoadTexture with bool");
    EXPECT_EQ(handler.arguments, (std::vector<int>{11, 12, 13, kR32F, 1, 14, kLeftTop}));

    CallSlot<Wrapper, ImageDescription*, const KString*, int, int, int, EFormat, int, EDataOrientation,
             IImageFormatHandler*>(view, 3, &desc, &path, 0, 0, 0, kUnknown, 0, kTopLeft, nullptr);
    EXPECT_EQ(handler.called, "LoadTexture without bool");
}

TEST_F(Slots, FourDescribes) {
    CallSlot<ImageDesc*>(view, 4, &path);
    EXPECT_EQ(handler.called, "GetImageDesc");
}

TEST_F(Slots, FiveToSevenSave) {
    CallSlot<bool, const KString*, const ImageDescription*, const void*>(view, 5, &path, &desc, nullptr);
    EXPECT_EQ(handler.called, "SaveTexture with data");
    CallSlot<bool>(view, 6, &path);
    EXPECT_EQ(handler.called, "SaveTexture of path");
    CallSlot<bool, const KString*, ATarget*, bool>(view, 7, &path, nullptr, false);
    EXPECT_EQ(handler.called, "SaveTarget");
}

TEST_F(Slots, EightResizes) {
    CallSlot<IMemoryWrapper<void>*, EResizeMethod, const void*, std::size_t, int, const vec3<int>*, EFormat,
             ETextureType, const vec3<int>*, int*, EImageFilterType>(
        view, 8, kResizeCopy, nullptr, 0, 0, &size, kUnknown, kTexture2D, &size, &pitch, kFilterNearest);
    EXPECT_EQ(handler.called, "Resize");
    EXPECT_EQ(pitch, 99);
}

TEST_F(Slots, NineAndTenAverage) {
    EXPECT_EQ((CallSlot<vec4<float>, const ImageDescription*, const void*, bool>(view, 9, &desc, nullptr, false).w), 4);
    EXPECT_EQ(handler.called, "GetAverageColor of data");
    EXPECT_EQ((CallSlot<vec4<float>, const KString*, bool>(view, 10, &path, false).w), 8);
    EXPECT_EQ(handler.called, "GetAverageColor of path");
}

TEST_F(Slots, ElevenAndTwelveAnalyseLight) {
    EXPECT_EQ((CallSlot<vec3<float>, const ImageDescription*, const void*, bool, vec3<float>*>(view, 11, &desc, nullptr,
                                                                                               false, nullptr)
                   .z),
              3);
    EXPECT_EQ(handler.called, "GetIBLIntensity");
    EXPECT_EQ((CallSlot<unsigned, const ImageDescription*, const void*, vec3<float>*, vec3<float>*, unsigned>(
                  view, 12, &desc, nullptr, nullptr, nullptr, 7)),
              7U);
    EXPECT_EQ(handler.called, "FindIBLLightDirections");
}

TEST_F(Slots, ThirteenToFifteenCreateImages) {
    CallSlot<IImage*>(view, 13, 4, 4, kR8G8B8A8);
    EXPECT_EQ(handler.called, "CreateImage of size");
    CallSlot<IImage*, ATarget*>(view, 14, nullptr);
    EXPECT_EQ(handler.called, "CreateImage of target");
    CallSlot<IImage*, ASimpleTexture*>(view, 15, nullptr);
    EXPECT_EQ(handler.called, "CreateImage of texture");
}

TEST_F(Slots, SixteenToEighteenComeLast) {
    CallSlot<int>(view, 16, &path, 1, 1, 1, kR8G8B8A8);
    EXPECT_EQ(handler.called, "SupportSave");
    CallSlot<int>(view, 17, &path);
    EXPECT_EQ(handler.called, "SupportLoad");
    CallSlot<bool, const KString*, double, IWriteImageLineProvider*, int, int, int>(view, 18, &path, 72.0, nullptr, 1,
                                                                                    1, 4);
    EXPECT_EQ(handler.called, "writeImageOneLineAtATime");
}

TEST_F(Slots, TheCloneViewHasItsDestructorAndThenClone) {
    void* const cloneView = static_cast<IClone*>(&handler);
    EXPECT_EQ(CallSlot<void*>(cloneView, 1), cloneView);
    EXPECT_EQ(handler.called, "Clone");
}

TEST_F(Slots, ZeroDestroys) {
    RecordingHandler::destroyed = false;
    CallSlot<void>(static_cast<IImageHandler*>(new RecordingHandler), 0);
    EXPECT_TRUE(RecordingHandler::destroyed);
}

TEST(HandlerTable, TheCloneViewComesSecond) {
    OIIOImageHandler handler;
    const auto* const first = reinterpret_cast<const char*>(static_cast<IImageHandler*>(&handler));
    const auto* const second = reinterpret_cast<const char*>(static_cast<IClone*>(&handler));
    EXPECT_EQ(first, reinterpret_cast<const char*>(&handler));
    EXPECT_EQ(second, first + sizeof(void*));
    EXPECT_EQ(static_cast<const void*>(first), static_cast<IDelete*>(&handler));
}

TEST(HandlerTable, TheInspectorsViewComesThird) {
    OIIOImageHandler handler;
    const auto* const first = reinterpret_cast<const char*>(static_cast<IImageHandler*>(&handler));
    IImageHandler* const asHostsHoldIt = &handler;
    const auto* const third = reinterpret_cast<const char*>(dynamic_cast<IImageInspector*>(asHostsHoldIt));
    EXPECT_EQ(third, first + 2 * sizeof(void*));
}

TEST(HandlerTable, TheMemoryLoadersViewComesFourth) {
    OIIOImageHandler handler;
    IImageHandler* const asHostsHoldIt = &handler;
    const auto* const fourth = reinterpret_cast<const char*>(dynamic_cast<IMemoryLoader*>(asHostsHoldIt));
    EXPECT_EQ(fourth, reinterpret_cast<const char*>(&handler) + 3 * sizeof(void*));
}

TEST(HandlerTable, AnswersThroughItsSlots) {
    OIIOImageHandler handler;
    void* const view = static_cast<IImageHandler*>(&handler);
    const Kavra::Tests::MessageRecorder messages;
    const KString missing(L"missing.xyz");
    ImageDescription desc;
    desc.textureType = kTexture2D;
    desc.width = desc.height = 1;
    desc.format = kR8G8B8A8;
    desc.rowPitch = 4;
    const unsigned char pixel[] = {255, 0, 0, 255};

    EXPECT_EQ(CallSlot<void*>(view, 4, &missing), nullptr);
    EXPECT_FALSE(CallSlot<bool>(view, 6, &missing));
    EXPECT_EQ((CallSlot<vec4<float>, const ImageDescription*, const void*, bool>(view, 9, &desc, pixel, false).x),
              1.0F);
    EXPECT_TRUE(messages.Texts().empty());

    CallSlot<void*, ImageDescription*, const KString*, int, int, int, EFormat, bool, int, EDataOrientation, void*>(
        view, 2, &desc, &missing, 0, 0, 0, kUnknown, true, 0, kTopLeft, nullptr);
    CallSlot<void*, ImageDescription*, const KString*, int, int, int, EFormat, int, EDataOrientation, void*>(
        view, 3, &desc, &missing, 0, 0, 0, kUnknown, 0, kTopLeft, nullptr);
    EXPECT_EQ(messages.Texts(), (std::vector<std::wstring>(2, L"format is not supported")));
}

TEST(HandlerTable, EitherViewDestroysTheWholeObject) {
    const int before = OIIOImageHandler::NetObjectCount();
    CallSlot<void>(static_cast<IImageHandler*>(new OIIOImageHandler), 1);
    CallSlot<void>(static_cast<IClone*>(new OIIOImageHandler), 0);
    delete static_cast<IClone*>(new OIIOImageHandler);
    EXPECT_EQ(OIIOImageHandler::NetObjectCount(), before);
}

}  // namespace
