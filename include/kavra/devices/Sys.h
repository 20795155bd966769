/// \file
/// The host's services to its modules.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

class IFileHandler;
class IImageHandler;

/// How modules reach the host: messages, and the handlers that the host registered.
///
/// A host sets its handlers before modules use them and takes them back after the last use:
///
///     Sys::SetImageHandler(handler);   // image objects save through it what the image library does not write
///     ...
///     Sys::SetImageHandler(nullptr);   // before the module is stopped, whose handler goes then
///
/// Lifetime: handlers stay their owner's and must live as long as they are set and as any call that fetched them runs.
/// Threads: all functions may be called from any thread; setting is atomic, but whoever fetched the handler before goes
/// on with that one.
class KAVRA_DEVICES_API Sys {
public:
    /// Sends a warning to the message sink (`ObjModel::SetMessageSink`), on this thread, before it returns. A null
    /// `message` is the empty text; `detail` may be null.
    static void Warning(const wchar_t* message, const wchar_t* detail);
    /// Sends an error likewise.
    static void Error(const wchar_t* message, const wchar_t* detail);

    /// The file handler; never null, the built-in one unless the host set another.
    static IFileHandler* FileHandler();
    /// The image handler; null until the host sets one. A module does not set it by itself.
    static IImageHandler* ImageHandler();

    /// Registers a file handler and returns the one before. Null puts the built-in one back.
    static IFileHandler* SetFileHandler(IFileHandler* handler);
    /// Registers an image handler and returns the one before. Null means none.
    static IImageHandler* SetImageHandler(IImageHandler* handler);
};

}  // namespace Kavra::Devices
