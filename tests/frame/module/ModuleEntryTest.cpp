// The module as a host has it: loaded at run time, started and stopped through its two entries.

#include "support/FailingAllocator.h"
#include "support/MessageRecorder.h"

#include <kavra/devices/IImageHandler.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/objects/Toolkit.h>

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

using namespace Kavra::Objects;
using Kavra::Tests::FailingAllocator;
using Kavra::Tests::MessageRecorder;

class Module : public testing::Test {
protected:
    void SetUp() override {
        mLibrary = dlopen(KAVRA_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(mLibrary, nullptr) << dlerror();
        initialize = reinterpret_cast<bool (*)()>(dlsym(mLibrary, "KavraInitialize"));
        shutdown = reinterpret_cast<bool (*)()>(dlsym(mLibrary, "KavraShutdown"));
        ASSERT_NE(initialize, nullptr);
        ASSERT_NE(shutdown, nullptr);
        ASSERT_FALSE(factory.Contains(key));
    }

    void TearDown() override {
        Toolkit::SetHostVersion(mHostVersion);
        if (shutdown != nullptr) shutdown();
        if (mLibrary != nullptr) dlclose(mLibrary);
    }

    int HandlerCount() const {
        const auto* count = static_cast<int*>(dlsym(mLibrary, "_ZN5Kavra7Devices16OIIOImageHandler15mNetObjectCountE"));
        return count == nullptr ? -1 : *count;
    }

    bool (*initialize)() = nullptr;
    bool (*shutdown)() = nullptr;
    ClassFactory& factory = ObjModel::Factory();
    UString* key = Intern(L"ImageHandlerOIIO");
    MessageRecorder messages;

private:
    void* mLibrary = nullptr;
    Version mHostVersion = Toolkit::HostVersion();
};

TEST_F(Module, RegistersOneHandlerUnderItsKey) {
    EXPECT_TRUE(initialize());
    EXPECT_TRUE(factory.Contains(key));
    EXPECT_EQ(HandlerCount(), 1);
    EXPECT_TRUE(messages.Texts().empty());
}

TEST_F(Module, ASecondInitialisationChangesNothing) {
    ASSERT_TRUE(initialize());
    IClone* const handler = factory.CloneObject(key);
    const auto objects = ObjModel::ObjectCounters().totalBlocks;

    EXPECT_TRUE(initialize());
    EXPECT_EQ(factory.CloneObject(key), handler);
    EXPECT_EQ(HandlerCount(), 1);
    EXPECT_EQ(ObjModel::ObjectCounters().totalBlocks, objects);
}

TEST_F(Module, ClonesOfTheRegisteredHandlerAreTheHandler) {
    ASSERT_TRUE(initialize());
    IClone* const first = factory.CloneObject(key);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(factory.CloneObject(key), first);
    EXPECT_EQ(HandlerCount(), 1);
}

TEST_F(Module, RegistersTheCloneViewOfAnImageHandler) {
    ASSERT_TRUE(initialize());
    auto* const handler = dynamic_cast<Kavra::Devices::IImageHandler*>(factory.CloneObject(key));
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(handler->GetImageDesc(Kavra::Devices::KString()), nullptr);
}

TEST_F(Module, ShutdownWithoutInitialisationAnswersThatNothingWasThere) {
    EXPECT_FALSE(shutdown());
    EXPECT_TRUE(messages.Texts().empty());
}

TEST_F(Module, ShutdownRemovesAndDestroysTheHandlerOnce) {
    const auto objects = ObjModel::ObjectCounters().liveBlocks;
    ASSERT_TRUE(initialize());
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objects + 1);

    EXPECT_TRUE(shutdown());
    EXPECT_FALSE(factory.Contains(key));
    EXPECT_EQ(HandlerCount(), 0);
    EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, objects);
    EXPECT_FALSE(shutdown());
}

TEST_F(Module, InitialisationAfterShutdownRegistersANewHandler) {
    ASSERT_TRUE(initialize());
    ASSERT_TRUE(shutdown());
    const auto objects = ObjModel::ObjectCounters().totalBlocks;

    EXPECT_TRUE(initialize());
    EXPECT_TRUE(factory.Contains(key));
    EXPECT_EQ(HandlerCount(), 1);
    EXPECT_EQ(ObjModel::ObjectCounters().totalBlocks, objects + 1);
}

TEST_F(Module, RefusesAHostOfAnotherVersionWithOneError) {
    Toolkit::SetHostVersion({16, 9, 9, 9});
    EXPECT_FALSE(initialize());
    EXPECT_FALSE(factory.Contains(key));
    EXPECT_EQ(messages.Entries(),
              (std::vector<MessageRecorder::Entry>{{EMessageKind::kError, L"Dll version conflict!", false}}));
}

TEST_F(Module, NeedsExactlyTheHostVersionThatItWasBuiltAgainstOrANewerPatch) {
    Toolkit::SetHostVersion({17, 1, 2, 0});
    EXPECT_TRUE(initialize());
    Toolkit::SetHostVersion({17, 1, 3, 0});
    EXPECT_TRUE(initialize());
    for (const Version& older :
         {Version{17, 1, 1, 9}, Version{17, 0, 2, 0}, Version{17, 2, 2, 0}, Version{18, 1, 2, 0}}) {
        Toolkit::SetHostVersion(older);
        EXPECT_FALSE(initialize()) << older.major << '.' << older.minor << '.' << older.patch;
    }
}

TEST_F(Module, ChecksTheVersionBeforeItLooksForTheHandler) {
    ASSERT_TRUE(initialize());
    Toolkit::SetHostVersion({16, 0, 0, 0});
    EXPECT_FALSE(initialize());
    EXPECT_EQ(messages.Texts(), (std::vector<std::wstring>{L"Dll version conflict!"}));
    EXPECT_TRUE(factory.Contains(key));
}

TEST_F(Module, SilencesTheImageLibrary) {
    constexpr const char* kAttributes[] = {"openexr:core", "oiio:print_uncaught_errors",
                                           "imagebuf:print_uncaught_errors"};
    for (const char* name : kAttributes)
        OIIO::attribute(name, 1);
    ASSERT_TRUE(initialize());
    for (const char* name : kAttributes)
        EXPECT_EQ(OIIO::get_int_attribute(name, -1), 0) << name;
}

TEST_F(Module, AnswersFalseWhenThereIsNoMemoryForTheHandler) {
    {
        const FailingAllocator none(ObjModel::mHeapAllocator, 0);
        EXPECT_FALSE(initialize());
    }
    EXPECT_FALSE(factory.Contains(key));
    EXPECT_EQ(HandlerCount(), 0);
    EXPECT_TRUE(initialize());
}

}  // namespace
