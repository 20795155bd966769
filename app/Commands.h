/// The commands: each adds itself to the command line and says what runs when it is chosen.
#pragma once

#include "Host.h"

#include <CLI/App.hpp>

#include <filesystem>
#include <functional>

namespace Kavra::App {

/// Exit statuses of the program.
enum ExitStatus : int {
    kAllDone = 0,
    kSomeFailed = 1,
    kWrongUsage = 2,
};

/// What the command line chose: filled in while it is parsed, run afterwards.
struct Session {
    std::filesystem::path plugin;  ///< the module's file; empty means the usual places
    bool verbose = false;          ///< every message is printed, however many are equal
    std::function<int()> run;      ///< gives the exit status

    /// Loads the module.
    Host LoadHost() const { return Host(plugin); }
};

void AddInfo(CLI::App& program, Session& session);
void AddDump(CLI::App& program, Session& session);
void AddConvert(CLI::App& program, Session& session);
void AddFrames(CLI::App& program, Session& session);
void AddResize(CLI::App& program, Session& session);
void AddCrop(CLI::App& program, Session& session);
void AddCompose(CLI::App& program, Session& session);
void AddSheet(CLI::App& program, Session& session);
void AddCompare(CLI::App& program, Session& session);
void AddTarget(CLI::App& program, Session& session);
void AddTexture(CLI::App& program, Session& session);
void AddTile(CLI::App& program, Session& session);
void AddLight(CLI::App& program, Session& session);
void AddFormats(CLI::App& program, Session& session);
void AddHelp(CLI::App& program, Session& session);

}  // namespace Kavra::App
