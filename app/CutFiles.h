/// Files that end before all of their picture.
#pragma once

#include "Messages.h"

#include <CLI/App.hpp>

namespace Kavra::App {

/// Adds `--accept-partial`, which holds for the whole process, to each command of the program that loads pictures.
void AddPartialOption(CLI::App& program);

/// For a command that has no such option. To be called before there are any loads.
void RefuseAllCutFiles();

/// Whether what the last load on this thread delivered is taken: all of a picture, or of a file that ends early what is
/// there, with a warning, where that was asked for. Else the reason is kept for the failure that the caller says.
bool TakesCutFile(Report& report);

}  // namespace Kavra::App
