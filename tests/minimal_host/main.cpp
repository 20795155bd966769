/// A host that has what every host has and nothing else: loads the module and lets it describe, load, convert and save.
///   minimal_host MODULE EXAMPLES FOLDER

#include "minimal_host/MinimalHost.h"

#include <kavra/devices/IImage.h>
#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/IMemoryLoader.h>
#include <kavra/devices/ImageDesc.h>

#include <dlfcn.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

using namespace Kavra;
using namespace Kavra::Devices;

namespace {

int gFailures = 0;

void Check(bool holds, const char* rule) {
    if (holds) return;
    std::fprintf(stderr, "minimal_host: not so: %s\n", rule);
    ++gFailures;
}

struct Deleter {
    void operator()(auto* object) const { object->Delete(); }
};
template <class T>
using Owned = std::unique_ptr<T, Deleter>;

struct Loaded {
    ImageDescription desc;
    Owned<IMemoryWrapper<void>> block;

    template <class T>
    const T* As() const {
        return static_cast<const T*>(block->mData);
    }
};

KString Wide(const std::string& path) {
    return KString(std::wstring(path.begin(), path.end()).c_str());
}

Loaded Load(IImageHandler& handler, const std::string& path, EFormat format) {
    Loaded loaded;
    loaded.block.reset(handler.LoadTexture(loaded.desc, Wide(path), 0, 0, 1, format, 0, kTopLeft, nullptr));
    if (loaded.block) return loaded;
    std::fprintf(stderr, "minimal_host: %s was not loaded\n", path.c_str());
    std::exit(1);
}

void DescribesAFile(IImageHandler& handler, const std::string& photo) {
    const Owned<ImageDesc> desc(handler.GetImageDesc(Wide(photo)));
    Check(desc && desc->width == 480 && desc->height == 320 && desc->format == kR8G8B8A8, "a photo is described");
}

/// What came later is reached by a cast, and asks for nothing more of such a host.
void InspectsAFile(IImageHandler& handler, const std::string& photo) {
    auto* const inspector = dynamic_cast<IImageInspector*>(&handler);
    Check(inspector != nullptr, "the handler is an inspector, too");
    if (inspector == nullptr) return;
    const Owned<IFileInspection> file(inspector->Inspect(Wide(photo)));
    Check(file && file->PartCount() == 1 && file->Part(0).channelCount == 3, "a photo is inspected");
}

/// Which asks for nothing more of such a host, either.
void LoadsFromMemory(IImageHandler& handler, const std::string& path) {
    auto* const loader = dynamic_cast<IMemoryLoader*>(&handler);
    Check(loader != nullptr, "the handler loads from memory, too");
    if (loader == nullptr) return;
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    const MemoryFile file{bytes.data(), bytes.size(), L"x.jpg"};
    const Loaded expected = Load(handler, path, kUnknown);
    ImageDescription desc;
    const Owned<IMemoryWrapper<void>> block(
        loader->LoadMemory(desc, file, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr));
    Check(block && desc.dataSize == expected.desc.dataSize && desc.format == expected.desc.format &&
              std::memcmp(block->mData, expected.block->mData, desc.dataSize) == 0,
          "bytes in memory load as their file does");
}

void SavesWhatItLoaded(IImageHandler& handler, const std::string& photo, const std::string& copy) {
    const Loaded original = Load(handler, photo, kR8G8B8A8);
    Check(handler.SaveTexture(Wide(copy), original.desc, original.block->mData), "a texture is saved");
    const Loaded again = Load(handler, copy, kR8G8B8A8);
    Check(again.desc.dataSize == 480 * 320 * 4 && original.desc.dataSize == again.desc.dataSize &&
              std::memcmp(again.block->mData, original.block->mData, again.desc.dataSize) == 0,
          "a PNG gives back what was saved");
}

/// Packing floats is the module's own loop here, over what the host does for one pixel.
void PacksFloats(IImageHandler& handler, const std::string& environment) {
    const Loaded floats = Load(handler, environment, kR32G32B32A32F);
    const Loaded bytes = Load(handler, environment, kR8G8B8A8);
    const std::size_t count = floats.desc.dataSize / sizeof(float);
    Check(count > 0 && bytes.desc.format == kR8G8B8A8 && bytes.desc.dataSize == count, "floats become bytes");
    int wrong = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const float limited = std::fmin(std::fmax(floats.As<float>()[i], 0.0F), 1.0F);
        wrong += bytes.As<unsigned char>()[i] != std::lround(limited * 255.0F);
    }
    Check(wrong == 0, "every float is packed as the host packs one");
}

void LoadsALegacyFile(IImageHandler& handler, const std::string& path) {
    const Loaded picture = Load(handler, path, kR8G8B8A8);
    Check(picture.desc.format == kR8G8B8A8 && picture.desc.width > 0, "a legacy raster is loaded");
}

/// A new picture is zero, though nobody here knows of memory that is zero already.
void MakesAPicture(IImageHandler& handler) {
    IImage* const picture = handler.CreateImage(16, 8, kR8G8B8A8);
    Check(picture != nullptr, "a picture is made");
    if (picture == nullptr) return;
    picture->AddRef();
    ImageDescription desc;
    const Owned<IMemoryWrapper<void>> block(picture->LoadRect(desc, {0, 0}, {16, 8}, {16, 8}, kR8G8B8A8, kTopLeft));
    Check(block && desc.dataSize == 16 * 8 * 4, "a rectangle of it is read");
    const std::string zeros(16 * 8 * 4, '\0');
    Check(block && std::memcmp(block->mData, zeros.data(), zeros.size()) == 0, "a new picture is zero");
    picture->ReleaseRef();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return std::fputs("usage: minimal_host MODULE EXAMPLES FOLDER\n", stderr), 2;
    std::setlocale(LC_ALL, "C.UTF-8");
    const std::string examples = argv[2], folder = argv[3];

    void* const module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) return std::fprintf(stderr, "minimal_host: %s\n", dlerror()), 1;
    const auto initialize = reinterpret_cast<bool (*)()>(dlsym(module, "KavraInitialize"));
    const auto shutdown = reinterpret_cast<bool (*)()>(dlsym(module, "KavraShutdown"));
    if (initialize == nullptr || shutdown == nullptr || !initialize()) return 1;

    auto* const handler = static_cast<IImageHandler*>(MinimalHostObject(L"ImageHandlerOIIO"));
    if (handler == nullptr) return std::fputs("minimal_host: no handler\n", stderr), 1;
    DescribesAFile(*handler, examples + "/photo.jpg");
    InspectsAFile(*handler, examples + "/photo.jpg");
    LoadsFromMemory(*handler, examples + "/photo.jpg");
    SavesWhatItLoaded(*handler, examples + "/photo.jpg", folder + "/new/copy.png");
    PacksFloats(*handler, examples + "/studio.hdr");
    LoadsALegacyFile(*handler, examples + "/photo.pcx");
    MakesAPicture(*handler);
    Check(MinimalHostMessages() == 0, "nothing is complained of");

    Check(shutdown(), "the handler is taken back");
    Check(MinimalHostLiveBlocks() == 0, "every block and object is given back");
    return gFailures == 0 ? 0 : 1;
}
