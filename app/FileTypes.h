/// What file types hold.
#pragma once

#include <kavra/devices/EFormat.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Kavra::App {

/// A flat picture that is to become a file.
struct FileContent {
    Devices::EFormat format = Devices::kUnknown;
    long long width = 0;
    long long height = 0;
    bool dropsAlpha = false;  ///< the last of four or two channels stays out of the file
};

/// Why files with this extension do not hold such a picture, and what they hold; empty when nothing is known against
/// it. Their writers refuse some of that without a word, and of some they make files that nobody can read.
/// `extension` is in lower case, with its dot.
std::string TypeObstacle(std::string_view extension, const FileContent& content);

/// Whether files with this extension hold pictures of so many channels, from 1 to 4.
bool HoldsChannels(std::string_view extension, int channels);

/// Why a file that was written would not be taken for one of its type: it came out too short. Empty when it would.
std::string ShortnessObstacle(std::string_view extension, std::uint64_t bytes);

}  // namespace Kavra::App
