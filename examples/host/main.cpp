/// The least host: loads the module, loads an image as RGBA into texture memory, says what it got.
///   minimal_host MODULE IMAGE

#include <kavra/devices/IImageHandler.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <dlfcn.h>

#include <cstdio>

using namespace Kavra;

int main(int argc, char** argv) {
    if (argc != 3) return std::fputs("usage: minimal_host MODULE IMAGE\n", stderr), 2;

    // 1. Load the module and start it; it registers its handler in the class factory.
    void* module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) return std::fprintf(stderr, "%s\n", dlerror()), 1;
    const auto initialize = reinterpret_cast<bool (*)()>(dlsym(module, "KavraInitialize"));
    const auto shutdown = reinterpret_cast<bool (*)()>(dlsym(module, "KavraShutdown"));
    if (initialize == nullptr || shutdown == nullptr || !initialize()) return 1;

    // 2. Get the handler. It hands itself out as its own clone, so there is nothing to free.
    Objects::IClone* clone = Objects::ObjModel::Factory().CloneObject(Objects::Intern(L"ImageHandlerOIIO"));
    auto* handler = dynamic_cast<Devices::IImageHandler*>(clone);

    // 3. Load the first frame, at most 512 x 512, top row first, as red green blue alpha.
    Devices::ImageDescription desc;
    const Objects::KString path(OS::FromUtf8(argv[2]).c_str());
    Objects::IMemoryWrapper<void>* block =
        handler->LoadTexture(desc, path, 512, 512, 1, Devices::kR8G8B8A8, 0, Devices::kTopLeft, nullptr);
    if (block != nullptr) {
        const auto* pixel = static_cast<const unsigned char*>(block->mData);
        std::printf("%d x %d, %d bytes a row, first pixel %d %d %d %d\n", desc.width, desc.height, desc.rowPitch,
                    pixel[0], pixel[1], pixel[2], pixel[3]);
        block->Delete();  // the block is ours
    }
    const bool loaded = block != nullptr;

    // 4. Stop the module; the factory disposes of the handler.
    shutdown();
    return loaded ? 0 : 1;
}
