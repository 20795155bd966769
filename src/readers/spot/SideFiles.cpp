#include "readers/spot/SideFiles.h"

#include "common/ByteSource.h"

#include <kavra/objects/OS.h>

#include <cwchar>
#include <utility>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Result;

std::optional<KString> PathWithExtension(const KString& path, const wchar_t* extension) {
    std::wstring present(path.GetLen() + 1, L'\0');
    OS::_wsplitpath(path, nullptr, nullptr, nullptr, present.data());
    const std::size_t length = std::wcslen(present.c_str());
    if (length == 0) return std::nullopt;
    std::wstring replaced(path.ToChars(), path.GetLen() - length);
    return std::optional<KString>(std::in_place, (replaced + extension).c_str());
}

bool CanOpen(const KString& path) {
    return ByteSource::Open(path).has_value();
}

std::optional<std::string> ReadWhole(const KString& path, std::uint64_t maximumBytes) {
    Result<ByteSource> source = ByteSource::Open(path);
    if (!source || source->Size() > maximumBytes) return std::nullopt;
    std::vector<unsigned char> bytes(static_cast<std::size_t>(source->Size()));
    if (!source->Read(bytes)) return std::nullopt;
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace Kavra::Devices
