/// The commands that a batch runs.
#pragma once

#include "Commands.h"

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace Kavra::App {

/// A command with its options, as `--do` has it.
class BatchWork {
public:
    explicit BatchWork(const std::string& text);

    const std::vector<std::string>& Words() const { return mWords; }

    /// Why it does not go into a batch; empty when nothing speaks against it. Its options are looked at by `Run`.
    std::string Obstacle() const;

    /// What its outputs' names end in, where it says so; what stands for `{ext}`.
    std::string TypeWanted() const;

    /// Whether it makes one output of all of its inputs.
    bool JoinsInputs() const;

    /// Looks at its options, as if it were to make a file of another one. Gives the status, which was said, or -1 where
    /// nothing is wrong.
    int Check(Session& session) const;

    /// Makes each output of its input, `jobs` at a time (0: all cores). Gives the status; where the command line is wrong,
    /// nothing was done.
    int Run(Session& session, const std::vector<std::string>& inputs, const std::vector<std::filesystem::path>& outputs,
            int jobs) const;

private:
    int Parse(CLI::App& program, Session& session, std::span<const std::string> more) const;

    std::vector<std::string> mWords;
};

}  // namespace Kavra::App
