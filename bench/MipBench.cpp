// The levels of an 8192 x 8192 texture of four 8-bit channels, by each filter, as data and as light, and with the share of a
// cut-out kept; of a cube map and of a volume that have as many pixels. Beside it a plain copy of level 0.
//
// Items are pixels of level 0, bytes those of level 0. "times_copy" is the best time over that of the copy.

#include "Bench.h"

#include <kavra/devices/MipChain.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using namespace Kavra::Bench;
using namespace Kavra::Devices;

class Forget final : public IMipSink {
    bool TakeLevel(const MipLevel& level) override {
        const void* pixels = level.pixels;
        benchmark::DoNotOptimize(pixels);
        return true;
    }
};

void MipChain(benchmark::State& state, const TextureShape& shape, const MipOptions& options) {
    const int pictures = FaceCount(shape.type);
    const std::vector<unsigned char> picture = TexturedPixels(shape.width, shape.height * shape.depth, 4);
    const std::vector<const void*> faces(static_cast<std::size_t>(pictures), picture.data());
    MipSource source;
    source.pictures = faces.data();
    Forget sink;
    std::vector<unsigned char> copy(picture.size());
    const BestTimes best = Beside(
        state, [&] { BuildMipChain(shape, source, sink, options); },
        [&] {
            for (int i = 0; i < pictures; ++i)
                std::memcpy(copy.data(), picture.data(), copy.size());
        });
    state.counters["times_copy"] = best.Ratio();
    state.counters["growth_MB"] = GrowthOf([&] { BuildMipChain(shape, source, sink, options); });
    const std::size_t bytes = picture.size() * static_cast<std::size_t>(pictures);
    CountBytes(state, bytes);
    CountItems(state, bytes / 4);
}

TextureShape ShapeOf(ETextureType type, int side, int depth) {
    TextureShape shape;
    shape.format = kR8G8B8A8;
    shape.type = type;
    shape.width = shape.height = side;
    shape.depth = depth;
    shape.levels = FullTextureLevels(side, side, depth);
    return shape;
}

MipOptions OptionsOf(EResampleFilter filter, bool isLight) {
    MipOptions options;
    options.filter = filter;
    options.linearLight = options.alphaWeighted = isLight;
    return options;
}

MipOptions Keeping(float threshold) {
    MipOptions options = OptionsOf(kResampleBox, true);
    options.keepCoverage = threshold;
    return options;
}

MipOptions Normals() {
    MipOptions options;
    options.content = kMipNormals;
    return options;
}

const TextureShape kFlat = ShapeOf(kTexture2D, 8192, 1);

#define KAVRA_MIPS(name, shape, options) \
    BENCHMARK_CAPTURE(MipChain, name, shape, options)->UseManualTime()->Unit(benchmark::kMillisecond)

KAVRA_MIPS(box, kFlat, OptionsOf(kResampleBox, false));
KAVRA_MIPS(box_light, kFlat, OptionsOf(kResampleBox, true));
KAVRA_MIPS(triangle, kFlat, OptionsOf(kResampleTriangle, false));
KAVRA_MIPS(triangle_light, kFlat, OptionsOf(kResampleTriangle, true));
KAVRA_MIPS(mitchell, kFlat, OptionsOf(kResampleMitchell, false));
KAVRA_MIPS(mitchell_light, kFlat, OptionsOf(kResampleMitchell, true));
KAVRA_MIPS(lanczos3, kFlat, OptionsOf(kResampleLanczos3, false));
KAVRA_MIPS(lanczos3_light, kFlat, OptionsOf(kResampleLanczos3, true));
KAVRA_MIPS(box_coverage, kFlat, Keeping(0.5F));
KAVRA_MIPS(box_normals, kFlat, Normals());
KAVRA_MIPS(cube_mitchell_light, ShapeOf(kTextureCube, 3344, 1), OptionsOf(kResampleMitchell, true));
KAVRA_MIPS(volume_box_light, ShapeOf(kTextureVolume, 512, 256), OptionsOf(kResampleBox, true));
KAVRA_MIPS(volume_lanczos3, ShapeOf(kTextureVolume, 512, 256), OptionsOf(kResampleLanczos3, false));

#undef KAVRA_MIPS

}  // namespace
