#include "Commands.h"
#include "StandardStreams.h"
#include "Usage.h"

#include <memory>
#include <string>

namespace Kavra::App {
namespace {

int Run(const CLI::App& program, const std::string& name) {
    const auto commands =
        program.get_subcommands([&](const CLI::App* command) { return name.empty() || command->get_name() == name; });
    if (commands.empty()) {
        const std::string nearest = Nearest(name, CommandNames(program));
        return WrongUsage("help", "there is no command " + name +
                                      (nearest.empty() ? std::string() : "; did you mean " + nearest + "?"));
    }
    WriteOutput(name.empty() ? HelpText(program) : HelpText(program, commands.front()));
    return kAllDone;
}

}  // namespace

void AddHelp(CLI::App& program, Session& session) {
    const auto name = std::make_shared<std::string>();
    CLI::App* command = program.add_subcommand("help", "Tells how to use the program, or one of its commands");
    command->footer("Example: kavra help convert");
    command->add_option("COMMAND", *name, "The command; all of them unless said");
    command->callback([name, &program, &session] { session.run = [name, &program] { return Run(program, *name); }; });
}

}  // namespace Kavra::App
