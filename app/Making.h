/// What happens to a picture between its loading and its file, in all commands that make pictures for people.
#pragma once

#include "ColourOptions.h"
#include "Source.h"
#include "WriteOptions.h"

#include <vector>

namespace Kavra::App {

struct Making {
    ColourOptions colours;
    WriteOptions writing;

    void AddTo(CLI::App& command);

    /// Whether nothing was asked for.
    bool ChangesNothing() const;

    /// Brings the picture, which `source` belongs to, to what files like `path` hold, in the pixel format `wanted` where
    /// one is, and writes it. A failure is said in the report. True when the file is there.
    bool Write(Devices::IImageHandler& handler, Report& report, LoadedImage image, Source source,
               const std::filesystem::path& path, Devices::EFormat wanted = Devices::kUnknown) const;
    /// The same for several flat pictures, one or more, that become one file; `framesPerSecond` is 0 where it is unknown.
    bool WriteAll(Devices::IImageHandler& handler, Report& report, std::vector<LoadedImage> images,
                  const Source& source, const std::filesystem::path& path, double framesPerSecond) const;

private:
    /// Numbers that are copied are all written, and nothing is said of what they mean.
    WriteOptions Writing(Source& source) const;
    /// The format of the depth that is asked for, where files like `path` hold it; else none is wanted.
    Devices::EFormat WantedFor(const LoadedImage& image, const std::filesystem::path& path) const;
};

}  // namespace Kavra::App
