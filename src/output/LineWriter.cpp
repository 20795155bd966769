#include "output/LineWriter.h"

#include "common/Boundary.h"
#include "common/HostExtras.h"
#include "common/PixelBlock.h"
#include "common/Reasons.h"
#include "output/LibraryFile.h"
#include "output/PathPreparation.h"
#include "output/PixelSpec.h"
#include "output/WriterPreferences.h"

#include <kavra/devices/IWriteImageLineProvider.h>

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstdint>

namespace Kavra::Devices {

namespace {

constexpr int kLinePixelBytes = 4;  // of a pixel in the line, whatever the file's channels
constexpr int kMaxChannels = 65535;

struct FileLayout {
    int width, height, channels;
    double resolution;

    /// Whether a writer may be asked; for 0 channels some open a file and crash over the first line.
    bool IsWritable() const { return width > 0 && height > 0 && channels > 0 && channels <= kMaxChannels; }
};

/// The resolution is the call's own, whatever is preferred.
OIIO::ImageSpec FileSpec(const FileLayout& layout, const SavePreferences& preferences, const LibraryFile& file) {
    OIIO::ImageSpec spec = PictureSpec(layout.width, layout.height, layout.channels, OIIO::TypeUInt8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    AddPreferences(spec, preferences, file.Format());
    spec.attribute("XResolution", static_cast<float>(layout.resolution));
    spec.attribute("YResolution", static_cast<float>(layout.resolution));
    spec.attribute("ResolutionUnit", "in");
    return spec;
}

/// Bytes of a line, and of what a writer of more than four channels reads beyond its last pixel.
std::size_t LineBytes(const FileLayout& layout) {
    const std::int64_t pixels = std::int64_t{std::max(layout.width, 0)} * kLinePixelBytes;
    const std::int64_t beyond = std::clamp(layout.channels, kLinePixelBytes, kMaxChannels) - kLinePixelBytes;
    return static_cast<std::size_t>(pixels + beyond);
}

/// Asks for every line, also when the file did not open or a line could not be written: the provider is told nothing of
/// it, and may count on being asked.
bool WriteLines(LibraryFile& file, IWriteImageLineProvider& provider, const FileLayout& layout) {
    // Before the file is touched: without memory for a line it stays as it was.
    const Common::PixelBlock line = Common::NewZeroedBlock(LineBytes(layout));
    const SavePreferences preferences = Common::HostSavePreferences();
    if (!layout.IsWritable()) {
        Common::Say(kFailureArguments, "a picture of {} x {} pixels of {} channels cannot be written", layout.width,
                    layout.height, layout.channels);
    }
    const bool isOpen =
        layout.IsWritable() && preferences.moreFrameCount == 0 && file.Open(FileSpec(layout, preferences, file));
    for (int y = 0; y < layout.height; ++y) {
        provider.FillLine(line.get());
        if (isOpen) (void)file.WriteRow(y, line.get(), kLinePixelBytes);
    }
    return isOpen && file.Close();
}

bool WritePicture(const KString& path, IWriteImageLineProvider* provider, const FileLayout& layout) {
    if (!PrepareFolder(path)) return false;
    LibraryFile file(path);
    if (!file.HasWriter()) return false;
    if (layout.height <= 0) return true;  // no writer opens a file without rows, and no row is missing
    return Common::Require(provider != nullptr, kFailureArguments, "nobody was named to give the lines") &&
           WriteLines(file, *provider, layout);
}

}  // namespace

bool WriteImageLines(const KString& path, double resolution, IWriteImageLineProvider* provider, int width, int height,
                     int channels) {
    return WritePicture(path, provider, {width, height, channels, resolution});
}

}  // namespace Kavra::Devices
