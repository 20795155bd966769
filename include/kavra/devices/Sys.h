/// The host's services to its modules.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

class IFileHandler;
class IImageHandler;

/// Threads: messages may be raised from any thread. Handlers are set by the host before modules use them.
class KAVRA_DEVICES_API Sys {
public:
    /// Sends a warning or an error to the message sink (`ObjModel::SetMessageSink`). `detail` may be null.
    static void Warning(const wchar_t* message, const wchar_t* detail);
    static void Error(const wchar_t* message, const wchar_t* detail);

    /// The host's registered handlers. There is always a file handler; the image handler is null until the host
    /// sets one. Both stay their owner's.
    static IFileHandler* FileHandler();
    static IImageHandler* ImageHandler();

    /// Registers a handler and returns the one before. A null file handler means the built-in one.
    static IFileHandler* SetFileHandler(IFileHandler* handler);
    static IImageHandler* SetImageHandler(IImageHandler* handler);
};

}  // namespace Kavra::Devices
