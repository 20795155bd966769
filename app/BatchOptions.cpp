#include "BatchOptions.h"

#include "StreamTypes.h"
#include "Usage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace Kavra::App {
namespace {

/// "3/8"; throws what the library prints.
void ParseShard(const std::string& text, BatchOptions& options) {
    unsigned shard = 0, shards = 0;
    int end = 0;
    const bool good = std::sscanf(text.c_str(), "%u/%u%n", &shard, &shards, &end) == 2 &&
                      static_cast<std::size_t>(end) == text.size() && shard >= 1 && shard <= shards;
    if (!good) throw CLI::ValidationError("--shard", text + " is no part of a whole; write as in 3/8");
    options.shard = shard;
    options.shards = shards;
}

/// "png,jpeg" as the extensions by which types are known here.
std::vector<std::string> ParseTypes(const std::string& text) {
    const std::vector<std::string> known = TypesOfBytes();
    std::vector<std::string> types;
    for (std::string type : CLI::detail::split(text, ',')) {
        type = CLI::detail::to_lower(type.starts_with('.') ? type.substr(1) : type);
        if (type == "jpeg") type = "jpg";
        if (type == "tiff") type = "tif";
        if (type.empty()) throw CLI::ValidationError("--only", text + " names no types; write as in png,jpeg,dds");
        if (!std::ranges::contains(known, type)) throw CLI::ValidationError("--only", NoneOf(type, known));
        types.push_back(type);
    }
    return types;
}

void AddWork(CLI::App& command, BatchOptions& options) {
    command.add_option("--do", options.work, "What is done with each file: convert or texture with its options");
    command.add_option("--out", options.out, "The outputs' names, with {dir} {stem} {ext} {name} of the input");
    CLI::Option* const list =
        command
            .add_option("--from", options.list,
                        "The file with the inputs' names, a name a line; standard input unless said")
            ->type_name("FILE");
    CLI::Option* const ends =
        command.add_flag("-0,--null", options.endsWithNul, "The names end with a zero byte instead of a line end");
    command
        .add_option("--manifest", options.manifest,
                    "A file, or - for standard input, of lines of JSON instead: "
                    "{\"input\": \"a.png\", \"output\": \"a.dds\", \"do\": \"texture --format bc7\"}; what a line has "
                    "not are --out and --do")
        ->type_name("FILE")
        ->excludes(list)
        ->excludes(ends);
    command
        .add_option_function<std::string>(
            "--only", [&options](const std::string& text) { options.only = ParseTypes(text); },
            "Work only on files that are of these types by their bytes, as png,jpeg,dds")
        ->type_name("TYPES");
}

void AddParts(CLI::App& command, BatchOptions& options) {
    command
        .add_option_function<std::string>(
            "--shard", [&options](const std::string& text) { ParseShard(text, options); },
            "Work on part I of N of the files alone, by their names: all N parts together are all files, each once")
        ->type_name("I/N");
    command.add_option("--log", options.log, "Append what became of each file to this one, a line of JSON each")
        ->type_name("FILE");
    command.add_flag("--resume", options.resumes,
                     "Leave out what the log says is done, of unchanged inputs in the same way; remove what killed "
                     "programs left in the outputs' folders");
    command.add_flag("--retry", options.retries, "With --resume, try again what failed");
}

void AddReport(CLI::App& command, BatchOptions& options) {
    command
        .add_option("--report", options.reports,
                    "Do nothing but print what these logs say together: how many files were written, and how many "
                    "failed why; the exit status is that of the whole")
        ->type_name("LOG...")
        ->expected(1, CLI::detail::expected_max_vector_size);
    command.add_flag("--json", options.json, "With --report, print a JSON object");
}

}  // namespace

void BatchOptions::AddTo(CLI::App& command) {
    AddWork(command, *this);
    AddParts(command, *this);
    AddReport(command, *this);
    AddJobs(command, jobs);
}

}  // namespace Kavra::App
