/// Catches the messages that a test provokes.
#pragma once

#include <kavra/objects/IMessageSink.h>

#include <mutex>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// Stands in for the message sink from its construction to its end and keeps every message in order.
class MessageRecorder final : public Objects::IMessageSink {
public:
    struct Entry {
        Objects::EMessageKind kind;
        std::wstring text;
        bool hasDetail;
        bool operator==(const Entry&) const = default;
    };

    MessageRecorder();
    ~MessageRecorder() override;
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    void Message(Objects::EMessageKind kind, const wchar_t* text, const wchar_t* detail) override;

    std::vector<Entry> Entries() const;
    /// The texts alone, in order.
    std::vector<std::wstring> Texts() const;
    void Clear();

private:
    mutable std::mutex mMutex;
    std::vector<Entry> mEntries;
    Objects::IMessageSink* mPrevious;
};

}  // namespace Kavra::Tests
