/// The pictures that the sample files show, computed. `x` and `y` run from 0 to 1, left to right and top to bottom;
/// colours are linear light unless a scene says otherwise. A scene is drawn for pictures of 3 : 2 unless it says square.
#pragma once

#include "Paint.h"

namespace Kavra::Samples {

/// A thing cut out of its ground: `coverage` is its alpha.
struct Cutout {
    Colour colour;
    float coverage;
};

/// A lake in the mountains at dusk.
Colour Landscape(float x, float y);

/// Hills behind hills in the mist of the morning: little but gradients.
Colour Mist(float x, float y);

/// A sailing boat on the sea.
Colour Sea(float x, float y);

/// Sand dunes in a low sun.
Colour Dunes(float x, float y);

/// A lighthouse on a rock in heavy weather.
Colour Lighthouse(float x, float y);

/// A spiral galaxy, its core well above 1.
Colour Galaxy(float x, float y);

/// A flower from above, and the same in a meadow.
Cutout Flower(float x, float y);
Colour FlowerInMeadow(float x, float y);

/// An autumn leaf.
Cutout Leaf(float x, float y);

/// The moon with a faint halo.
Cutout Moon(float x, float y);

/// A candle flame, its heart well above 1. Square.
Cutout Flame(float x, float y);

/// A still life of three spheres on a table. `coverage` is 0 beside and behind the table.
struct StillLife {
    Colour colour;
    float coverage;
    float depth;  ///< metres from the eye
};
StillLife Spheres(float x, float y, float aspect);

/// A city at the river by night. Its windows are above 1.
Colour City(float x, float y);

/// Letters on a poster; only multiples of 1/5 in each channel. Display values.
Colour Poster(float x, float y);

/// A printed page with its number. Display values.
Colour Page(float x, float y, char number);

/// Colour bars, a grey scale and a circle. Display values.
Colour TestCard(float x, float y);

/// Metres above the sea on an island.
float Altitude(float x, float y);

/// A map of that island with its contour lines. Display values.
Colour IslandMap(float x, float y);

/// Fields and a river from the air.
Colour Fields(float x, float y);

/// A brick wall that can be repeated. Square, display values.
Colour Bricks(float x, float y);

/// A glazed tile that can be repeated. Square, display values.
Colour Ornament(float x, float y);

/// A printed circuit board. Display values.
Colour Circuit(float x, float y);

/// A studio as an equirectangular map: grey walls, a softbox left and a smaller, warmer one right. Values above 1 are
/// light.
Colour Studio(float u, float v);

/// A letter F on a two-coloured ground, which shows every flip and turn. Display values.
Colour LetterF(float x, float y);

/// Display value (0 to 1) of linear light, by the sRGB curve (IEC 61966-2-1).
float ToDisplay(float linear);

}  // namespace Kavra::Samples
