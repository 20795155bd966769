// The operations that this version of the module does not offer. A host may call any slot, so each answers as it does
// for input that it cannot use, and raises no message.

#include <kavra/oiio/OIIOImageHandler.h>

namespace Kavra::Devices {

vec3<float> OIIOImageHandler::GetIBLIntensity(const ImageDescription&, const void*, bool, vec3<float>*) {
    return {-999.0F, -999.0F, -999.0F};
}

unsigned OIIOImageHandler::FindIBLLightDirections(const ImageDescription&, const void*, vec3<float>* const,
                                                  vec3<float>* const, unsigned) {
    return 0;
}

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
