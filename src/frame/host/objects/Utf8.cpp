#include "common/Utf8.h"

#include <kavra/objects/OS.h>

namespace Kavra::OS {

std::string ToUtf8(const wchar_t* text) {
    return Common::ToUtf8(text);
}

std::wstring FromUtf8(const char* text) {
    return Common::FromUtf8(text);
}

}  // namespace Kavra::OS
