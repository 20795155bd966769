#include "Commands.h"
#include "FileNames.h"
#include "FormatNames.h"
#include "SaveImage.h"
#include "StandardStreams.h"
#include "TextureInput.h"
#include "TextureMaking.h"
#include "TextureReport.h"
#include "Usage.h"
#include "Workers.h"

#include <kavra/objects/OS.h>

#include <chrono>
#include <cstring>
#include <format>
#include <memory>
#include <utility>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::vector<std::string> files;  // the last one is the output
    std::string to = "dds";
    int jobs = 0;
    bool inspects = false, reports = false, json = false;
    TextureForm form;
    TextureOptions texture;
};

/// What came of one output.
struct Outcome {
    std::filesystem::path file;
    MadeTexture made;
    TextureError error;
    double seconds = 0;
    bool isCopied = false;  ///< blocks and pixels are those of the input
};

// --- Texture files ---------------------------------------------------------------------------------------------------

/// What a texture file says of its values: where not that they are sRGB, numbers.
Source SourceOf(const TextureShape& shape) {
    Source source;
    source.transfer = shape.isSrgb ? kTransferSrgb : kTransferLinear;
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
    shape.format = WithSrgb(shape.format, shape.isSrgb);
}

/// As it is, with as many levels as are wanted and there.
MadeTexture Copied(Report& report, StoredTexture& stored, const TextureOptions& options) {
    MadeTexture made{.shape = stored.shape};
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

Outcome MadeOf(IImageHandler& handler, Report& report, PixelTexture texture, const Source& source,
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
    outcome = MadeOf(handler, report, ReadPixels(report, stored), source, options, true, reports);
    if (keeps && !outcome.made.bytes.empty() && !CopyLevels(report, stored, outcome.made)) outcome.made.bytes.clear();
    return outcome;
}

// --- Outputs ---------------------------------------------------------------------------------------------------------

bool WriteTexture(Report& report, const Outcome& outcome, const TextureOptions& options) {
    const TextureShape& shape = outcome.made.shape;
    const bool isKtx = LowerExtension(outcome.file) == ".ktx2";
    std::string reason;
    if (!CanWriteTexture(shape, isKtx ? kTextureFileKTX2 : kTextureFileDDS, &reason)) {
        FailToWrite(report, outcome.file, reason);
        return false;
    }
    TextureWriteOptions writing;
    writing.zstdLevel = isKtx ? options.zstdLevel : 0;
    std::error_code ignored;  // what is wrong with a folder is told when the file cannot be written
    if (outcome.file.has_parent_path()) std::filesystem::create_directories(outcome.file.parent_path(), ignored);
    const FileContent content{shape.format, shape.width, shape.height};
    return WriteFile(report, outcome.file, content, [&](const KString& name) {
        return WriteTextureFile(name, shape, outcome.made.bytes.data(), outcome.made.bytes.size(), writing);
    });
}

void Tell(Report& report, const Options& options, const Outcome& outcome, std::span<const std::string> inputs,
          Json& json) {
    if (options.json) {
        json = {{"file", inputs.size() == 1 ? Json(inputs.front()) : Json(std::vector(inputs.begin(), inputs.end()))},
                {"output", outcome.file.string()}};
        json.update(ShapeJson(outcome.made.shape));
        json["copied"] = outcome.isCopied;
        json["psnr"] = ErrorJson(outcome.error);
        json["seconds"] = outcome.seconds;
    } else if (options.reports) {
        const std::string error = outcome.isCopied ? "copied as it is" : ErrorText(outcome.error);
        report.out = std::format("{}: {}; {}\n", outcome.file.string(), ShapeText(outcome.made.shape), error);
    }
}

/// One output of one input, or of several that belong together.
void Make(IImageHandler& handler, Report& report, const Options& options, std::span<const std::string> inputs,
          const std::filesystem::path& out, Json& json) {
    Outcome outcome;
    StoredTexture stored;
    const bool reports = options.reports || options.json;
    const bool isFile = inputs.size() == 1 && !options.form.JoinsInputs() && IsTextureName(inputs.front()) &&
                        stored.reader.Open(OS::FromUtf8(inputs.front().c_str()).c_str());
    if (isFile) {
        stored.shape = stored.reader.Shape();
        outcome = MadeOfFile(handler, report, stored, options.texture, reports);
    } else {
        TextureInput input = LoadPictures(handler, report, inputs, options.form);
        if (input.texture.images.empty()) return;
        outcome = MadeOf(handler, report, std::move(input.texture), input.source, options.texture, false, reports);
    }
    if (outcome.made.bytes.empty()) return;
    outcome.file = out;
    if (WriteTexture(report, outcome, options.texture)) Tell(report, options, outcome, inputs, json);
}

int RunInspection(const Options& options) {
    std::vector<Report> reports = MakeReports(options.files);
    std::vector<Json> found(reports.size());
    const bool good = ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        StoredTexture stored;
        if (!stored.reader.Open(OS::FromUtf8(report.File().c_str()).c_str()))
            return report.Fail(std::string("cannot be read: ") + stored.reader.Reason());
        stored.shape = stored.reader.Shape();
        if (options.json) {
            found[index] = InspectionJson(report.File(), stored);
        } else {
            report.out = InspectionText(report.File(), stored);
        }
    });
    for (std::size_t i = 0; i < reports.size(); ++i)
        if (reports[i].Failed()) found[i] = FailureJson(reports[i]);
    if (options.json) WriteOutput(JsonText(Json(found)));
    return good ? kAllDone : kSomeFailed;
}

