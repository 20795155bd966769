/// A DDS reader in the place of the host's: the module's calls are bound to it when the program is linked.
#pragma once

#include <kavra/devices/DDSReader.h>

#include <functional>

namespace Kavra::Tests {

/// What the reader answers, of any file.
struct DdsAnswers {
    bool opens = true;
    Devices::EFormat format = Devices::kUnknown;
    int width = 1;
    int height = 1;
    /// Gives the next level; none: null.
    std::function<Devices::IMemoryWrapper<void>*(Devices::ImageDescription&)> load{};
};

DdsAnswers& Substitute();

}  // namespace Kavra::Tests
