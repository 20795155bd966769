#include "support/Program.h"

#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

extern char** environ;

namespace Kavra::Tests {
namespace {

std::filesystem::path NewFile() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kavra-run-XXXXXX").string();
    const int handle = mkstemp(pattern.data());
    if (handle < 0) throw std::runtime_error("no temporary file");
    close(handle);
    return pattern;
}

std::string TakeText(const std::filesystem::path& path) {
    if (path.empty()) return {};
    const std::vector<unsigned char> bytes = ReadAll(path);
    std::filesystem::remove(path);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

RunningKavra::RunningKavra(const std::vector<std::string>& arguments, const std::filesystem::path& out,
                           const std::filesystem::path& error)
    : mOut(out.empty() ? NewFile() : std::filesystem::path()),
      mError(error.empty() ? NewFile() : std::filesystem::path()) {
    std::vector<std::string> words = {KAVRA_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (out.empty() ? mOut : out).c_str(), O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (error.empty() ? mError : error).c_str(),
                                     O_WRONLY | O_NOCTTY, 0);
    const int failure = posix_spawn(&mProcess, KAVRA_PROGRAM, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("kavra cannot be started");
}

RunningKavra::~RunningKavra() {
    if (mProcess > 0) {
        kill(mProcess, SIGKILL);
        Wait();
    }
}

void RunningKavra::Signal(int signal) const {
    kill(mProcess, signal);
}

ProgramResult RunningKavra::Wait() {
    int status = 0;
    waitpid(mProcess, &status, 0);
    mProcess = -1;
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return {code, TakeText(mOut), TakeText(mError)};
}

ProgramResult RunKavra(const std::vector<std::string>& arguments, const std::filesystem::path& out,
                       const std::filesystem::path& error) {
    return RunningKavra(arguments, out, error).Wait();
}

std::filesystem::path Sample(const std::string& name) {
    return std::filesystem::path(KAVRA_SOURCE_DIR) / "examples" / name;
}

}  // namespace Kavra::Tests
