#include "Commands.h"
#include "CubeLayout.h"
#include "FileNames.h"
#include "FormatNames.h"
#include "Inputs.h"
#include "JoinedFrames.h"
#include "LegacyOption.h"
#include "LoadOptions.h"
#include "Making.h"
#include "OutputNames.h"
#include "OutputPattern.h"
#include "Results.h"
#include "SaveImage.h"
#include "TextureWriting.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <kavra/objects/OS.h>

#include <algorithm>
#include <format>
#include <memory>
#include <utility>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::vector<std::string> files;  // the last one is the output
    std::string to;
    int jobs = 0;
    InputOptions inputs;
    LoadOptions load;
    CubeOption cube;
    JoinOptions join;
    Making making;
};

/// Whether a texture file goes into another one with nothing asked for but a format.
bool IsKept(const Options& options, const std::string& in, const std::filesystem::path& out) {
    const bool areTextures = IsTextureName(in) && IsTextureName(out);
    const bool isPicture = LowerExtension(in) == ".dds" && LegacyPreferences(in).legacy == kLegacyCommon;
    return areTextures && !isPicture && options.load.TakesAll() && !options.cube.form &&
           options.making.ChangesNothing();
}

/// With all levels, faces, slices and elements. False where the file is none that all of can be had of.
bool Keep(IImageHandler& handler, Report& report, const Options& options, const std::filesystem::path& out) {
    StoredTexture stored;
    if (!stored.reader.Open(OS::FromUtf8(report.File().c_str()).c_str())) return false;
    stored.shape = stored.reader.Shape();
    TextureOptions wanted;
    wanted.format = options.load.format;
    wanted.isPlain = true;
    const Outcome outcome = MadeOfFile(handler, report, stored, wanted, false);
    if (!outcome.made.bytes.empty()) (void)WriteTexture(report, outcome.made, out);
    return true;
}

/// Says of a texture file that became another one what of it is not there.
void NoteLevels(Report& report, const std::filesystem::path& out) {
    TextureFileReader reader;
    const bool areTextures = IsTextureName(report.File()) && IsTextureName(out);
    if (!areTextures || !reader.Open(OS::FromUtf8(report.File().c_str()).c_str())) return;
    const int levels = reader.Shape().levels;
    if (levels > 1)
        report.Say("note", std::format("one of its {} levels was written; kavra texture writes all", levels));
}

void Convert(IImageHandler& handler, Report& report, const Options& options, const std::filesystem::path& out) {
    if (!IsToBeMade(report, out)) return;
    if (IsKept(options, report.File(), out) && Keep(handler, report, options, out)) return;
    LoadOptions load = options.load;
    if (!load.selection.Resolve(handler, report, load.frame)) return;
    const Source source = SourceOf(handler, report.File(), load.frame);
    const bool isFirst = load.frame == 0 && load.selection.part.empty();
    if (IsTextureName(out) && Facts(load.format).bytesPerBlock > 0)
        load.format = kUnknown;  // blocks are made afterwards
    LoadedImage image = Load(handler, report, options.making.colours.ForLoading(handler, load, report.File(), source));
    if (image.block == nullptr) return FailToRead(report, 0);
    image = options.cube.Apply(report, std::move(image), source.alpha);
    if (image.block == nullptr) return;
    if (options.cube.form && image.desc.textureType == kTextureCube && !IsTextureName(out))
        return FailToWrite(report, out, "it is a cube map, and of the files that are written .dds and .ktx2 hold one");
    const bool isWritten = options.making.Write(handler, report, std::move(image), source, out, options.load.format);
    if (isWritten) NoteLevels(report, out);
    if (isWritten && isFirst) NoteTheOthers(handler, report);
}

/// All frames of all inputs into one file.
int RunJoined(const Session& session, const Options& options, const std::vector<std::string>& words) {
    const std::filesystem::path out = WriteStream(options.files.back(), options.to);
    const bool isStream = IsOutputStream(options.files.back());
    if (IsFolder(out, 1) || (!options.to.empty() && !isStream))
        return WrongUsage("convert", "--frames all makes one file, no folder");
    if (options.load.frame != 0) return WrongUsage("convert", "--frame and --frames all exclude one another");
    const Host& host = session.LoadHost();
    const InputList list = options.inputs.Expand(words, session);
    if (!list.canStart) return EndUnstarted(list, false);
    std::vector<Report> reports = MakeReports(FileNamesOf(list.inputs));
    if (!reports.empty() && IsToBeMade(reports.front(), FileNamesOf(list.inputs), out))
        options.join.Write(host.Handler(), reports, options.load, options.making, out);
    for (const Report& report : reports) {
        report.Print();
        AddResult(report);
    }
    return list.IsWhole() && std::ranges::none_of(reports, &Report::Failed) ? kAllDone : kSomeFailed;
}

