/// What kavra answers to a command line: its exit status, and every line that it writes on standard error.
#pragma once

#include "support/Program.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// Keys stay in the order in which they are printed.
using Json = nlohmann::ordered_json;

/// A command line, or a part of one.
using Words = std::vector<std::string>;

/// The parts one after another.
Words Joined(std::initializer_list<Words> parts);

// Lines on standard error that say something of a file.
std::string ErrorLine(const std::filesystem::path& file, const std::string& text);
std::string WarningLine(const std::filesystem::path& file, const std::string& text);
std::string NoteLine(const std::filesystem::path& file, const std::string& text);

/// What is said of a file that no reader takes.
std::string UnreadableLine(const std::filesystem::path& file);

/// The warning of a picture that ends early and is taken all the same.
std::string PartialLine(const std::filesystem::path& file, int goodRows, int rows);

/// Expects that all was done (status 0) with just `said` on standard error. Gives what was printed.
std::string ExpectDone(const Words& line, const std::string& said = "");

/// Expects that some input failed (status 1) with just `said` on standard error. Gives what was printed.
std::string ExpectFailed(const Words& line, const std::string& said);

/// Expects that the command line is refused (status 2) with just "kavra: `said`" on standard error, and nothing printed.
void ExpectWrongUsage(const Words& line, const std::string& said);

/// The description of a file that `info --json` gives.
Json Described(const std::filesystem::path& file);

/// The whole block that `dump` writes of a file; `more` are further words for the command.
std::vector<unsigned char> Dumped(const std::filesystem::path& file, const Words& more = {});

/// The bytes of a file as a text.
std::string TextOf(const std::filesystem::path& file);

/// The names of what lies in a folder, in alphabetical order.
Words NamesIn(const std::filesystem::path& folder);

}  // namespace Kavra::Tests
