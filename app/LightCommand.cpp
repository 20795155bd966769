#include "Commands.h"
#include "Description.h"
#include "EnvironmentFile.h"
#include "FileNames.h"
#include "Inputs.h"
#include "LightFindings.h"
#include "LightPlot.h"
#include "OutputNames.h"
#include "OutputPattern.h"
#include "Printable.h"
#include "SaveImage.h"
#include "StandardStreams.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <format>
#include <memory>
#include <optional>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::vector<std::string> files;
    std::string plot;
    bool json = false;
    int jobs = 0;
    InputOptions inputs;
    LightOptions light;
    Selection selection;
};

/// The shortest decimal number that is this float, as JSON writes it.
double Shortest(float value) {
    char text[32];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value);
    double shortest = value;
    std::from_chars(text, end, shortest);
    return shortest;
}

Json Numbers(std::initializer_list<float> values) {
    Json numbers = Json::array();
    for (const float value : values)
        numbers.push_back(Shortest(value));
    return numbers;
}

Json Vector(const vec3<float>& v) {
    return Numbers({v.x, v.y, v.z});
}

/// Degrees to a thousandth, which is finer than they are known.
double Rounded(double degrees) {
    return std::round(degrees * 1000) / 1000;
}

Json LightJson(const std::string& file, const LightFindings& findings) {
    const vec4<float>& mean = findings.averageColor;
    Json lights = Json::array();
    for (const LightFinding& light : findings.lights)
        lights.push_back({{"direction", Vector(light.direction)},
                          {"color", Vector(light.colour)},
                          {"azimuth", Rounded(light.Azimuth())},
                          {"elevation", Rounded(light.Elevation())},
                          {"luminance", light.luminance},
                          {"share", light.share}});
    return {{"file", file},
            {"averageColor", Numbers({mean.x, mean.y, mean.z, mean.w})},
            {"intensity",
             {{"brightestChannel", Shortest(findings.intensity.x)},
              {"meanBrightest", Shortest(findings.intensity.y)},
              {"luminance", Shortest(findings.intensity.z)}}},
            {"weightedAverage", Vector(findings.weightedAverage)},
            {"lights", lights}};
}

void Plot(IImageHandler& handler, Report& report, const LightFindings& findings, const Selection& selection,
          const std::filesystem::path& path) {
    const SmallEnvironment map = LoadSmallEnvironment(handler, report.File(), kPlotWidth, kPlotMapHeight, selection);
    if (map.image.block == nullptr) return report.Fail("cannot be plotted: it could not be read again");
    const std::string title = std::filesystem::path(report.File()).filename().string();
    Save(handler, report, DrawLightPlot(title, map, findings), path);
}

/// Says why the numbers may not be what they seem.
void NoteDoubts(Report& report, const LightFindings& findings) {
    if (findings.oddPixels > 0) {
        report.Say("note", std::format("{} of {} pixels are NaN or infinite; means and lights are not to be trusted",
                                       findings.oddPixels, findings.Pixels()));
    }
    if (!findings.IsTwiceAsWide()) {
        report.Say(
            "note",
            std::format("{} x {} pixels, and an equirectangular map is twice as wide as high; directions may be wrong",
                        findings.desc.width, findings.desc.height));
    }
    if (findings.AreLightsBlack()) report.Say("note", "the lights are black: the search saw no light in this map");
}

/// What was found; nothing when the map cannot be measured.
std::optional<LightFindings> Measure(IImageHandler& handler, Report& report, const Options& options) {
    const LoadedImage map = LoadEnvironment(handler, report, options.selection);
    if (map.block == nullptr) return std::nullopt;
    LightFindings findings = MeasureLight(handler, map, options.light);
    NoteDoubts(report, findings);
    return findings;
}

