#include "Commands.h"
#include "FileNames.h"
#include "Inputs.h"
#include "OutputNames.h"
#include "OutputPattern.h"
#include "Printable.h"
#include "Results.h"
#include "StandardStreams.h"
#include "TextureInput.h"
#include "TextureReport.h"
#include "TextureWriting.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <kavra/objects/OS.h>

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
    InputOptions inputs;
    bool inspects = false, reports = false, json = false;
    TextureForm form;
    TextureOptions texture;
};

void Tell(Report& report, const Options& options, const Outcome& outcome, std::span<const std::string> inputs,
          Json& json) {
    if (options.json) {
        json = {{"file", inputs.size() == 1 ? Json(inputs.front()) : Json(std::vector(inputs.begin(), inputs.end()))},
                {"output", outcome.file.string()}};
        json.update(ShapeJson(outcome.made.shape));
        json["copied"] = outcome.isCopied;
        json["psnr"] = ErrorJson(outcome.error);
        json["seconds"] = outcome.seconds;
        json["status"] = "written";
    } else if (options.reports) {
        const std::string error = outcome.isCopied ? "copied as it is" : ErrorText(outcome.error);
        report.out +=
            std::format("{}: {}; {}\n", PrintableName(outcome.file.string()), ShapeText(outcome.made.shape), error);
    }
}

/// One output of one input, or of several that belong together.
void Make(IImageHandler& handler, Report& report, const Options& options, std::span<const std::string> inputs,
          const std::filesystem::path& out, Json& json) {
    if (!IsToBeMade(report, inputs, out)) {
        json = WorkJson(report);
        return;
    }
    Outcome outcome;
    StoredTexture stored;
    const bool reports = options.reports || options.json;
    const bool isFile = inputs.size() == 1 && !options.form.JoinsInputs() && IsTextureName(inputs.front()) &&
                        stored.reader.Open(OS::FromUtf8(inputs.front().c_str()).c_str());
    if (isFile) {
        stored.shape = stored.reader.Shape();
        outcome = MadeOfFile(handler, report, stored, options.texture, reports);
    } else {
        TextureInput input = LoadPictures(handler, report, inputs, options.form, options.texture.ChangesSize());
        if (input.texture.images.empty()) return;
        outcome = MadeOf(handler, report, std::move(input.texture), input.source, options.texture, reports);
    }
    if (outcome.made.bytes.empty()) return;
    outcome.file = out;
    if (WriteTexture(report, outcome.made, out, options.texture.zstdLevel))
        Tell(report, options, outcome, inputs, json);
}

int RunInspection(const Session& session, const Options& options) {
    if (options.inputs.AreNone(options.files)) return WrongUsage("texture", "FILE is required");
    const auto tell = [&](Report& report, Json& json) {
        StoredTexture stored;
        if (!stored.reader.Open(OS::FromUtf8(report.File().c_str()).c_str()))
            return report.Fail(std::string("cannot be read: ") + stored.reader.Reason());
        stored.shape = stored.reader.Shape();
        if (options.json) {
            json = InspectionJson(report.File(), stored);
        } else {
            report.out = InspectionText(PrintableName(report.File()), stored);
        }
    };
    return TellOfEach(session, {options.files, options.inputs, options.json, options.jobs}, tell, FailureJson);
}

/// The inputs of each output.
struct Work {
    std::vector<std::vector<std::string>> inputs;
    std::vector<std::filesystem::path> outputs;
};

/// Where the outputs go; what is wrong with that, or nothing.
std::string WishFor(const Options& options, const std::vector<std::string>& words, OutputWish& wish) {
    const std::string& out = options.files.back();
    if (options.to.contains('/')) return "--to takes an extension, dds or ktx2";
    const bool isOpen = options.inputs.AreOpen(words) && !options.form.JoinsInputs();
    const std::size_t count = isOpen ? 2 : options.form.JoinsInputs() ? 1 : words.size();
    wish = {.out = out, .to = options.to, .toFolder = !OutputPattern::IsPattern(out) && IsFolder(out, count)};
    const bool isName = !IsOutputStream(out) && !OutputPattern::IsPattern(out);
    if (isName) return OutputNameObstacle(out, count);
    if (!IsOutputStream(out)) return {};
    if (wish.toFolder) return "one file alone goes to a stream";
    if (IsStandardOutput(out) && (options.reports || options.json))
        return "--report and --json print where the texture is to go";
    wish.out = WriteStream(out, options.to);
    return {};
}

