/// Text on a canvas, in a line font of the program's own.
#pragma once

#include "Canvas.h"

#include <string_view>

namespace Kavra::App {

/// How text looks: `size` is the height of a capital letter, in pixels.
struct Lettering {
    float size;
    Ink ink;
    float weight = 0.15F;  ///< thickness of the lines, as a part of the size
    bool isCased = false;  ///< with a dark rim, to be legible on any picture
};

/// Pixels from the beginning of a text to its end. Digits, plus, minus and points have fixed widths, so columns of
/// numbers with equally many of them line up.
float TextWidth(std::string_view text, float size);

/// Draws text (UTF-8) from `start` on, which is the left end of its base line. What the font does not have is a box.
void DrawText(Canvas& canvas, Point start, std::string_view text, const Lettering& lettering);
void DrawTextCentred(Canvas& canvas, Point middleOfBaseLine, std::string_view text, const Lettering& lettering);
void DrawTextRight(Canvas& canvas, Point end, std::string_view text, const Lettering& lettering);

}  // namespace Kavra::App
