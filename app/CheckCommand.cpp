#include "Commands.h"
#include "CutFiles.h"
#include "Description.h"
#include "Inputs.h"
#include "LoadOptions.h"
#include "Printable.h"
#include "Source.h"
#include "StandardStreams.h"
#include "Usage.h"
#include "Workers.h"

#include <kavra/devices/TextureFile.h>
#include <kavra/objects/OS.h>

#include <algorithm>
#include <format>
#include <memory>
#include <optional>
#include <utility>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::vector<std::string> files;
    bool json = false;
    int jobs = 0;
    InputOptions inputs;
};

/// What was decoded of a good file.
struct Found {
    std::string fileType;
    ETextureType textureType = kTexture2D;
    int width = 0, height = 0, depth = 1;
    int frames = 1, levels = 1, elements = 1;
};

/// "frame 3: " where there is more than one, likewise of levels.
std::string PlaceText(const Found& found, int frame, int level) {
    std::string text;
    if (found.frames > 1) text += std::format("frame {}: ", frame);
    if (found.levels > 1) text += std::format("level {}: ", level);
    return text;
}

void TakeShape(const TextureShape& shape, Found& found) {
    found.textureType = shape.type;
    found.width = shape.width;
    found.height = shape.height;
    found.depth = shape.depth;
    found.levels = shape.levels;
    found.elements = shape.elements;
}

/// Every level of every face and element, as the file has them.
std::optional<Found> CheckTexture(Report& report, TextureFileReader& reader) {
    const TextureShape shape = reader.Shape();
    Found found{.fileType = reader.Kind() == kTextureFileDDS ? "dds" : "ktx2"};
    TakeShape(shape, found);
    std::vector<unsigned char> bytes(TextureLevelBytes(shape, 0));
    for (int element = 0; element < shape.elements; ++element) {
        for (int face = 0; face < FaceCount(shape.type); ++face) {
            for (int level = 0; level < shape.levels; ++level) {
                if (!reader.HasFace(face) || reader.ReadLevel(element, face, level, bytes.data())) continue;
                report.Fail(OwnReason(PlaceText(found, 0, level) + reader.Reason(), kFailureDamaged));
                return std::nullopt;
            }
        }
    }
    return found;
}

/// One picture with all its faces and slices; of a frame that is not there the report says so.
void CheckPicture(IImageHandler& handler, Report& report, const Found& found, int frame, int level) {
    LoadOptions load;
    load.frame = found.fileType == "dds" ? level : frame;
    load.selection.purpose = Purpose::kFiles;
    Report chosen(report.File());  // what is shown of a picture of many channels is no matter here
    (void)load.selection.Resolve(handler, chosen, load.frame);
    if (found.fileType != "dds") load.selection.mipLevel = level;
    const LoadedImage image = Load(handler, report, load);
    if (image.block == nullptr) report.FailToRead(0, PlaceText(found, frame, level));
}

/// How many frames there are: by the word of the file, or until there is none where it has none to be relied on.
struct FrameCount {
    int count = 1;
    bool isPromised = false;

    FrameCount(const IFileInspection* file, const ImageDesc& desc) {
        constexpr std::size_t kMaxParts = 4096;  // that are inspected
        const std::size_t parts = file == nullptr ? 0 : file->PartCount();
        isPromised = parts > 0 && parts < kMaxParts;
        count = isPromised ? static_cast<int>(parts) : std::max(desc.frameCount, 1);
    }
};

