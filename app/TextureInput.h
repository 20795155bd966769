/// Pictures put together to a texture.
#pragma once

#include "PixelTexture.h"
#include "Source.h"

#include <CLI/App.hpp>

#include <span>
#include <string>

namespace Kavra::App {

/// What several inputs become together.
struct TextureForm {
    bool isCube = false;    ///< six faces, or one picture that shows them all
    bool isVolume = false;  ///< slices, one behind the other
    bool isArray = false;   ///< elements: flat pictures or cubes

    void AddTo(CLI::App& command);

    /// Whether all inputs make one texture.
    bool JoinsInputs() const { return isCube || isVolume || isArray; }
    /// What is wrong with so many inputs; empty where nothing is.
    std::string Obstacle(std::size_t inputs) const;
};

/// What a texture is made of: pixels, and what the values of all pictures are, by the word of the first.
struct TextureInput {
    PixelTexture texture;
    Source source;
};

/// Loads pictures the right way up, each in its own format, and puts them together. Nothing in `images`, and the report
/// says why, where that fails. Messages about a file are said of it. The elements of an array may differ in size if they
/// are resized later (`areResized`).
TextureInput LoadPictures(Devices::IImageHandler& handler, Report& report, std::span<const std::string> files,
                          const TextureForm& form, bool areResized);

}  // namespace Kavra::App
