#include "PartNames.h"

#include "Printable.h"
#include "Selection.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <format>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr std::size_t kMaxListed = 24;
constexpr std::size_t kMaxNameBytes = 60;

std::string Listed(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), kMaxListed); ++i)
        text += (i > 0 ? ", " : "") + Printable(names[i], kMaxNameBytes);
    if (names.size() > kMaxListed) text += std::format(", and {} more", names.size() - kMaxListed);
    return text;
}

std::vector<std::string> ChannelsOf(const FilePart& part) {
    std::vector<std::string> names;
    names.reserve(part.channelCount);
    for (std::size_t i = 0; i < part.channelCount; ++i)
        names.emplace_back(part.channels[i].name);
    return names;
}

/// What is before the last dot; nothing where there is none.
std::optional<std::string_view> LayerOf(std::string_view channel) {
    const std::size_t dot = channel.rfind('.');
    return dot == std::string_view::npos ? std::nullopt : std::optional(channel.substr(0, dot));
}

}  // namespace

std::optional<int> FindPart(const IFileInspection& file, std::string_view word) {
    for (std::size_t i = 0; i < file.PartCount(); ++i) {
        if (file.Part(i).name == word) return static_cast<int>(i);
    }
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    const bool isNumber = error == std::errc() && end == word.data() + word.size();
    return isNumber && number < file.PartCount() ? std::optional(static_cast<int>(number)) : std::nullopt;
}

bool HasChannel(const FilePart& part, std::string_view name) {
    return std::any_of(part.channels, part.channels + part.channelCount,
                       [&](const FileChannel& channel) { return channel.name == name; });
}

std::optional<std::string> ChannelsOfLayer(const FilePart& part, std::string_view layer) {
    const std::string prefix = std::string(layer) + ".";
    const auto named = [&](const char* name) { return prefix + name; };
    const bool hasAlpha = HasChannel(part, named("A"));
    for (const auto& colours :
         {std::array{"R", "G", "B"}, std::array{"r", "g", "b"}, std::array{"X", "Y", "Z"}, std::array{"x", "y", "z"}}) {
        if (!std::ranges::all_of(colours, [&](const char* name) { return HasChannel(part, named(name)); })) continue;
        const std::string text = named(colours[0]) + "," + named(colours[1]) + "," + named(colours[2]);
        return hasAlpha ? text + "," + named("A") : text;
    }
    for (const std::string& channel : ChannelsOf(part)) {
        if (LayerOf(channel) != layer || channel == named("A")) continue;
        return hasAlpha ? channel + "," + named("A") : channel;
    }
    return hasAlpha ? std::optional(named("A")) : std::nullopt;
}

std::optional<std::string> MissingChannel(const FilePart& part, std::string_view channels) {
    for (std::size_t begin = 0; begin <= channels.size();) {
        const std::size_t end = std::min(channels.find(',', begin), channels.size());
        const std::string_view name = channels.substr(begin, end - begin);
        if (!HasChannel(part, name)) return std::string(name);
        begin = end + 1;
    }
    return std::nullopt;
}

std::vector<std::string> LayersOf(const FilePart& part) {
    std::vector<std::string> layers;
    for (const std::string& channel : ChannelsOf(part)) {
        const auto layer = LayerOf(channel);
        if (layer && !std::ranges::contains(layers, *layer)) layers.emplace_back(*layer);
    }
    return layers;
}

std::string PartList(const IFileInspection& file) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < file.PartCount(); ++i) {
        const std::string_view name = file.Part(i).name;
        names.push_back(name.empty() ? std::to_string(i) : std::format("{} {}", i, name));
    }
    return Listed(names);
}

std::string LayerList(const FilePart& part) {
    return Listed(LayersOf(part));
}

std::string ChannelList(const FilePart& part) {
    return Listed(ChannelsOf(part));
}

std::string FaceList(std::uint32_t faces) {
    std::string text;
    for (int face = 0; face < kCubeFaces; ++face) {
        if ((faces >> face & 1) != 0) text += (text.empty() ? "" : " ") + FaceName(face);
    }
    return text;
}

}  // namespace Kavra::App
