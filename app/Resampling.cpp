#include "Resampling.h"

#include "FileNames.h"
#include "Usage.h"

namespace Kavra::App {

using namespace Devices;

namespace {

void AddFilters(CLI::App& command, Resampling& resampling, const std::string& unlessSaid) {
    AddChoice<EResampleFilter>(
        command, "--filter",
        {{"nearest", kResampleNearest},
         {"bilinear", kResampleBilinear},
         {"linear", kResampleBilinear},
         {"box", kResampleBox},
         {"triangle", kResampleTriangle},
         {"mitchell", kResampleMitchell},
         {"catmull-rom", kResampleCatmullRom},
         {"lanczos3", kResampleLanczos3}},
        [&resampling](EResampleFilter filter) { resampling.filter = filter; }, "How to resample; " + unlessSaid);
    command.add_flag("--linear-light", resampling.linearLight,
                     "Resample 8- and 16-bit colours as light, without the curve of sRGB");
}

}  // namespace

void Resampling::AddForPeople(CLI::App& command, const std::string& unlessSaid) {
    alphaWeighted = bounded = true;
    AddFilters(command, *this, unlessSaid);
    command.add_flag_callback(
        "--plain-filter", [this] { alphaWeighted = bounded = false; },
        "Resample each channel by itself. Unless said, what is transparent lends its neighbours no colour, and halves "
        "and floats stay between the values around them, without negative light");
}

void Resampling::AddForHosts(CLI::App& command, const std::string& unlessSaid) {
    AddFilters(command, *this, unlessSaid);
    command.add_flag("--alpha-weighted", alphaWeighted,
                     "Resample so that what is transparent lends its neighbours no colour");
    command.add_flag("--bounded", bounded,
                     "Keep resampled halves and floats between the values around them, without negative light");
}

void Resampling::AddFast(CLI::App& command) {
    command.add_flag(
        "--fast", fast,
        "Shrink from what the file has smaller: a JPEG decoded in part, a stored level. Other pixels, sooner");
}

std::string Resampling::OptionForPeople() const {
    if (filter) return "--filter";
    if (linearLight) return "--linear-light";
    return bounded ? "" : "--plain-filter";
}

LoadPreferences Resampling::For(const std::string& file) const {
    LoadPreferences preferences;
    preferences.alphaWeighted = alphaWeighted && !isPremultiplied.value_or(IsOpenExr(file));
    preferences.bounded = bounded;
    preferences.linearLight = linearLight;
    preferences.fast = fast;
    preferences.choosesFilter = filter.has_value();
    preferences.filter = filter.value_or(preferences.filter);
    return preferences;
}

EImageFilterType Resampling::ServiceFilter() const {
    if (filter == kResampleNearest) return kFilterNearest;
    return filter == kResampleBilinear ? kFilterBilinear : kFilterMitchell;
}

LoadPreferences Resampling::ForService(const std::string& file) const {
    LoadPreferences preferences = For(file);
    const bool isArgument = filter == kResampleNearest || filter == kResampleBilinear || filter == kResampleMitchell;
    if (isArgument) preferences.choosesFilter = false;
    return preferences;
}

}  // namespace Kavra::App
