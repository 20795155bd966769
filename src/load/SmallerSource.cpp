#include "load/SmallerSource.h"

#include "formats/PixelFormatMapping.h"
#include "load/ChosenSlice.h"
#include "load/ScaledJpeg.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Kavra::Devices {

namespace {

constexpr int kMaxLevels = 31;

/// A picture in place of the one that is asked for.
struct Candidate {
    OIIO::ImageSpec spec;
    int level = 0;
    std::unique_ptr<OIIO::ImageInput> input = nullptr;  ///< null: the load's own
};

bool IsLargeEnough(const TextureLoad& load, int width, int height) {
    return width >= load.outWidth && height >= load.outHeight;
}

std::optional<Candidate> ScaledJpegOf(const TextureLoad& load, Common::ByteSource& file) {
    const ImageDesc& whole = load.fileDesc;
    for (const int denominator : {8, 4, 2}) {
        if (!IsLargeEnough(load, ScaledJpegSide(whole.width, denominator), ScaledJpegSide(whole.height, denominator)))
            continue;
        Candidate candidate;
        candidate.input = OpenScaledJpeg(file.Again(), load.fileSpec, denominator);
        if (!candidate.input) return std::nullopt;
        candidate.spec = candidate.input->spec();
        return candidate;
    }
    return std::nullopt;
}

/// Whether a level is the picture halved so many times, its pixels of the same kind.
bool IsLevelOf(const OIIO::ImageSpec& whole, const OIIO::ImageSpec& level, int steps) {
    const auto isHalved = [steps](int side, int small) { return std::abs(std::max(side >> steps, 1) - small) <= 1; };
    return isHalved(whole.width, level.width) && isHalved(whole.height, level.height) && level.depth == whole.depth &&
           level.nchannels == whole.nchannels && level.format == whole.format &&
           level.channelformats == whole.channelformats && level.channelnames == whole.channelnames &&
           level.alpha_channel == whole.alpha_channel && !level.deep && IsReadable(level);
}

/// The last of the levels that is large enough. Where that is the first, there is nothing to gain.
std::optional<Candidate> LevelOf(TextureLoad& load) {
    std::optional<Candidate> found;
    const int top = load.level;
    for (int level = top + 1; level < kMaxLevels && load.input->seek_subimage(load.index, level); ++level) {
        const OIIO::ImageSpec spec = load.input->spec();
        if (!IsLevelOf(load.fileSpec, spec, level - top) || !IsLargeEnough(load, spec.width, spec.height)) break;
        found = Candidate{.spec = spec, .level = level};
    }
    (void)load.input->geterror();  // that of the level after the last
    (void)load.input->seek_subimage(load.index, top);
    return found;
}

std::optional<Candidate> DdsLevelOf(TextureLoad& load) {
    const ImageDesc& whole = load.fileDesc;
    int steps = 0;
    while (load.level + steps + 1 < load.slices->Levels() &&
           IsLargeEnough(load, std::max(whole.width >> (steps + 1), 1), std::max(whole.height >> (steps + 1), 1)))
        ++steps;
    const int level = load.level + steps;
    if (steps == 0 || !load.slices->HasLevel(level) || !load.input->seek_subimage(0, level)) return std::nullopt;
    return Candidate{.spec = load.slice < 0 ? DdsLevelSpec(*load.input) : FaceSpec(load, level), .level = level};
}

std::optional<Candidate> Find(TextureLoad& load, Common::ByteSource& file) {
    if (load.fileDesc.depth > 1 || load.IsVolume()) return std::nullopt;
    const bool isOfVolume = load.slice >= 0 && load.slices && load.slices->Type() == kTextureVolume;
    if (load.IsDds()) return isOfVolume ? std::nullopt : DdsLevelOf(load);
    if (load.slice >= 0) return std::nullopt;
    const OIIO::string_view format = load.input->format_name();
    if (format == "jpeg" && !load.chosen) return ScaledJpegOf(load, file);
    const bool hasLevels = (format == "openexr" || format == "tiff") && !load.IsCube();
    return hasLevels ? LevelOf(load) : std::nullopt;
}

}  // namespace

std::optional<TextureSource> TakeSmallerSource(TextureLoad& load, Common::ByteSource& file) {
    if (!load.NeedsResize()) return std::nullopt;
    std::optional<Candidate> found = Find(load, file);
    if (!found) return std::nullopt;
    TextureSource before{.input = found->input ? std::exchange(load.input, std::move(found->input)) : nullptr,
                         .desc = load.desc,
                         .width = load.fileDesc.width,
                         .height = load.fileDesc.height,
                         .fileSpec = load.fileSpec,
                         .nativeSpec = load.nativeSpec,
                         .targetSpec = load.targetSpec,
                         .level = load.level};
    load.level = found->level;
    load.fileSpec = std::move(found->spec);
    load.fileDesc.width = load.IsCube() ? load.fileSpec.full_width : load.fileSpec.width;
    load.fileDesc.height = load.IsCube() ? load.fileSpec.full_height : load.fileSpec.height;
    load.nativeSpec = FormatToImageSpec(load.fileDesc.format, load.fileSpec);
    load.targetSpec = FormatToImageSpec(load.format, load.fileSpec);
    load.desc.dataSize = load.targetSpec.image_bytes(false);
    return before;
}

void Restore(TextureLoad& load, TextureSource source) {
    if (source.input) load.input = std::move(source.input);
    load.desc = source.desc;
    load.fileDesc.width = source.width;
    load.fileDesc.height = source.height;
    load.fileSpec = std::move(source.fileSpec);
    load.nativeSpec = std::move(source.nativeSpec);
    load.targetSpec = std::move(source.targetSpec);
    load.level = source.level;
    (void)load.input->seek_subimage(load.Subimage(), load.level);
}

}  // namespace Kavra::Devices
