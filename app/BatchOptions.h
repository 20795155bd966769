/// What a batch is asked.
#pragma once

#include "BatchLines.h"

#include <CLI/App.hpp>

#include <string>
#include <vector>

namespace Kavra::App {

struct BatchOptions {
    std::string work;  // a command with its options
    std::string list = "-";
    std::string manifest;
    std::string out;
    std::string log;
    std::vector<std::string> only;     // extensions
    std::vector<std::string> reports;  // logs
    unsigned shard = 1, shards = 1;
    bool endsWithNul = false, resumes = false, retries = false, json = false;
    int jobs = 0;

    bool HasManifest() const { return !manifest.empty(); }
    const std::string& List() const { return HasManifest() ? manifest : list; }
    BatchLines::Form Form() const {
        if (HasManifest()) return BatchLines::Form::kManifest;
        return endsWithNul ? BatchLines::Form::kNamesEndingInNul : BatchLines::Form::kNames;
    }

    void AddTo(CLI::App& command);
};

}  // namespace Kavra::App
