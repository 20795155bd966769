#include "PcxSamples.h"

#include "Dither.h"
#include "legacy/PcxFile.h"

#include <filesystem>

namespace Kavra::Samples {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes Triples(const std::vector<PaletteColour>& palette) {
    Bytes bytes;
    for (const PaletteColour& colour : palette)
        bytes.insert(bytes.end(), colour.begin(), colour.end());
    return bytes;
}

void Write(const std::string& path, const Legacy::PcxPicture& picture) {
    WriteBytes(path, Legacy::PcxFile(picture));
}

/// What only the common reading shows: four colours of a CGA, and pages of three sizes.
void WriteCommonSamples(const std::string& folder) {
    std::filesystem::create_directories(folder);
    const std::vector<PaletteColour> cga = {{0, 0, 0}, {85, 255, 85}, {255, 85, 85}, {255, 255, 85}};
    const Bytes settings = {0x00, 0, 0, 0x20, 0, 0};  // a black background; not the white palette, but bright
    const Picture meadow = Paint(160, 100, FlowerInMeadow, true);
    Write(folder + "/cga.pcx", {meadow.width, meadow.height, 2, 1, true, settings, DiffusedIndices(meadow, cga)});

    const Picture letter = Paint(60, 90, LetterF, false), circuit = Paint(120, 80, Circuit, false);
    const Picture sea = Paint(60, 40, Sea, true);
    const std::vector<PaletteColour> two = {{0, 0, 0}, {255, 255, 255}}, sixteen = ColourCube({2, 4, 2});
    const Bytes pages = Legacy::DcxFile({
        Legacy::PcxFile({letter.width, letter.height, 1, 1, true, Triples(two), DiffusedIndices(letter, two)}),
        Legacy::PcxFile(
            {circuit.width, circuit.height, 1, 4, true, Triples(sixteen), DiffusedIndices(circuit, sixteen)}),
        Legacy::PcxFile({sea.width, sea.height, 8, 3, true, {}, ToBytes(sea)}),
    });
    WriteBytes(folder + "/pages.dcx", pages);
}

}  // namespace

void WritePcxSamples(const std::string& folder) {
    const Picture sea = Paint(120, 80, Sea, true);
    Write(folder + "/photo.pcx", {sea.width, sea.height, 8, 3, true, {}, ToBytes(sea)});

    const Picture meadow = Paint(180, 120, FlowerInMeadow, true);
    const std::vector<PaletteColour> cube = ColourCube({6, 7, 6});
    Bytes colours = Triples(cube);
    colours.resize(768);
    Write(folder + "/palette.pcx", {meadow.width, meadow.height, 8, 1, true, colours, DiffusedIndices(meadow, cube)});

    const Picture circuit = Paint(180, 120, Circuit, false);
    const std::vector<PaletteColour> sixteen = ColourCube({2, 4, 2});
    Write(folder + "/planes.pcx",
          {circuit.width, circuit.height, 1, 4, true, Triples(sixteen), DiffusedIndices(circuit, sixteen)});

    // A set bit is the first colour.
    const std::vector<PaletteColour> inkAndPaper = {{24, 32, 64}, {250, 244, 230}};
    const Picture letter = Paint(90, 60, LetterF, false);
    Bytes bits;
    for (int y = 0; y < letter.height; ++y) {
        for (int x = 0; x < letter.width; ++x)
            bits.push_back(Nearest(inkAndPaper, letter.At(x, y)) == 0 ? 1 : 0);
    }
    Write(folder + "/letter.pcx", {letter.width, letter.height, 1, 1, true, Triples(inkAndPaper), bits});
    WriteCommonSamples(folder + "/common");
}

}  // namespace Kavra::Samples