/// The inputs of each output.
struct Work {
    std::vector<std::vector<std::string>> inputs;
    std::vector<std::filesystem::path> outputs;
};

/// What is wrong with the command line, or the work to do.
std::string Plan(const Options& options, Work& work) {
    const std::vector<std::string> inputs(options.files.begin(), options.files.end() - 1);
    const std::filesystem::path out = options.files.back();
    const bool joins = options.form.JoinsInputs();
    if (options.to.find('/') != std::string::npos) return "--to takes an extension, dds or ktx2";
    const bool toFolder = IsFolder(out, joins ? 1 : inputs.size());
    std::string obstacle = joins ? options.form.Obstacle(inputs.size()) : std::string();
    if (!obstacle.empty()) return obstacle;
    if (joins) {
        work.inputs = {inputs};
    } else {
        for (const std::string& input : inputs)
            work.inputs.push_back({input});
    }
    for (const auto& group : work.inputs)
        work.outputs.push_back(toFolder ? InFolder(out, group.front(), options.to) : out);
    for (const std::filesystem::path& output : work.outputs)
        if (!IsTextureName(output.string())) return output.string() + " is no texture file: .dds and .ktx2 are written";
    return joins ? std::string() : Clash(inputs, work.outputs);
}

int Run(const Session& session, const Options& options) {
    if (options.inspects) return RunInspection(options);
    if (options.files.size() < 2)
        return WrongUsage("texture", options.files.empty() ? "IN is required" : "OUT is required");
    Work work;
    const std::string wrong = Plan(options, work);
    if (!wrong.empty()) return WrongUsage("texture", wrong);
    const Host host = session.LoadHost();
    std::vector<Report> reports;
    for (const auto& group : work.inputs)
        reports.emplace_back(group.front());
    std::vector<Json> told(reports.size());
    const bool good = ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        const std::size_t mark = report.Mark();
        Make(host.Handler(), report, options, work.inputs[index], work.outputs[index], told[index]);
        if (told[index].is_null() && options.json && !report.Failed()) report.FailUnlessSaid(mark, "cannot be made");
    });
    for (std::size_t i = 0; i < reports.size(); ++i)
        if (reports[i].Failed()) told[i] = FailureJson(reports[i]);
    if (options.json) WriteOutput(JsonText(Json(told)));
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddTexture(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        program.add_subcommand("texture", "Makes compressed textures with mip levels, .dds or .ktx2, of pictures");
    command->footer(
        "Examples: kavra texture photo.jpg photo.dds\n"
        "          kavra texture *.png textures/ --format bc7 --quality best --report\n"
        "          kavra texture normals.png normals.ktx2 --normal-map --zstd 18\n"
        "          kavra texture sky.exr sky.dds --cube\n"
        "          kavra texture old.dds new.ktx2\n"
        "          kavra texture --inspect textures/*.dds");
    command
        ->add_option(
            "FILES", options->files,
            "The inputs, then the output: a file, or a folder for several inputs. Of a texture file all is kept "
            "that no option changes, block by block")
        ->option_text("IN... OUT REQUIRED");
    command->usage("kavra texture [OPTIONS] IN... OUT");
    command->add_option("--to", options->to, "The file type of the outputs in a folder: dds unless said, or ktx2");
    options->texture.AddTo(*command);
    options->form.AddTo(*command);
    command->add_flag("--report", options->reports, "Print what was made, and how far it is from the picture");
    command->add_flag("--json", options->json, "Print the same as JSON");
    command->add_flag("--inspect", options->inspects, "Print what texture files hold instead; all FILES are inputs");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
