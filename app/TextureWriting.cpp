#include "TextureWriting.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "SaveImage.h"

#include <kavra/objects/OS.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

/// What a texture file says of its values.
Source SourceOf(const TextureShape& shape) {
    Source source;
    source.transfer = shape.isSrgb ? kTransferSrgb : kTransferUnknown;
    const bool isStraight = shape.alpha == kTextureAlphaStraight || shape.alpha == kTextureAlphaUnknown;
    source.alpha = shape.alpha == kTextureAlphaPremultiplied ? kAlphaPremultiplied
                   : isStraight                              ? kAlphaStraight
                                                             : kAlphaNone;
    return source;
}

/// Levels of a texture file as they are, behind those of `made` that take their place.
bool CopyLevels(Report& report, StoredTexture& stored, MadeTexture& made) {
    for (int element = 0; element < made.shape.elements; ++element) {
        for (int face = 0; face < FaceCount(made.shape.type); ++face) {
            for (int level = 0; level < std::min(made.shape.levels, stored.shape.levels); ++level) {
                const std::uint64_t at = TextureLevelOffset(made.shape, element, face, level);
                if (stored.reader.ReadLevel(element, face, level, made.bytes.data() + at)) continue;
                report.Fail(std::string("cannot be read: ") + stored.reader.Reason());
                return false;
            }
        }
    }
    return true;
}

void Relabel(TextureShape& shape, const TextureOptions& options) {
    shape.isSrgb = options.isSrgb.value_or(shape.isSrgb);
    shape.format = SrgbVariant(shape.format, shape.isSrgb);
}

/// As it is, with as many levels as are wanted and there.
MadeTexture Copied(Report& report, StoredTexture& stored, const TextureOptions& options) {
    MadeTexture made{.shape = stored.shape, .bytes = {}};
    if (options.levels.count && *options.levels.count != LevelWish::kAll)
        made.shape.levels = std::min(*options.levels.count, stored.shape.levels);
    Relabel(made.shape, options);
    made.bytes.resize(TextureBytes(made.shape));
    if (!CopyLevels(report, stored, made)) made.bytes.clear();
    return made;
}

bool HasLevels(const TextureShape& shape, const LevelWish& wish) {
    if (!wish.count) return true;
    const int all = FullTextureLevels(shape.width, shape.height, shape.depth);
    return shape.levels >= (*wish.count == LevelWish::kAll ? all : std::min(*wish.count, all));
}

Outcome Made(IImageHandler& handler, Report& report, PixelTexture texture, const Source& source,
             const TextureOptions& options, bool isFile, bool reports) {
    Outcome outcome;
    const TexturePlan plan = PlanOf(report, texture, source, options);
    if (plan.working == kUnknown) return outcome;
    texture = Prepared(handler, report, std::move(texture), source, plan, options);
    if (texture.images.empty()) return outcome;
    const auto start = std::chrono::steady_clock::now();
    outcome.made = Encoded(report, texture, plan, options, isFile);
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (reports && !outcome.made.bytes.empty()) outcome.error = ErrorOf(std::move(texture), outcome.made);
    return outcome;
}

}  // namespace

Outcome MadeOf(IImageHandler& handler, Report& report, PixelTexture texture, const Source& source,
               const TextureOptions& options, bool reports) {
    return Made(handler, report, std::move(texture), source, options, false, reports);
}

Outcome MadeOfFile(IImageHandler& handler, Report& report, StoredTexture& stored, TextureOptions options,
                   bool reports) {
    Outcome outcome;
    const bool keeps = options.KeepsPixels();
    if (stored.reader.IsBottomUp()) {
        if (keeps) report.Say("note", "its first row is the lowest, and stays so; --flip turns it");
        options.flips = !options.flips && !keeps;
    }
    if (keeps && HasLevels(stored.shape, options.levels)) {
        outcome.made = Copied(report, stored, options);
        outcome.isCopied = true;
        return outcome;
    }
    if (options.format == kUnknown) options.format = stored.shape.format;
    const Source source = SourceOf(stored.shape);
    PixelTexture pixels = ReadPixels(report, stored);
    if (pixels.images.empty()) return outcome;
    outcome = Made(handler, report, std::move(pixels), source, options, true, reports);
    if (!keeps || outcome.made.bytes.empty()) return outcome;
    outcome.made.shape.alpha = stored.shape.alpha;
    if (!CopyLevels(report, stored, outcome.made)) outcome.made.bytes.clear();
    return outcome;
}

bool WriteTexture(Report& report, const MadeTexture& made, const std::filesystem::path& path, int zstdLevel) {
    const TextureShape& shape = made.shape;
    const bool isKtx = LowerExtension(path) == ".ktx2";
    std::string reason;
    if (!CanWriteTexture(shape, isKtx ? kTextureFileKTX2 : kTextureFileDDS, &reason)) {
        FailToWrite(report, path, reason);
        return false;
    }
    if (isKtx && shape.alpha == kTextureAlphaCustom)
        report.Say("note", "its alpha is data of its own, which KTX2 cannot say: it is written as straight");
    TextureWriteOptions writing;
    writing.zstdLevel = isKtx ? zstdLevel : 0;
    std::error_code ignored;  // what is wrong with a folder is told when the file cannot be written
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path(), ignored);
    const FileContent content{shape.format, shape.width, shape.height};
    return WriteFile(report, path, content, [&](const KString& name) {
        return WriteTextureFile(name, shape, made.bytes.data(), made.bytes.size(), writing);
    });
}

bool WriteAsTexture(IImageHandler& handler, Report& report, LoadedImage image, const Source& source,
                    const std::filesystem::path& path, EFormat format) {
    TextureOptions options;
    options.format = format != kUnknown ? format : image.desc.format;
    options.levels.count = 1;
    options.isPlain = true;
    PixelTexture texture;
    texture.shape.type = image.desc.textureType;
    texture.images.push_back(std::move(image));
    texture.TakeSizeOfImages();
    const Outcome outcome = MadeOf(handler, report, std::move(texture), source, options, false);
    return !outcome.made.bytes.empty() && WriteTexture(report, outcome.made, path);
}

}  // namespace Kavra::App
