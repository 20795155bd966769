#include "frame/host/devices/FileHandler.h"

#include "common/Boundary.h"

#include <kavra/objects/OS.h>

#include <filesystem>
#include <system_error>

namespace Kavra::Devices {

bool FileHandler::PreparePath(const wchar_t*) noexcept {
    return true;
}

bool FileHandler::DirectoryExists(const wchar_t* directory) noexcept {
    return Common::AtBoundary(false, [&] {
        const std::filesystem::path path = OS::ToUtf8(directory);
        std::error_code error;
        return path.empty() || std::filesystem::is_directory(path, error);
    });
}

bool FileHandler::CreateDirectory(const wchar_t* directory) noexcept {
    return Common::AtBoundary(false, [&] {
        std::error_code error;
        std::filesystem::create_directories(OS::ToUtf8(directory), error);
        // Asked again: someone else may have made it in between, or a plain file may stand in its place.
        return DirectoryExists(directory);
    });
}

}  // namespace Kavra::Devices
