#include "frame/host/objects/Threads.h"
#include "support/MessageRecorder.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace Kavra::Objects {
namespace {

using Entry = Tests::MessageRecorder::Entry;

/// Standard error as a socket that keeps every write apart.
class StandardError {
public:
    StandardError() {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, mEnds), 0);
        mBefore = dup(STDERR_FILENO);
        dup2(mEnds[0], STDERR_FILENO);
    }
    ~StandardError() {
        dup2(mBefore, STDERR_FILENO);
        for (const int end : {mBefore, mEnds[0], mEnds[1]})
            close(end);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    /// The next write, or "" when there is none.
    std::string Next() {
        char bytes[1000];
        const ssize_t length = recv(mEnds[1], bytes, sizeof(bytes), MSG_DONTWAIT);
        return length > 0 ? std::string(bytes, static_cast<std::size_t>(length)) : std::string();
    }

private:
    int mEnds[2] = {-1, -1};
    int mBefore = -1;
};

TEST(MessageSink, TheDefaultOneWritesALineInOnePiece) {
    StandardError standardError;
    IMessageSink* const sink = ObjModel::MessageSink();
    sink->Message(EMessageKind::kWarning, L"Frame index out of range", nullptr);
    sink->Message(EMessageKind::kError, L"no memory", L"12 bytes");
    sink->Message(EMessageKind::kWarning, L"\u00e4\u20ac\U0001F600", L"");
    sink->Message(EMessageKind::kWarning, nullptr, nullptr);
    EXPECT_EQ(standardError.Next(), "kavra: warning: Frame index out of range\n");
    EXPECT_EQ(standardError.Next(), "kavra: error: no memory: 12 bytes\n");
    EXPECT_EQ(standardError.Next(), "kavra: warning: \xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80: \n");
    EXPECT_EQ(standardError.Next(), "kavra: warning: \n");
    EXPECT_EQ(standardError.Next(), "");
}

TEST(MessageSink, AHostsSinkStandsInUntilTheDefaultOneIsPutBack) {
    IMessageSink* const standard = ObjModel::MessageSink();
    Tests::MessageRecorder first;
    EXPECT_EQ(ObjModel::MessageSink(), &first);
    {
        Tests::MessageRecorder second;
        ObjModel::Error(L"second", nullptr, nullptr, nullptr, 0);
        EXPECT_EQ(second.Texts(), std::vector<std::wstring>{L"second"});
    }
    EXPECT_EQ(ObjModel::MessageSink(), &first);
    EXPECT_TRUE(first.Entries().empty());
    EXPECT_EQ(ObjModel::SetMessageSink(nullptr), &first);
    EXPECT_EQ(ObjModel::MessageSink(), standard);
    EXPECT_EQ(ObjModel::SetMessageSink(&first), standard);
}

TEST(MessageSink, ObjModelErrorPassesMessageAndDetailOn) {
    Tests::MessageRecorder recorder;
    ObjModel::Error(L"OIIO", nullptr, nullptr, nullptr, 0);
    ObjModel::Error(L"with", L"detail", L"file", L"function", 7);
    ObjModel::Error(nullptr, nullptr, nullptr, nullptr, 0);
    const std::vector<Entry> expected = {{EMessageKind::kError, L"OIIO", false},
                                         {EMessageKind::kError, L"with", true},
                                         {EMessageKind::kError, L"", false}};
    EXPECT_EQ(recorder.Entries(), expected);
}

TEST(MessageSink, MessagesOfManyThreadsAllArrive) {
    Tests::MessageRecorder recorder;
    Tests::OnThreads(8, [](int) {
        for (int i = 0; i < 100; ++i)
            ObjModel::Error(L"message", nullptr, nullptr, nullptr, 0);
    });
    EXPECT_EQ(recorder.Entries().size(), 800U);
}

}  // namespace
}  // namespace Kavra::Objects
