#include "Bench.h"

#include "common/FileHandle.h"

#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace Kavra::Bench {

using namespace Devices;

double TimeBlockWrite(std::size_t bytes, Memory memory) {
    if (memory == Memory::kFresh) Objects::ObjModel::ReleaseKeptBlock();
    return Seconds([bytes] {
        const Common::PixelBlock block = Common::NewBlock(bytes);
        std::memset(block.get(), 0x55, bytes);
        benchmark::DoNotOptimize(block.get());
    });
}

double TimePlainRead(const std::filesystem::path& path) {
    return Seconds([&path] {
        const Common::FileHandle file(std::fopen(path.c_str(), "rb"));
        std::vector<char> buffer(std::size_t{1} << 20);
        while (file && std::fread(buffer.data(), 1, buffer.size(), file.get()) > 0)
            benchmark::DoNotOptimize(buffer.data());
    });
}

Load TimeLoad(const std::filesystem::path& path, int frame, Memory memory) {
    static OIIOImageHandler handler;
    const Objects::KString name = Wide(path);
    if (memory == Memory::kFresh) Objects::ObjModel::ReleaseKeptBlock();
    ImageDescription desc;
    const double seconds = Seconds([&] {
        IMemoryWrapper<void>* block = handler.LoadTexture(desc, name, 0, 0, 1, kUnknown, frame, kTopLeft, nullptr);
        if (block == nullptr) throw std::runtime_error("cannot load " + path.string());
        block->Delete();
    });
    return {seconds, desc};
}

std::vector<unsigned char> TexturedPixels(int side, int channels) {
    std::vector<unsigned char> pixels;
    pixels.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) *
                   static_cast<std::size_t>(channels));
    unsigned random = 1;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            random = random * 1664525 + 1013904223;
            for (int c = 0; c < channels; ++c)
                pixels.push_back(static_cast<unsigned char>((x >> 4) + (y >> (3 + c)) + (random >> 30)));
        }
    }
    return pixels;
}

}  // namespace Kavra::Bench
