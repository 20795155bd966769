/// Inputs and outputs that are streams: standard input and output, and pipes. Hosts take names of files alone, so what
/// comes is read whole into a file of the program's own, and what goes is written whole to one before it is sent.
#pragma once

#include <CLI/App.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// Where a command keeps the names of its single inputs and its output, for these to be looked at before it runs.
struct Names {
    std::vector<std::string*> in;
    std::vector<std::string*> out;
    std::string to;  ///< the file type of an output that is a stream
};

/// What is said of a stream whose file type nobody says.
constexpr const char* kStreamNeedsType = "--to is required, as a pipe does not say its file type";

/// Adds `--to` to a command whose output is `names.out`, which may be a stream.
void AddStreamType(CLI::App& command, Names& names);

/// Adds the options `IN` and `OUT` of a command that makes one file of one picture; both names are looked at before it runs.
void AddInAndOut(CLI::App& command, Names& names, std::string& in, std::string& out);

/// Whether a name stands for what this process was handed to read or to write: "-", or an open pipe.
bool IsInputStream(const std::string& name);
/// The same of outputs, and of pipes that have a name.
bool IsOutputStream(const std::string& name);
/// Whether an output's bytes go to standard output, where nothing else may be printed then.
bool IsStandardOutput(const std::string& name);

/// The name of a file that holds what came through `name`, with the extension that its first bytes tell; `name` itself
/// where it is no stream. Asked again, it is the same file. Throws `std::runtime_error`.
std::string ReadStream(const std::string& name);

/// The name of a file, with the extension `to`, whose bytes `SendStreams` sends to `name`; `name` itself where it is no
/// stream. `to` may be empty where the name has an extension.
std::string WriteStream(const std::string& name, const std::string& to);

/// Sends what was written, and removes all files of streams. Empty when all was sent, else what is to be said.
std::string SendStreams();

/// Text with the names that streams have on the command line in place of those of their files.
std::string WithGivenNames(std::string_view text);

}  // namespace Kavra::App
