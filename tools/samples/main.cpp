/// Writes the sample images:  make_samples FOLDER

#include "BandSamples.h"
#include "BilevelSamples.h"
#include "DdsSamples.h"
#include "EnvironmentSamples.h"
#include "FlicSamples.h"
#include "PalettePng.h"
#include "PcxSamples.h"
#include "PictSamples.h"
#include "Picture.h"
#include "Scene.h"
#include "TextureSamples.h"

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <format>
#include <numbers>

namespace {

using namespace Kavra::Samples;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

ImageSpec With(TypeDesc format, const std::string& compression = "") {
    ImageSpec spec(format);
    if (!compression.empty()) spec.attribute("compression", compression);
    return spec;
}

void WriteJpegs(const std::string& folder) {
    WriteImage(folder + "/photo.jpg", Paint(480, 320, Landscape, true), With(TypeDesc::UINT8, "jpeg:88"));
    const Picture upright = Paint(40, 60, LetterF, false);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        ImageSpec spec = With(TypeDesc::UINT8, "jpeg:95");
        spec.attribute("jpeg:subsampling", "4:4:4");
        spec.attribute("Orientation", orientation);
        WriteImage(folder + std::format("/photo-orientation-{}.jpg", orientation), Stored(upright, orientation), spec);
    }
}

/// The first channel and the alpha of a picture that is grey.
Picture GreyAlpha(const Picture& picture) {
    Picture result{picture.width, picture.height, 2, {}};
    for (std::size_t i = 0; i < picture.values.size(); i += 4)
        result.values.insert(result.values.end(), {picture.values[i], picture.values[i + 3]});
    return result;
}

void WritePngs(const std::string& folder) {
    WriteImage(folder + "/photo-16bit.png", Paint(120, 80, Mist, true), With(TypeDesc::UINT16));
    WriteImage(folder + "/cutout.png", PaintCutout(120, 80, Leaf, true), With(TypeDesc::UINT8));
    WritePalettePng(folder + "/palette.png", Paint(120, 80, Poster, false));
    WriteImage(folder + "/grey-alpha.png", GreyAlpha(PaintCutout(120, 80, Moon, true)), With(TypeDesc::UINT8));
    WriteImage(folder + "/grey.png", Brightness(Paint(480, 320, Lighthouse, true)), With(TypeDesc::UINT8));
}

void WriteTiffs(const std::string& folder) {
    ImageSpec planar = With(TypeDesc::UINT8, "zip");
    planar.attribute("planarconfig", "separate");
    WriteImage(folder + "/planar.tif", Paint(120, 80, TestCard, false), planar);
    ImageSpec tiled = With(TypeDesc::UINT16, "zip");
    tiled.tile_width = tiled.tile_height = 32;
    tiled.tile_depth = 1;
    WriteImage(folder + "/tiled.tif", Paint(120, 80, IslandMap, false), tiled);
    WriteImage(folder + "/float.tif", Paint(96, 64, City, false), With(TypeDesc::FLOAT, "zip"));
    const auto page = [](char number) { return [number](float x, float y) { return Page(x, y, number); }; };
    WriteImages(folder + "/pages.tif",
                {Paint(120, 80, page('1'), false), Paint(60, 40, page('2'), false), Paint(64, 64, page('3'), false)},
                With(TypeDesc::UINT8, "zip"));
}

/// OpenEXR keeps colours multiplied by their alpha.
Picture Premultiplied(Picture picture) {
    for (std::size_t i = 0; i < picture.values.size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c)
            picture.values[i + c] *= picture.values[i + 3];
    }
    return picture;
}

void WriteExrs(const std::string& folder) {
    const auto spheres = [](float x, float y) {
        const StillLife seen = Spheres(x, y, 1.5F);
        return Cutout{seen.colour, seen.coverage};
    };
    WriteImage(folder + "/rgba.exr", Premultiplied(PaintCutout(96, 64, spheres, false)), With(TypeDesc::HALF, "zip"));
    const auto metres = [](float x, float y) {
        const float depth = Spheres(x, y, 1.5F).depth;
        return Colour{depth, depth, depth};
    };
    ImageSpec depth = With(TypeDesc::FLOAT, "zip");
    depth.channelnames = {"Z"};
    depth.z_channel = 0;
    WriteImage(folder + "/depth.exr", Brightness(Paint(96, 64, metres, false)), depth);
    ImageSpec luminance = With(TypeDesc::HALF, "zip");
    luminance.channelnames = {"Y"};
    WriteImage(folder + "/luminance.exr", Brightness(Paint(96, 64, Galaxy, false)), luminance);
}

/// Dots on a circle, bright where the wheel has just been.
void WriteAnimation(const std::string& folder) {
    constexpr int kFrames = 8;
    constexpr float kTurn = 2 * std::numbers::pi_v<float>;
    std::vector<Picture> frames;
    for (int frame = 0; frame < kFrames; ++frame) {
        const auto wheel = [frame](float x, float y) -> Colour {
            for (int dot = 0; dot < kFrames; ++dot) {
                const float angle = kTurn * static_cast<float>(dot) / kFrames;
                const float dx = x - 0.5F - 0.33F * std::cos(angle), dy = y - 0.5F - 0.33F * std::sin(angle);
                const float age = static_cast<float>((frame - dot + kFrames) % kFrames) / kFrames;
                if (std::hypot(dx, dy) < 0.105F - 0.05F * age)
                    return Mix({1, 0.72F, 0.15F}, {0.15F, 0.22F, 0.36F}, age);
            }
            return {0.07F, 0.10F, 0.18F};
        };
        frames.push_back(Paint(48, 48, wheel, false));
    }
    ImageSpec spec = With(TypeDesc::UINT8);
    spec.attribute("gif:LoopCount", 0);
    WriteImages(folder + "/spinner.gif", frames, spec);
}

void WriteAll(const std::string& folder) {
    std::filesystem::create_directories(folder);
    WriteJpegs(folder);
    WritePngs(folder);
    WriteTiffs(folder);
    WriteExrs(folder);
    WriteImage(folder + "/studio.hdr", Paint(256, 128, Studio, false), With(TypeDesc::FLOAT));
    WriteImage(folder + "/photo.tga", PaintCutout(120, 80, Flower, true), With(TypeDesc::UINT8, "rle"));
    WriteAnimation(folder);
    WriteEnvironments(folder);
    WritePictSamples(folder);
    WriteBilevelSamples(folder);
    WriteDdsSamples(folder);
    WriteTextureSamples(folder + "/textures");
    WritePcxSamples(folder);
    WriteFlicSamples(folder);
    WriteBandSamples(folder + "/bands");
    WriteCommonBandSamples(folder + "/common");
    WriteCommonBilevelSamples(folder + "/common");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make_samples FOLDER\n", stderr);
        return 2;
    }
    try {
        WriteAll(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fputs(std::format("make_samples: {}\n", error.what()).c_str(), stderr);
        return 1;
    }
}
