/// The two descriptions: every field starts at zero.
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

ImageDescription::ImageDescription()
    : width(0),
      height(0),
      depth(0),
      format(kUnknown),
      rowPitch(0),
      dataSize(0),
      textureType(kTextureUnknown),
      hasTransparentPixels(false),
      hasTranslucentPixels(false),
      hasAlpha(false),
      defaultOrientation(false),
      orientation(kTopLeft),
      gamma(0) {}

ImageDesc::ImageDesc()
    : width(0),
      height(0),
      depth(0),
      format(kUnknown),
      textureType(kTextureUnknown),
      frameCount(0),
      orientation(kTopLeft),
      gamma(0) {}

ImageDesc::~ImageDesc() = default;

}  // namespace Kavra::Devices
