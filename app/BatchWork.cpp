#include "BatchWork.h"

#include "CommandSet.h"
#include "Setting.h"
#include "Usage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <format>

namespace Kavra::App {
namespace {

/// The word of an option, without the value that may stand behind it.
std::string NameOf(const std::string& word) {
    return word.substr(0, word.starts_with('-') ? word.find('=') : std::string::npos);
}

constexpr const char* kAnyOutput = "{stem}.x";  // in the place of names that are given beside the words

}  // namespace

BatchWork::BatchWork(const std::string& text) : mWords(CLI::detail::split_up(text)) {}

std::string BatchWork::Obstacle() const {
    const bool isKnown = !mWords.empty() && (mWords.front() == "convert" || mWords.front() == "texture");
    if (!isKnown) return "--do takes convert or texture with their options";
    for (const std::string word :
         {"--json", "--inspect", "--report", "--from", "-0", "--null", "-r", "--recursive", "--frames", "--help", "-h"})
        if (std::ranges::contains(mWords, word, NameOf)) return word + " does not go into a batch";
    return {};
}

std::string BatchWork::TypeWanted() const {
    const auto option = std::ranges::find(mWords, std::string("--to"), NameOf);
    if (option == mWords.end()) return {};
    if (option->contains('=')) return option->substr(option->find('=') + 1);
    return option + 1 == mWords.end() ? std::string() : *(option + 1);
}

bool BatchWork::JoinsInputs() const {
    return std::ranges::any_of(mWords, [](const std::string& word) {
        const std::string name = NameOf(word);
        return name == "--cube" || name == "--volume" || name == "--array";
    });
}

int BatchWork::Parse(CLI::App& program, Session& session, std::span<const std::string> more) const {
    session.names = {};
    AddCommands(program, session);
    std::vector<std::string> words = mWords;
    words.insert(words.end(), more.begin(), more.end());
    words.emplace_back(kAnyOutput);
    std::ranges::reverse(words);  // as the library wants them
    const CLI::Option* const names = program.get_subcommand(mWords.front())->get_option("FILES");
    const auto refuse = [](const std::string& name) {
        return WrongUsage("batch", name + " is the name of a file, and --do takes a command and its options alone");
    };
    const auto first = std::ranges::find(more, "--") + 1;
    try {
        program.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        const auto files = names->results();
        const bool isUnknownOption = std::ranges::any_of(program.remaining(true), [&](const std::string& word) {
            return word.starts_with('-') && std::ranges::contains(mWords, word);
        });
        const bool isStray = !isUnknownOption && !files.empty() && files.front() != *first &&
                             std::ranges::contains(mWords, files.front());
        return isStray ? refuse(files.front()) : AnswerParse(program, error);
    }
    const auto files = names->results();
    const auto expected = static_cast<std::size_t>(more.end() - first) + 1;
    return files.size() == expected || files.empty() ? -1 : refuse(files.front());
}

int BatchWork::Check(Session& session) const {
    const SettingsScope settings;
    CLI::App program("", "kavra");
    return Parse(program, session, std::vector<std::string>{"--", "x"});
}

int BatchWork::Run(Session& session, const std::vector<std::string>& inputs,
                   const std::vector<std::filesystem::path>& outputs, int jobs) const {
    const SettingsScope settings;
    CLI::App program("", "kavra");
    std::vector<std::string> more;
    if (jobs > 0) more = {"--jobs", std::to_string(jobs)};
    more.emplace_back("--");
    more.insert(more.end(), inputs.begin(), inputs.end());
    const int status = Parse(program, session, more);
    if (status >= 0) return status;
    session.outputs = &outputs;
    const int done = session.run();
    session.outputs = nullptr;
    return done;
}

}  // namespace Kavra::App
