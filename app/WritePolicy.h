/// Which outputs are written, and which stay as they are.
#pragma once

#include "Messages.h"

#include <CLI/App.hpp>

#include <filesystem>
#include <span>
#include <string>

namespace Kavra::App {

/// Adds `--no-clobber`, `--overwrite-newer` and `--dry-run`, which hold for the whole process, to each command of the
/// program that writes files.
void AddWritePolicy(CLI::App& program);

/// Whether the file `out` is to be made of `inputs` now. Where it is not, the report has taken down why: an old file
/// stays, or nothing is written at all. To be asked before any work is put into it.
bool IsToBeMade(Report& report, std::span<const std::string> inputs, const std::filesystem::path& out);

/// The same of an output of the report's own file.
bool IsToBeMade(Report& report, const std::filesystem::path& out);

/// Whether old files stay: a name that somebody else takes meanwhile is not taken from him.
bool KeepsOldFiles();

/// Whether nothing is written.
bool IsDryRun();

}  // namespace Kavra::App
