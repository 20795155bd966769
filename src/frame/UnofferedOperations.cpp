// The operations that this version of the module does not offer. A host may call any slot, so each answers as it does
// for input that it cannot use, and raises no message.

#include <kavra/oiio/OIIOImageHandler.h>

namespace Kavra::Devices {

IImage* OIIOImageHandler::CreateImage(int, int, EFormat) {
    return nullptr;
}

IImage* OIIOImageHandler::CreateImage(ATarget*) {
    return nullptr;
}

IImage* OIIOImageHandler::CreateImage(ASimpleTexture*) {
    return nullptr;
}

}  // namespace Kavra::Devices
