/// Saving a texture and looking at the file that came of it.
#pragma once

#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// A block and its description, packed unless changed. The bytes count up from 1, so that no two neighbours are alike.
struct Texture {
    Texture(int width, int height, Devices::EFormat format, int images = 1) {
        desc.width = width;
        desc.height = height;
        desc.depth = 1;
        desc.format = format;
        desc.rowPitch = Utilities::AFormatConvertor::BytesPerPixel(format) * width;
        desc.textureType = Devices::kTexture2D;
        Fill(static_cast<std::size_t>(desc.rowPitch) * static_cast<std::size_t>(height * images));
    }
    void Fill(std::size_t count) {
        bytes.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] = static_cast<unsigned char>(1 + i % 251);
    }
    template <class T>
    void SetElements(const std::vector<T>& elements) {
        const auto* raw = reinterpret_cast<const unsigned char*>(elements.data());
        bytes.assign(raw, raw + elements.size() * sizeof(T));
    }

    Devices::ImageDescription desc;
    std::vector<unsigned char> bytes;
};

/// What OpenImageIO finds in a file; `pixels` as the file stores them, channels of 0 when there is no picture.
struct FilePicture {
    int width = 0;
    int height = 0;
    int channels = 0;
    OIIO::TypeDesc type;
    std::vector<std::string> channelNames;
    std::vector<unsigned char> pixels;

    template <class T>
    std::vector<T> As() const {
        const auto* elements = reinterpret_cast<const T*>(pixels.data());
        return {elements, elements + pixels.size() / sizeof(T)};
    }
};

inline FilePicture ReadPicture(const std::filesystem::path& path) {
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    const auto input = OIIO::ImageInput::open(path.string(), &config);
    if (!input) return {};
    const OIIO::ImageSpec& spec = input->spec();
    FilePicture picture{spec.width, spec.height, spec.nchannels, spec.format, spec.channelnames, {}};
    picture.pixels.resize(spec.image_bytes());
    if (!input->read_image(0, 0, 0, -1, spec.format, picture.pixels.data()) || input->has_error()) return {};
    return picture;
}

struct Saving : testing::Test {
    bool Save(std::string_view name, const Texture& texture) {
        return handler.SaveTexture(Wide(folder / name), texture.desc, texture.bytes.data());
    }
    FilePicture Read(std::string_view name) const { return ReadPicture(folder / name); }
    bool Exists(std::string_view name) const { return std::filesystem::exists(folder / name); }

    TemporaryFolder folder;
    Devices::OIIOImageHandler handler;
    MessageRecorder messages;
};

}  // namespace Kavra::Tests
