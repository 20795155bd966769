/// How the commands resample pictures.
#pragma once

#include <kavra/devices/EResize.h>
#include <kavra/devices/LoadPreferences.h>

#include <CLI/App.hpp>

#include <optional>
#include <string>

namespace Kavra::App {

/// As it stands, what a host gets that says nothing.
struct Resampling {
    std::optional<Devices::EResampleFilter> filter;
    bool alphaWeighted = false;
    bool bounded = false;
    bool linearLight = false;
    bool fast = false;
    std::optional<bool> isPremultiplied =
        std::nullopt;  ///< whether colours are; not known here: as the file's name says

    static constexpr const char* kMitchellUnlessSaid = "mitchell unless said";
    static constexpr const char* kLoadsUnlessSaid =
        "unless said, mitchell, and with --size the nearest pixel where a load finds that near enough";

    /// Adds `--filter --plain-filter --linear-light`. Pictures for people are weighted by alpha and bounded unless the
    /// second is given. `unlessSaid` tells in the help how is resampled without a filter.
    void AddForPeople(CLI::App& command, const std::string& unlessSaid = kMitchellUnlessSaid);
    /// Adds `--filter --alpha-weighted --bounded --linear-light`: for blocks as a host gets them.
    void AddForHosts(CLI::App& command, const std::string& unlessSaid);
    /// Adds `--fast`.
    void AddFast(CLI::App& command);

    /// The first of the options for people that was given; empty where none was.
    std::string OptionForPeople() const;

    /// What to prefer for pictures of `file`. Colours that are multiplied by their alpha, as OpenEXR files have them, are
    /// right without being weighted by it.
    Devices::LoadPreferences For(const std::string& file) const;

    /// The filter that the resize service is asked for, which knows three by itself; the others are a host's preference.
    Devices::EImageFilterType ServiceFilter() const;
    Devices::LoadPreferences ForService(const std::string& file) const;
};

}  // namespace Kavra::App
