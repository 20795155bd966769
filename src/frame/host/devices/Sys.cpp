#include "frame/host/devices/FileHandler.h"

#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/Sys.h>
#include <kavra/objects/IMessageSink.h>
#include <kavra/objects/ObjModel.h>

#include <atomic>

namespace Kavra::Devices {

namespace {

std::atomic<IFileHandler*> gFileHandler{nullptr};
std::atomic<IImageHandler*> gImageHandler{nullptr};

IFileHandler* OrBuiltIn(IFileHandler* handler) {
    static FileHandler builtIn;
    return handler != nullptr ? handler : &builtIn;
}

void Send(Objects::EMessageKind kind, const wchar_t* message, const wchar_t* detail) {
    Objects::ObjModel::MessageSink()->Message(kind, message != nullptr ? message : L"", detail);
}

}  // namespace

void Sys::Warning(const wchar_t* message, const wchar_t* detail) {
    Send(Objects::EMessageKind::kWarning, message, detail);
}

void Sys::Error(const wchar_t* message, const wchar_t* detail) {
    Send(Objects::EMessageKind::kError, message, detail);
}

IFileHandler* Sys::FileHandler() {
    return OrBuiltIn(gFileHandler.load());
}

IImageHandler* Sys::ImageHandler() {
    return gImageHandler.load();
}

IFileHandler* Sys::SetFileHandler(IFileHandler* handler) {
    return OrBuiltIn(gFileHandler.exchange(handler));
}

IImageHandler* Sys::SetImageHandler(IImageHandler* handler) {
    return gImageHandler.exchange(handler);
}

}  // namespace Kavra::Devices
