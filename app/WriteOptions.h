/// How pictures are written.
#pragma once

#include "Source.h"

#include <CLI/App.hpp>

#include <filesystem>
#include <string_view>

namespace Kavra::App {

/// As it stands, what the writer of each kind of file does by itself.
struct WriteOptions {
    /// Adds the options to a command that makes pictures for people.
    void AddTo(CLI::App& command);

    /// Writes a flat picture, or, to a DDS, one with its faces or slices. What of the source a file of that kind can
    /// hold is written with it. Notes and a failure are said in the report.
    bool Write(Devices::IImageHandler& handler, Report& report, const LoadedImage& image, const Source& source,
               const std::filesystem::path& path) const;
};

}  // namespace Kavra::App
