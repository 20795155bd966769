#include "support/MessageRecorder.h"

#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/Sys.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Kavra::Devices::IFileHandler;
using Kavra::Devices::IImageHandler;
using Kavra::Devices::Sys;
using Kavra::Objects::EMessageKind;
using Kavra::Tests::MessageRecorder;
using testing::ElementsAre;

namespace {

class SilentFileHandler final : public IFileHandler {
public:
    bool PreparePath(const wchar_t*) override { return false; }
    bool DirectoryExists(const wchar_t*) override { return false; }
    bool CreateDirectory(const wchar_t*) override { return false; }
};

TEST(Sys, WarningsAndErrorsReachTheSinkInOrderAndByKind) {
    const MessageRecorder recorder;
    Sys::Warning(L"first", nullptr);
    Sys::Error(L"second", L"more");
    Sys::Warning(L"third", nullptr);
    EXPECT_THAT(recorder.Entries(), ElementsAre(MessageRecorder::Entry{EMessageKind::kWarning, L"first", false},
                                                MessageRecorder::Entry{EMessageKind::kError, L"second", true},
                                                MessageRecorder::Entry{EMessageKind::kWarning, L"third", false}));
}

TEST(Sys, AMessageWithoutTextIsEmpty) {
    const MessageRecorder recorder;
    Sys::Error(nullptr, nullptr);
    EXPECT_THAT(recorder.Entries(), ElementsAre(MessageRecorder::Entry{EMessageKind::kError, L"", false}));
}

TEST(Sys, ThereIsAlwaysAFileHandler) {
    EXPECT_NE(Sys::FileHandler(), nullptr);
}

TEST(Sys, AFileHandlerOfTheHostTakesOverUntilItIsTakenBack) {
    IFileHandler* const builtIn = Sys::FileHandler();
    SilentFileHandler own;
    EXPECT_EQ(Sys::SetFileHandler(&own), builtIn);
    EXPECT_EQ(Sys::FileHandler(), &own);
    EXPECT_EQ(Sys::SetFileHandler(nullptr), &own);
    EXPECT_EQ(Sys::FileHandler(), builtIn);
}

TEST(Sys, TheImageHandlerIsWhatTheHostSet) {
    ASSERT_EQ(Sys::ImageHandler(), nullptr);
    alignas(void*) char place[sizeof(void*)];
    auto* const handler = reinterpret_cast<IImageHandler*>(place);  // never called, only handed around
    EXPECT_EQ(Sys::SetImageHandler(handler), nullptr);
    EXPECT_EQ(Sys::ImageHandler(), handler);
    EXPECT_EQ(Sys::SetImageHandler(nullptr), handler);
    EXPECT_EQ(Sys::ImageHandler(), nullptr);
}

}  // namespace
