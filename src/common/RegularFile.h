/// What a path names.
#pragma once

#include "common/Utf8.h"

#include <sys/stat.h>

namespace Kavra::Common {

/// Whether the path names an existing regular file, links followed. Null names none.
inline bool IsRegularFile(const wchar_t* path) {
    struct stat status{};
    return path != nullptr && stat(ToUtf8(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace Kavra::Common
