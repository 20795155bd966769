/// The files of an isolated operation, open to be handed over.
#pragma once

#include "common/isolation/Descriptor.h"

#include <kavra/devices/DecoderProcess.h>

#include <string>
#include <vector>

namespace Kavra::Devices {

struct IsolatedFiles {
    std::vector<std::string> names;  ///< the picture's first
    std::vector<Common::Descriptor> files;
};

/// Opens the picture, and the files beside it that formats of several files look for. Empty where there is no picture
/// that is a regular file and can be opened, or no memory for a copy of one in memory.
IsolatedFiles OpenIsolatedFiles(const IsolatedOperation& operation);

}  // namespace Kavra::Devices
