/// What is said about each file, in order.
#pragma once

#include "FailureText.h"
#include "WorkRecord.h"

#include <kavra/objects/IMessageSink.h>

#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// Has reports print every message, also where many equal ones follow each other. To be called before there are any.
void PrintEveryMessage();

/// Has reports print nothing but errors, and all but the notes of a file that failed without one.
void PrintOnlyErrors();
bool PrintsOnlyErrors();

/// Everything that is to be said of one input: data for standard output, messages for standard error. Kept until its
/// turn comes, so that files worked on at the same time do not mix. Of messages in a row with the same kind, file and
/// text, which a damaged file may cause by the hundred thousand, the first three are printed and then one with the
/// count of the others. "format is not supported" is not printed behind "Frame index out of range": it is an echo of the
/// same failure, and misleads.
class Report {
public:
    explicit Report(std::string file) : mFile(std::move(file)) {}

    const std::string& File() const { return mFile; }

    /// Adds a message about this file, or about `file` where another one is meant.
    void Say(std::string_view kind, std::string_view text, std::string_view file = {});
    /// Says `text` as a note about this file, unless that was said already.
    void NoteOnce(std::string_view text);
    /// Says `text` as an error and marks the file as failed.
    void Fail(std::string_view text, std::string_view file = {});
    /// The same of a reason of a known kind.
    void Fail(const Reason& reason, std::string_view file = {});
    /// Marks the file as failed, and says why in one line, unless an error of the program's own was said since `mark`:
    /// the reason of the last operation, behind "cannot be resized: " or the like. Where there is none, what could not be
    /// done, only when nothing but notes was said.
    void FailUnlessSaid(std::size_t mark, std::string_view text, std::string_view file = {});
    /// The same of a file that could not be read: the reason stands alone, or behind the place in the file.
    void FailToRead(std::size_t mark, const std::string& place = {});

    /// Keeps the reason of the last operation on this thread for the error that will be said of it; forgets the one
    /// before where that operation `hasAnswered`.
    void Remember(bool hasAnswered);
    /// The same of a reason that the program itself finds.
    void Remember(Reason reason) { mPending = std::move(reason); }
    /// Why the file failed: what was said first.
    const Reason& Why() const { return mWhy; }

    /// Adds all that another report says, each of the file it says it of.
    void Take(const Report& other);

    bool Failed() const { return mFailed; }
    /// How many messages there are so far.
    std::size_t Mark() const { return mCount; }
    /// Whether one of the messages from `mark` on has this text.
    bool WasSaidSince(std::size_t mark, std::string_view text) const;
    /// The bare texts, folded as they are printed.
    std::vector<std::string> Texts() const;
    /// The last text, or `fallback`.
    std::string LastText(std::string_view fallback) const;

    /// Text for standard output.
    std::string out;

    /// What became of its outputs.
    WorkRecord work;

    /// Writes it all.
    void Print() const;

private:
    /// Equal messages in a row.
    struct Run {
        std::string kind;
        std::string file;
        std::string text;
        std::size_t count;
        bool isOwn = false;  ///< an error of the program, and no message of the host
    };

    bool IsOnlyNotedSince(std::size_t mark) const;
    bool HasOwnErrorSince(std::size_t mark) const;
    /// Whether it is what the host says when nothing took a file, behind the message with the reason.
    bool IsEcho(std::size_t run) const;
    /// True when it was said.
    bool FailWithReason(std::size_t mark, const std::string& before, std::string_view file);
    bool IsPrinted(const Run& run) const;

    std::string mFile;
    std::vector<Run> mRuns;
    std::size_t mCount = 0;
    bool mFailed = false;
    Reason mPending, mWhy;
};

/// Routes every message that the host or a module raises on this thread into a report, as long as it lives.
class MessageScope {
public:
    /// Messages are said of `file`, or of the report's own file when that is empty.
    explicit MessageScope(Report& report, std::string file = {});
    ~MessageScope();
    MessageScope(const MessageScope&) = delete;
    MessageScope& operator=(const MessageScope&) = delete;

private:
    friend class MessageRouter;
    Report& mReport;
    std::string mFile;
    MessageScope* mOuter;
};

/// The program's message sink. Messages outside of any `MessageScope` go to standard error at once.
class MessageRouter final : public Objects::IMessageSink {
public:
    MessageRouter();
    ~MessageRouter() override;
    void Message(Objects::EMessageKind kind, const wchar_t* text, const wchar_t* detail) override;
};

}  // namespace Kavra::App
