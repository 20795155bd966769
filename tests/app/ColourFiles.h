/// Pictures of known light, and what the commands make of them.
#pragma once

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace Kavra::Tests {

using Path = std::filesystem::path;
using Bytes = std::vector<unsigned char>;

/// IEC 61966-2-1, as an integer of 8 bits.
inline int Shown(double light) {
    const double value = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    return static_cast<int>(std::floor(value * 255 + 0.5));
}

inline double LightOf(int value) {
    const double v = value / 255.0;
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

/// All values of a file as floats, alpha and colours as they are stored.
inline std::vector<float> FloatsOf(const Path& path) {
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    const auto input = OIIO::ImageInput::open(path.string(), &config);
    if (!input) throw std::runtime_error("cannot open " + path.string());
    const OIIO::ImageSpec& spec = input->spec();
    std::vector<float> values(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    if (!input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT, values.data()))
        throw std::runtime_error("cannot read " + path.string());
    return values;
}

/// What `dump` gives of a file as four floats a pixel.
inline std::vector<float> Block(const Path& path) {
    const std::vector<unsigned char> bytes = Dumped(path, {"--format", "rgba32f"});
    std::vector<float> values(bytes.size() / sizeof(float));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    return values;
}

/// One row of light with premultiplied alpha.
inline Path Lights(const TemporaryFolder& folder, const std::vector<float>& values, int channels = 4) {
    const int width = static_cast<int>(values.size()) / channels;
    return WriteFloats(folder / "light.exr", width, 1, channels, values);
}

/// One row of an 8-bit picture.
inline Path Pixels(const TemporaryFolder& folder, const std::vector<Colour>& colours) {
    return WritePicture(folder / "pixels.png", static_cast<int>(colours.size()), 1,
                        [&](int x, int) { return colours.at(static_cast<std::size_t>(x)); });
}

/// What `convert` makes of a file, as 8 bits.
inline std::vector<unsigned char> Converted(const TemporaryFolder& folder, const Path& in, const std::string& name,
                                            const Words& more = {}, const std::string& said = "") {
    ExpectDone(Joined({{"convert", in, folder / name}, more}), said);
    return PictureFile(folder / name).RgbaBytes();
}

}  // namespace Kavra::Tests
