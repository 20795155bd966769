#include "IsolationOption.h"

#include "Setting.h"
#include "Sizes.h"
#include "StandardStreams.h"
#include "Usage.h"

#include <kavra/devices/DecoderProcess.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <format>
#include <mutex>
#include <string>
#include <string_view>

namespace Kavra::App {

namespace {

struct Isolation {
    bool isWanted = false;
    std::uint32_t seconds = 0;
    std::uint64_t bytes = 0;
};

Setting<Isolation> theIsolation({});

/// Commands that many files go through, of anybody's.
constexpr std::array<std::string_view, 3> kIsolating = {"batch", "check", "sheet"};

/// Once, of a system that lacks a part of what confines.
void SayGaps() {
    static std::once_flag once;
    std::call_once(once, [] {
        const std::string gaps = Devices::DecoderGaps();
        if (!gaps.empty()) WriteError(std::format("kavra: note: {}\n", gaps));
    });
}

}  // namespace

void AddIsolationOption(CLI::App& command) {
    const bool isDefault = std::ranges::contains(kIsolating, command.get_name());
    const std::string text = "Decode each file in a confined process, which nothing that a file contains can leave";
    command.add_flag_callback(
        "--isolated", [] { theIsolation.value.isWanted = true; }, isDefault ? text + "; so unless --in-process" : text);
    if (isDefault) {
        command.preparse_callback([](std::size_t /*words*/) { theIsolation.value.isWanted = true; });
        command
            .add_flag_callback(
                "--in-process", [] { theIsolation.value.isWanted = false; },
                "Decode in this process, which a decoder that fails takes with it")
            ->excludes("--isolated");
    }
    constexpr std::uint32_t kMaxSeconds = 1'000'000;
    CLI::Option* const timeout =
        AddWholeNumber(command, "--timeout", theIsolation.value.seconds, std::uint32_t{1}, kMaxSeconds,
                       "The seconds that decoding a file may take, in a confined process; 60 unless said");
    CLI::Option* const memory = command.add_option_function<std::string>(
        "--memory", [](const std::string& text) { theIsolation.value.bytes = ParseAmount(text, 1024, "--memory"); },
        "The memory that decoding a file may take, in a confined process, as 500M or 4G; three quarters of the "
        "machine's unless said");
    memory->type_name("N");
    // Only a process of its own can be bound, so that whoever names a bound asks for one.
    for (CLI::Option* const bound : {timeout, memory}) {
        bound->each([](const std::string& /*word*/) { theIsolation.value.isWanted = true; });
        if (isDefault) bound->excludes("--in-process");
    }
}

void AddIsolationOptions(CLI::App& program) {
    const auto reads = [](CLI::App* command) { return command->get_name() != "formats"; };
    for (CLI::App* const command : program.get_subcommands(reads))
        AddIsolationOption(*command);
}

void AddIsolation(Devices::LoadPreferences& preferences) {
    preferences.isolated = theIsolation.value.isWanted;
    if (theIsolation.value.isWanted) SayGaps();
    preferences.timeoutSeconds = theIsolation.value.seconds;
    preferences.maxDecoderBytes = theIsolation.value.bytes;
}

}  // namespace Kavra::App
