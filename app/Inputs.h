/// The inputs of commands that take many: words, lists of names, and folders.
#pragma once

#include "Commands.h"
#include "Description.h"
#include "Messages.h"

#include <CLI/App.hpp>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::App {

struct Input {
    explicit Input(std::string name, std::filesystem::path folder = {}, bool comes = false)
        : file(std::move(name)), below(std::move(folder)), isStream(comes) {}

    std::string file;
    std::filesystem::path below;  ///< its folder below the one that was searched
    bool isStream;
};

/// All inputs, and what was found wrong on the way.
struct InputList {
    std::vector<Input> inputs;
    std::vector<Report> failures;  ///< lists, folders and streams that are unreadable, which was said
    bool canStart = true;          ///< all lists and streams were read

    bool IsWhole() const { return failures.empty(); }
};

/// Ends a command that has not all of its inputs: with a JSON array of what failed, where it prints one. Gives the status.
int EndUnstarted(const InputList& list, bool json);

/// Adds what failed to the JSON array of the files.
void AddFailures(Json& json, const InputList& list);

std::vector<std::string> FileNamesOf(const std::vector<Input>& inputs);

/// How further inputs than the words of the command line are named.
struct InputOptions {
    bool recursive = false;
    bool endsWithNul = false;
    std::string list;

    /// Adds `--recursive`, `--from` and `-0`.
    void AddTo(CLI::App& command);

    /// Whether neither the words nor a list name any.
    bool AreNone(const std::vector<std::string>& words) const { return words.empty() && list.empty(); }

    /// Whether the number of inputs depends on more than the words, so that outputs go into a folder however many these
    /// turn out to be.
    bool AreOpen(const std::vector<std::string>& words) const;

    /// What the words stand for, and then what `--from` lists. A word `@LIST` is the names in that file; a folder, with
    /// `--recursive`, all files in and below it that the handler knows by their extensions, in the order of their names,
    /// without those in `output`. Other words are names of files. Lists hold names alone.
    InputList Expand(const std::vector<std::string>& words, const Session& session,
                     const std::filesystem::path& output = {}) const;
};

/// What a command that only tells of its inputs was asked.
struct Telling {
    const std::vector<std::string>& files;
    const InputOptions& inputs;
    bool json;
    int jobs;
};

/// Has `tell` put each input's text into its report, or its object into the JSON where that is printed; `failed` makes
/// the object of one that failed. Gives the status.
int TellOfEach(const Session& session, const Telling& telling, const std::function<void(Report&, Json&)>& tell,
               const std::function<Json(const Report&)>& failed);

}  // namespace Kavra::App
