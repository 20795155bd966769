/// Pixels as they go into a file.
#pragma once

#include "LoadOptions.h"
#include "TypeAbilities.h"

namespace Kavra::App {

/// Whether every pixel, of all faces or slices, is opaque: its alpha is the largest of its integers, or 1 and more.
/// False of formats that end in no alpha.
bool IsOpaque(const LoadedImage& image);

/// Whether every pixel is opaque or transparent, with nothing between. False of formats that end in no alpha.
bool IsCutOut(const LoadedImage& image);

/// Whether a colour (0 red, 1 green, 2 blue) is neither red's in every pixel nor the same in all of them. False of
/// formats that have not four channels.
bool SaysItsOwn(const LoadedImage& image, int colour);

/// The format with as many channels and this depth; itself where it has the depth, `kUnknown` where there is none.
Devices::EFormat AtDepth(Devices::EFormat format, Depth depth);

/// The format of one channel and the same depth; itself where it has one.
Devices::EFormat AsGrey(Devices::EFormat format);

/// The format of four channels and the same depth; itself where it has more than one.
Devices::EFormat AsColour(Devices::EFormat format);

/// How many channels lie in a pixel beside its alpha, or what stands in its place.
int ColourChannels(Devices::EFormat format);

}  // namespace Kavra::App
