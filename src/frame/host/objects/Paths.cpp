#include <kavra/objects/OS.h>

#include <algorithm>
#include <cwchar>
#include <string_view>

namespace Kavra::OS {
namespace {

struct PathParts {
    std::wstring_view directory, name, extension;
};

PathParts Split(std::wstring_view path) {
    const std::size_t slash = path.rfind(L'/');
    const std::size_t nameAt = slash == std::wstring_view::npos ? 0 : slash + 1;
    const std::wstring_view file = path.substr(nameAt);
    const std::size_t dot = std::min(file.rfind(L'.'), file.size());
    return {path.substr(0, nameAt), file.substr(0, dot), file.substr(dot)};
}

void CopyTo(wchar_t* out, std::wstring_view text) {
    if (out == nullptr) return;
    std::wmemcpy(out, text.data(), text.size());
    out[text.size()] = L'\0';
}

}  // namespace

void _wsplitpath(const wchar_t* path, wchar_t* drive, wchar_t* dir, wchar_t* name, wchar_t* ext) {
    const PathParts parts = Split(path != nullptr ? path : L"");
    CopyTo(drive, L"");
    CopyTo(dir, parts.directory);
    CopyTo(name, parts.name);
    CopyTo(ext, parts.extension);
}

int wsplitpath(const wchar_t* path, wchar_t* out, std::size_t size) {
    if (out == nullptr || size == 0) return -1;
    out[0] = L'\0';
    if (path == nullptr || path[0] == L'\0') return -1;
    const std::wstring_view directory = Split(path).directory;
    if (directory.size() >= size) return -1;
    CopyTo(out, directory);
    return 0;
}

}  // namespace Kavra::OS
