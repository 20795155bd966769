#include "CutFiles.h"

#include "Setting.h"

#include <string_view>
#include <utility>

namespace Kavra::App {
namespace {

Setting acceptsPartial(false);
bool offersPartial = true;

bool TakesPictures(const CLI::App* command) {
    const std::string_view name = command->get_name();
    return name != "info" && name != "formats" && name != "check" && name != "help";
}

}  // namespace

void AddPartialOption(CLI::App& program) {
    for (CLI::App* const command : program.get_subcommands([](CLI::App* app) { return TakesPictures(app); }))
        command->add_flag("--accept-partial", acceptsPartial.value,
                          "Take what there is of files that end early, with a warning; else they fail");
}

void RefuseAllCutFiles() {
    offersPartial = false;
}

bool TakesCutFile(Report& report) {
    Reason reason = LastReason();
    if (reason.kind != Devices::kFailureEndsEarly) return true;
    if (acceptsPartial.value) {
        report.Say("warning", reason.text + "; what is there was taken");
        return true;
    }
    if (offersPartial) reason.text += "; --accept-partial takes what is there";
    report.Remember(std::move(reason));
    return false;
}

}  // namespace Kavra::App
