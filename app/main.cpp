/// The command kavra: a reference host that reaches everything through the class factory and `IImageHandler`.

#include "Commands.h"
#include "LegacyOption.h"
#include "LoadOptions.h"
#include "Messages.h"
#include "OutputFile.h"
#include "StandardStreams.h"
#include "Usage.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <format>
#include <string>

namespace {

/// The option may stand before the command and after it.
void AddVerbose(CLI::App& program, Kavra::App::Session& session) {
    const auto add = [&](CLI::App& app) {
        app.add_flag("--verbose", session.verbose, "Print every message, however many in a row are equal");
    };
    add(program);
    for (CLI::App* command : program.get_subcommands(nullptr))
        add(*command);
}

int Parse(CLI::App& program, int argc, char** argv) {
    try {
        program.parse(argc, argv);
        return -1;
    } catch (const CLI::ParseError& error) {
        return Kavra::App::AnswerParse(program, error);
    }
}

int Run(const Kavra::App::Session& session) {
    if (session.verbose) Kavra::App::PrintEveryMessage();
    const Kavra::App::MessageRouter router;
    try {
        return session.run();
    } catch (const std::exception& error) {
        Kavra::App::WriteError(std::format("kavra: error: {}\n", error.what()));
        return Kavra::App::kSomeFailed;
    }
}

/// The status, unless what belongs to standard output is not there.
int End(int status) {
    const std::string loss = Kavra::App::OutputLoss();
    if (loss.empty()) return status;
    Kavra::App::WriteError(std::format("kavra: error: standard output cannot be written: {}\n", loss));
    return Kavra::App::kSomeFailed;
}

}  // namespace

int main(int argc, char** argv) {
    Kavra::App::HoldStandardStreams();
    Kavra::App::WatchForInterruption();
    CLI::App program("Loads any image into texture memory, and what was loaded into files", "kavra");
    program.get_formatter()->enable_footer_formatting(false);  // examples stand below each other
    program.get_formatter()->label("SUBCOMMAND", "COMMAND");
    program.footer("kavra help COMMAND tells more, with an example.");
    program.set_version_flag("--version", "kavra " KAVRA_VERSION, "Print the version");
    program.require_subcommand(1);
    Kavra::App::Session session;
    program.add_option("--plugin", session.plugin, "The image-handler module to load")->type_name("PATH");
    Kavra::App::AddInfo(program, session);
    Kavra::App::AddDump(program, session);
    Kavra::App::AddConvert(program, session);
    Kavra::App::AddFrames(program, session);
    Kavra::App::AddResize(program, session);
    Kavra::App::AddCrop(program, session);
    Kavra::App::AddCompose(program, session);
    Kavra::App::AddSheet(program, session);
    Kavra::App::AddCompare(program, session);
    Kavra::App::AddTarget(program, session);
    Kavra::App::AddTexture(program, session);
    Kavra::App::AddTile(program, session);
    Kavra::App::AddLight(program, session);
    Kavra::App::AddFormats(program, session);
    Kavra::App::AddLimitOptions(program);
    Kavra::App::AddLegacyOption(program);
    Kavra::App::AddHelp(program, session);
    AddVerbose(program, session);
    for (CLI::App* command : program.get_subcommands(nullptr))
        command->group("COMMANDS");
    const int status = Parse(program, argc, argv);
    return End(status >= 0 ? status : Run(session));
}