/// Every level of every frame.
std::optional<Found> CheckPictures(IImageHandler& handler, Report& report) {
    const Owned<ImageDesc> desc = Describe(handler, report);
    if (desc == nullptr) {
        FailToRead(report, 0);
        return std::nullopt;
    }
    const OwnedInspection file = Inspect(handler, report.File());
    Found found{.fileType = file == nullptr ? "" : file->FileType(),
                .textureType = desc->textureType,
                .width = desc->width,
                .height = desc->height,
                .depth = std::max(desc->depth, 1)};
    const FrameCount frames(file.get(), *desc);
    found.frames = found.fileType == "dds" ? 1 : frames.count;
    for (int frame = 0; frame < found.frames; ++frame) {
        const auto index = static_cast<std::size_t>(frame);
        const bool isInspected = file != nullptr && index < file->PartCount();
        const int levels = isInspected ? static_cast<int>(file->Part(index).levelCount) : 1;
        found.levels = std::max(found.levels, levels);
        for (int level = 0; level < levels; ++level) {
            Report picture(report.File());
            CheckPicture(handler, picture, found, frame, level);
            const bool isMissing = frame > 0 && picture.WasSaidSince(0, "Frame index out of range");
            if (isMissing && !frames.isPromised) {
                found.frames = frame;
                return found;
            }
            report.Take(picture);
            if (picture.Failed()) return std::nullopt;
        }
    }
    return found;
}

std::optional<Found> Check(IImageHandler& handler, Report& report) {
    TextureFileReader reader;
    if (reader.Open(OS::FromUtf8(report.File().c_str()).c_str())) return CheckTexture(report, reader);
    return CheckPictures(handler, report);
}

std::string FoundText(const Found& found) {
    const auto counted = [](int count, const char* what) {
        return count > 1 ? std::format("{} {}, ", count, what) : std::string();
    };
    const std::string depth = found.depth > 1 ? std::format(" x {}", found.depth) : std::string();
    const std::string type = found.textureType == kTextureCube     ? ", cube map"
                             : found.textureType == kTextureVolume ? ", volume"
                                                                   : "";
    return std::format("{}{}{}{} x {}{}{}{}{}", counted(found.frames, "frames"), counted(found.elements, "elements"),
                       counted(found.levels, "levels"), found.width, found.height, depth, type,
                       found.fileType.empty() ? "" : ", ", found.fileType);
}

Json FoundJson(const Report& report, const Found& found) {
    return {{"file", report.File()},
            {"status", "ok"},
            {"fileType", found.fileType},
            {"frames", found.frames},
            {"elements", found.elements},
            {"levels", found.levels},
            {"textureType", static_cast<int>(found.textureType)},
            {"width", found.width},
            {"height", found.height},
            {"depth", found.depth},
            {"warnings", report.Texts()}};
}

Json BadJson(const Report& report) {
    Json json = {{"file", report.File()}, {"status", "bad"}};
    AddFailure(json, report, "cannot be read");
    json["warnings"] = report.Texts();
    return json;
}

int Run(const Session& session, const Options& options) {
    if (options.inputs.AreNone(options.files)) return WrongUsage("check", "FILE is required");
    RefuseAllCutFiles();
    const Host& host = session.LoadHost();
    const auto tell = [&](Report& report, Json& json) {
        const std::optional<Found> found = Check(host.Handler(), report);
        if (!found || report.Failed()) return;
        json = FoundJson(report, *found);
        if (!options.json) report.out = std::format("{}: ok ({})\n", PrintableName(report.File()), FoundText(*found));
    };
    return TellOfEach(session, {options.files, options.inputs, options.json, options.jobs}, tell, BadJson);
}

}  // namespace

void AddCheck(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        program.add_subcommand("check", "Decodes everything that files hold, and tells which are damaged or end early");
    command->footer(
        "A good file has a line on standard output, a bad one its reason on standard error, with the rows that are\n"
        "there where a picture ends early. With --json each has an object: file, status (ok or bad), and of good ones\n"
        "fileType, frames, elements, levels, textureType, width, height, depth; of bad ones error, kind (a word), and\n"
        "position, goodRows and rows where they are known.\n"
        "Example: kavra check *.exr textures/*.dds --json");
    command->add_option("FILE", options->files, "The files, - for standard input")->option_text("FILE... REQUIRED");
    options->inputs.AddTo(*command);
    command->add_flag("--json", options->json, "One JSON array with an object a file");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
