/// The file handler that is there when the host brings none.
#pragma once

#include <kavra/devices/IFileHandler.h>

namespace Kavra::Devices {

/// The file system as it is, by UTF-8 names. Nothing throws: what cannot be done is false.
class FileHandler final : public IFileHandler {
public:
    bool PreparePath(const wchar_t* path) noexcept override;
    bool DirectoryExists(const wchar_t* directory) noexcept override;
    bool CreateDirectory(const wchar_t* directory) noexcept override;
};

}  // namespace Kavra::Devices
