/// Running the command line as a user would.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Kavra::Tests {

struct ProgramResult {
    int status = -1;  ///< exit status; 128 + the signal when one ended the program
    std::string out;
    std::string error;
};

/// Runs `kavra` with these arguments and waits for its end. Standard input is empty. Standard output and standard error
/// go to the files or devices `out` and `error`, where they are named, and are not in the result then.
ProgramResult RunKavra(const std::vector<std::string>& arguments, const std::filesystem::path& out = {},
                       const std::filesystem::path& error = {});

/// Starts it without waiting; `Wait` collects the rest.
class RunningKavra {
public:
    explicit RunningKavra(const std::vector<std::string>& arguments, const std::filesystem::path& out = {},
                          const std::filesystem::path& error = {});
    ~RunningKavra();
    RunningKavra(const RunningKavra&) = delete;
    RunningKavra& operator=(const RunningKavra&) = delete;

    void Signal(int signal) const;
    ProgramResult Wait();

private:
    int mProcess = -1;
    std::filesystem::path mOut;  ///< empty where the caller named one
    std::filesystem::path mError;
};

/// A sample file of the project.
std::filesystem::path Sample(const std::string& name);

}  // namespace Kavra::Tests
