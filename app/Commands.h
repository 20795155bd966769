/// The commands: each adds itself to the command line and says what runs when it is chosen.
#pragma once

#include "Host.h"
#include "StreamFiles.h"

#include <CLI/App.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace Kavra::App {

/// Exit statuses of the program.
enum ExitStatus : int {
    kAllDone = 0,
    kSomeFailed = 1,
    kWrongUsage = 2,
    kTryAgain = 75,  ///< something failed for want of memory or of space on a disk, as EX_TEMPFAIL of sysexits.h
};

/// What the command line chose: filled in while it is parsed, run afterwards.
struct Session {
    std::filesystem::path plugin;  ///< the module's file; empty means the usual places
    bool verbose = false;          ///< every message is printed, however many are equal
    bool quiet = false;            ///< nothing but errors is printed
    std::function<int()> run;      ///< gives the exit status
    Names names;                   ///< of single inputs and outputs, as commands were given them
    /// The outputs of `convert` and `texture`, one an input, in place of what their words make of them; null: none.
    const std::vector<std::filesystem::path>* outputs = nullptr;

    /// Loads the module, the first time.
    const Host& LoadHost() const {
        if (mHost == nullptr) mHost = std::make_unique<Host>(plugin);
        return *mHost;
    }
    /// Stops and unloads it.
    void UnloadHost() { mHost.reset(); }

private:
    mutable std::unique_ptr<Host> mHost;
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
void AddCheck(CLI::App& program, Session& session);
void AddFormats(CLI::App& program, Session& session);
void AddHelp(CLI::App& program, Session& session);

}  // namespace Kavra::App
