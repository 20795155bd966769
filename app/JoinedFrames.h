/// Several pictures made into one file.
#pragma once

#include "LoadOptions.h"
#include "Making.h"

#include <CLI/App.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace Kavra::App {

/// What is said of frames where pictures are converted.
struct JoinOptions {
    bool isAll = false;          ///< all frames of all inputs go into one file
    double framesPerSecond = 0;  ///< 0: as the first input is shown

    /// Adds `--frames` and `--fps`.
    void AddTo(CLI::App& command);

    /// Writes all frames of the inputs, one report each, to one file. Messages, notes and failures are said in the
    /// reports; one that fails keeps the file from being written.
    void Write(Devices::IImageHandler& handler, std::vector<Report>& reports, const LoadOptions& load,
               const Making& making, const std::filesystem::path& path) const;
};

}  // namespace Kavra::App
