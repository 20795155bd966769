/// What is written on a contact sheet.
#pragma once

#include "Canvas.h"

#include <string>
#include <vector>

namespace Kavra::App {

/// Lines of words of at most `width` pixels, in letters whose capitals are `size` high, `most` lines at most. Words that
/// are too long are broken; what is left over ends in three points.
std::vector<std::string> Wrapped(const std::string& text, float size, float width, std::size_t most);

/// The name in one line of at most `width` pixels: of a longer one its beginning and its end.
std::string Shortened(const std::string& name, float size, float width);

/// How high captions are below cells of this width, in pixels: three lines.
int CaptionHeight(int cellWidth);

/// A caption on the background of sheets: the name of a file, and what it holds in two lines at most.
LoadedImage Caption(const std::string& name, const std::string& facts, int width, int height);

/// What stands for a picture that cannot be shown: a red box with a cross in it, and the reason, where there is room.
LoadedImage CrossedBox(vec2<int> size, const std::string& reason);

}  // namespace Kavra::App
