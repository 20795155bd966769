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

void WriteJpegs(const std::string& folder, const Picture& photo) {
    WriteImage(folder + "/photo.jpg", photo, With(TypeDesc::UINT8, "jpeg:88"));
    for (int orientation = 1; orientation <= 8; ++orientation) {
        ImageSpec spec = With(TypeDesc::UINT8, "jpeg:90");
        spec.attribute("Orientation", orientation);
        // The letter stands upright in each stored picture: what is displayed shows the turn.
        WriteImage(folder + std::format("/photo-orientation-{}.jpg", orientation), Paint(60, 40, LetterF, false), spec);
    }
}

void WritePngs(const std::string& folder, const Picture& photo) {
    const Picture small = Paint(120, 80, Landscape, true);
    WriteImage(folder + "/photo-16bit.png", small, With(TypeDesc::UINT16));
    WriteImage(folder + "/cutout.png", WithAlpha(small), With(TypeDesc::UINT8));
    WritePalettePng(folder + "/palette.png", small);
    const Picture grey = Brightness(small);
    const Picture alpha = WithAlpha(small);
    Picture greyAlpha{grey.width, grey.height, 2, {}};
    for (int i = 0; i < grey.width * grey.height; ++i) {
        greyAlpha.values.push_back(grey.values[i]);
        greyAlpha.values.push_back(alpha.values[4 * i + 3]);
    }
    WriteImage(folder + "/grey-alpha.png", greyAlpha, With(TypeDesc::UINT8));
    WriteImage(folder + "/grey.png", Brightness(photo), With(TypeDesc::UINT8));
}

void WriteTiffs(const std::string& folder, const Picture& light) {
    const Picture small = Paint(120, 80, Landscape, true);
    ImageSpec planar = With(TypeDesc::UINT8, "zip");
    planar.attribute("planarconfig", "separate");
    WriteImage(folder + "/planar.tif", small, planar);
    ImageSpec tiled = With(TypeDesc::UINT16, "zip");
    tiled.tile_width = tiled.tile_height = 32;
    tiled.tile_depth = 1;
    WriteImage(folder + "/tiled.tif", small, tiled);
    WriteImage(folder + "/float.tif", light, With(TypeDesc::FLOAT, "zip"));
    WriteImages(folder + "/pages.tif", {small, Paint(60, 40, LetterF, false), Paint(64, 64, LetterF, false)},
                With(TypeDesc::UINT8, "zip"));
}

void WriteExrs(const std::string& folder, const Picture& light) {
    WriteImage(folder + "/rgba.exr", WithAlpha(light), With(TypeDesc::HALF, "zip"));
    ImageSpec depth = With(TypeDesc::FLOAT, "zip");
    depth.channelnames = {"Z"};
    depth.z_channel = 0;
    WriteImage(folder + "/depth.exr", Brightness(light), depth);
    ImageSpec luminance = With(TypeDesc::HALF, "zip");
    luminance.channelnames = {"Y"};
    WriteImage(folder + "/luminance.exr", Brightness(light), luminance);
}

/// A dot that runs round a circle.
void WriteAnimation(const std::string& folder) {
    constexpr int kFrames = 8;
    std::vector<Picture> frames;
    for (int frame = 0; frame < kFrames; ++frame) {
        const float angle = 2 * std::numbers::pi_v<float> * static_cast<float>(frame) / kFrames;
        frames.push_back(Paint(
            48, 48,
            [angle](float x, float y) -> Colour {
                const float dx = x - (0.5F + 0.3F * std::cos(angle));
                const float dy = y - (0.5F + 0.3F * std::sin(angle));
                if (dx * dx + dy * dy < 0.012F) return {1.0F, 0.6F, 0.1F};
                return {0.1F, 0.1F + 0.2F * y, 0.25F};
            },
            false));
    }
    ImageSpec spec = With(TypeDesc::UINT8);
    spec.attribute("gif:LoopCount", 0);
    WriteImages(folder + "/spinner.gif", frames, spec);
}

void WriteAll(const std::string& folder) {
    std::filesystem::create_directories(folder);
    const Picture photo = Paint(480, 320, Landscape, true);
    const Picture light = Paint(96, 64, Landscape, false);
    WriteJpegs(folder, photo);
    WritePngs(folder, photo);
    WriteTiffs(folder, light);
    WriteExrs(folder, light);
    WriteImage(folder + "/studio.hdr", Paint(256, 128, Studio, false), With(TypeDesc::FLOAT));
    WriteImage(folder + "/photo.tga", WithAlpha(Paint(120, 80, Landscape, true)), With(TypeDesc::UINT8, "rle"));
    WriteAnimation(folder);
    WriteEnvironments(folder);
    WritePictSamples(folder, photo);
    WriteBilevelSamples(folder, photo);
    WriteDdsSamples(folder, photo, Paint(64, 64, Landscape, false));
    WritePcxSamples(folder);
    WriteFlicSamples(folder);
    WriteBandSamples(folder + "/bands");
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
