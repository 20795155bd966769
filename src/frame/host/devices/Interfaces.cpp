/// The host interfaces that have nothing of their own but an anchor for their tables.
#include <kavra/devices/ASimpleTexture.h>
#include <kavra/devices/ATarget.h>
#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/IMappedMemory.h>
#include <kavra/devices/IWriteImageLineProvider.h>

namespace Kavra::Devices {

ASimpleTexture::~ASimpleTexture() = default;
ATarget::~ATarget() = default;
IFileHandler::~IFileHandler() = default;
IImageFormatHandler::~IImageFormatHandler() = default;
IMappedMemory::~IMappedMemory() = default;
IWriteImageLineProvider::~IWriteImageLineProvider() = default;

}  // namespace Kavra::Devices