/// Where the outputs go; what is wrong with that, or nothing.
std::string WishFor(const Options& options, const std::vector<std::string>& words, OutputWish& wish) {
    const std::string& out = options.files.back();
    const bool isPattern = OutputPattern::IsPattern(out), isStream = IsOutputStream(out);
    const std::size_t count = options.inputs.AreOpen(words) ? 2 : words.size();
    wish = {.out = out, .to = options.to, .toFolder = !isPattern && IsFolder(out, count)};
    if (wish.toFolder && isStream) return "one file alone goes to a stream";
    std::string wrongName = isPattern || isStream ? "" : OutputNameObstacle(out, options.to.empty() ? count : 1);
    if (!wrongName.empty()) return wrongName;
    if (wish.toFolder && options.to.empty()) return "--to is required when the output is a folder";
    if (!wish.toFolder && !isPattern && !isStream && !options.to.empty()) return "--to goes with an output folder";
    if (options.to.contains('/')) return "--to takes an extension, such as png";
    if (IsStandardOutput(out) && PrintsJsonAlone()) return "--json prints where the output is to go";
    if (isStream && options.to.empty() && LowerExtension(out).empty()) return kStreamNeedsType;
    if (isStream) wish.out = WriteStream(out, options.to);
    return {};
}

int Run(const Session& session, const Options& options) {
    const bool hasList = !options.inputs.list.empty();
    if (options.files.size() < (hasList ? 1U : 2U))
        return WrongUsage("convert", options.files.empty() && !hasList ? "IN is required" : "OUT is required");
    const std::vector<std::string> words(options.files.begin(), options.files.end() - 1);
    if (options.join.isAll) return RunJoined(session, options, words);
    if (options.join.framesPerSecond > 0) return WrongUsage("convert", "--fps goes with --frames all");
    OutputWish wish;
    const std::string wrongWish = WishFor(options, words, wish);
    if (!wrongWish.empty()) return WrongUsage("convert", wrongWish);
    wish.given = session.outputs;
    const InputList list = options.inputs.Expand(words, session, wish.toFolder ? wish.out : "");
    if (!list.canStart) return EndUnstarted(list, false);
    std::vector<std::filesystem::path> outputs;
    const std::string wrong = PlanOutputs(list.inputs, wish, outputs);
    if (!wrong.empty()) return WrongUsage("convert", wrong);

    const Host& host = session.LoadHost();
    std::vector<Report> reports = MakeReports(FileNamesOf(list.inputs));
    const bool good = ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        Convert(host.Handler(), report, options, outputs[index]);
    });
    PrintSummary(reports);
    return good && list.IsWhole() ? kAllDone : kSomeFailed;
}

}  // namespace

void AddConvert(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("convert", "Converts a file to a file, or files into a folder");
    command->footer(
        "Examples: kavra convert photo.jpg photo.dds --size 1024x1024\n"
        "          kavra convert *.tga thumbnails/ --to png --fit 256x256\n"
        "          kavra convert -r scans/ web/ --to jpg --overwrite-newer\n"
        "          find . -name '*.tga' -print0 | kavra convert --from - -0 '{dir}/{stem}-{index:04}.png'\n"
        "          kavra convert shot*.png shots.gif --frames all --fps 12");
    command
        ->add_option("FILES", options->files,
                     "The inputs, then the output: a file, a folder for several inputs, or a name with fields: {dir} "
                     "{stem} {ext} "
                     "{name} of the input, {index} from 0, {index:04}. - is standard input or output")
        ->option_text("IN... OUT REQUIRED");
    command->usage("kavra convert [OPTIONS] IN... OUT");
    command
        ->add_option("--to", options->to,
                     "The file type of the outputs in a folder, or on standard output, as an extension: png")
        ->check([](const std::string& to) {
            return to.empty() ? std::string("it is empty; write an extension, such as png") : std::string();
        });
    options->inputs.AddTo(*command);
    AddJobs(*command, options->jobs);
    options->load.AddTo(*command, true);
    options->load.selection.AddOptions(*command, Purpose::kFiles);
    options->load.resampling.AddForPeople(*command, Resampling::kLoadsUnlessSaid);
    options->load.resampling.AddFast(*command);
    options->cube.AddTo(*command);
    options->join.AddTo(*command);
    options->making.AddTo(*command);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
