/// Where warnings and errors go.
#pragma once

#include <kavra/objects/Export.h>

namespace Kavra::Objects {

enum class EMessageKind : int {
    kWarning = 0,  ///< `Sys::Warning`
    kError = 1,    ///< `Sys::Error`, `ObjModel::Error`
};

/// The receiver of every message that the libraries and modules raise. A host puts its own in place with
/// `ObjModel::SetMessageSink`; the default one writes a line to standard error.
///
/// Threads: `Message` is called on the thread that raised the message, and may be called from several at once.
class KAVRA_OBJECTS_API IMessageSink {
public:
    virtual ~IMessageSink();

    /// `text` is the message, `detail` null or an addition to it; both are valid for the call only. Must not throw.
    virtual void Message(EMessageKind kind, const wchar_t* text, const wchar_t* detail) = 0;
};

}  // namespace Kavra::Objects
