/// Saving with preferences, and what comes of it.
#pragma once

#include "output/SavingFixture.h"

#include <kavra/devices/SavePreferences.h>

#include <array>
#include <span>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// The attributes of a file's part, and its pixels as stored.
struct Part {
    OIIO::ImageSpec spec;
    std::vector<unsigned char> pixels;

    std::string Text(const char* name) const { return std::string(spec.get_string_attribute(name)); }
    float Number(const char* name) const { return spec.get_float_attribute(name); }
};

struct PreferredSaving : Saving {
    bool SaveWith(const Devices::SavePreferences& preferences, std::string_view name, const Texture& texture) {
        const Devices::SavePreferencesScope scope(preferences);
        return Save(name, texture);
    }
    /// Whether the preferences change no byte. Some writers put the second in which they write into the file.
    bool SavesAlike(const Devices::SavePreferences& preferences, std::string_view name, const Texture& texture) {
        for (int attempt = 0; attempt < 5; ++attempt) {
            if (!Save(name, texture)) return false;
            const auto plain = ReadAll(folder / name);
            if (!SaveWith(preferences, name, texture)) return false;
            if (ReadAll(folder / name) == plain) return true;
        }
        return false;
    }
    std::vector<Part> Parts(std::string_view name) const {
        OIIO::ImageSpec config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        const auto input = OIIO::ImageInput::open((folder / name).string(), &config);
        std::vector<Part> parts;
        for (int i = 0; input != nullptr && input->seek_subimage(i, 0); ++i) {
            Part part{input->spec(), {}};
            part.pixels.resize(part.spec.image_bytes());
            if (!input->read_image(i, 0, 0, part.spec.nchannels, part.spec.format, part.pixels.data()))
                part.pixels.clear();
            parts.push_back(std::move(part));
        }
        return parts;
    }
    Part First(std::string_view name) const {
        const auto parts = Parts(name);
        return parts.empty() ? Part() : parts.front();
    }
    std::uintmax_t Size(std::string_view name) const { return std::filesystem::file_size(folder / name); }
};

/// A picture with enough in it for compressions to differ.
inline Texture Detailed(Devices::EFormat format, int side = 64) {
    Texture texture(side, side, format);
    for (std::size_t i = 0; i < texture.bytes.size(); ++i)
        texture.bytes[i] = static_cast<unsigned char>((i * i / 7 + i / 256) % 0x38);  // finite numbers of every type
    return texture;
}

inline constexpr std::array kKinds = {"x.rla", "x.dpx", "x.png", "x.jpg", "x.tif", "x.exr", "x.webp", "x.jxl",
                                      "x.tga", "x.bmp", "x.gif", "x.sgi", "x.iff", "x.jp2", "x.fits", "x.ico"};

/// Those that come out alike twice: the first two have bytes of no meaning in them.
inline constexpr std::span kTimeless = std::span(kKinds).subspan(2);

}  // namespace Kavra::Tests