/// What is wrong with the command line, or the work to do.
std::string Plan(const Options& options, const OutputWish& wish, const std::vector<Input>& inputs, Work& work) {
    const bool joins = options.form.JoinsInputs();
    std::string obstacle = joins ? options.form.Obstacle(inputs.size()) : std::string();
    if (!obstacle.empty()) return obstacle;
    const std::vector<std::string> names = FileNamesOf(inputs);
    if (joins && !names.empty()) {
        work.inputs = {names};
    } else {
        for (const std::string& name : names)
            work.inputs.push_back({name});
    }
    const std::vector<Input> first(inputs.begin(), inputs.begin() + (joins && !inputs.empty() ? 1 : 0));
    std::string wrong = PlanOutputs(joins ? first : inputs, wish, work.outputs);
    for (const std::filesystem::path& output : work.outputs)
        if (!IsTextureName(output.string())) return output.string() + " is no texture file: .dds and .ktx2 are written";
    const bool packs = options.texture.zstdLevel > 0 && !work.outputs.empty();
    if (packs && LowerExtension(work.outputs.front()) != ".ktx2") return "--zstd packs .ktx2 files, and this is none";
    return wrong;
}

int Run(const Session& session, const Options& options) {
    if (options.inspects) return RunInspection(session, options);
    const bool hasList = !options.inputs.list.empty();
    if (options.files.size() < (hasList ? 1U : 2U))
        return WrongUsage("texture", options.files.empty() && !hasList ? "IN is required" : "OUT is required");
    const std::vector<std::string> words(options.files.begin(), options.files.end() - 1);
    OutputWish wish;
    const std::string wrongWish = WishFor(options, words, wish);
    if (!wrongWish.empty()) return WrongUsage("texture", wrongWish);
    wish.given = session.outputs;
    const InputList list = options.inputs.Expand(words, session, wish.toFolder ? wish.out : "");
    if (!list.canStart) return EndUnstarted(list, options.json);
    Work work;
    const std::string wrong = Plan(options, wish, list.inputs, work);
    if (!wrong.empty()) return WrongUsage("texture", wrong);
    const Host& host = session.LoadHost();
    std::vector<Report> reports;
    reports.reserve(work.inputs.size());
    for (const auto& group : work.inputs)
        reports.emplace_back(group.front());
    std::vector<Json> told(reports.size());
    const bool good = ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        const std::size_t mark = report.Mark();
        Make(host.Handler(), report, options, work.inputs[index], work.outputs[index], told[index]);
        if (told[index].is_null() && options.json && !report.Failed()) report.FailUnlessSaid(mark, "cannot be made");
    });
    for (std::size_t i = 0; i < reports.size(); ++i)
        if (reports[i].Failed()) {
            told[i] = FailureJson(reports[i]);
            told[i]["status"] = "failed";
        }
    PrintSummary(reports);
    Json all(told);
    AddFailures(all, list);
    if (options.json) WriteOutput(JsonText(all));
    return good && list.IsWhole() ? kAllDone : kSomeFailed;
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
        ->add_option("FILES", options->files,
                     "The inputs, then the output: a file, a folder for several inputs, or a name with fields: {dir} "
                     "{stem} {ext} "
                     "{name} of the input, {index} from 0, {index:04}. - is standard input or output. Of a texture "
                     "file all is kept "
                     "that no option changes, block by block")
        ->option_text("IN... OUT REQUIRED");
    command->usage("kavra texture [OPTIONS] IN... OUT");
    command->add_option("--to", options->to,
                        "The file type of the outputs in a folder or on standard output: dds unless said, or ktx2");
    options->inputs.AddTo(*command);
    options->texture.AddTo(*command);
    options->form.AddTo(*command);
    command->add_flag("--report", options->reports, "Print what was made, and how far it is from the picture");
    command->add_flag("--json", options->json, "Print the same as JSON");
    command->add_flag("--inspect", options->inspects, "Print what texture files hold instead; all FILES are inputs");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
