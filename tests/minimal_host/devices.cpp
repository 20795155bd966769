// The device half of a host with the operations that every host has, each done in the plainest way, and no other. Its
// own readers and writer know no files: all that is read and written here is the module's doing.

#include "minimal_host/MinimalHost.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/DDSReader.h>
#include <kavra/devices/DDSWriter.h>
#include <kavra/devices/EXRHandler.h>
#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/IImage.h>
#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageHandlerHelper.h>
#include <kavra/devices/Sys.h>
#include <kavra/objects/ObjModel.h>

#include <Imath/half.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace {

std::atomic<int> gMessages{0};

void Say(const wchar_t* message) {
    std::fprintf(stderr, "minimal_host: %ls\n", message);
    ++gMessages;
}

}  // namespace

extern "C" int MinimalHostMessages() {
    return gMessages;
}

namespace Kavra::Devices {

IImageHandler::IImageHandler() = default;
IImageHandler::IImageHandler(const IImageHandler&) = default;
IImageHandler& IImageHandler::operator=(const IImageHandler&) = default;
IImageHandler::~IImageHandler() = default;

vec4<float> IImageHandler::GetAverageColor(const KString&, bool) {
    return {};
}

IImageHandler::ImageHandlerStatus IImageHandler::SupportSave(const KString&, int, int, int, EFormat) {
    return kUnsupported;
}

IImageHandler::ImageHandlerStatus IImageHandler::SupportLoad(const KString&) {
    return kUnsupported;
}

IImage::IImage() = default;
IImage::IImage(const IImage&) = default;
IImage& IImage::operator=(const IImage&) = default;
IImage::~IImage() = default;

ImageDescription::ImageDescription() {
    std::memset(static_cast<void*>(this), 0, sizeof(*this));
}

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

void Sys::Warning(const wchar_t* message, const wchar_t*) {
    Say(message);
}

void Sys::Error(const wchar_t* message, const wchar_t*) {
    Say(message);
}

IFileHandler::~IFileHandler() = default;

namespace {

class FileHandler final : public IFileHandler {
    bool PreparePath(const wchar_t*) override { return true; }
    bool DirectoryExists(const wchar_t* directory) override {
        std::error_code error;
        return *directory == L'\0' || std::filesystem::is_directory(directory, error);
    }
    bool CreateDirectory(const wchar_t* directory) override {
        std::error_code error;
        std::filesystem::create_directories(directory, error);
        return DirectoryExists(directory);
    }
};

}  // namespace

IFileHandler* Sys::FileHandler() {
    static Devices::FileHandler handler;
    return &handler;
}

IImageHandler* Sys::ImageHandler() {
    return nullptr;
}

struct DDSReader::State {};

DDSReader::DDSReader() = default;
DDSReader::~DDSReader() = default;
bool DDSReader::Load(const KString&) {
    return false;
}
int DDSReader::Width() const {
    return 0;
}
int DDSReader::Height() const {
    return 0;
}
int DDSReader::Depth() const {
    return 0;
}
int DDSReader::Mipmaps() const {
    return 0;
}
EFormat DDSReader::Format() {
    return kUnknown;
}
ETextureType DDSReader::TextureType() {
    return kTextureUnknown;
}
bool DDSReader::SkipMipLevel(int) {
    return false;
}
IMemoryWrapper<void>* DDSReader::Load(ImageDescription&, int, int, int) {
    return nullptr;
}

DDSWriter::DDSWriter() = default;
bool DDSWriter::Construct(ETextureType, EFormat, int, int, int, int, int, int) {
    return false;
}
bool DDSWriter::Write(const KString&, const void*) {
    return false;
}

EXRHandler::EXRHandler(bool) {}
EXRHandler::~EXRHandler() = default;
bool EXRHandler::IsPreferedHandler(const wchar_t*) {
    return false;
}
bool EXRHandler::ReadFromFile(const wchar_t*) {
    return false;
}
int EXRHandler::width() const {
    return 0;
}
int EXRHandler::height() const {
    return 0;
}
bool EXRHandler::supportsAlpha() const {
    return false;
}
const float* EXRHandler::internalBuffer() const {
    return nullptr;
}

}  // namespace Kavra::Devices

