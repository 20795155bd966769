/// The command kavra: a reference host that reaches everything through the class factory and `IImageHandler`.

#include "CommandSet.h"
#include "CutFiles.h"
#include "FileNames.h"
#include "IsolationOption.h"
#include "LegacyOption.h"
#include "LibraryLines.h"
#include "LoadOptions.h"
#include "Messages.h"
#include "OutputFile.h"
#include "OutputPattern.h"
#include "Results.h"
#include "StandardStreams.h"
#include "Usage.h"
#include "WritePolicy.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <format>
#include <stdexcept>
#include <string>

namespace {

using namespace Kavra::App;

/// The options may stand before the command and after it.
void AddLoudness(CLI::App& program, Session& session) {
    const auto add = [&](CLI::App& app) {
        CLI::Option* const quiet =
            app.add_flag("-q,--quiet", session.quiet, "Print errors alone: no warnings, notes, bars and sums");
        app.add_flag("-v,--verbose", session.verbose, "Print every message, however many in a row are equal")
            ->excludes(quiet);
    };
    add(program);
    for (CLI::App* command : program.get_subcommands(nullptr))
        add(*command);
}

/// Of commands that print none of their own.
void AddJson(CLI::App& program) {
    constexpr std::string_view kCommands = " convert frames resize crop compose sheet target tile ";
    for (CLI::App* command :
         program.get_subcommands([&](const CLI::App* candidate) { return HasWord(kCommands, candidate->get_name()); }))
        command->add_flag_callback("--json", KeepResults,
                                   "One JSON array with an object a file: what was written, or why not");
}

/// The output for its input, where it has fields, and the file of a stream. What is wrong with it, or nothing.
std::string ResolveOutput(std::string& out, const Names& names) {
    if (out.empty()) return {};
    if (OutputPattern::IsPattern(out)) {
        const auto in = std::ranges::find_if(names.in, [](const std::string* name) { return !name->empty(); });
        if (in == names.in.end()) return "there is no single input for the fields of " + out;
        if (IsInputStream(**in)) return **in + " has no name to make that of its output of";
        out = OutputPattern(out).Name(**in, 0, names.to).string();
    }
    const bool isStream = IsOutputStream(out);
    if (!isStream && !names.to.empty()) return "--to goes with a stream as the output";
    if (!isStream) return {};
    if (IsStandardOutput(out) && PrintsJsonAlone()) return "--json prints where the output is to go";
    if (names.to.contains('/')) return "--to takes an extension, such as png";
    if (names.to.empty() && LowerExtension(out).empty()) return kStreamNeedsType;
    out = WriteStream(out, names.to);
    return {};
}

/// Makes names of files of what the command line says. What is wrong with it, or nothing. Throws `std::runtime_error`
/// where a stream cannot be read.
std::string ResolveNames(const Names& names) {
    for (std::string* const out : names.out) {
        try {
            const std::string wrong = ResolveOutput(*out, names);
            if (!wrong.empty()) return wrong;
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }
    for (std::string* const in : names.in)
        *in = ReadStream(*in);
    return {};
}

int Parse(CLI::App& program, int argc, char** argv) {
    try {
        program.parse(argc, argv);
        return -1;
    } catch (const CLI::ParseError& error) {
        return AnswerParse(program, error);
    }
}

int Run(const CLI::App& program, Session& session) {
    if (session.verbose) PrintEveryMessage();
    if (session.quiet) PrintOnlyErrors();
    const CLI::App* const command = program.get_subcommands().front();
    const CLI::Option* const json = command->get_option_no_throw("--json");
    if (json != nullptr && json->count() > 0) PrintJsonAlone();
    CatchLibraryLines();
    const MessageRouter router;
    try {
        const std::string wrong = ResolveNames(session.names);
        if (!wrong.empty()) return WrongUsage(command->get_name(), wrong);
        const int status = session.run();
        PrintLibraryLines();
        if (status != kWrongUsage) PrintResults();
        session.UnloadHost();
        return status;
    } catch (const std::exception& error) {
        session.UnloadHost();
        WatchForTemporary(error.what());
        WriteError(std::format("kavra: error: {}\n", error.what()));
        return kSomeFailed;
    }
}

/// The status, unless what belongs to standard output is not there. What may go well the next time has one of its own.
int End(int status) {
    const std::string unsent = SendStreams();
    if (!unsent.empty()) {
        WriteError(std::format("kavra: {}\n", unsent));
        WatchForTemporary(unsent);
        status = kSomeFailed;
    }
    const std::string loss = OutputLoss();
    if (!loss.empty()) {
        WriteError(std::format("kavra: error: standard output cannot be written: {}\n", loss));
        WatchForTemporary(loss);
        status = kSomeFailed;
    }
    return status == kSomeFailed && HadTemporaryFailure() ? kTryAgain : status;
}

}  // namespace

void Kavra::App::AddCommands(CLI::App& program, Session& session) {
    AddInfo(program, session);
    AddDump(program, session);
    AddConvert(program, session);
    AddFrames(program, session);
    AddResize(program, session);
    AddCrop(program, session);
    AddCompose(program, session);
    AddSheet(program, session);
    AddCompare(program, session);
    AddTarget(program, session);
    AddTexture(program, session);
    AddTile(program, session);
    AddLight(program, session);
    AddCheck(program, session);
    AddFormats(program, session);
    AddLimitOptions(program);
    AddPartialOption(program);
    AddLegacyOption(program);
    AddIsolationOptions(program);
    AddWritePolicy(program);
    AddJson(program);
}

int main(int argc, char** argv) {
    HoldStandardStreams();
    WatchForInterruption();
    CLI::App program("Loads any image into texture memory, and what was loaded into files", "kavra");
    program.get_formatter()->enable_footer_formatting(false);  // examples stand below each other
    program.get_formatter()->label("SUBCOMMAND", "COMMAND");
    program.footer("kavra help COMMAND tells more, with an example.");
    program.set_version_flag("--version", "kavra " KAVRA_VERSION, "Print the version");
    program.require_subcommand(1);
    Session session;
    program.add_option("--plugin", session.plugin, "The image-handler module to load")->type_name("PATH");
    AddCommands(program, session);
    AddBatch(program, session);
    AddIsolationOption(*program.get_subcommand("batch"));
    AddLimits(*program.get_subcommand("batch"));
    AddHelp(program, session);
    AddLoudness(program, session);
    for (CLI::App* command : program.get_subcommands(nullptr))
        command->group("COMMANDS");
    const int status = Parse(program, argc, argv);
    return End(status >= 0 ? status : Run(program, session));
}
