/// What is said of a command line that is wrong, and the options whose values are checked in the same way everywhere.
#pragma once

#include <CLI/App.hpp>

#include <charconv>
#include <format>
#include <limits>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kavra::App {

/// Says on standard error what is wrong with the command line of `command`, and gives the exit status.
int WrongUsage(std::string_view command, std::string_view text);

/// While it lives, what is wrong with command lines goes into `text` and not to standard error. Threads: the one.
class WrongUsageScope {
public:
    explicit WrongUsageScope(std::string& text);
    ~WrongUsageScope();
    WrongUsageScope(const WrongUsageScope&) = delete;
    WrongUsageScope& operator=(const WrongUsageScope&) = delete;
};

/// Answers a command line that could not be parsed, or that asked for help or the version, and gives the exit status.
int AnswerParse(const CLI::App& program, const CLI::ParseError& error);

/// The help of a command as its `--help` gives it, or of the whole program.
std::string HelpText(const CLI::App& program, const CLI::App* command = nullptr);

/// The word that was probably meant; empty when none comes close.
std::string Nearest(std::string_view word, std::span<const std::string> words);

/// The names of all commands.
std::vector<std::string> CommandNames(const CLI::App& program);

/// The words with a bar between each two.
std::string Joined(std::span<const std::string> words);

/// What is said of a word that is none of `words`: the nearest one too, where one is near.
std::string NoneOf(std::string_view word, std::span<const std::string> words);

/// Adds an option that takes one of a few words, in any case, and hands on what it stands for.
template <class Value, class Take>
CLI::Option* AddChoice(CLI::App& command, const std::string& name, std::map<std::string, Value> words, const Take& take,
                       const std::string& help) {
    std::vector<std::string> names;
    names.reserve(words.size());
    for (const auto& [word, ignored] : words)
        names.push_back(word);
    const std::string form = Joined(names);
    const auto parse = [name, names, take, words = std::move(words)](const std::string& text) {
        const auto found = words.find(CLI::detail::to_lower(text));
        if (found == words.end()) throw CLI::ValidationError(name, NoneOf(text, names));
        take(found->second);
    };
    return command.add_option_function<std::string>(name, parse, help)->type_name(form);
}

/// Adds an option that takes a whole number from `min` to `max`.
template <class Int>
CLI::Option* AddWholeNumber(CLI::App& command, const std::string& name, Int& value, Int min, Int max,
                            const std::string& help) {
    const auto parse = [name, min, max, &value](const std::string& text) {
        Int number{};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size() || number < min || number > max) {
            const bool isOpen = max == std::numeric_limits<Int>::max();
            const std::string range =
                isOpen ? std::format(", {} or more", min) : std::format(" from {} to {}", min, max);
            throw CLI::ValidationError(name.substr(name.find(',') + 1),
                                       std::format("{} is no whole number{}", text, range));
        }
        value = number;
    };
    return command.add_option_function<std::string>(name, parse, help)->type_name("N");
}

template <class Int>
CLI::Option* AddWholeNumber(CLI::App& command, const std::string& name, Int& value, Int min, const std::string& help) {
    return AddWholeNumber(command, name, value, min, std::numeric_limits<Int>::max(), help);
}

/// Adds `-j` and `--jobs`.
void AddJobs(CLI::App& command, int& jobs);

/// Adds `--frame`.
void AddFrame(CLI::App& command, int& frame);

}  // namespace Kavra::App
