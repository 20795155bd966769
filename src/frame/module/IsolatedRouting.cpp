#include "frame/module/IsolatedRouting.h"

#include "common/HostExtras.h"
#include "common/MemoryPicture.h"
#include "frame/module/Dispatch.h"
#include "load/FileInspection.h"

#include <kavra/devices/DecoderProcess.h>
#include <kavra/devices/Sys.h>

#include <dlfcn.h>

#include <vector>

namespace Kavra::Devices {

namespace {

/// Where this module lies; empty where the system does not say.
const char* ModulePath() {
    Dl_info info{};
    const bool isFound = dladdr(reinterpret_cast<const void*>(&WantsIsolation), &info) != 0;
    return isFound && info.dli_fname != nullptr ? info.dli_fname : "";
}

/// An operation on a file, or on the picture in memory that stands for it.
class Operation {
public:
    explicit Operation(const KString& path) {
        operation.modulePath = ModulePath();
        operation.path = path.ToChars();
        const Common::MemoryPicture* const picture = Common::MemoryPicture::Current();
        if (picture == nullptr) return;
        for (const auto& [name, bytes] : picture->Neighbours())
            mNeighbours.push_back({.bytes = bytes.data(), .size = bytes.size(), .name = name.c_str()});
        mMemory = {.bytes = picture->Bytes().data(),
                   .size = picture->Bytes().size(),
                   .name = operation.path,
                   .neighbours = mNeighbours.data(),
                   .neighbourCount = mNeighbours.size()};
        operation.memory = &mMemory;
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    IsolatedOperation operation;

private:
    std::vector<MemoryFile> mNeighbours;
    MemoryFile mMemory;
};

/// What the operation says of a file that is not there. One that appears meanwhile is not looked at.
template <class Body>
auto WithoutFile(Body&& body) {
    const Common::MemoryPicture nothing;
    return body();
}

}  // namespace

bool WantsIsolation(const LoadPreferences& preferences) {
    return preferences.isolated && Common::HostIsolates();
}

IMemoryWrapper<void>* LoadTextureIsolated(ImageDescription& desc, const KString& path, const LoadRequest& request) {
    Operation asked(path);
    IsolatedOperation& operation = asked.operation;
    operation.width = request.width;
    operation.height = request.height;
    operation.format = request.format;
    operation.highQuality = request.highQuality;
    operation.level = request.level;
    operation.orientation = request.orientation;
    operation.formatHandler = request.formatHandler;
    IMemoryWrapper<void>* block = nullptr;
    const EIsolatedEnd end = Common::LoadIsolated(operation, desc, block);
    if (end == kIsolatedNoFile) return WithoutFile([&] { return LoadTexture(desc, path, request); });
    const bool isStopped = Common::HostsFailure().kind == kFailureCancelled;
    if (end == kIsolatedFailed && !isStopped) Sys::Warning(L"format is not supported", nullptr);
    return block;
}

ImageDesc* DescribeImageIsolated(const KString& path) {
    const Operation asked(path);
    ImageDesc* desc = nullptr;
    const EIsolatedEnd end = Common::DescribeIsolated(asked.operation, desc);
    return end == kIsolatedNoFile ? WithoutFile([&] { return DescribeImage(path); }) : desc;
}

IFileInspection* InspectFileIsolated(const KString& path) {
    const Operation asked(path);
    IFileInspection* file = nullptr;
    const EIsolatedEnd end = Common::InspectIsolated(asked.operation, file);
    return end == kIsolatedNoFile ? WithoutFile([&] { return InspectFile(path); }) : file;
}

}  // namespace Kavra::Devices
