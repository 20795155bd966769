/// The receiver of messages that is there unless a host puts its own in place.
#pragma once

#include <kavra/objects/IMessageSink.h>

namespace Kavra::Objects {

/// Writes each message to standard error as one line of UTF-8, in one piece so that lines of several threads do not
/// mix: `kavra: warning: TEXT: DETAIL`, without the last part when there is no detail.
class StandardErrorSink final : public IMessageSink {
public:
    void Message(EMessageKind kind, const wchar_t* text, const wchar_t* detail) override;
};

}  // namespace Kavra::Objects
