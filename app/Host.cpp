#include "Host.h"

#include <kavra/devices/Sys.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/objects/UString.h>

#include <dlfcn.h>

#include <stdexcept>
#include <vector>

namespace Kavra::App {
namespace {

constexpr const char* kModuleName = "KavraOIIOIntegration.so";
constexpr const wchar_t* kFactoryKey = L"ImageHandlerOIIO";

/// Where modules are installed: in a folder of their own beside the host library, wherever that is.
std::filesystem::path ModuleFolder() {
    Dl_info library{};
    const auto* const inLibrary = reinterpret_cast<const void*>(&Objects::ObjModel::Factory);
    if (dladdr(inLibrary, &library) == 0) return "kavra";
    return std::filesystem::absolute(library.dli_fname).lexically_normal().parent_path() / "kavra";
}

std::filesystem::path FindModule(const std::filesystem::path& plugin) {
    if (!plugin.empty()) return std::filesystem::absolute(plugin);
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path modules = ModuleFolder();
    for (const std::filesystem::path& folder : {program.parent_path(), modules}) {
        if (std::filesystem::is_regular_file(folder / kModuleName, error)) return folder / kModuleName;
    }
    throw std::runtime_error(std::string("the module ") + kModuleName + " is neither beside the program nor in " +
                             modules.string() + "; name it with --plugin");
}

template <class Function>
Function Find(void* module, const char* name, const std::filesystem::path& path) {
    void* symbol = dlsym(module, name);
    if (symbol == nullptr) throw std::runtime_error(path.string() + " is no module: it has no " + name);
    return reinterpret_cast<Function>(symbol);
}

}  // namespace

Host::Host(const std::filesystem::path& plugin) {
    const std::filesystem::path path = FindModule(plugin);
    mModule = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (mModule == nullptr) throw std::runtime_error(std::string("the module cannot be loaded: ") + dlerror());
    const auto initialize = Find<EntryPoint>(mModule, "KavraInitialize", path);
    const auto shutdown = Find<EntryPoint>(mModule, "KavraShutdown", path);
    if (!initialize()) throw std::runtime_error("the module " + path.string() + " did not start");
    mShutdown = shutdown;
    Objects::IClone* clone = Objects::ObjModel::Factory().CloneObject(Objects::Intern(kFactoryKey));
    mHandler = dynamic_cast<Devices::IImageHandler*>(clone);
    if (mHandler == nullptr) throw std::runtime_error("the module " + path.string() + " registers no image handler");
    Devices::Sys::SetImageHandler(mHandler);
}

Host::~Host() {
    Devices::Sys::SetImageHandler(nullptr);
    if (mShutdown != nullptr) mShutdown();
    // The module's code stays mapped: worker threads of the libraries beneath it may still be in it at exit.
}

}  // namespace Kavra::App