namespace Kavra::Utilities {

using namespace Devices;

int AFormatConvertor::BytesPerPixel(EFormat format) {
    switch (format) {
        case kA8:
        case kR8:
        case kL8:
            return 1;
        case kR16F:
        case kR16:
        case kL16:
            return 2;
        case kR32F:
        case kR16G16F:
        case kR16G16:
        case kR8G8B8A8:
        case kR8G8B8A8Alt:
        case kB8G8R8A8:
        case kB8G8R8X8:
        case kR8G8B8X8:
            return 4;
        case kR32G32F:
        case kR16G16B16A16F:
        case kR16G16B16A16:
            return 8;
        case kR32G32B32F:
            return 12;
        case kR32G32B32A32F:
            return 16;
        default:
            return 0;
    }
}

/// The four-channel formats of bytes, halves and floats: what this host packs into.
bool AFormatConvertor::FloatToFormat(vec4<float>& colour, EFormat format, char* out, unsigned size) {
    const float channels[4] = {colour.x, colour.y, colour.z, colour.w};
    if (size < static_cast<unsigned>(BytesPerPixel(format))) return false;
    for (int i = 0; i < 4; ++i) {
        if (format == kR32G32B32A32F) {
            std::memcpy(out + 4 * i, &channels[i], 4);
        } else if (format == kR16G16B16A16F) {
            const half value(channels[i]);
            std::memcpy(out + 2 * i, &value, 2);
        } else if (format == kR8G8B8A8) {
            out[i] = static_cast<char>(std::floor(std::clamp(channels[i], 0.0F, 1.0F) * 255.0F + 0.5F));
        } else {
            return false;
        }
    }
    return true;
}

namespace {

/// A new block of `outPerIn` elements for each of the source's, which `convert(value, out)` fills.
template <class Out, class In, class Convert>
Out* Converted(const In* source, std::size_t bytes, std::size_t outPerIn, Convert convert) {
    const std::size_t count = bytes / sizeof(In);
    auto* const block =
        static_cast<Out*>(::operator new(count * outPerIn * sizeof(Out), Objects::ObjModel::mDefaultAllocator));
    std::fill_n(block, count * outPerIn, Out(0));
    for (std::size_t i = 0; source != nullptr && i < count; ++i)
        convert(source[i], block + i * outPerIn);
    return block;
}

unsigned Opaque(unsigned grey) {
    return 0xFF000000U | grey * 0x010101U;
}

}  // namespace

ImageHandlerHelper::ImageHandlerHelper() = default;

unsigned int* ImageHandlerHelper::BGRAToRGBA(unsigned char* source, std::size_t bytes) {
    return Converted<unsigned>(reinterpret_cast<unsigned*>(source), bytes, 1, [](unsigned pixel, unsigned* out) {
        *out = (pixel & 0xFF00FF00U) | (pixel >> 16 & 0xFFU) | (pixel & 0xFFU) << 16;
    });
}

unsigned int* ImageHandlerHelper::GrayToRGB(unsigned char* source, std::size_t bytes) {
    return Converted<unsigned>(source, bytes, 1, [](unsigned char grey, unsigned* out) { *out = Opaque(grey); });
}

unsigned short* ImageHandlerHelper::GrayToR16(unsigned char* source, std::size_t bytes) {
    return Converted<unsigned short>(source, bytes, 1, [](unsigned char grey, unsigned short* out) {
        *out = static_cast<unsigned short>(grey * 257);
    });
}

unsigned short* ImageHandlerHelper::GrayToR16G16(unsigned char* source, std::size_t bytes) {
    return Converted<unsigned short>(source, bytes, 2, [](unsigned char grey, unsigned short* out) {
        out[0] = out[1] = static_cast<unsigned short>(grey * 257);
    });
}

unsigned int* ImageHandlerHelper::Gray16ToRGB(unsigned short* source, std::size_t bytes) {
    return Converted<unsigned>(source, bytes, 1,
                               [](unsigned short grey, unsigned* out) { *out = Opaque((grey + 128U) / 257U); });
}

unsigned int* ImageHandlerHelper::R16ToR16G16(unsigned short* source, std::size_t bytes) {
    return Converted<unsigned>(source, bytes, 1,
                               [](unsigned short value, unsigned* out) { *out = value * 0x00010001U; });
}

template <class T>
T* ImageHandlerHelper::ExpandGrayToRGBA(T* source, std::size_t bytes, T alpha, bool withAlpha) {
    return Converted<T>(source, bytes, withAlpha ? 4 : 3, [=](T grey, T* out) {
        std::fill_n(out, 3, grey);
        if (withAlpha) out[3] = alpha;
    });
}

template <class In, class Out>
Out* ImageHandlerHelper::TypeInToTypeOut(In* source, std::size_t bytes, float factor) {
    return Converted<Out>(source, bytes, 1, [=](In value, Out* out) {
        const float scaled = static_cast<float>(value) * factor;
        *out = sizeof(Out) == 1 ? static_cast<Out>(std::clamp(std::floor(scaled + 0.5F), 0.0F, 255.0F))
                                : static_cast<Out>(scaled);
    });
}

template KAVRA_DEVICES_API unsigned short* ImageHandlerHelper::ExpandGrayToRGBA(unsigned short*, std::size_t,
                                                                                unsigned short, bool);
template KAVRA_DEVICES_API half* ImageHandlerHelper::ExpandGrayToRGBA(half*, std::size_t, half, bool);
template KAVRA_DEVICES_API float* ImageHandlerHelper::ExpandGrayToRGBA(float*, std::size_t, float, bool);
template KAVRA_DEVICES_API float* ImageHandlerHelper::TypeInToTypeOut(unsigned char*, std::size_t, float);
template KAVRA_DEVICES_API float* ImageHandlerHelper::TypeInToTypeOut(unsigned short*, std::size_t, float);
template KAVRA_DEVICES_API half* ImageHandlerHelper::TypeInToTypeOut(unsigned short*, std::size_t, float);
template KAVRA_DEVICES_API half* ImageHandlerHelper::TypeInToTypeOut(unsigned char*, std::size_t, float);
template KAVRA_DEVICES_API unsigned char* ImageHandlerHelper::TypeInToTypeOut(unsigned short*, std::size_t, float);
template KAVRA_DEVICES_API float* ImageHandlerHelper::TypeInToTypeOut(half*, std::size_t, float);

vec4<float> ImageHandlerHelper::GetAverageColor2D(const ImageDescription&, const void*, bool) {
    return {};
}

}  // namespace Kavra::Utilities