/// The numbers also of a map whose plot failed, then with the reason.
Json FileJson(const Report& report, const std::optional<LightFindings>& findings) {
    if (!findings) return FailureJson(report);
    Json json = LightJson(report.File(), *findings);
    if (report.Failed()) AddFailure(json, report, "cannot be plotted");
    return json;
}

/// Where each file's plot goes; empty names when none is wanted. What is wrong with that, or nothing.
std::string PlanPlots(const Options& options, const std::vector<Input>& inputs,
                      std::vector<std::filesystem::path>& plots) {
    plots.clear();
    if (!options.plot.empty()) {
        const std::size_t count = options.inputs.AreOpen(options.files) ? 2 : inputs.size();
        std::string wrong = OutputPattern::IsPattern(options.plot) ? "" : OutputNameObstacle(options.plot, count);
        if (!wrong.empty()) return wrong;
        return PlanOutputs(inputs, {.out = options.plot, .to = "png", .toFolder = IsFolder(options.plot, count)},
                           plots);
    }
    plots.resize(inputs.size());
    return {};
}

std::size_t LongestName(const std::vector<std::string>& files) {
    return files.empty() ? 0 : std::ranges::max_element(files, {}, &std::string::size)->size();
}

int Run(const Session& session, Options options) {
    if (options.inputs.AreNone(options.files)) return WrongUsage("light", "FILE is required");
    const InputList list = options.inputs.Expand(options.files, session, options.plot);
    if (!list.canStart) return EndUnstarted(list, options.json);
    std::vector<std::filesystem::path> plots;
    const std::string wrong = PlanPlots(options, list.inputs, plots);
    if (!wrong.empty()) return WrongUsage("light", wrong);
    options.files = FileNamesOf(list.inputs);
    const Host& host = session.LoadHost();
    std::vector<Report> reports = MakeReports(options.files);
    std::vector<std::optional<LightFindings>> found(reports.size());
    const std::size_t width = LongestName(options.files);
    const bool isTable = reports.size() > 1;
    if (isTable && !options.json) WriteOutput(LightTableHead(width));
    const bool good = ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        const auto& findings = found[index] = Measure(host.Handler(), report, options);
        if (!findings) return;
        if (!options.json) {
            const std::string name = PrintableName(report.File());
            report.out = isTable ? LightTableLine(name, width, *findings) : LightText(name, *findings);
        }
        if (!plots[index].empty() && IsToBeMade(report, plots[index]))
            Plot(host.Handler(), report, *findings, options.selection, plots[index]);
    });
    if (options.json) {
        Json json = Json::array();
        for (std::size_t i = 0; i < reports.size(); ++i)
            json.push_back(FileJson(reports[i], found[i]));
        AddFailures(json, list);
        WriteOutput(JsonText(json));
    }
    return good && list.IsWhole() ? kAllDone : kSomeFailed;
}

}  // namespace

void AddLight(CLI::App& program, Session& session) {
    constexpr unsigned kSamples = 20000;  // the search takes no more, so there are no more lights
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("light", "Measures environment maps and finds their lights");
    command->footer(
        "Directions: +y is up, -z ahead (the middle of the map), +x right.\n"
        "Examples: kavra light studio.hdr --plot lights.png\n"
        "          kavra light *.exr --plot plots/ --lights 3");
    command->add_option("FILE", options->files, "The maps, equirectangular; of several a table")
        ->option_text("FILE... REQUIRED");
    options->inputs.AddTo(*command);
    AddWholeNumber(*command, "--lights", options->light.lights, 0U, kSamples,
                   "The most lights to look for; 8 unless said");
    command->add_flag("--upper", options->light.upperHemisphere,
                      "Intensity and weighted average of the upper hemisphere, by the cosine from the zenith");
    command->add_flag("--json", options->json, "One JSON array with an object a file");
    command->add_option("--plot", options->plot,
                        "Draws the lights, numbered, on the map: into this file, or into this folder as PNG files");
    options->selection.AddOptions(*command, Purpose::kPeople);
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
