/// Channels of a file that are chosen by their names.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace Kavra::Devices {

/// Which channels of a file become red, green, blue and alpha.
struct ChosenChannels {
    std::array<int, 4> from = {-1, -1, -1, -1};  ///< numbers of the file's channels; -1: zero, or for alpha opaque
    EFormat format = kUnknown;                   ///< of four channels of a type that holds them all
    int first = 0, last = 0;                     ///< all chosen ones lie between these two

    bool HasAlpha() const { return from[3] >= 0; }
};

/// What `LoadPreferences::channels` means for a file. Of two channels the second is the alpha of a grey first one where
/// it is called so ("A", "layer.A"), else they are red and green. Nothing where the file has not all of the names, or
/// there are more than four or none.
std::optional<ChosenChannels> ChooseChannels(const OIIO::ImageSpec& spec, const OIIO::string_view& names);

/// Brings `count` pixels from packed channels `first` to `last` of the file, or those from `base` on, to the four of the
/// chosen format. Both hold values of that format's type.
void GatherChannels(const ChosenChannels& chosen, int base, int channels, const unsigned char* pixels,
                    std::size_t count, unsigned char* out);

/// Says that channels of these names are not there, and which are.
void SayOfChannels(const OIIO::ImageSpec& spec, std::string_view names) noexcept;

}  // namespace Kavra::Devices
