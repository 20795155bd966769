#include "Display.h"

#include "FileColours.h"

namespace Kavra::App {

using namespace Devices;

LoadedImage ToDisplay(const LoadedImage& image, const Source& source, ToneMap tone, float brightness) {
    ColourChange change;
    change.from = TransferOf(source, image.desc.format);
    change.brightness = brightness;
    const bool isAutomatic = tone == ToneMap::kReinhardIfBright;
    if (!isAutomatic || IsFloating(image.desc.format)) change.tone = tone;
    change.alphaFrom = AlphaOf(source, image.desc.format);
    if (change.alphaFrom != kAlphaNone) change.alphaTo = kAlphaStraight;
    ColourFindings ignored;
    return Changed(image, change, kR8G8B8A8, ignored);
}

}  // namespace Kavra::App
