#include "WritePolicy.h"

#include "FileNames.h"
#include "Results.h"
#include "Setting.h"

#include <algorithm>
#include <format>
#include <system_error>

namespace Kavra::App {
namespace {

Setting keepsOld(false);
Setting onlyNewer(false);
Setting isDry(false);

bool Writes(const CLI::App* command) {
    constexpr std::string_view kReaders = " info formats help check ";
    return !HasWord(kReaders, command->get_name());
}

/// Whether one of the inputs was changed after the output. Of an input that cannot be asked, the work tells more.
bool IsAnyNewer(std::span<const std::string> inputs, const std::filesystem::path& out) {
    std::error_code error;
    const auto made = std::filesystem::last_write_time(out, error);
    if (error) return true;
    return std::ranges::any_of(inputs, [&](const std::string& input) {
        const auto changed = std::filesystem::last_write_time(input, error);
        return error || changed > made;
    });
}

}  // namespace

void AddWritePolicy(CLI::App& program) {
    for (CLI::App* const command : program.get_subcommands(Writes)) {
        CLI::Option* const keep =
            command->add_flag("--no-clobber", keepsOld.value, "Leave outputs that exist as they are");
        CLI::Option* const newer = command->add_flag(
            "--overwrite-newer", onlyNewer.value, "Write only what is not there, or is older than what it is made of");
        newer->excludes(keep);
        command->add_flag("--dry-run", isDry.value, "Write nothing; print which files would be written");
    }
}

bool IsToBeMade(Report& report, std::span<const std::string> inputs, const std::filesystem::path& out) {
    std::error_code ignored;
    const bool isOld = std::filesystem::is_regular_file(out, ignored);
    if (isOld && (keepsOld.value || (onlyNewer.value && !IsAnyNewer(inputs, out)))) {
        report.work.kept.push_back(out.string());
        report.Say("note", keepsOld.value ? "kept: it exists" : "kept: it is not older than its input", out.string());
        return false;
    }
    if (!isDry.value) return true;
    report.work.planned.push_back(out.string());
    if (!PrintsJsonAlone()) report.out += std::format("would write {}\n", out.string());
    return false;
}

bool IsToBeMade(Report& report, const std::filesystem::path& out) {
    return IsToBeMade(report, std::span(&report.File(), 1), out);
}

bool KeepsOldFiles() {
    return keepsOld.value;
}

bool IsDryRun() {
    return isDry.value;
}

}  // namespace Kavra::App
