/// Names of pixel formats on the command line.
#pragma once

#include <kavra/devices/FormatFacts.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// Every format of the host that is none of its reserved numbers, by number; the first is `kUnknown`.
std::vector<Devices::EFormat> AllFormats();

/// What is known of a format, of a value that is none what is known of `kUnknown`.
Devices::FormatFacts Facts(Devices::EFormat format);

/// The format of so many channels, 1 to 4, of which three have a fourth to spare; `kUnknown` where there is none.
Devices::EFormat FormatOf(Devices::ElementType element, int channels);

/// A format by short name, enumerator or number, in any case; nothing when it is none.
std::optional<Devices::EFormat> ParseFormat(std::string_view text);

/// The enumerator of a format, or its number as text when it has none.
std::string Enumerator(Devices::EFormat format);

}  // namespace Kavra::App
