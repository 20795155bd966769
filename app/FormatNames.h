/// Names of pixel formats on the command line.
#pragma once

#include <kavra/devices/EFormat.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Kavra::App {

struct FormatName {
    Devices::EFormat format;
    std::string_view enumerator;  ///< as in the host's enumeration
    std::string_view shortName;   ///< for people; empty where there is none
    int channels;
};

/// Every format of the host, by number.
std::span<const FormatName> AllFormats();

/// A format by short name, enumerator or number, in any case; nothing when it is none.
std::optional<Devices::EFormat> ParseFormat(std::string_view text);

/// The enumerator of a format, or its number as text when it has none.
std::string Enumerator(Devices::EFormat format);

/// The channels of a format; 0 when it is none.
int Channels(Devices::EFormat format);

}  // namespace Kavra::App
