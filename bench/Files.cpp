#include "Files.h"

#include "Bench.h"

#include <kavra/devices/DDSWriter.h>

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

namespace Kavra::Bench {

using namespace Devices;
using Legacy::Bitmap;

namespace {

constexpr int kRowsTogether = 256;  // the highest blocks that there are, and strips enough for all cores

std::unique_ptr<OIIO::ImageInput> OpenStraight(const std::filesystem::path& path) {
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    auto input = OIIO::ImageInput::open(path.string(), &config);
    if (!input) throw std::runtime_error("cannot open " + path.string());
    return input;
}

bool WriteDds(const std::filesystem::path& path, const PictureFile& file, std::vector<unsigned char>& pixels) {
    DDSWriter writer;
    writer.Construct(kTexture2D, kR8G8B8A8, file.width, file.height, 1, 1, static_cast<int>(pixels.size()), 0);
    return writer.Write(Wide(path), pixels.data());
}

bool WriteByLibrary(const std::filesystem::path& path, const PictureFile& file,
                    const std::vector<unsigned char>& pixels) {
    const auto output = OIIO::ImageOutput::create(path.string());
    OIIO::ImageSpec spec(file.width, file.height, file.channels, file.type);
    if (file.compression != nullptr) spec.attribute("compression", file.compression);
    spec.tile_width = spec.tile_height = file.tile;
    return output && output->open(path.string(), spec) && output->write_image(OIIO::TypeUInt8, pixels.data()) &&
           output->close();
}

void DrawLine(Bitmap& image, double x, double y, double angle, double length, int thickness) {
    for (double along = 0; along < length; along += 0.7) {
        for (int i = 0; i < thickness; ++i) {
            const int column = static_cast<int>(x + along * std::cos(angle)) + i;
            const int row = static_cast<int>(y + along * std::sin(angle)) + i;
            if (column >= 0 && row >= 0 && column < image.width && row < image.height) image.Set(column, row);
        }
    }
}

}  // namespace

const std::filesystem::path& FolderOfFiles() {
    static const TemporaryFolder folder;
    return folder.Path();
}

std::filesystem::path MakeFile(const PictureFile& file) {
    const std::filesystem::path path = FolderOfFiles() / file.name;
    if (std::filesystem::exists(path)) return path;
    std::vector<unsigned char> pixels = TexturedPixels(file.width, file.height, file.channels);
    const bool isWritten =
        path.extension() == ".dds" ? WriteDds(path, file, pixels) : WriteByLibrary(path, file, pixels);
    if (!isWritten) throw std::runtime_error("cannot write " + path.string());
    return path;
}

void ReadWhole(const std::filesystem::path& path, OIIO::TypeDesc type) {
    auto input = OpenStraight(path);
    const OIIO::ImageSpec& spec = input->spec();
    const std::size_t pixelBytes = 4 * type.size();
    Common::PixelBlock block = Common::NewBlock(static_cast<std::size_t>(spec.image_pixels()) * pixelBytes);
    if (!input->read_image(0, 0, 0, -1, type, block.get(), static_cast<OIIO::stride_t>(pixelBytes))) {
        throw std::runtime_error("cannot read " + path.string());
    }
    benchmark::DoNotOptimize(block.get());
    input.reset();  // closing frees the library's own buffers, which is a part of the cost
    block.reset();
}

void ReadRows(const std::filesystem::path& path) {
    const auto input = OpenStraight(path);
    const OIIO::ImageSpec& spec = input->spec();
    const bool isTiled = spec.tile_width != 0;
    const std::size_t rowPixels =
        isTiled ? static_cast<std::size_t>((spec.width + spec.tile_width - 1) / spec.tile_width * spec.tile_width)
                : static_cast<std::size_t>(spec.width);
    const int together = isTiled ? spec.tile_height : kRowsTogether;
    std::vector<unsigned char> rows(rowPixels * spec.pixel_bytes(true) * static_cast<std::size_t>(together));
    for (int top = 0; top < spec.height; top += together) {
        const int end = std::min(top + together, spec.height);
        const bool isRead =
            isTiled ? input->read_native_tiles(0, 0, 0, spec.width, top, end, 0, 1, 0, spec.nchannels, rows.data())
                    : input->read_native_scanlines(0, 0, top, end, 0, 0, spec.nchannels, rows.data());
        if (!isRead) throw std::runtime_error("cannot read " + path.string());
        benchmark::DoNotOptimize(rows.data());
    }
}

/// Lines in all directions, most of them along the sides, as many in a square inch at 600 dots as a drawing has.
Bitmap Drawing(int width, int height) {
    constexpr double kRightAngle = 1.5707963267948966;
    Bitmap image(width, height);
    std::mt19937 random(1);
    const auto below = [&](int limit) { return static_cast<double>(random() % static_cast<unsigned>(limit)); };
    const int lines = static_cast<int>(static_cast<double>(width) * height / 140'000);
    for (int line = 0; line < lines; ++line) {
        const double angle = line % 3 == 0 ? below(6283) / 1000 : kRightAngle * below(4);
        DrawLine(image, below(width), below(height), angle, below(width / 8), 3 + static_cast<int>(below(6)));
    }
    return image;
}

}  // namespace Kavra::Bench
