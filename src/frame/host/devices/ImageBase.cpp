#include <kavra/devices/IImage.h>

namespace Kavra::Devices {

IImage::IImage() = default;
IImage::IImage(const IImage&) = default;
IImage& IImage::operator=(const IImage&) = default;
IImage::~IImage() = default;

}  // namespace Kavra::Devices
