/// Picture files of known pixels, and loading them: what the loader's tests share.
#pragma once

#include "common/LoadRequest.h"
#include "readers/ImageFileType.h"
#include "support/HandlerAccess.h"
#include "support/TemporaryFolder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <Imath/half.h>
#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace Kavra::Tests {

using Devices::LoadRequest;

/// What a load gave: all bytes of the block (six faces for a cube map), freed already.
struct LoadedTexture {
    bool loaded = false;
    Devices::ImageDescription desc;
    std::vector<unsigned char> bytes;

    explicit operator bool() const { return loaded; }

    template <class T>
    std::vector<T> As() const {
        std::vector<T> elements(bytes.size() / sizeof(T));
        std::memcpy(elements.data(), bytes.data(), elements.size() * sizeof(T));
        return elements;
    }
};

/// The library's name of an element type.
template <class T>
OIIO::TypeDesc ElementType() {
    if constexpr (std::is_same_v<T, Imath::half>) {
        return OIIO::TypeHalf;
    } else {
        return OIIO::TypeDescFromC<T>::value();
    }
}

LoadedTexture LoadFile(const std::filesystem::path& path, const LoadRequest& request = {},
                       int fileType = Devices::Other);

/// Writes one picture as OpenImageIO writes it, alpha as it is given. `pixels` has its spec's channels, tight rows.
template <class T>
void AppendPicture(OIIO::ImageOutput& output, const std::string& name, OIIO::ImageSpec spec,
                   const std::vector<T>& pixels, OIIO::ImageOutput::OpenMode mode) {
    spec.attribute("oiio:UnassociatedAlpha", 1);
    const bool complete = pixels.size() == spec.image_pixels() * static_cast<std::size_t>(spec.nchannels);
    if (!complete || !output.open(name, spec, mode) || !output.write_image(ElementType<T>(), pixels.data())) {
        throw std::runtime_error("cannot write " + name + ": " + output.geterror());
    }
}

template <class T>
std::filesystem::path WritePicture(const std::filesystem::path& path, const OIIO::ImageSpec& spec,
                                   const std::vector<T>& pixels) {
    const auto output = OIIO::ImageOutput::create(path.string());
    if (!output) throw std::runtime_error("no writer for " + path.string());
    AppendPicture(*output, path.string(), spec, pixels, OIIO::ImageOutput::Create);
    output->close();
    return path;
}

/// A PNG file built by hand, whose header may say what its data does not hold.
struct PngFile {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    unsigned char bitDepth = 8;
    unsigned char colourType = 2;          // 0 grey, 2 RGB, 3 palette, 4 grey and alpha, 6 RGBA
    std::uint32_t gamma = 0;               // in 1 / 100000; 0 says none
    std::vector<unsigned char> palette{};  // RGB triples
    std::vector<unsigned char> rows{};     // each row: a filter byte (0), then its samples

    std::vector<unsigned char> Bytes() const;
};

}  // namespace Kavra::Tests
