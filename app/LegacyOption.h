/// How old raster files are read, and what is said of that.
#pragma once

#include "Messages.h"

#include <kavra/devices/LoadPreferences.h>

#include <CLI/App.hpp>

namespace Kavra::App {

/// Adds `--legacy`, which holds for the whole process, to each command of the program that reads pictures.
void AddLegacyOption(CLI::App& program);

/// Preferences of loads that hold nothing but the reading that was asked for.
Devices::LoadPreferences LegacyPreferences();

/// One load: hears where the other reading shows something else.
class LegacyNote final : public Devices::ILegacyObserver {
public:
    /// Has a load under `preferences` go by the reading that was asked for, and tell this.
    explicit LegacyNote(Devices::LoadPreferences& preferences);
    LegacyNote(const LegacyNote&) = delete;
    LegacyNote& operator=(const LegacyNote&) = delete;

    void ReadingsDiffer(const char* how) noexcept override { mHow = how; }

    /// Notes what was heard, once a file.
    void Tell(Report& report) const;

private:
    const char* mHow = nullptr;
};

}  // namespace Kavra::App
