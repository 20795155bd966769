#include "output/PathPreparation.h"

#include "common/PathReasons.h"

#include <kavra/devices/IFileHandler.h>
#include <kavra/devices/Sys.h>
#include <kavra/objects/OS.h>

#include <array>

namespace Kavra::Devices {

namespace {

/// Characters of the longest folder name that a host takes, the NUL included.
constexpr std::size_t kFolderSize = 260;

}  // namespace

bool IsDDSPath(const KString& path) {
    return path.Right(4).CompareNoCase(L".dds") == 0;
}

bool PrepareFolder(const KString& path) {
    IFileHandler& files = *Sys::FileHandler();
    (void)files.PreparePath(path);

    std::array<wchar_t, kFolderSize> folder{};
    if (OS::wsplitpath(path, folder.data(), folder.size()) == -1) {
        Common::Say(kFailureCannotWrite, "the path of its folder is longer than {} characters", kFolderSize - 1);
        Sys::Warning(L"wrong file path", nullptr);
        return false;
    }
    if (files.DirectoryExists(folder.data()) || files.CreateDirectory(folder.data())) return true;
    Common::SayOfFolderToMake(folder.data());
    Sys::Warning(L"fail to create specified folder", nullptr);
    return false;
}

}  // namespace Kavra::Devices
