/// How old raster files are read, and what is said of that.
#pragma once

#include "Messages.h"

#include <kavra/devices/LoadPreferences.h>

#include <CLI/App.hpp>

#include <string>

namespace Kavra::App {

/// Adds `--legacy`, which holds for the whole process, to each command of the program that reads pictures.
void AddLegacyOption(CLI::App& program);

/// Preferences of loads of a file that hold nothing but whether they are isolated and its reading: the one that was asked for, and the common one of
/// what the handler sees in place of another file.
Devices::LoadPreferences LegacyPreferences(const std::string& file);

/// One load: hears where the other reading shows something else.
class LegacyNote final : public Devices::ILegacyObserver {
public:
    /// Has a load of a file under `preferences` go by its reading and isolation (`LegacyPreferences`), and tell this.
    LegacyNote(Devices::LoadPreferences& preferences, const std::string& file);
    LegacyNote(const LegacyNote&) = delete;
    LegacyNote& operator=(const LegacyNote&) = delete;

    void ReadingsDiffer(const char* how) noexcept override { mHow = how; }

    /// Notes what was heard, once a file.
    void Tell(Report& report) const;

private:
    const char* mHow = nullptr;
};

}  // namespace Kavra::App
