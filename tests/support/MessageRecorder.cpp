#include "support/MessageRecorder.h"

#include <kavra/objects/ObjModel.h>

namespace Kavra::Tests {

MessageRecorder::MessageRecorder() : mPrevious(Objects::ObjModel::SetMessageSink(this)) {}

MessageRecorder::~MessageRecorder() {
    Objects::ObjModel::SetMessageSink(mPrevious);
}

void MessageRecorder::Message(Objects::EMessageKind kind, const wchar_t* text, const wchar_t* detail) {
    const std::lock_guard lock(mMutex);
    mEntries.push_back({kind, text, detail != nullptr});
}

std::vector<MessageRecorder::Entry> MessageRecorder::Entries() const {
    const std::lock_guard lock(mMutex);
    return mEntries;
}

std::vector<std::wstring> MessageRecorder::Texts() const {
    std::vector<std::wstring> texts;
    for (const Entry& entry : Entries())
        texts.push_back(entry.text);
    return texts;
}

void MessageRecorder::Clear() {
    const std::lock_guard lock(mMutex);
    mEntries.clear();
}

}  // namespace Kavra::Tests
