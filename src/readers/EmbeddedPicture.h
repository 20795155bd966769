/// Pictures of common formats inside a file of a legacy one.
#pragma once

#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

struct EmbeddedSize {
    int width, height;
};

/// The size of a picture in memory, by its header; `format` is the image library's name for what it should be. Nothing
/// where the library does not read it, or a side has no pixels or more than 32767.
std::optional<EmbeddedSize> EmbeddedPictureSize(std::span<const unsigned char> file, const char* format);

/// Its pixels, three bytes each, from the top; white from where it breaks off. None where it has no size. The caller has
/// looked at what they take. Throws `std::bad_alloc`.
std::vector<unsigned char> DecodeEmbeddedPicture(std::span<const unsigned char> file, const char* format);

}  // namespace Kavra::Devices
