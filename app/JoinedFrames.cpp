#include "JoinedFrames.h"

#include "FileNames.h"
#include "Picture.h"
#include "Usage.h"
#include "Workers.h"

#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <format>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

constexpr double kMaxSpeed = 100;   // of which GIF can tell
constexpr double kUsualSpeed = 10;  // where neither the command line nor the file says one
constexpr std::size_t kMaxFrames = 4096;

/// The frames so far.
struct Frames {
    std::vector<LoadedImage> images;
    std::uint64_t bytes = 0;

    /// Whether there is room for one more, which is taken over; a failure is said in the report.
    bool Add(Report& report, LoadedImage image) {
        const std::uint64_t ceiling = Objects::ObjModel::BlockCeiling();
        bytes += image.BlockSize();
        if (images.size() == kMaxFrames || bytes > ceiling) {
            report.Fail(images.size() == kMaxFrames
                            ? std::format("there are more than {} frames", kMaxFrames)
                            : std::format("all frames together have more than {} bytes", ceiling));
            return false;
        }
        images.push_back(std::move(image));
        return true;
    }
};

/// How many pictures in a second the file shows on the average; 0 where it does not say.
double SpeedOf(IImageHandler& handler, const std::string& file) {
    const OwnedInspection inspection = Inspect(handler, file);
    double seconds = 0;
    std::size_t timed = 0;
    for (std::size_t i = 0; inspection != nullptr && i < inspection->PartCount(); ++i) {
        const double shown = inspection->Part(i).seconds;
        if (!(shown > 0) || !std::isfinite(shown)) continue;
        seconds += shown;
        ++timed;
    }
    return timed == 0 ? 0 : std::min(static_cast<double>(timed) / seconds, kMaxSpeed);
}

/// What is transparent in a frame of a GIF shows the frame before it, as nearly all such files mean it. The image library
/// leaves holes there. Files that clear a frame before the next cannot be told apart here, and keep what was shown.
void FillFromBefore(LoadedImage& image, const LoadedImage& before) {
    constexpr std::size_t kPixel = 4;
    const ImageDescription &desc = image.desc, &old = before.desc;
    if (desc.format != kR8G8B8A8 || old.format != kR8G8B8A8 || desc.width != old.width || desc.height != old.height)
        return;
    auto* row = static_cast<unsigned char*>(image.block->mData);
    const auto* oldRow = static_cast<const unsigned char*>(before.block->mData);
    for (int y = 0; y < desc.height; ++y, row += desc.rowPitch, oldRow += old.rowPitch) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(desc.width) * kPixel; at += kPixel) {
            if (row[at + 3] == 0) std::memcpy(row + at, oldRow + at, kPixel);
        }
    }
}

/// Loads every frame of a file; false after a failure, which the report says.
bool AddFrames(IImageHandler& handler, Report& report, const LoadOptions& wished, const ColourOptions& colours,
               Frames& frames) {
    LoadOptions load = colours.ForLoading(handler, wished, report.File(), SourceOf(handler, report.File(), 0));
    const Owned<ImageDesc> desc = Describe(handler, report);
    const int count = desc == nullptr ? 1 : std::max(desc->frameCount, 1);
    for (load.frame = 0; load.frame < count; ++load.frame) {
        const std::size_t mark = report.Mark();
        LoadedImage image = Load(handler, report, load);
        if (image.block == nullptr && load.frame > 0 && report.WasSaidSince(mark, "Frame index out of range"))
            return true;
        if (image.block == nullptr) {
            FailToRead(report, mark);
            return false;
        }
        KeepFirst(image);
        if (load.frame > 0 && LowerExtension(report.File()) == ".gif") FillFromBefore(image, frames.images.back());
        if (!HasPixels(report, image, "joined") || !frames.Add(report, std::move(image))) return false;
    }
    return true;
}

}  // namespace

void JoinOptions::AddTo(CLI::App& command) {
    AddChoice<bool>(
        command, "--frames", {{"first", false}, {"all", true}}, [this](bool all) { isAll = all; },
        "all: every frame of every input goes into one gif, tif or exr file; first unless said");
    command
        .add_option("--fps", framesPerSecond, "Frames a second of a gif of all frames; the input's, or 10, unless said")
        ->check([](const std::string& text) {
            double value = 0;
            const bool good = CLI::detail::lexical_cast(text, value) && value > 0 && value <= kMaxSpeed;
            return good ? std::string() : std::format("{} is no number above 0 and up to {}", text, kMaxSpeed);
        });
}

void JoinOptions::Write(IImageHandler& handler, std::vector<Report>& reports, const LoadOptions& load,
                        const Making& making, const std::filesystem::path& path) const {
    Frames frames;
    for (Report& report : reports) {
        bool isWhole = false;
        Attempt(report, [&] { isWhole = AddFrames(handler, report, load, making.colours, frames); });
        if (!isWhole) return;
    }
    Report& report = reports.front();
    Attempt(report, [&] {
        double speed = framesPerSecond > 0 ? framesPerSecond : SpeedOf(handler, report.File());
        if (speed == 0) speed = kUsualSpeed;
        making.WriteAll(handler, report, std::move(frames.images), SourceOf(handler, report.File(), 0), path, speed);
    });
}

}  // namespace Kavra::App
