/// What every saver does to a path before it writes.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// Whether the path names a DDS file: its last four characters are ".dds", ignoring case.
bool IsDDSPath(const KString& path);

/// Makes the folder ready that a file is to be written into: the host's file handler hears of the path, and a missing
/// folder is created. False after one warning: "wrong file path" when the path is empty or its folder's name is too
/// long, "fail to create specified folder" when it cannot be made. What was created stays.
bool PrepareFolder(const KString& path);

}  // namespace Kavra::Devices
