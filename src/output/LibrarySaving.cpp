#include "output/LibrarySaving.h"

#include "common/HostExtras.h"
#include "common/PixelFormats.h"
#include "common/Reasons.h"
#include "load/geometry/PackedRows.h"
#include "output/LibraryFile.h"
#include "output/PixelSpec.h"
#include "output/WriterPreferences.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

/// The pixels as a writer is given them: the caller's own, or a copy in packed rows.
struct Pixels {
    const unsigned char* first;
    std::size_t pixelBytes, pitch;
    Common::PixelBlock copy;
};

struct Picture {
    OIIO::ImageSpec spec;
    Pixels pixels;
};

/// Leaves the last of four or two channels out of the file. Those of the pixels stay, and are stepped over.
void DropAlpha(OIIO::ImageSpec& spec) {
    if (spec.nchannels != 4 && spec.nchannels != 2) return;
    --spec.nchannels;
    spec.channelnames.pop_back();
    spec.alpha_channel = -1;
}

/// What the file will hold.
OIIO::ImageSpec FileSpec(const ImageDescription& desc, const SavePreferences& preferences, const LibraryFile& file) {
    OIIO::ImageSpec spec = PixelSpec(desc.format, desc.width, desc.height);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    if (preferences.dropsAlpha) DropAlpha(spec);
    AddPreferences(spec, preferences, file.Format());
    AddTiles(spec, preferences, file.Format());
    return spec;
}

/// A copy is made where the rows are shorter than the picture's, so that nothing behind the last one is read, and where
/// blue comes first.
Pixels PixelsOf(const ImageDescription& desc, const void* data) {
    const auto pixelBytes = static_cast<std::size_t>(Common::FactsOf(desc.format).BytesPerPixel());
    const Rows rows{.first = static_cast<const unsigned char*>(data),
                    .pitch = static_cast<std::size_t>(desc.rowPitch),
                    .bytes = pixelBytes * static_cast<std::size_t>(desc.width),
                    .count = static_cast<std::size_t>(desc.height)};
    const bool isBlueFirst = Common::FactsOf(desc.format).blueFirst;
    if (rows.pitch >= rows.bytes && !isBlueFirst) return {rows.first, pixelBytes, rows.pitch, nullptr};
    Common::PixelBlock copy = PackRows(rows, {.overlaps = true, .swapsRedAndBlue = isBlueFirst});
    const unsigned char* const first = copy.get();
    return {first, pixelBytes, rows.bytes, std::move(copy)};
}

/// The same as floats, and `spec` with them.
Pixels FloatsOf(const Pixels& halves, OIIO::ImageSpec& spec) {
    const OIIO::TypeDesc half = spec.format;
    spec.set_format(OIIO::TypeFloat);
    Common::PixelBlock copy = NewRows(static_cast<std::size_t>(spec.height), spec.scanline_bytes());
    (void)OIIO::convert_image(spec.nchannels, spec.width, spec.height, 1, halves.first, half,
                              static_cast<OIIO::stride_t>(halves.pixelBytes), static_cast<OIIO::stride_t>(halves.pitch),
                              OIIO::AutoStride, copy.get(), spec.format, OIIO::AutoStride, OIIO::AutoStride,
                              OIIO::AutoStride);
    const unsigned char* const first = copy.get();
    return {first, spec.pixel_bytes(), spec.scanline_bytes(), std::move(copy)};
}

bool IsWritable(const ImageDescription& desc, const void* data) {
    return Common::Require(HasPixels(desc.format), kFailureFormat, "this format of pixels goes into DDS files only") &&
           Common::Require(data != nullptr && desc.rowPitch > 0 && desc.width > 0 && desc.height > 0, kFailureArguments,
                           "there are no pixels to save");
}

Picture PictureOf(const ImageDescription& desc, const void* data, const SavePreferences& preferences,
                  const LibraryFile& file) {
    Picture picture{.spec = FileSpec(desc, preferences, file), .pixels = PixelsOf(desc, data)};
    if (picture.spec.format == OIIO::TypeHalf && file.WantsFloatsForHalves())
        picture.pixels = FloatsOf(picture.pixels, picture.spec);
    return picture;
}

/// Whether the file holds what is to be behind its first picture.
bool TakesFrames(const LibraryFile& file, const ImageDescription& first, std::span<const SaveFrame> frames) {
    constexpr std::size_t kMaxFrames = 4096;
    if (frames.empty()) return true;
    const bool takesUnequal = HoldsUnequalFrames(file.Format());
    return HoldsFrames(file.Format()) && frames.size() <= kMaxFrames &&
           std::ranges::all_of(frames, [&](const SaveFrame& frame) {
               if (frame.desc == nullptr || !IsWritable(*frame.desc, frame.data)) return false;
               const ImageDescription& desc = *frame.desc;
               return takesUnequal ||
                      (desc.width == first.width && desc.height == first.height && desc.format == first.format);
           });
}

/// The parts of an OpenEXR file have names, no two the same.
void NameParts(std::vector<OIIO::ImageSpec>& specs) {
    for (std::size_t i = 0; specs.size() > 1 && i < specs.size(); ++i)
        specs[i].attribute("oiio:subimagename", std::to_string(i));
}

bool WritePictures(LibraryFile& file, std::span<const OIIO::ImageSpec> specs, std::span<const Pixels> pixels) {
    if (!file.Open(specs)) return false;
    for (std::size_t i = 0; i < specs.size(); ++i) {
        if (i > 0 && !file.OpenNext(specs[i])) break;
        (void)file.WriteImage(pixels[i].first, static_cast<OIIO::stride_t>(pixels[i].pixelBytes),
                              static_cast<OIIO::stride_t>(pixels[i].pitch));
    }
    return file.Close();
}

}  // namespace

bool SaveByLibrary(const KString& path, const ImageDescription& desc, const void* data) {
    if (!IsWritable(desc, data)) return false;
    LibraryFile file(path);
    if (!file.HasWriter()) return false;
    const SavePreferences preferences = Common::HostSavePreferences();
    const std::span frames(preferences.moreFrames, preferences.moreFrames != nullptr ? preferences.moreFrameCount : 0);
    if (!TakesFrames(file, desc, frames)) {
        Common::Say(kFailureFormat,
                    HoldsFrames(file.Format())
                        ? "files of this type take up to 4096 further pictures, alike in size and format"
                        : "files of this type hold one picture");
        return false;
    }

    // All memory that the pictures need on this side of the library is taken before the file is touched.
    std::vector<OIIO::ImageSpec> specs;
    std::vector<Pixels> pixels;
    const auto add = [&](const ImageDescription& added, const void* bytes) {
        Picture picture = PictureOf(added, bytes, preferences, file);
        specs.push_back(std::move(picture.spec));
        pixels.push_back(std::move(picture.pixels));
    };
    add(desc, data);
    for (const SaveFrame& frame : frames)
        add(*frame.desc, frame.data);
    NameParts(specs);
    return WritePictures(file, specs, pixels);
}

}  // namespace Kavra::Devices
