#include "frame/host/devices/IsolatedFiles.h"

#include "common/SealedFile.h"

#include <kavra/objects/OS.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <span>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::Descriptor;

/// Without waiting for what is no regular file.
Descriptor OpenRegular(const std::string& path) {
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status{};
    if (!file || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode)) return Descriptor();
    return file;
}

void Add(IsolatedFiles& files, std::string name, Descriptor file) {
    if (!file) return;
    files.names.push_back(std::move(name));
    files.files.push_back(std::move(file));
}

/// Band rasters: samples, header, and palette. Their header is looked for first, since other pictures have none.
void AddRaster(IsolatedFiles& files, const std::string& path) {
    const std::size_t dot = path.rfind('.'), slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return;
    const std::string stem = path.substr(0, dot);
    for (const char* const header : {".hdr", ".HDR"}) {
        if (stem + header != path) Add(files, stem + header, OpenRegular(stem + header));
    }
    if (files.files.size() == 1) return;
    for (const char* const other : {".bil", ".clr", ".CLR", ".pal", ".PAL"}) {
        if (stem + other != path) Add(files, stem + other, OpenRegular(stem + other));
    }
}

std::span<const unsigned char> BytesOf(const MemoryFile& file) {
    return {static_cast<const unsigned char*>(file.bytes), file.bytes != nullptr ? file.size : 0};
}

void AddMemory(IsolatedFiles& files, const MemoryFile& file, const wchar_t* name) {
    Add(files, OS::ToUtf8(name), Descriptor(Common::NewSealedFile(BytesOf(file))));
}

}  // namespace

IsolatedFiles OpenIsolatedFiles(const IsolatedOperation& operation) {
    constexpr std::size_t kMaxNeighbours = 8;
    IsolatedFiles files;
    if (const MemoryFile* const memory = operation.memory) {
        AddMemory(files, *memory, operation.path);
        for (std::size_t i = 0; i < memory->neighbourCount && i < kMaxNeighbours && !files.files.empty(); ++i)
            AddMemory(files, memory->neighbours[i], memory->neighbours[i].name);
        return files;
    }
    const std::string path = OS::ToUtf8(operation.path);
    Add(files, path, OpenRegular(path));
    if (!files.files.empty()) AddRaster(files, path);
    return files;
}

}  // namespace Kavra::Devices
