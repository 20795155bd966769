#include "Usage.h"

#include "Commands.h"
#include "StandardStreams.h"

#include <CLI/Error.hpp>
#include <CLI/FormatterFwd.hpp>

#include <algorithm>
#include <sstream>
#include <vector>

namespace Kavra::App {
namespace {

std::string* heard = nullptr;  // takes what would be said

/// How many letters have to be added, left out, changed or exchanged with their neighbour to make one word of the
/// other: the optimal string alignment distance.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t changed = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, changed});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps[a.size()][b.size()];
}

bool IsOption(const std::string& word) {
    return word.size() > 1 && word.starts_with('-');
}

std::string DidYouMean(std::string_view word, std::span<const std::string> words) {
    const std::string nearest = Nearest(word, words);
    return nearest.empty() ? std::string() : std::format("; did you mean {}?", nearest);
}

std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

/// What is said of an argument that stands where it is not taken.
std::string UnexpectedText(const CLI::App& app, const std::string& argument) {
    if (!IsOption(argument)) return std::format("{} is one argument too many", argument);
    const std::string name = argument.substr(0, argument.find('='));
    const std::vector<std::string> names = OptionNames(app);
    if (std::ranges::contains(names, name)) return name + " goes after the command";
    const bool isOfProgram = app.get_parent() != nullptr && std::ranges::contains(OptionNames(*app.get_parent()), name);
    if (isOfProgram) return name + " goes before the command";
    return std::format("there is no option {}{}", name, DidYouMean(name, names));
}

/// "A and B exclude one another" of the library's "A excludes B".
std::string ExclusionText(std::string text) {
    constexpr std::string_view kExcludes = " excludes ";
    const std::size_t at = text.find(kExcludes);
    if (at == std::string::npos) return text;
    return text.replace(at, kExcludes.size(), " and ") + " exclude one another";
}

std::string ErrorText(const CLI::App& app, const CLI::ParseError& error) {
    std::vector<std::string> rest = app.remaining();
    if (rest.empty() && app.get_parent() != nullptr) rest = app.get_parent()->remaining();
    const auto option = std::ranges::find_if(rest, IsOption);
    if (option != rest.end()) return UnexpectedText(app, *option);
    if (!rest.empty()) return UnexpectedText(app, rest.front());
    const std::string text = error.what();
    const bool lacksValue = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch);
    if (lacksValue) return text.substr(0, text.find(':')) + " needs a value";
    const bool isExclusion = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExcludesError);
    return isExclusion ? ExclusionText(text) : text;
}

/// Without spaces at the ends of lines and without empty lines at the top or after one another, which the library leaves.
std::string Tidied(const std::string& text) {
    std::istringstream lines(text);
    std::string tidied;
    bool wasEmpty = true;
    for (std::string line; std::getline(lines, line); wasEmpty = line.empty()) {
        line.erase(line.find_last_not_of(' ') + 1);
        if (!line.empty() || !wasEmpty) tidied += line + "\n";
    }
    return tidied;
}

/// No command was recognised.
int AnswerWithoutCommand(const CLI::App& program, const CLI::ParseError& error) {
    const std::vector<std::string> rest = program.remaining();
    if (!rest.empty() && !IsOption(rest.front())) {
        const std::vector<std::string> names = CommandNames(program);
        return WrongUsage(rest.front(), "there is no such command" + DidYouMean(rest.front(), names) +
                                            (Nearest(rest.front(), names).empty() ? "; kavra help lists them" : ""));
    }
    const bool isBare = rest.empty() && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    WriteError(std::format("kavra: error: {}\n", isBare ? "a command is missing" : ErrorText(program, error)));
    if (isBare) WriteError("\n" + HelpText(program));
    return kWrongUsage;
}

}  // namespace

int WrongUsage(std::string_view command, std::string_view text) {
    if (heard != nullptr) {
        *heard = std::format("{}: {}", command, text);
    } else {
        WriteError(std::format("kavra: {}: error: {}\n", command, text));
    }
    return kWrongUsage;
}

WrongUsageScope::WrongUsageScope(std::string& text) {
    heard = &text;
}

WrongUsageScope::~WrongUsageScope() {
    heard = nullptr;
}

int AnswerParse(const CLI::App& program, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        std::ostringstream out, ignored;
        program.exit(error, out, ignored);
        WriteOutput(Tidied(out.str()));
        return kAllDone;
    }
    const std::vector<CLI::App*> commands = program.get_subcommands();
    if (commands.empty()) return AnswerWithoutCommand(program, error);
    return WrongUsage(commands.front()->get_name(), ErrorText(*commands.front(), error));
}

std::string HelpText(const CLI::App& program, const CLI::App* command) {
    if (command != nullptr) return Tidied(command->help(program.get_name()));
    return Tidied(program.get_formatter()->make_help(&program, program.get_name(), CLI::AppFormatMode::Normal));
}

std::string Nearest(std::string_view word, std::span<const std::string> words) {
    constexpr std::size_t kMaxSteps = 2;
    std::string nearest;
    std::size_t best = std::min(kMaxSteps + 1, word.size());  // what shares no letter is not near
    for (const std::string& candidate : words) {
        const std::size_t steps = Distance(word, candidate);
        if (steps >= best) continue;
        best = steps;
        nearest = candidate;
    }
    return nearest;
}

std::string Joined(std::span<const std::string> words) {
    std::string joined;
    for (const std::string& word : words)
        joined += (joined.empty() ? "" : "|") + word;
    return joined;
}

std::string NoneOf(std::string_view word, std::span<const std::string> words) {
    return std::format("{} is none of {}{}", word, Joined(words), DidYouMean(word, words));
}

std::vector<std::string> CommandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

void AddJobs(CLI::App& command, int& jobs) {
    AddWholeNumber(command, "-j,--jobs", jobs, 1, "Files worked on at a time; all cores unless said");
}

void AddFrame(CLI::App& command, int& frame) {
    AddWholeNumber(command, "--frame", frame, 0, "The frame, from 0; of a DDS the mip level");
}

}  // namespace Kavra::App
