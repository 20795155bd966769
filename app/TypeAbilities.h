/// What files of a type hold beside pixels, and what their writers can be told.
#pragma once

#include <kavra/devices/SavePreferences.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// Bits of a channel.
enum class Depth { kOwn, k8, k16, kHalf, kFloat };

/// As "half" on the command line; empty for `kOwn`.
std::string_view DepthName(Depth depth);

/// As tried with the image library by writing, and reading what came out. Words stand between spaces.
struct TypeAbilities {
    static constexpr std::string_view kOwn{};  ///< no compression to choose
    enum Texts { kNone, kDescription, kArtist, kBoth, kDescriptionAndCopyright, kAll };

    std::string_view extensions;
    std::string_view depths;               ///< as on the command line
    std::string_view compressions = kOwn;  ///< to choose from
    bool hasAlpha = true;
    bool holdsThree = true;  ///< three channels, so that an opaque picture needs no fourth
    bool hasQuality = false, hasTiles = false, hasResolution = false, hasFrames = false;
    std::size_t maxProfile = 0;  ///< of the colour profile, in bytes
    Texts texts = kNone;

    bool HoldsDepth(Depth depth) const;
    bool HasCompression(std::string_view name) const;
    bool HoldsText(const Devices::SavedText& text) const;
};

/// What is known of files with this extension (in lower case, with its dot); of others that they hold nothing beside
/// pixels of any depth.
const TypeAbilities& AbilitiesOf(std::string_view extension);

/// The names of all compressions.
std::vector<std::string> CompressionNames();

}  // namespace Kavra::App
