/// Finding parts, layers and channels of files by their names, and saying which there are.
#pragma once

#include <kavra/devices/IImageInspector.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// The number of a part that is called `word`, or has it for a number.
std::optional<int> FindPart(const Devices::IFileInspection& file, std::string_view word);

/// The channels of a layer that become a picture, as `LoadPreferences::channels` takes them: its red, green, blue and
/// alpha, else its first channel, with its alpha. Nothing where there is no such layer.
std::optional<std::string> ChannelsOfLayer(const Devices::FilePart& part, std::string_view layer);

/// The first of the names, separated by commas, that is no channel of the part; nothing when all are.
std::optional<std::string> MissingChannel(const Devices::FilePart& part, std::string_view channels);

bool HasChannel(const Devices::FilePart& part, std::string_view name);

/// Layers, in the order of their channels.
std::vector<std::string> LayersOf(const Devices::FilePart& part);

/// "beauty, depth", for people: escaped, and cut where they are many.
std::string PartList(const Devices::IFileInspection& file);
std::string LayerList(const Devices::FilePart& part);
std::string ChannelList(const Devices::FilePart& part);
std::string FaceList(std::uint32_t faces);

}  // namespace Kavra::App
