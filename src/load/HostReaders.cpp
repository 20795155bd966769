#include "load/HostReaders.h"

#include "common/HostExtras.h"
#include "common/MemoryPicture.h"

#include <kavra/objects/KString.h>

#include <algorithm>
#include <string>

namespace Kavra::Devices {

namespace {

using Common::MemoryPicture;

/// Of ASCII alone.
KString SystemPathOf(MemoryPicture& picture) {
    const std::string& path = picture.SystemPath();
    return KString(std::wstring(path.begin(), path.end()).c_str());
}

}  // namespace

bool OpenHostDds(DDSReader& reader, const KString& path) {
    MemoryPicture* const picture = MemoryPicture::Current();
    if (picture == nullptr) return reader.Load(path);
    if (!picture->IsNamed(path.ToChars())) return false;
    const std::optional<bool> opened = Common::OpenDdsInMemory(reader, picture->Bytes());
    return opened ? *opened : reader.Load(SystemPathOf(*picture));
}

bool ReadHostExr(EXRHandler& handler, const KString& path) {
    MemoryPicture* const picture = MemoryPicture::Current();
    if (picture == nullptr) return handler.ReadFromFile(path);
    if (!picture->IsNamed(path.ToChars())) return false;
    const std::optional<bool> read = Common::ReadExrInMemory(handler, picture->Bytes());
    return read ? *read : handler.ReadFromFile(SystemPathOf(*picture));
}

bool HostPrefersExr(const KString& path, const std::optional<std::array<unsigned char, 4>>& start) {
    MemoryPicture* const picture = MemoryPicture::Current();
    if (picture == nullptr) {
        return start ? Common::PrefersExrHandler(path, *start) : EXRHandler::IsPreferedHandler(path);
    }
    std::array<unsigned char, 4> first{};
    std::ranges::copy(picture->Bytes().first(std::min(first.size(), picture->Bytes().size())), first.begin());
    if (const std::optional<bool> preferred = Common::PrefersExrHandler(first)) return *preferred;
    return EXRHandler::IsPreferedHandler(SystemPathOf(*picture));
}

}  // namespace Kavra::Devices
