/// What happens to a picture between its loading and its file, in all commands that make pictures for people.
#pragma once

#include "ColourOptions.h"
#include "Source.h"
#include "WriteOptions.h"

namespace Kavra::App {

struct Making {
    ColourOptions colours;
    WriteOptions writing;

    void AddTo(CLI::App& command);

    /// Brings the picture, which `source` belongs to, to what files like `path` hold, in the pixel format `wanted` where
    /// one is, and writes it. A failure is said in the report. True when the file is there.
    bool Write(Devices::IImageHandler& handler, Report& report, LoadedImage image, Source source,
               const std::filesystem::path& path, Devices::EFormat wanted = Devices::kUnknown) const;
};

}  // namespace Kavra::App
