#include "PcxSamples.h"

#include "Dither.h"
#include "legacy/PcxFile.h"

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
}

}  // namespace Kavra::Samples
