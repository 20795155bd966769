/// What every image handler inherits.
#include <kavra/devices/IImageHandler.h>
#include <kavra/objects/OS.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace Kavra::Devices {

namespace {

constexpr const wchar_t* kDDSExtension = L".dds";

/// What can be loaded beside DDS: what is always left to the image library, and what has readers of its own.
constexpr std::array kLoadExtensions = {
    L".png", L".jpg",  L".jpeg", L".jp2",  L".jfif", L".tif", L".tiff", L".bmp",  L".rle", L".hdr",
    L".tga", L".tpic", L".gif",  L".webp", L".pbm",  L".pgm", L".ppm",  L".ico",  L".psd", L".exr",
    L".cal", L".cals", L".flc",  L".fli",  L".pcx",  L".pct", L".pic",  L".pict", L".rlc", L".bil",
};

struct Deleter {
    void operator()(IDelete* object) const { object->Delete(); }
};

KString ExtensionOf(const KString& path) {
    std::vector<wchar_t> extension(path.GetLen() + 1);
    OS::_wsplitpath(path, nullptr, nullptr, nullptr, extension.data());
    return KString(extension.data());
}

IImageHandler::ImageHandlerStatus StatusOf(bool supported) {
    return supported ? IImageHandler::kSupported : IImageHandler::kUnsupported;
}

}  // namespace

IImageHandler::IImageHandler() = default;
IImageHandler::IImageHandler(const IImageHandler&) = default;
IImageHandler& IImageHandler::operator=(const IImageHandler&) = default;
IImageHandler::~IImageHandler() = default;

vec4<float> IImageHandler::GetAverageColor(const KString& path, bool flag) {
    ImageDescription desc;
    const std::unique_ptr<IMemoryWrapper<void>, Deleter> block(
        LoadTexture(desc, path, 0, 0, 0, kUnknown, false, 0, kTopLeft, nullptr));
    if (!block || block->mData == nullptr) return {};
    return GetAverageColor(desc, block->mData, flag);
}

IImageHandler::ImageHandlerStatus IImageHandler::SupportSave(const KString& path, int, int, int, EFormat) {
    return StatusOf(ExtensionOf(path).CompareNoCase(kDDSExtension) == 0);
}

IImageHandler::ImageHandlerStatus IImageHandler::SupportLoad(const KString& path) {
    const KString extension = ExtensionOf(path);
    const auto matches = [&](const wchar_t* known) { return extension.CompareNoCase(known) == 0; };
    return StatusOf(matches(kDDSExtension) || std::ranges::any_of(kLoadExtensions, matches));
}

}  // namespace Kavra::Devices
