/// What is done to colours between loading and writing.
#pragma once

#include "Source.h"

#include <CLI/App.hpp>

#include <string_view>

namespace Kavra::App {

/// As it stands, what the eye expects.
struct ColourOptions {
    /// Adds the options to a command that makes pictures for people.
    void AddTo(CLI::App& command);

    /// The flat picture as files with this extension (in lower case, with its dot) hold it; `source` is brought up to
    /// what the values are then. Notes and a failure are said in the report; `block` is then null.
    LoadedImage Apply(Report& report, LoadedImage image, Source& source, std::string_view extension) const;
};

}  // namespace Kavra::App
