/// The module, loaded and started.
#pragma once

#include <kavra/devices/IImageHandler.h>

#include <filesystem>
#include <string>

namespace Kavra::App {

/// Loads the image-handler module, starts it and hands out its handler; stops and unloads it at the end. Throws
/// `std::runtime_error`, whose text is for the user, when there is no module to be had.
class Host {
public:
    /// `plugin` is the module's file; empty means the one beside the program, else in the folder `kavra` beside the
    /// host libraries.
    explicit Host(const std::filesystem::path& plugin);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    Devices::IImageHandler& Handler() const { return *mHandler; }

private:
    using EntryPoint = bool (*)();

    void* mModule = nullptr;
    EntryPoint mShutdown = nullptr;
    Devices::IImageHandler* mHandler = nullptr;
};

}  // namespace Kavra::App
