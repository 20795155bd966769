/// Whether files are decoded by a confined process.
#pragma once

#include <kavra/devices/LoadPreferences.h>

#include <CLI/App.hpp>

namespace Kavra::App {

/// Adds `--isolated`, `--timeout` and `--memory`, which hold for the whole process, to a command; to `batch`, `check` and
/// `sheet`, which many files go through, also `--in-process`: they isolate unless told otherwise.
void AddIsolationOption(CLI::App& command);
/// Does so for each command of the program that reads pictures.
void AddIsolationOptions(CLI::App& program);

/// Has what is done under the preferences be isolated as was asked for.
void AddIsolation(Devices::LoadPreferences& preferences);

}  // namespace Kavra::App
