/// Operations of a host whose memory runs out.
#pragma once

#include "memory/Shortage.h"

#include <kavra/objects/IMessageSink.h>

#include <array>
#include <cwchar>
#include <functional>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// Keeps messages without taking memory.
class FixedRecorder final : public Objects::IMessageSink {
public:
    FixedRecorder();
    ~FixedRecorder() override;
    FixedRecorder(const FixedRecorder&) = delete;
    FixedRecorder& operator=(const FixedRecorder&) = delete;

    void Message(Objects::EMessageKind, const wchar_t* text, const wchar_t*) override {
        if (mCount == mTexts.size()) return;
        std::wcsncpy(mTexts[mCount++].data(), text, kMaxText - 1);
    }
    std::vector<std::wstring> Texts() const {
        std::vector<std::wstring> texts(mCount);
        for (std::size_t i = 0; i < mCount; ++i)
            texts[i] = mTexts[i].data();
        return texts;
    }
    void Clear() {
        mTexts = {};
        mCount = 0;
    }

private:
    static constexpr std::size_t kMaxText = 64;

    std::array<std::array<wchar_t, kMaxText>, 8> mTexts{};
    std::size_t mCount = 0;
    Objects::IMessageSink* mPrevious;
};

using Messages = std::vector<std::wstring>;

/// The messages that may come with a failure: any of these lists. With success comes none.
using Expected = std::vector<Messages>;
inline const Expected kSilence = {{}};

/// How an operation ended whose memory ran out.
struct Outcome {
    bool done = false;
    bool wasKilled = false;  ///< the image library ended the process
};

/// Runs `operation` again and again, each time with a later request for memory refused, until it needs no more. It
/// answers whether it did what it should, and takes back what it made. `afterwards` looks at what it left.
void RunShortOfMemory(
    const Expected& expected, const std::function<bool()>& operation, const std::function<void()>& afterwards = [] {});

/// The same for operations in which the image library takes memory, in a process of their own, and in the next one when
/// that is ended: the library keeps some memory for good, and over some that it cannot get it ends the process.
/// `before` prepares each run.
void RunLibraryShortOfMemory(const Expected& expected, const std::function<void()>& before,
                             const std::function<bool()>& operation,
                             const std::function<void(const Outcome&)>& afterwards);

}  // namespace Kavra::Tests
