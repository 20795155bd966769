/// Picture files that tests write and look at, by way of the image library and not of the program under test.
#pragma once

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <format>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// The channels that a file has, 8 bits each.
using Colour = std::vector<int>;

/// A picture file with its alpha as it is stored.
class PictureFile {
public:
    explicit PictureFile(const std::filesystem::path& path) {
        OIIO::ImageSpec config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        const auto input = OIIO::ImageInput::open(path.string(), &config);
        if (!input) throw std::runtime_error("cannot open " + path.string());
        mSpec = input->spec();
        mBytes.resize(mSpec.image_pixels() * static_cast<std::size_t>(mSpec.nchannels));
        if (!input->read_image(0, 0, 0, mSpec.nchannels, OIIO::TypeDesc::UINT8, mBytes.data())) {
            throw std::runtime_error("cannot read " + path.string());
        }
    }

    const OIIO::ImageSpec& Spec() const { return mSpec; }
    int Width() const { return mSpec.width; }
    int Height() const { return mSpec.height; }
    /// As on the command line: "640x480".
    std::string Size() const { return std::format("{}x{}", mSpec.width, mSpec.height); }

    Colour At(int x, int y) const {
        const auto channels = static_cast<std::ptrdiff_t>(mSpec.nchannels);
        const auto first = mBytes.begin() + (std::ptrdiff_t{y} * mSpec.width + x) * channels;
        return {first, first + channels};
    }

    /// All bytes, row by row.
    const std::vector<unsigned char>& Bytes() const { return mBytes; }
    /// The same with the alpha that an opaque picture's file leaves out.
    std::vector<unsigned char> RgbaBytes() const {
        if (mSpec.nchannels != 3) return mBytes;
        std::vector<unsigned char> bytes;
        for (std::size_t i = 0; i < mBytes.size(); i += 3)
            bytes.insert(bytes.end(), {mBytes[i], mBytes[i + 1], mBytes[i + 2], 255});
        return bytes;
    }

private:
    OIIO::ImageSpec mSpec;
    std::vector<unsigned char> mBytes;
};

/// Writes an 8-bit picture whose channels `colour` gives.
inline std::filesystem::path WritePicture(const std::filesystem::path& path, int width, int height,
                                          const std::function<Colour(int, int)>& colour) {
    const auto channels = static_cast<int>(colour(0, 0).size());
    OIIO::ImageSpec spec(width, height, channels, OIIO::TypeDesc::UINT8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    std::vector<unsigned char> bytes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            std::ranges::transform(colour(x, y), std::back_inserter(bytes),
                                   [](int value) { return static_cast<unsigned char>(value); });
    }
    const auto output = OIIO::ImageOutput::create(path.string());
    if (!output || !output->open(path.string(), spec) || !output->write_image(OIIO::TypeDesc::UINT8, bytes.data()) ||
        !output->close()) {
        throw std::runtime_error("cannot write " + path.string());
    }
    return path;
}

/// Writes a picture of floats.
inline std::filesystem::path WriteFloats(const std::filesystem::path& path, int width, int height, int channels,
                                         const std::vector<float>& values) {
    const OIIO::ImageSpec spec(width, height, channels, OIIO::TypeDesc::FLOAT);
    const auto output = OIIO::ImageOutput::create(path.string());
    if (values.size() != spec.image_pixels() * static_cast<std::size_t>(channels) || !output ||
        !output->open(path.string(), spec) || !output->write_image(OIIO::TypeDesc::FLOAT, values.data()) ||
        !output->close()) {
        throw std::runtime_error("cannot write " + path.string());
    }
    return path;
}

/// A picture whose every pixel says where it is: red x, green y, blue 7. It is not quite opaque, so that files keep alpha.
inline Colour PlaceColour(int x, int y) {
    return {x, y, 7, 254};
}

}  // namespace Kavra::Tests
