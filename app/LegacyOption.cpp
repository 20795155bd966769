#include "LegacyOption.h"

#include "IsolationOption.h"
#include "Setting.h"
#include "TextureView.h"
#include "Usage.h"

#include <format>

namespace Kavra::App {

using namespace Devices;

namespace {

Setting<ELegacyReading> theReading(kLegacyContract);

}  // namespace

void AddLegacyOption(CLI::App& program) {
    const auto reads = [](CLI::App* command) { return command->get_name() != "formats"; };
    for (CLI::App* const command : program.get_subcommands(reads)) {
        AddChoice<ELegacyReading>(
            *command, "--legacy", {{"contract", kLegacyContract}, {"common", kLegacyCommon}},
            [](ELegacyReading reading) { theReading.value = reading; },
            "How PCX, PICT, FLI, FLC, band raster, CALS and DDS files are read: as hosts get them, or as they were "
            "meant "
            "and other programs show them; contract unless said");
    }
}

LoadPreferences LegacyPreferences(const std::string& file) {
    LoadPreferences preferences;
    preferences.legacy = IsSeenAsView(file) ? kLegacyCommon : theReading.value;
    AddIsolation(preferences);
    return preferences;
}

LegacyNote::LegacyNote(LoadPreferences& preferences, const std::string& file) {
    preferences.legacy = LegacyPreferences(file).legacy;
    preferences.legacyObserver = this;
    AddIsolation(preferences);
}

void LegacyNote::Tell(Report& report) const {
    if (mHow != nullptr) report.NoteOnce(std::format("{}; --legacy common shows it as other programs do", mHow));
}

}  // namespace Kavra::App
