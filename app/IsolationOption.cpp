#include "IsolationOption.h"

#include "Sizes.h"
#include "StandardStreams.h"
#include "Usage.h"

#include <kavra/devices/DecoderProcess.h>

#include <cstdint>
#include <format>
#include <string>

namespace Kavra::App {

namespace {

struct Isolation {
    bool isWanted = false;
    std::uint32_t seconds = 0;
    std::uint64_t bytes = 0;
};

Isolation theIsolation;

void AddTo(CLI::App& command) {
    command.add_flag_callback(
        "--isolated",
        [] {
            theIsolation.isWanted = true;
            const std::string gaps = Devices::DecoderGaps();
            if (!gaps.empty()) WriteError(std::format("kavra: note: {}\n", gaps));
        },
        "Decode each file in a confined process, which nothing that a file contains can leave");
    constexpr std::uint32_t kMaxSeconds = 1'000'000;
    AddWholeNumber(command, "--timeout", theIsolation.seconds, std::uint32_t{1}, kMaxSeconds,
                   "With --isolated, the seconds that a file may take; 60 unless said");
    command
        .add_option_function<std::string>(
            "--memory", [](const std::string& text) { theIsolation.bytes = ParseAmount(text, 1024, "--memory"); },
            "With --isolated, the memory that decoding a file may take, as 500M or 4G; three quarters of the machine's "
            "unless said")
        ->type_name("N");
}

}  // namespace

void AddIsolationOptions(CLI::App& program) {
    const auto reads = [](CLI::App* command) { return command->get_name() != "formats"; };
    for (CLI::App* const command : program.get_subcommands(reads))
        AddTo(*command);
}

void AddIsolation(Devices::LoadPreferences& preferences) {
    preferences.isolated = theIsolation.isWanted;
    preferences.timeoutSeconds = theIsolation.seconds;
    preferences.maxDecoderBytes = theIsolation.bytes;
}

}  // namespace Kavra::App
