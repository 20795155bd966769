/// The command line of the program.
#pragma once

#include "Commands.h"

namespace Kavra::App {

/// Adds the commands that work on files, with the options that they share.
void AddCommands(CLI::App& program, Session& session);

/// Adds `batch`, which runs some of these over any number of files.
void AddBatch(CLI::App& program, Session& session);

}  // namespace Kavra::App
