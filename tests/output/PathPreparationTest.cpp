#include "output/PathPreparation.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/Sys.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using Kavra::Devices::IsDDSPath;
using Kavra::Devices::KString;
using Kavra::Devices::PrepareFolder;
using Kavra::Devices::Sys;
using Kavra::Tests::MessageRecorder;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes what it is asked, in order, and answers as told.
class RecordingFiles final : public Kavra::Devices::IFileHandler {
public:
    RecordingFiles() { Sys::SetFileHandler(this); }
    ~RecordingFiles() override { Sys::SetFileHandler(nullptr); }

    bool PreparePath(const wchar_t* path) override {
        calls.push_back(std::wstring(L"prepare ") + path);
        return prepared;
    }
    bool DirectoryExists(const wchar_t* directory) override {
        calls.push_back(std::wstring(L"exists ") + directory);
        return exists;
    }
    bool CreateDirectory(const wchar_t* directory) override {
        calls.push_back(std::wstring(L"create ") + directory);
        return created;
    }

    bool prepared = true;
    bool exists = false;
    bool created = true;
    std::vector<std::wstring> calls;
};

TEST(PathPreparation, ADdsPathEndsInThoseFourCharactersInAnyCase) {
    for (const wchar_t* path : {L"x.dds", L"a/b.DDS", L".dds", L"x.png.DdS"})
        EXPECT_TRUE(IsDDSPath(path)) << path;
    for (const wchar_t* path : {L"", L"dds", L"xdds", L"x.dds ", L"x.dd", L"x.dds/y", L"x.png"})
        EXPECT_FALSE(IsDDSPath(path)) << path;
}

TEST(PathPreparation, TheHostHearsOfTheWholePathFirst) {
    RecordingFiles files;
    files.exists = true;
    EXPECT_TRUE(PrepareFolder(L"a/b/c.png"));
    EXPECT_THAT(files.calls, ElementsAre(L"prepare a/b/c.png", L"exists a/b/"));
}

TEST(PathPreparation, TheHostsAnswerToThePathIsIgnored) {
    RecordingFiles files;
    files.prepared = false;
    files.exists = true;
    EXPECT_TRUE(PrepareFolder(L"c.png"));
    EXPECT_THAT(files.calls, ElementsAre(L"prepare c.png", L"exists "));
}

TEST(PathPreparation, AMissingFolderIsCreatedThroughTheHost) {
    RecordingFiles files;
    const MessageRecorder messages;
    EXPECT_TRUE(PrepareFolder(L"a/b/c.png"));
    EXPECT_THAT(files.calls, ElementsAre(L"prepare a/b/c.png", L"exists a/b/", L"create a/b/"));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST(PathPreparation, AFolderThatCannotBeCreatedIsWarnedAbout) {
    RecordingFiles files;
    files.created = false;
    const MessageRecorder messages;
    EXPECT_FALSE(PrepareFolder(L"a/c.png"));
    EXPECT_THAT(messages.Entries(), ElementsAre(MessageRecorder::Entry{Kavra::Objects::EMessageKind::kWarning,
                                                                       L"fail to create specified folder", false}));
}

TEST(PathPreparation, AnEmptyPathIsWrong) {
    RecordingFiles files;
    const MessageRecorder messages;
    EXPECT_FALSE(PrepareFolder(L""));
    EXPECT_THAT(messages.Entries(),
                ElementsAre(MessageRecorder::Entry{Kavra::Objects::EMessageKind::kWarning, L"wrong file path", false}));
    EXPECT_THAT(files.calls, ElementsAre(L"prepare "));
}

TEST(PathPreparation, AFolderNameOf259CharactersIsTheLongest) {
    RecordingFiles files;
    files.exists = true;
    const MessageRecorder messages;
    const std::wstring longest = std::wstring(258, L'a') + L"/";
    EXPECT_TRUE(PrepareFolder((longest + L"x.png").c_str()));
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_FALSE(PrepareFolder((L"a" + longest + L"x.png").c_str()));
    EXPECT_FALSE(PrepareFolder((std::wstring(5000, L'a') + L"/x.png").c_str()));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"wrong file path", L"wrong file path"));
}

TEST(PathPreparation, ALongNameInAShortFolderIsNoWrongPath) {
    EXPECT_TRUE(PrepareFolder((std::wstring(5000, L'a') + L".png").c_str()));
}

TEST(PathPreparation, TheBuiltInHandlerMakesAllFoldersAbove) {
    const TemporaryFolder folder;
    EXPECT_TRUE(PrepareFolder(Wide(folder / "a/b/c/x.png")));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "a/b/c"));
    EXPECT_FALSE(std::filesystem::exists(folder / "a/b/c/x.png"));
}

}  // namespace
