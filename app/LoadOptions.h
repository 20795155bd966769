/// The options that every loading command takes.
#pragma once

#include "Messages.h"
#include "Resampling.h"
#include "Selection.h"
#include "SizeOptions.h"

#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/ImageDesc.h>

#include <CLI/App.hpp>

#include <memory>
#include <string>

namespace Kavra::App {

/// Adds `--format`, which takes a format by name or number.
void AddFormatOption(CLI::App& command, Devices::EFormat& format, const std::string& help);

/// Adds `--max-bytes` and `--max-pixels`, which hold for the whole process.
void AddLimits(CLI::App& command);
/// The same to each command of the program that loads pictures.
void AddLimitOptions(CLI::App& program);

struct LoadOptions {
    int width = 0;  ///< of the file's own rows and columns; 0: the file's own
    int height = 0;
    Devices::EFormat format = Devices::kUnknown;
    int frame = 0;
    int orientation = 0;
    bool highQuality = false;
    SizeWish wish = {};  ///< instead of `width` and `height`
    Resampling resampling = {};
    Selection selection = {};

    /// Whether nothing is chosen of a file, and neither its size nor its rows are changed.
    bool TakesAll() const;

    /// Adds `--size --fit --fill --scale --format --orientation --high-quality`, and `--frame` where one frame is loaded.
    void AddTo(CLI::App& command, bool withFrame);
};

struct DeleteObject {
    void operator()(auto* object) const { object->Delete(); }
};
template <class T>
using Owned = std::unique_ptr<T, DeleteObject>;
using OwnedBlock = Owned<Devices::IMemoryWrapper<void>>;

/// A loaded block and what it holds; `block` is null when the load failed.
struct LoadedImage {
    OwnedBlock block;
    Devices::ImageDescription desc;

    /// Bytes of the whole block: a cube's six faces included.
    std::uint64_t BlockSize() const;
};

/// The description of a file; null when there is none. Messages go to the report.
Owned<Devices::ImageDesc> Describe(Devices::IImageHandler& handler, Report& report);

/// Loads one frame. Messages go to the report; the caller says what a failure means, where the report does not. With a
/// wish for a size the picture is filtered by the load, as far as that shrinks it and the size of the frame is known
/// before, else by the resize service. What of the file was chosen in words is looked for first.
LoadedImage Load(Devices::IImageHandler& handler, Report& report, const LoadOptions& options);

/// Says why a file could not be read, unless the program said so since `mark` already.
void FailToRead(Report& report, std::size_t mark);

}  // namespace Kavra::App
