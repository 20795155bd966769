/// How pictures are written.
#pragma once

#include "Source.h"
#include "TypeAbilities.h"

#include <CLI/App.hpp>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// As it stands, what the writer of each kind of file does by itself.
struct WriteOptions {
    int quality = 0;
    std::string compression;
    Depth depth = Depth::kOwn;
    int tileSize = 0;
    double dpi = 0;
    bool isGrey = false;
    bool isStripped = false;
    bool keepsAlpha = false;  ///< also of opaque pictures, where files of the type have one; no option of its own

    bool operator==(const WriteOptions&) const = default;

    /// Adds the options to a command that makes pictures for people.
    void AddTo(CLI::App& command);

    /// Writes a flat picture, or, to a DDS, one with its faces or slices. What of the source a file of that kind can
    /// hold is written with it. Notes and a failure are said in the report.
    bool Write(Devices::IImageHandler& handler, Report& report, LoadedImage image, const Source& source,
               const std::filesystem::path& path) const;

    /// Writes several flat pictures, one or more, into one file. `framesPerSecond` is 0 where nothing is known of it.
    bool WriteAll(Devices::IImageHandler& handler, Report& report, std::vector<LoadedImage> images,
                  const Source& source, const std::filesystem::path& path, double framesPerSecond) const;
};

}  // namespace Kavra::App
