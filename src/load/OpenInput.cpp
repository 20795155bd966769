#include "load/OpenInput.h"

#include <kavra/objects/OS.h>

#include <string>

namespace Kavra::Devices {

std::unique_ptr<OIIO::ImageInput> OpenInput(const KString& path) {
    if (!OS::IsRegularFile(path.ToChars())) return nullptr;
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    auto input = OIIO::ImageInput::open(std::wstring(path.ToChars()), &config);
    // The library keeps every thread's unread errors, and aborts when they pass 16 MB.
    if (!input) (void)OIIO::geterror();
    return input;
}

}  // namespace Kavra::Devices
