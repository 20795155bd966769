/// The tests' way to the handler's private members.
#pragma once

#include <kavra/oiio/OIIOImageHandler.h>

namespace Kavra::Devices {

struct OIIOImageHandlerAccess {
    OIIOImageHandler handler;

    unsigned char* LoadTextureByOIIO(ImageDescription& desc, const KString& path, int width, int height, EFormat format,
                                     bool highQuality, int level, EDataOrientation orientation,
                                     IImageFormatHandler* formatHandler, int fileType) {
        return handler.LoadTextureByOIIO(desc, path, width, height, 1, format, highQuality, level, orientation,
                                         formatHandler, fileType);
    }
    unsigned char* LoadSpecial(ImageDescription& desc, const KString& path, int width, int height, bool highQuality,
                               int level, EDataOrientation orientation, int fileType) {
        return handler.LoadSpecial(desc, path, width, height, highQuality, level, orientation, fileType);
    }
    ImageDesc* GetImageDescByOIIO(OIIO::ImageInput* input, int fileType, bool ddsAlphaVariant) {
        return handler.GetImageDescByOIIO(input, fileType, ddsAlphaVariant);
    }
    int GetNumberOfFrames(OIIO::ImageInput* input, int fileType) { return handler.GetNumberOfFrames(input, fileType); }
    void GetAlphaProperty(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec, bool& transparent,
                          bool& translucent) {
        handler.GetAlphaProperty(data, size, spec, transparent, translucent);
    }
    void SetToOpaque(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec) {
        handler.SetToOpaque(data, size, spec);
    }
};

}  // namespace Kavra::Devices
