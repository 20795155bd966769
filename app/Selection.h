/// Which of the pictures of a file is loaded.
#pragma once

#include <kavra/devices/LoadPreferences.h>

#include <CLI/App.hpp>

#include <string>

namespace Kavra::App {

/// As it stands, what a host gets that says nothing: all faces and slices, the largest level, the file's own channels.
struct Selection {
    int face = -1;
    int slice = -1;
    int mipLevel = 0;
    std::string channels;

    /// Makes them a part of what is preferred of loads; `preferences` points into this.
    void AddTo(Devices::LoadPreferences& preferences) const;
};

}  // namespace Kavra::App
