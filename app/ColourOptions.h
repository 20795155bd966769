/// What is done to colours between loading and writing.
#pragma once

#include "FileColours.h"
#include "LoadOptions.h"
#include "Source.h"

#include <CLI/App.hpp>

#include <optional>
#include <string_view>

namespace Kavra::App {

/// What the colours of the output are to its alpha.
enum class AlphaWish {
    kAsFilesAre,  ///< what files of its type hold; those without alpha are put on black
    kStraight,
    kPremultiplied,
    kKeep,  ///< what they are in the input, untouched
    kDrop,  ///< they are what they are stored as, and opaque
};

/// As it stands, what the eye expects: light in the values and alpha in the convention of the file that is written.
struct ColourOptions {
    AlphaWish alpha = AlphaWish::kAsFilesAre;
    std::optional<Light> background;
    Devices::ETransferKind input = Devices::kTransferUnknown;  ///< what the values are said to be
    bool raw = false;                                          ///< numbers are copied
    double stops = 0;
    ToneMap tone = ToneMap::kNone;

    bool operator==(const ColourOptions&) const = default;

    /// Adds the options to a command that makes pictures for people.
    void AddTo(CLI::App& command);
    /// Adds just `--exposure --tonemap`.
    void AddExposure(CLI::App& command);

    /// How to load a picture of `source` that is to come out in `load.format`: in the file's own format where its
    /// values are to pass a curve first, resampled by what its colours are to its alpha, and with an alpha that the
    /// handler's own choice of format leaves out.
    LoadOptions ForLoading(Devices::IImageHandler& handler, const LoadOptions& load, const std::string& file,
                           const Source& source) const;

    /// The picture, of a cube or volume with all faces or slices, as files with this extension (in lower case, with its
    /// dot) hold it, in the format `wanted` or, for `kUnknown`, one that is nearest to its own; `source` is brought up
    /// to what the values are then. Notes and a failure are said in the report; `block` is then null.
    LoadedImage Apply(Report& report, LoadedImage image, Source& source, std::string_view extension,
                      Devices::EFormat wanted = Devices::kUnknown) const;

private:
    Source Declared(Source source) const;
    ColourChange ChangeTo(const LoadedImage& image, const Source& source, const FileColours& file,
                          Devices::EFormat format) const;
};

/// A colour as on the command line, as light: black, white, grey, #rgb, #rrggbb or three numbers from 0 to 255 for red,
/// green and blue, in sRGB. Nothing for anything else.
std::optional<Light> ParseColour(std::string_view text);

}  // namespace Kavra::App
