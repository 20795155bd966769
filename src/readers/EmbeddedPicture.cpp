#include "readers/EmbeddedPicture.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <memory>
#include <string>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kPixelBytes = 3;

/// A picture that the image library has opened where it lies in memory.
class OpenedPicture {
public:
    OpenedPicture(std::span<const unsigned char> file, const char* format)
        : mReader(file.data(), file.size()), mInput(OIIO::ImageInput::create(format)) {
        OIIO::ImageSpec config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        config.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, static_cast<const void*>(&mProxy));
        if (mInput && !mInput->open(std::string("picture.") + format, mSpec, config)) {
            (void)mInput->geterror();
            mInput = nullptr;
        }
        (void)OIIO::geterror();  // which the library would keep for ever
    }

    std::optional<EmbeddedSize> Size() const {
        constexpr int kMaxSide = 0x7FFF;
        const auto isSide = [](int side) { return side >= 1 && side <= kMaxSide; };
        if (!mInput || !isSide(mSpec.width) || !isSide(mSpec.height) || mSpec.nchannels < 1) return std::nullopt;
        return EmbeddedSize{mSpec.width, mSpec.height};
    }

    /// What cannot be read stays as it is. One channel, and the first of two, becomes three alike.
    void ReadInto(std::vector<unsigned char>& rgb) {
        const int channels = mSpec.nchannels >= 3 ? 3 : 1;
        if (!mInput->read_image(0, 0, 0, channels, OIIO::TypeDesc::UINT8, rgb.data(), kPixelBytes))
            (void)mInput->geterror();
        if (channels == 3) return;
        for (std::size_t at = 0; at + kPixelBytes <= rgb.size(); at += kPixelBytes)
            rgb[at + 1] = rgb[at + 2] = rgb[at];
    }

private:
    OIIO::Filesystem::IOMemReader mReader;
    OIIO::Filesystem::IOProxy* mProxy = &mReader;
    OIIO::ImageSpec mSpec;
    std::unique_ptr<OIIO::ImageInput> mInput;
};

}  // namespace

std::optional<EmbeddedSize> EmbeddedPictureSize(std::span<const unsigned char> file, const char* format) {
    return OpenedPicture(file, format).Size();
}

std::vector<unsigned char> DecodeEmbeddedPicture(std::span<const unsigned char> file, const char* format) {
    OpenedPicture picture(file, format);
    const std::optional<EmbeddedSize> size = picture.Size();
    if (!size) return {};
    std::vector<unsigned char> rgb(
        kPixelBytes * static_cast<std::size_t>(size->width) * static_cast<std::size_t>(size->height), 0xFF);
    picture.ReadInto(rgb);
    return rgb;
}

}  // namespace Kavra::Devices
