/// \file
/// Where warnings and errors go.
#pragma once

#include <kavra/objects/Export.h>

namespace Kavra::Objects {

/// How grave a message is. A message never stands instead of an answer: whether an operation succeeded is told by its
/// result alone, and some operations fail without a message, others succeed with one.
enum class EMessageKind : int {
    kWarning = 0,  ///< `Sys::Warning`: a file, a path or a format that cannot be served, or only in part
    kError = 1,    ///< `Sys::Error`, `ObjModel::Error`: wrong arguments, or a module that cannot start
};

/// The receiver of every message that the libraries and modules raise. A host puts its own in place with
/// `ObjModel::SetMessageSink`; the default one writes a line to standard error, such as
/// "kavra: warning: format is not supported".
///
/// Texts are fixed English; their wording, number and order are part of the contract, so a host may compare them.
/// Nothing is held back: damaged files of some formats raise a message for every row.
///
/// Threads: `Message` is called on the thread that raised the message, and may be called from several at once.
class KAVRA_OBJECTS_API IMessageSink {
public:
    virtual ~IMessageSink();

    /// Receives one message. `text` is the message, never null; `detail` is null or an addition to it. Both are valid
    /// for the call only. Must not throw.
    virtual void Message(EMessageKind kind, const wchar_t* text, const wchar_t* detail) = 0;
};

}  // namespace Kavra::Objects
